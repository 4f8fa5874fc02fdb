#pragma once
#include <QByteArray>
#include <QString>

class QDataStream;
struct FolderNode;

// The result tree as bytes, for a saved scan: every folder below a root with
// its files, of every record type, in the order they hang there, so a tree
// read back lists exactly as the one written. The bytes come from a file the
// user may have kept for weeks or that a crash cut short: reading checks
// every count and length, and a stream that does not hold a whole tree is
// refused with a reason, never half read.
class SavedTree {
public:
    // What is below root (not root itself); with keepFolders >= 0 only that
    // many of root's first folders.
    static QByteArray write(const FolderNode* root, int keepFolders = -1);
    // Appends the saved folders and files below root, through the tree's
    // appends (so its counts follow). False with why when the bytes are not a
    // whole saved tree; root is then left as it was.
    static bool read(const QByteArray& bytes, FolderNode* root, QString* why);
    // Drops everything below root under its tree's write lock.
    static void clear(FolderNode* root);

    // Files in one folder, folders below one folder, runs or extents of one
    // file: far beyond what a scan makes, a bound on what a damaged file can ask for.
    static constexpr quint32 kMaxCount = quint32(1) << 24;
    // Folders nested deeper than this are damage: no path is that long.
    static constexpr int kMaxDepth = 4096;
};
