#include "carving/CarvedFolders.h"
#include "carving/CarveKind.h"
#include "results/FolderNode.h"

#include <QRegularExpression>
#include <QtGlobal>

namespace {
constexpr int kNameDigits = 9;
constexpr int kFolderDigits = 5;
} // namespace

CarvedFolders::CarvedFolders(FolderNode* root, int partIndex, bool ntfs, bool adopt)
    : m_extra(adopt ? root->obtainChild(QStringLiteral("额外文件"), partIndex, ntfs) : root->addChild(QStringLiteral("额外文件"), partIndex, ntfs)),
      m_partIndex(partIndex), m_ntfs(ntfs)
{
    if (adopt)
        adoptFolders();
}

void CarvedFolders::adoptFolders()
{
    // Each kind's folders are numbered from 1 in the order they were opened:
    // the last one of a kind is its current one.
    for (FolderNode* child : m_extra->children) {
        if (child->files.isEmpty())
            continue;
        const QString first = child->files.first()->name();
        for (qsizetype dot = first.indexOf(QLatin1Char('.')); dot >= 0; dot = first.indexOf(QLatin1Char('.'), dot + 1)) {
            const QString extension = first.mid(dot + 1);
            const QString prefix = CarveKind::folderLabel(extension).arg(QString());
            bool numbered = false;
            const int number = child->name.startsWith(prefix) ? child->name.mid(prefix.size()).toInt(&numbered) : 0;
            if (!numbered)
                continue;
            KindFolder& k = m_kinds[extension];
            k.current = child;
            k.number = number;
            k.filed = int(child->files.size());
            break;
        }
        adoptNames(child);
    }
}

void CarvedFolders::adoptNames(const FolderNode* folder)
{
    static const QRegularExpression numbered(QStringLiteral("^F(\\d{%1,})\\.").arg(kNameDigits));
    for (const FoundFile* file : folder->files) {
        const QRegularExpressionMatch m = numbered.match(file->nameView());
        if (m.hasMatch())
            m_nextFreeNumber = qMax(m_nextFreeNumber, m.captured(1).toULongLong() + 1);
        else
            m_stems.insert(file->name());
    }
}

QString CarvedFolders::takeName(const QString& extension, const QString& stem, quint64 runningNumber)
{
    if (!stem.isEmpty()) {
        QString name = stem;
        for (int n = 1; m_stems.contains(name + '.' + extension); ++n)
            name = stem + QStringLiteral("_%1").arg(n);
        m_stems.insert(name + '.' + extension);
        return name + '.' + extension;
    }
    const quint64 number = qMax(runningNumber, m_nextFreeNumber);
    m_nextFreeNumber = number + 1;
    return QStringLiteral("F%1.").arg(number, kNameDigits, 10, QLatin1Char('0')) + extension;
}

void CarvedFolders::file(const QString& extension, FoundFile* record)
{
    KindFolder& k = m_kinds[extension];
    if (k.current && k.filed >= kFilesPerFolder) {
        ++k.number;
        k.current = nullptr;
    }
    if (!k.current) {
        const QString label = CarveKind::folderLabel(extension).arg(k.number, kFolderDigits, 10, QLatin1Char('0'));
        k.current = m_extra->addChild(label, m_partIndex, m_ntfs);
        k.filed = 0;
    }
    k.current->addFile(record);
    ++k.filed;
}
