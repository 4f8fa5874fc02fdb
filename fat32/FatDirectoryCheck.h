#pragma once
#include <QtGlobal>
#include <cstddef>

// Tells directory clusters from other data where no chain says what a cluster
// holds: the later clusters of a deleted folder, folders found in free space.
// An entry passes when every field a file system writes could have been
// written so: attribute bits, name characters, cluster number, stamps.
class FatDirectoryCheck {
public:
    // Whether the 32-byte entry at entry could stand in a directory of a
    // volume whose FAT has clusterCount entries.
    static bool plausibleEntry(const uchar* entry, quint64 clusterCount);
    // The short entries (dot entries included) before the cluster's end mark,
    // or -1 when an entry before it does not pass.
    static int shortEntries(const uchar* data, size_t bytes, quint64 clusterCount);
    // A folder's first cluster: its "." entry names the cluster itself, ".."
    // follows, and every entry passes.
    static bool isFolderStart(const uchar* data, size_t bytes, quint32 cluster, quint64 clusterCount);
    // A later cluster of a folder: entries that pass, and not another folder's start.
    static bool isFolderContinuation(const uchar* data, size_t bytes, quint64 clusterCount);
    // The first cluster ".." names: the parent's, 0 for the root.
    static quint32 parentCluster(const uchar* folderStart);
};
