#pragma once
#include <QList>
#include "results/NamePool.h"
#include "results/TreeLock.h"
#include <QString>
#include <atomic>

struct FolderNode;
class PartScan;

// One scan's results: the invisible top node the view's model starts from,
// the visible root below it, the lock that guards both, running counts, and
// for a disk search the scanners of the partitions it found.
//
// The scanner appends on its own thread; every append takes the write lock
// briefly (FolderNode::addChild, addFile), every reader of `children` or
// `files` on another thread holds the read lock. The counts are atomics read
// without the lock, so a progress line never walks the tree.
//
// The scanner owns the visible root and frees it with its folders; the tree
// must outlive the scanner (it frees the top node only).
class ResultTree {
public:
    ResultTree(const QString& rootName, bool ntfs);
    ~ResultTree();
    ResultTree(const ResultTree&) = delete;
    ResultTree& operator=(const ResultTree&) = delete;

    FolderNode* top() const { return m_top; }
    FolderNode* root() const { return m_root; }
    TreeLock* lock() { return &m_lock; }
    // The names of the files in the tree; added to under the write lock.
    NamePool& names() { return m_names; }

    // The tree a folder hangs in, or null for a folder made on its own (tests).
    static ResultTree* of(const FolderNode* folder);
    // That tree's lock, or null: its guards take null as "no lock".
    static TreeLock* lockOf(const FolderNode* folder);

    quint64 files() const { return m_files.load(std::memory_order_relaxed); }
    quint64 bytes() const { return m_bytes.load(std::memory_order_relaxed); }
    quint64 folders() const { return m_folders.load(std::memory_order_relaxed); }
    // Called under the write lock as a file or a folder is appended.
    void noteFile(quint64 size);
    void noteFolder();

    // Partition scanners of a disk search, in the order they were built. The
    // search appends; previews read on the window's thread meanwhile.
    void addPart(PartScan* scanner);
    PartScan* part(int index) const; // null when there is no such partition
    int partCount() const;
    QList<PartScan*> parts() const;  // a snapshot
    // Hands the list to the disk search that frees the scanners; empties it.
    QList<PartScan*> takeParts();

private:
    mutable TreeLock m_lock;
    NamePool m_names; // before the nodes: the files' names outlive the files
    FolderNode* m_top;
    FolderNode* m_root;
    std::atomic<quint64> m_files{0};
    std::atomic<quint64> m_bytes{0};
    std::atomic<quint64> m_folders{0};
    QList<PartScan*> m_parts;
};
