#pragma once
#include <QString>

struct FolderNode;

// The two nodes a scan's result tree hangs from: the visible root, which the
// scanner owns and frees with its tree, and the invisible top node above it,
// which the view's model starts from and which this object owns.
class ScanRoot {
public:
    ScanRoot(const QString& name, bool ntfs);
    // Frees the top node only; the scanner must be gone first.
    ~ScanRoot();
    ScanRoot(const ScanRoot&) = delete;
    ScanRoot& operator=(const ScanRoot&) = delete;

    FolderNode* top;
    FolderNode* root;
};
