#pragma once
#include "fat32/Fat32BootSector.h"
#include "scan/PartScan.h"

#include <QStringList>
#include <functional>
#include <memory>

class Fat32Table;
class Fat32LongName;
struct Fat32DirEntry;
struct Fat32File;

// The scanner of one FAT32 volume: a drive letter, or a partition on a disk at
// a byte offset. A scan walks the directory tree from the root, breadth first,
// through live and deleted directories, and lists every deleted file it meets.
class Fat32VolumeScan : public PartScan {
    Q_OBJECT
public:
    explicit Fat32VolumeScan(const QString& deviceName, QObject* parent = nullptr);
    Fat32VolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~Fat32VolumeScan() override;

    quint64 fileContent(char* buffer, FoundFile* record) override;
    void undelete(QString targetDir) override;
    void setRunning(bool running) override;
    void stop() override;
    void parseBootSector() override;

    // The boot sector checks the constructor ends the program on, made without
    // ending it: true when a scanner can be built on handle at partOffset.
    static bool canOpen(const DeviceHandle& handle, quint64 partOffset);

    // Device position of a data cluster; false for clusters 0 and 1 and for
    // positions beyond 64 bits.
    bool clusterPosition(quint32 cluster, quint64* position) const;

    // Geometry from the boot sector, fixed from construction on; byte figures
    // are from the start of the volume.
    quint8 fatCount = 0;
    quint32 clusterBytes = 0;
    quint32 clusterShift = 0;
    quint64 fatBytes = 0;
    quint64 fatOffset = 0;
    quint64 dataOffset = 0; // cluster 2
    quint32 rootCluster = 0;
    quint64 volumeBytes = 0;

protected:
    void run() override;

private:
    struct Directory {
        QStringList path; // components below the volume folder
        quint32 firstCluster = 0;
        bool deleted = false;
        bool root = false;
        FolderNode* folder = nullptr; // made when its first file is filed
    };
    struct Walk;

    // The device's bytes from the volume's start: all a volume here can hold.
    quint64 bytesFromVolumeStart() const;
    quint64 fatEntriesToLoad() const;
    void loadFat();
    void readDirectory(Walk& walk, Directory& dir);
    bool readEntries(Walk& walk, Directory& dir, const uchar* data, qint64 bytes);
    void takeEntry(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name);
    bool countEntry(Walk& walk);
    void fileDeleted(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name);
    FolderNode* folderOf(Directory& dir);
    void carvingPass(quint64* running, quint64* results, quint64* totalSize);

    using SpanVisitor = std::function<void(quint64 position, quint64 bytes, quint64 fileOffset)>;
    void forEachSpan(const Fat32File* file, const SpanVisitor& visit) const;
    RestoreFailure writeContent(Fat32File* file, RestoreSink& sink);

    Fat32BootSector boot;
    // The first FAT, in memory from the start of a scan to its end (carving included).
    std::unique_ptr<Fat32Table> fat;
};
