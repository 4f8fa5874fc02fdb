#include "fat32/Fat32BootSector.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kSectorsPerCluster = 0x0D;
constexpr size_t kReservedSectors = 0x0E;
constexpr size_t kFatCount = 0x10;
constexpr size_t kTotalSectors32 = 0x20;
constexpr size_t kSectorsPerFat32 = 0x24;
constexpr size_t kRootCluster = 0x2C;
constexpr size_t kTypeText = 0x52;
constexpr char kFat32Text[] = "FAT32";
constexpr size_t kFat32TextLength = 5;

// Cluster numbers are 28 bits; the top values are marks, not clusters.
constexpr quint64 kMaxFatEntries = 0x0FFFFFF7;
constexpr quint64 kFatEntryBytes = 4;

quint32 trailingZeros(quint32 v)
{
    quint32 n = 0;
    while (n < 32 && !(v & (1u << n)))
        ++n;
    return n;
}
} // namespace

bool Fat32BootSector::parse(const void* sector, size_t size, Fat32BootSector* out)
{
    LeReader r(sector, size);
    if (!r.matches(kTypeText, kFat32Text, kFat32TextLength))
        return false;
    const quint8 sectorsPerCluster = r.u8(kSectorsPerCluster);
    const quint16 reserved = r.u16(kReservedSectors);
    const quint32 sectorsPerFat = r.u32(kSectorsPerFat32);
    Fat32BootSector g;
    g.fatCount = r.u8(kFatCount);
    g.volumeBytes = quint64(r.u32(kTotalSectors32)) * kSectorBytes;
    g.rootCluster = r.u32(kRootCluster);
    if (!r.ok() || !checked::isPowerOfTwo(sectorsPerCluster) || reserved == 0 || sectorsPerFat == 0)
        return false;
    g.clusterBytes = quint32(sectorsPerCluster) * kSectorBytes;
    g.clusterShift = trailingZeros(g.clusterBytes);
    g.fatBytes = quint64(sectorsPerFat) * kSectorBytes;
    g.fatOffset = quint64(reserved) * kSectorBytes;
    // At most 255 FATs of at most 2 TiB each: this stays far inside 64 bits.
    g.dataOffset = g.fatOffset + g.fatCount * g.fatBytes;
    *out = g;
    return true;
}

quint64 Fat32BootSector::usableFatEntries(quint64 deviceBytesFromVolume) const
{
    quint64 entries = qMin(fatBytes / kFatEntryBytes, kMaxFatEntries);
    // A wild FAT size must not size the table beyond what the volume can hold.
    const quint64 volumeEnd = qMin(volumeBytes ? volumeBytes : deviceBytesFromVolume, deviceBytesFromVolume);
    if (volumeEnd > dataOffset)
        entries = qMin(entries, ((volumeEnd - dataOffset) >> clusterShift) + 2);
    else
        entries = qMin(entries, quint64(2));
    return entries;
}
