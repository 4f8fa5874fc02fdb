#include "results/FolderNode.h"
#include "results/ResultTreeLock.h"

#include <QWriteLocker>

FolderNode::~FolderNode()
{
    qDeleteAll(files);
    qDeleteAll(children);
}

FolderNode* FolderNode::findChild(const QString& childName) const
{
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
    QWriteLocker lock(&ResultTreeLock::lock());
    children.append(child);
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
    QWriteLocker lock(&ResultTreeLock::lock());
    files.append(file);
}
