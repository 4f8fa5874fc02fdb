#pragma once
#include <QtGlobal>

// The geometry of a FAT volume as its boot sector gives it. Figures are in
// bytes from the start of the volume. A FAT32 volume is read with sectors of
// 512 bytes whatever its boot sector says; FAT12 and FAT16 take theirs from it.
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
    int fatBits = 32;         // 12, 16 or 32: the width of a FAT entry
    quint64 rootDirOffset = 0; // FAT12/16: the fixed root directory region
    quint64 rootDirBytes = 0;  // 0 on FAT32, whose root is a cluster chain

    // "FAT12", "FAT16" or "FAT32".
    const char* typeName() const;

    // Reads the first sector of a volume. False when it isn't FAT32 or its
    // figures can't describe a volume (cluster size not a power of two, no FAT,
    // no reserved area).
    static bool parse(const void* sector, size_t size, Fat32BootSector* out);
    // Any FAT volume. A boot sector with a 16-bit FAT size is FAT12 or FAT16,
    // told apart by its cluster count as the format defines it (the type text
    // is only a label); one without is FAT32, checked as parse() does.
    static bool parseAny(const void* sector, size_t size, Fat32BootSector* out);

    // Entries of the first FAT worth loading: no more than the FAT holds, than
    // the volume has clusters, or than its cluster numbers can address.
    quint64 usableFatEntries(quint64 deviceBytesFromVolume) const;
};
