#include "carving/CarvedFolders.h"
#include "results/FolderNode.h"

#include <QtGlobal>

namespace {
struct KindText {
    const char* extension;
    const char* folderLabel;
};

// Indexed by CarvedKind.
constexpr KindText kKindTexts[kCarvedKindCount] = {
    {"7z", "7z文件-%1"},
    {"bmp", "BMP文件-%1"},
    {"gif", "GIF文件-%1"},
    {"jpg", "JPG文件-%1"},
    {"png", "PNG文件-%1"},
    {"tiff", "TIFF文件-%1"},
    {"ico", "ICO文件-%1"},
};

constexpr int kNameDigits = 9;
constexpr int kFolderDigits = 5;
} // namespace

CarvedFolders::CarvedFolders(FolderNode* root, int partIndex, bool ntfs)
    : m_extra(root->addChild(QStringLiteral("额外文件"), partIndex, ntfs)), m_partIndex(partIndex), m_ntfs(ntfs)
{
}

QString CarvedFolders::takeName(CarvedKind kind, quint64 runningNumber)
{
    const quint64 number = qMax(runningNumber, m_nextFreeNumber);
    m_nextFreeNumber = number + 1;
    const QString extension = QString::fromLatin1(kKindTexts[int(kind)].extension);
    return QStringLiteral("F%1.").arg(number, kNameDigits, 10, QLatin1Char('0')) + extension;
}

void CarvedFolders::file(CarvedKind kind, FoundFile* record)
{
    KindFolder& k = m_kinds[int(kind)];
    if (k.current && k.filed >= kFilesPerFolder) {
        ++k.number;
        k.current = nullptr;
    }
    if (!k.current) {
        const QString label = QString::fromUtf8(kKindTexts[int(kind)].folderLabel).arg(k.number, kFolderDigits, 10, QLatin1Char('0'));
        k.current = m_extra->addChild(label, m_partIndex, m_ntfs);
        k.filed = 0;
    }
    k.current->addFile(record);
    ++k.filed;
}
