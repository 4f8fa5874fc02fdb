#pragma once
#include <QtGlobal>

// The geometry of a FAT32 volume as its boot sector gives it. Figures are in
// bytes from the start of the volume; the sector is 512 bytes whatever the
// boot sector says about it.
struct Fat32BootSector {
    static constexpr quint32 kSectorBytes = 512;

    quint8 fatCount = 0;
    quint32 clusterBytes = 0;
    quint32 clusterShift = 0;
    quint64 fatBytes = 0;    // one FAT
    quint64 fatOffset = 0;   // first FAT
    quint64 dataOffset = 0;  // cluster 2
    quint32 rootCluster = 0;
    quint64 volumeBytes = 0;

    // Reads the first sector of a volume. False when it isn't FAT32 or its
    // figures can't describe a volume (cluster size not a power of two, no FAT,
    // no reserved area).
    static bool parse(const void* sector, size_t size, Fat32BootSector* out);

    // Entries of the first FAT worth loading: no more than the FAT holds, than
    // the volume has clusters, or than a 28-bit cluster number can address.
    quint64 usableFatEntries(quint64 deviceBytesFromVolume) const;
};
