#include "results/ResultTree.h"
#include "results/FolderNode.h"

#include "results/TreeLock.h"
#include <utility>

ResultTree::ResultTree(const QString& rootName, bool ntfs) : m_top(new FolderNode), m_root(new FolderNode)
{
    m_top->tree = this;
    m_root->tree = this;
    m_root->name = rootName;
    m_root->ntfs = ntfs;
    m_root->parent = m_top;
    m_top->children.append(m_root);
}

ResultTree::~ResultTree()
{
    // The visible root went with its scanner.
    m_top->children.clear();
    delete m_top;
}

ResultTree* ResultTree::of(const FolderNode* folder)
{
    return folder ? folder->tree : nullptr;
}

TreeLock* ResultTree::lockOf(const FolderNode* folder)
{
    ResultTree* tree = of(folder);
    return tree ? &tree->m_lock : nullptr;
}

void ResultTree::noteFile(quint64 size)
{
    m_files.fetch_add(1, std::memory_order_relaxed);
    m_bytes.fetch_add(size, std::memory_order_relaxed);
}

void ResultTree::noteFolder()
{
    m_folders.fetch_add(1, std::memory_order_relaxed);
}

void ResultTree::addPart(PartScan* scanner)
{
    TreeLock::Write lock(&m_lock);
    m_parts.append(scanner);
}

PartScan* ResultTree::part(int index) const
{
    TreeLock::Read lock(&m_lock);
    return index >= 0 && index < m_parts.size() ? m_parts.at(index) : nullptr;
}

int ResultTree::partCount() const
{
    TreeLock::Read lock(&m_lock);
    return int(m_parts.size());
}

QList<PartScan*> ResultTree::parts() const
{
    TreeLock::Read lock(&m_lock);
    return m_parts;
}

QList<PartScan*> ResultTree::takeParts()
{
    TreeLock::Write lock(&m_lock);
    return std::exchange(m_parts, {});
}
