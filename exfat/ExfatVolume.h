#pragma once
#include "exfat/ExfatBitmap.h"
#include "exfat/ExfatBootSector.h"
#include "exfat/ExfatEntrySet.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QStringList>
#include <functional>
#include <memory>

class Fat32Table;

// A run of consecutive clusters of a file's content.
struct ExfatClusterRun {
    quint32 first = 0;
    quint32 count = 0;
};

// The metadata of one exFAT volume during a scan: its FAT and allocation
// bitmap in memory, and the walk through its directory tree, live and
// deleted. Every read goes through the ReadAt it is given, at volume offsets.
class ExfatVolume {
public:
    using ReadAt = ExfatBootSector::ReadAt;
    // Receives each deleted file (and each file below a deleted folder) with
    // the folder path it lies in; returns false to end the walk.
    using FileVisitor = std::function<bool(const QStringList& folder, const ExfatEntrySet& file)>;
    // Called after each entry set of every folder with the running count of
    // sets; returns false to end the walk.
    using Progress = std::function<bool(quint64 setsRead)>;

    ExfatVolume(const ExfatBootSector& boot, ReadAt read);
    ~ExfatVolume();

    const ExfatBootSector& boot() const { return m_boot; }
    const ExfatBitmap& bitmap() const { return m_bitmap; }

    // Reads the first FAT and, from the root directory, the allocation bitmap.
    void load();
    // Walks the tree from the root, breadth first. False when the visitor stopped it.
    bool walk(const FileVisitor& visit, const Progress& progress);
    // Directory sets that failed their checks, over the whole walk.
    int corruptSets() const { return m_corruptSets; }

    // Where a set's content lies, in file order, up to its data length: one
    // run for a NoFatChain set, else the FAT chain. A chain that ends early
    // goes on over the clusters behind its last one, as a contiguous file
    // would (a folder's chain, without a stream entry, doesn't); nothing
    // reaches beyond the heap.
    QList<ExfatClusterRun> clusterRuns(const ExfatEntrySet& set, bool extendShortChain = true) const;

private:
    struct Directory {
        QStringList path;
        ExfatEntrySet set; // the root's is made up from the boot sector
        bool deleted = false;
        bool root = false;
    };

    QByteArray readContent(const ExfatEntrySet& set, bool extendShortChain) const;
    ExfatEntrySet rootSet() const;
    void loadBitmap(const QByteArray& root, quint64 rootBytes);
    bool visitDirectory(const Directory& dir, QList<Directory>* queue, const FileVisitor& visit, const Progress& progress);

    ExfatBootSector m_boot;
    ReadAt m_read;
    std::unique_ptr<Fat32Table> m_fat;
    ExfatBitmap m_bitmap;
    QSet<quint32> m_directoriesRead; // first clusters: a loop of folders is read once
    int m_corruptSets = 0;
    quint64 m_setsRead = 0;
};
