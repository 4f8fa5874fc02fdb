#include "fat32/Fat32BootSector.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kBytesPerSector = 0x0B;
constexpr size_t kSectorsPerCluster = 0x0D;
constexpr size_t kReservedSectors = 0x0E;
constexpr size_t kFatCount = 0x10;
constexpr size_t kRootEntries = 0x11;
constexpr size_t kTotalSectors16 = 0x13;
constexpr size_t kSectorsPerFat16 = 0x16;
constexpr size_t kSignature = 0x1FE;
constexpr quint16 kSignatureValue = 0xAA55;
constexpr size_t kTotalSectors32 = 0x20;
constexpr size_t kSectorsPerFat32 = 0x24;
constexpr size_t kRootCluster = 0x2C;
// FAT32 keeps one or two FATs in practice; more is not a FAT32 boot sector.
constexpr quint8 kMaxFatCopies = 2;
constexpr size_t kTypeText = 0x52;
constexpr char kFat32Text[] = "FAT32";
constexpr size_t kFat32TextLength = 5;

// Cluster numbers are 28 bits; the top values are marks, not clusters.
constexpr quint64 kMaxFatEntries = 0x0FFFFFF7;
constexpr quint64 kFatEntryBytes = 4;
// Below this cluster count a volume is FAT12, not FAT16: the format's own rule.
constexpr quint64 kFat16MinClusters = 4085;
// 12- and 16-bit cluster numbers end below their marks (0xFF7, 0xFFF7).
constexpr quint64 kMaxFat12Entries = 0xFF7;
constexpr quint64 kMaxFat16Entries = 0xFFF7;
constexpr quint32 kDirEntryBytes = 32;
constexpr quint32 kMinSectorBytes = 512;
constexpr quint32 kMaxSectorBytes = 4096;

quint32 trailingZeros(quint32 v)
{
    quint32 n = 0;
    while (n < 32 && !(v & (1u << n)))
        ++n;
    return n;
}
} // namespace

namespace {
// The fields only FAT32 sets this way: 512-byte sectors, no fixed root
// folder, no 16-bit FAT size, one or two FATs, and the 55 AA mark. They make
// the volume, where the "FAT32   " text is only a label.
bool fat32Geometry(LeReader& r)
{
    const quint8 fats = r.u8(kFatCount);
    return r.u16(kBytesPerSector) == Fat32BootSector::kSectorBytes && r.u16(kRootEntries) == 0
        && r.u16(kSectorsPerFat16) == 0 && fats >= 1 && fats <= kMaxFatCopies && r.u32(kSectorsPerFat32) != 0
        && r.u16(kSignature) == kSignatureValue && r.ok();
}
} // namespace

bool Fat32BootSector::parse(const void* sector, size_t size, Fat32BootSector* out)
{
    LeReader r(sector, size);
    if (!r.matches(kTypeText, kFat32Text, kFat32TextLength) && !fat32Geometry(r))
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

const char* Fat32BootSector::typeName() const
{
    return fatBits == 12 ? "FAT12" : fatBits == 16 ? "FAT16" : "FAT32";
}

bool Fat32BootSector::parseAny(const void* sector, size_t size, Fat32BootSector* out)
{
    LeReader r(sector, size);
    const quint32 sectorsPerFat = r.u16(kSectorsPerFat16);
    if (!r.ok())
        return false;
    if (sectorsPerFat == 0)
        return parse(sector, size, out);
    const quint32 sectorBytes = r.u16(kBytesPerSector);
    const quint8 sectorsPerCluster = r.u8(kSectorsPerCluster);
    const quint32 reserved = r.u16(kReservedSectors);
    const quint32 rootEntries = r.u16(kRootEntries);
    const quint16 total16 = r.u16(kTotalSectors16);
    const quint64 totalSectors = total16 ? total16 : r.u32(kTotalSectors32);
    Fat32BootSector g;
    g.fatCount = r.u8(kFatCount);
    if (!r.ok() || r.u16(kSignature) != kSignatureValue || !checked::isPowerOfTwo(sectorBytes)
        || sectorBytes < kMinSectorBytes || sectorBytes > kMaxSectorBytes || !checked::isPowerOfTwo(sectorsPerCluster)
        || reserved == 0 || g.fatCount == 0 || rootEntries == 0)
        return false;
    // All figures are 16- and 8-bit counts of sectors of at most 4 KiB: no product leaves 64 bits.
    g.clusterBytes = quint32(sectorsPerCluster) * sectorBytes;
    g.clusterShift = trailingZeros(g.clusterBytes);
    g.fatBytes = quint64(sectorsPerFat) * sectorBytes;
    g.fatOffset = quint64(reserved) * sectorBytes;
    g.rootDirOffset = g.fatOffset + g.fatCount * g.fatBytes;
    g.rootDirBytes = quint64(rootEntries) * kDirEntryBytes;
    const quint64 rootSectors = (g.rootDirBytes + sectorBytes - 1) / sectorBytes;
    g.dataOffset = g.rootDirOffset + rootSectors * sectorBytes;
    g.volumeBytes = totalSectors * sectorBytes;
    if (g.volumeBytes <= g.dataOffset)
        return false;
    const quint64 clusters = (g.volumeBytes - g.dataOffset) >> g.clusterShift;
    // From 65525 clusters on the format says FAT32, which a 16-bit FAT size
    // contradicts: that is damage, read as FAT16 with 16-bit cluster numbers.
    g.fatBits = clusters < kFat16MinClusters ? 12 : 16;
    *out = g;
    return true;
}

quint64 Fat32BootSector::usableFatEntries(quint64 deviceBytesFromVolume) const
{
    const quint64 bitsLimit = fatBits == 12 ? kMaxFat12Entries : fatBits == 16 ? kMaxFat16Entries : kMaxFatEntries;
    quint64 entries = qMin(fatBytes * 8 / quint64(fatBits), bitsLimit);
    // A wild FAT size must not size the table beyond what the volume can hold.
    const quint64 volumeEnd = qMin(volumeBytes ? volumeBytes : deviceBytesFromVolume, deviceBytesFromVolume);
    if (volumeEnd > dataOffset)
        entries = qMin(entries, ((volumeEnd - dataOffset) >> clusterShift) + 2);
    else
        entries = qMin(entries, quint64(2));
    return entries;
}
