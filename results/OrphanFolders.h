#pragma once

struct FolderNode;

// The folders "孤立文件-00001", "孤立文件-00002", … below a volume folder: what
// was found without the folder it lay in goes there, a bounded number per folder.
class OrphanFolders {
public:
    // Keeps a folder's list short enough to browse.
    static constexpr int kEntriesPerFolder = 500;

    // Forgets the folders handed out so far, for a new tree.
    void reset();
    // The current folder below root, made when first asked for and replaced by
    // the next one when it holds kEntriesPerFolder entries.
    FolderNode* current(FolderNode* root, int partIndex, bool ntfs);
    // Takes the folder of the same name below root as the current one: for
    // folders handed out in another tree that root holds a copy of.
    void rebase(FolderNode* root);

private:
    FolderNode* m_folder = nullptr;
    int m_index = 1;
};
