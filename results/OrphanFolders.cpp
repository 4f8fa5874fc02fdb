#include "results/OrphanFolders.h"
#include "results/FolderNode.h"

#include <QString>

namespace {
constexpr int kNumberDigits = 5;
} // namespace

void OrphanFolders::reset()
{
    m_folder = nullptr;
    m_index = 1;
}

void OrphanFolders::rebase(FolderNode* root)
{
    if (m_folder)
        m_folder = root->findChild(m_folder->name);
}

FolderNode* OrphanFolders::current(FolderNode* root, int partIndex, bool ntfs)
{
    if (m_folder && m_folder->directCount() >= kEntriesPerFolder) {
        ++m_index;
        m_folder = nullptr;
    }
    if (!m_folder)
        m_folder = root->addChild(QStringLiteral("孤立文件-%1").arg(m_index, kNumberDigits, 10, QLatin1Char('0')), partIndex, ntfs);
    return m_folder;
}
