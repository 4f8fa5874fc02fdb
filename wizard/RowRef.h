#pragma once

class QListWidgetItem;
class QTreeWidgetItem;
struct FolderNode;
struct FoundFile;

// What a row of Step 3's file lists points at: the record, its folder and the
// folder's partition. The pointers are kept at full width; they stay valid as
// long as the scanner that owns the tree.
struct RowRef {
    FoundFile* file = nullptr;
    FolderNode* folder = nullptr;
    int partIndex = 0;

    static constexpr int FileRole = 32;   // Qt::UserRole
    static constexpr int FolderRole = 33; // Qt::UserRole + 1
    static constexpr int PartRole = 34;   // Qt::UserRole + 2

    void storeIn(QTreeWidgetItem* item) const;
    void storeIn(QListWidgetItem* item) const;
    static RowRef of(const QTreeWidgetItem* item);
    static RowRef of(const QListWidgetItem* item);
};
