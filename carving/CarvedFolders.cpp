#include "carving/CarvedFolders.h"
#include "carving/CarveKind.h"
#include "results/FolderNode.h"

#include <QtGlobal>

namespace {
constexpr int kNameDigits = 9;
constexpr int kFolderDigits = 5;
} // namespace

CarvedFolders::CarvedFolders(FolderNode* root, int partIndex, bool ntfs)
    : m_extra(root->addChild(QStringLiteral("额外文件"), partIndex, ntfs)), m_partIndex(partIndex), m_ntfs(ntfs)
{
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
