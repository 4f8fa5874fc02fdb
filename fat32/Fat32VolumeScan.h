#pragma once
#include "fat32/Fat32BootSector.h"
#include "fat32/Fat32LongName.h"
#include "fat32/FatFolderSearch.h"
#include "results/OrphanFolders.h"
#include "scan/VolumeScan.h"

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QStringList>
#include <memory>

class Fat32Table;
struct Fat32DirEntry;

// The scanner of one FAT32 volume: a drive letter, or a partition on a disk at
// a byte offset. A scan walks the directory tree from the root, breadth first,
// through live and deleted directories, and lists every deleted file it meets.
// Then one walk over the free clusters, the carving pass's in a format
// recovery, finds the folders no directory leads to any more (a deleted
// parent's cluster reused, a format); they hang below their parent where
// their ".." entry names a folder that was read, else below "孤立文件-NNNNN".
class Fat32VolumeScan : public VolumeScan {
    Q_OBJECT
public:
    explicit Fat32VolumeScan(const QString& deviceName, QObject* parent = nullptr);
    Fat32VolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~Fat32VolumeScan() override;

    void parseBootSector() override;
    bool extentsOf(const FoundFile& file, Extents* extents) const override;
    bool hasContent(const FoundFile& file) const override;

    // The boot sector checks the constructor ends the program on, made without
    // ending it: true when a scanner can be built on handle at partOffset.
    static bool canOpen(const DeviceHandle& handle, quint64 partOffset);

    // The geometry from the boot sector, fixed from construction on.
    const Fat32BootSector& geometry() const { return boot; }

protected:
    bool scanMetadata(ScanTotals& totals) override;
    quint64 progressTotal() const override;
    void carveFreeBlocks(const CarvingContext& context) override;
    void scanFinished() override;
    // The directory walk again, into a tree of its own that is then dropped:
    // it gives what the walk over free clusters needs. The folder search's
    // findings come from state.
    bool canResumeCarving() const override { return true; }
    bool prepareCarvingResume(const QByteArray& state) override;
    QByteArray carvingState() const override;

private:
    struct Directory {
        QStringList path; // components below the volume folder
        quint32 firstCluster = 0;
        bool deleted = false;
        bool root = false;
        bool lone = false;            // entries found in free space without their folder's start
        bool found = false;           // found in free space, or below such a folder: all of it is gone
        FolderNode* folder = nullptr; // made when its first file is filed
    };
    // A deleted folder whose last cluster read holds no end mark: its entries
    // go on in a cluster the search finds on its own, with the slots left over.
    struct OpenFolder {
        Directory dir;
        Fat32LongName pending;
    };
    struct Walk;
    Walk newWalk(ScanTotals& totals) const;

    // Volume byte offset of a data cluster; false for clusters 0 and 1 and
    // for offsets beyond 64 bits.
    bool clusterOffset(quint32 cluster, uint64_t* offset) const;
    // The device's bytes from the volume's start: all a volume here can hold.
    quint64 bytesFromVolumeStart() const;
    // The first FAT, loaded once and kept: content is worked out from it
    // after the scan too.
    const Fat32Table& table() const;
    // Reads one whole cluster; false when it can't.
    bool readCluster(quint32 cluster, uchar* buffer);
    FatFolderSearch::Geometry searchGeometry();
    bool drain(Walk& walk);
    void readDirectory(Walk& walk, Directory& dir);
    bool readChainCluster(Walk& walk, Directory& dir, quint32 cluster, bool first);
    void readFixedRoot(Walk& walk, Directory& dir);
    bool readEntries(Walk& walk, Directory& dir, const uchar* data, qint64 bytes);
    // longName: the name its slots gave, or empty for its short name.
    void takeEntry(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& longName);
    void fileDeleted(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name);
    FolderNode* folderOf(Directory& dir);
    // The walk over free clusters: the folder search, and with carve the carving.
    bool walkFreeClusters(const CarvingContext& context, bool carve);
    // Files what the folder search found, after the walk over free clusters.
    bool fileFoundFolders(ScanTotals& totals);
    bool fileFoundStart(Walk& walk, const FatFolderSearch::FolderStart& start, bool orphanIfUnplaced);
    bool fileLoneCluster(Walk& walk, quint32 cluster);
    void noteCarvedStarts();

    Fat32BootSector boot;
    mutable QMutex m_fatLock;
    mutable std::unique_ptr<Fat32Table> m_fat;
    // What one scan carries from the tree walk through the walk over free clusters.
    QSet<quint32> m_clustersRead;              // no directory cluster is read twice: chains can loop or merge
    QHash<quint32, QStringList> m_folderPaths; // each folder read, by its first cluster
    std::unique_ptr<FatFolderSearch> m_search;
    QSet<quint32> m_carvedStarts;              // a found name doesn't list these clusters' bytes twice
    std::map<quint32, OpenFolder> m_open;      // by the last cluster read
    OrphanFolders m_orphans;
};
