#include "cli/TreeReport.h"
#include "results/FolderNode.h"

#include <QDateTime>
#include <QJsonArray>

namespace {
// Visits folders depth first, a folder's files before its subfolders.
template <typename Visit>
void walk(const FolderNode* root, Visit visit)
{
    QList<QPair<const FolderNode*, QString>> work{{root, root->name}};
    while (!work.isEmpty()) {
        const auto [folder, path] = work.takeLast();
        visit(folder, path);
        for (auto it = folder->children.crbegin(); it != folder->children.crend(); ++it)
            work.append({*it, path + QLatin1Char('/') + (*it)->name});
    }
}
} // namespace

QString TreeReport::isoTime(quint64 msecs)
{
    if (msecs == 0)
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(msecs), Qt::UTC).toString(Qt::ISODate);
}

QString TreeReport::text(const FolderNode* root, const ResultFilter& filter)
{
    QString out;
    walk(root, [&](const FolderNode* folder, const QString& path) {
        for (const FoundFile* f : folder->files) {
            if (!filter.matches(*f))
                continue;
            const QString time = isoTime(f->modifiedMsecs);
            out += QStringLiteral("%1/%2\t%3\t%4\n").arg(path, f->name).arg(f->size).arg(time.isEmpty() ? QStringLiteral("-") : time);
        }
    });
    return out;
}

QJsonObject TreeReport::json(const FolderNode* root, const ResultFilter& filter)
{
    QJsonArray files;
    QJsonArray folders;
    walk(root, [&](const FolderNode* folder, const QString& path) {
        folders.append(QJsonObject{{"path", path}, {"checkState", folder->checkState},
                                   {"files", int(folder->files.size())}});
        for (const FoundFile* f : folder->files) {
            if (!filter.matches(*f))
                continue;
            const QString time = isoTime(f->modifiedMsecs);
            files.append(QJsonObject{{"path", path + QLatin1Char('/') + f->name},
                                     {"name", f->name},
                                     {"size", double(f->size)},
                                     {"modified", time.isEmpty() ? QJsonValue() : QJsonValue(time)}});
        }
    });
    return {{"root", root->name}, {"folders", folders}, {"files", files}};
}

FolderNode* TreeReport::find(FolderNode* root, const QString& path)
{
    QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (!parts.isEmpty() && parts.first() == root->name)
        parts.removeFirst();
    FolderNode* folder = root;
    for (const QString& part : parts) {
        folder = folder->findChild(part);
        if (!folder)
            return nullptr;
    }
    return folder;
}
