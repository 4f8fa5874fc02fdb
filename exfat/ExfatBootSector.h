#pragma once
#include <QtGlobal>
#include <functional>

// The geometry of an exFAT volume from its boot region. Figures are in bytes
// from the start of the volume and clamped to what the volume can hold.
struct ExfatBootSector {
    // A boot region is 12 sectors: the boot sector, 8 extended boot sectors,
    // the OEM parameters, a reserved sector and the checksum sector. The backup
    // region follows it.
    static constexpr int kRegionSectors = 12;
    static constexpr int kChecksumSector = 11;
    static constexpr int kMinSectorShift = 9;
    static constexpr int kMaxSectorShift = 12;
    static constexpr quint32 kFirstDataCluster = 2;

    quint32 sectorShift = 0;
    quint32 clusterShift = 0;  // bytes per cluster, as a power of two
    quint64 fatOffset = 0;     // the first FAT
    quint64 fatBytes = 0;      // one FAT
    quint64 heapOffset = 0;    // cluster 2
    quint32 clusterCount = 0;  // clusters in the heap, clamped to the volume and the FAT
    quint32 rootCluster = 0;
    quint64 volumeBytes = 0;
    bool fromBackup = false;   // the main region failed its checksum

    quint32 clusterBytes() const { return 1u << clusterShift; }
    // Cluster numbers are valid from 2 to clusterCount + 1.
    bool isCluster(quint64 cluster) const
    {
        return cluster >= kFirstDataCluster && cluster < quint64(clusterCount) + kFirstDataCluster;
    }
    // Byte offset of a cluster from the start of the volume (valid clusters only).
    quint64 clusterOffset(quint32 cluster) const
    {
        return heapOffset + (quint64(cluster - kFirstDataCluster) << clusterShift);
    }

    // Decodes the boot sector alone, without the checksum. False when it isn't
    // exFAT or its figures can't describe a volume. deviceBytes bounds the
    // volume: figures behind the end of the device are clamped to it.
    static bool parse(const void* sector, size_t size, quint64 deviceBytes, ExfatBootSector* out);

    // The checksum of a boot region's first 11 sectors, which skips the volume
    // flags and the percent-in-use that change while the volume is mounted.
    static quint32 regionChecksum(const uchar* region, size_t sectorBytes);
    // Whether a region of 12 sectors carries its own checksum in its last sector.
    static bool regionIsIntact(const uchar* region, size_t sectorBytes);

    // Reads at a byte offset of the volume: bytes read, possibly short, or -1.
    using ReadAt = std::function<qint64(void* buffer, quint64 bytes, quint64 offset)>;
    // Opens the volume from its main boot region, or from the backup region when
    // the main one fails its checksum. False when neither region holds.
    static bool locate(const ReadAt& read, quint64 deviceBytes, ExfatBootSector* out);
};
