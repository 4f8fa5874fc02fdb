#include "scan/RestoreWalk.h"
#include "results/FolderNode.h"
#include "scan/SafeFileName.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace {
// Deeper trees than this come only from damaged records; the walk stops there.
constexpr int kMaxDepth = 4096;
// A folder with this many files of one name is damage or a loop, not a folder.
constexpr int kMaxNameNumber = 100000;
}

QString RestoreWalk::folderPath(const FolderNode* folder, const QString& targetDir)
{
    QStringList parts;
    int depth = 0;
    for (const FolderNode* f = folder; f && f->parent && depth < kMaxDepth; f = f->parent, ++depth)
        parts.prepend(SafeFileName::component(f->name));
    QString path = targetDir;
    for (const QString& p : parts)
        path += QLatin1Char('/') + p;
    return path;
}

void RestoreWalk::run(FolderNode* root, const QString& targetDir, const WriteOne& write, const ResultFilter& filter)
{
    if (!root)
        return;
    QList<FolderNode*> work{root};
    while (!work.isEmpty()) {
        FolderNode* folder = work.takeLast();
        QString path;
        for (FoundFile* f : folder->files) {
            if (!f->selected || !filter.matches(*f))
                continue;
            if (path.isEmpty()) {
                path = folderPath(folder, targetDir);
                if (!QDir(path).exists())
                    QDir().mkpath(path);
            }
            write(path, f);
        }
        work.append(folder->children);
    }
}

QString RestoreWalk::filePath(const QString& folderPath, const QString& name, bool keepBoth)
{
    const QString safe = SafeFileName::component(name);
    const QString first = folderPath + QLatin1Char('/') + safe;
    if (!keepBoth || !QFileInfo::exists(first))
        return first;
    for (int n = 2; n <= kMaxNameNumber; ++n) {
        const QString path = folderPath + QLatin1Char('/') + SafeFileName::numbered(safe, n);
        if (!QFileInfo::exists(path))
            return path;
    }
    return QString();
}

bool RestoreWalk::setModified(const QString& filePath, quint64 modifiedMsecs)
{
    if (modifiedMsecs == 0)
        return false;
    QFile f(filePath);
    if (!f.open(QIODevice::ReadWrite))
        return false;
    return f.setFileTime(QDateTime::fromMSecsSinceEpoch(qint64(modifiedMsecs), Qt::UTC),
                         QFileDevice::FileModificationTime);
}
