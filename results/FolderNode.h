#pragma once
#include "results/FoundFile.h"

#include <QHash>
#include <QList>
#include <QString>
#include <memory>

class ResultTree;

// A folder of the result tree. Folders are made while a found file's path is
// walked; they are appended to and never shrunk while a scan runs.
struct FolderNode {
    ~FolderNode(); // frees the files and the folders below

    QList<FolderNode*> children;
    FolderNode* parent = nullptr;
    QString name;
    QList<FoundFile*> files;
    bool expanded = false;
    bool ntfs = true;   // files are NtfsFile (true) or Fat32File (false)
    int checkState = 2; // Qt::CheckState: 0 unchecked, 1 partly, 2 checked
    int partIndex = 0;
    ResultTree* tree = nullptr; // the scan's tree it hangs in; children inherit it

    // The child of exactly that name (case-sensitive), or null. Called on the
    // scan thread, which is the only writer, or under the read lock.
    FolderNode* findChild(const QString& childName) const;

    // Appends a new child under the tree's write lock, counted in the tree.
    FolderNode* addChild(const QString& childName, int childPartIndex, bool childNtfs);
    // findChild, else addChild.
    FolderNode* obtainChild(const QString& childName, int childPartIndex, bool childNtfs);
    // Appends a finished record under the tree's write lock, counted in the
    // tree by its size, which is final by then; the folder owns it. Its name
    // moves into the tree's pool, or with name given is set there.
    void addFile(FoundFile* file);
    void addFile(FoundFile* file, QStringView name);

    // Entries directly below: folders plus files.
    int directCount() const { return int(children.size() + files.size()); }

private:
    // Children by name once a folder has many: kept by addChild, trusted
    // while it covers every child (code that appends to children itself
    // falls back to the look along the list).
    struct ChildIndex {
        QHash<QString, FolderNode*> byName; // the first child of each name
        qsizetype covered = 0;              // children[0, covered) are in it
    };
    std::shared_ptr<ChildIndex> m_childIndex; // shared by a copy, as the children are
};
