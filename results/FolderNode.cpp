#include "results/FolderNode.h"
#include "results/ResultTree.h"

#include "results/TreeLock.h"
#include <Qt>

FolderNode::~FolderNode()
{
    qDeleteAll(files);
    qDeleteAll(children);
}

namespace {
// Below this many children a look along the list is as quick as a hash.
constexpr int kIndexFrom = 16;
} // namespace

FolderNode* FolderNode::findChild(const QString& childName) const
{
    if (m_childIndex && m_childIndex->covered == children.size())
        return m_childIndex->byName.value(childName);
    for (FolderNode* c : children) {
        if (c->name == childName)
            return c;
    }
    return nullptr;
}

FolderNode* FolderNode::addChild(const QString& childName, int childPartIndex, bool childNtfs)
{
    auto* child = new FolderNode;
    child->parent = this;
    child->name = childName;
    child->partIndex = childPartIndex;
    child->ntfs = childNtfs;
    child->tree = tree;
    // What the scan adds later follows a whole choice; a partial one stays as the user made it.
    child->checkState = checkState == Qt::Checked ? Qt::Checked : Qt::Unchecked;
    TreeLock::Write lock(ResultTree::lockOf(this));
    children.append(child);
    if (!m_childIndex && children.size() >= kIndexFrom)
        m_childIndex = std::make_shared<ChildIndex>();
    for (; m_childIndex && m_childIndex->covered < children.size(); ++m_childIndex->covered) {
        FolderNode* c = children.at(m_childIndex->covered);
        if (!m_childIndex->byName.contains(c->name))
            m_childIndex->byName.insert(c->name, c);
    }
    if (tree)
        tree->noteFolder();
    return child;
}

FolderNode* FolderNode::obtainChild(const QString& childName, int childPartIndex, bool childNtfs)
{
    if (FolderNode* existing = findChild(childName))
        return existing;
    return addChild(childName, childPartIndex, childNtfs);
}

void FolderNode::addFile(FoundFile* file)
{
    file->selected = checkState == Qt::Checked;
    TreeLock::Write lock(ResultTree::lockOf(this));
    if (tree)
        file->poolName(tree->names());
    files.append(file);
    if (tree)
        tree->noteFile(file->size);
}

void FolderNode::addFile(FoundFile* file, QStringView name)
{
    file->selected = checkState == Qt::Checked;
    TreeLock::Write lock(ResultTree::lockOf(this));
    file->setName(name, tree ? &tree->names() : nullptr);
    files.append(file);
    if (tree)
        tree->noteFile(file->size);
}
