#include "results/ScanRoot.h"
#include "results/FolderNode.h"

ScanRoot::ScanRoot(const QString& name, bool ntfs) : top(new FolderNode), root(new FolderNode)
{
    root->name = name;
    root->ntfs = ntfs;
    root->parent = top;
    top->children.append(root);
}

ScanRoot::~ScanRoot()
{
    // The visible root went with its scanner.
    top->children.clear();
    delete top;
}
