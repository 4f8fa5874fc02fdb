#include "diskscan/BootSectorCandidates.h"
#include "ntfs/NtfsGeometry.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kSignatureOffset = 0x1FE;
constexpr size_t kOemOffset = 3;
constexpr size_t kBytesPerSector = 0x0B;
constexpr size_t kSectorsPerCluster = 0x0D;
constexpr size_t kReservedSectors = 0x0E;
constexpr size_t kFatCount = 0x10;
constexpr size_t kRootEntries = 0x11;
constexpr size_t kTotalSectors16 = 0x13;
constexpr size_t kMedia = 0x15;
constexpr size_t kFatSectors16 = 0x16;
constexpr size_t kTotalSectors32 = 0x20;
constexpr size_t kFatSectors32 = 0x24;
constexpr size_t kFat32BackupSector = 0x32;
constexpr size_t kNtfsTotalSectors = 0x28;

constexpr size_t kExfatZeroStart = 0x0B; // the BPB area a FAT driver would read; exFAT keeps it zero
constexpr size_t kExfatZeroEnd = 0x40;
constexpr size_t kExfatVolumeLength = 0x48;
constexpr size_t kExfatFatOffset = 0x50;
constexpr size_t kExfatFatLength = 0x54;
constexpr size_t kExfatHeapOffset = 0x58;
constexpr size_t kExfatClusterCount = 0x5C;
constexpr size_t kExfatRootCluster = 0x60;
constexpr size_t kExfatVolumeFlags = 0x6A;
constexpr size_t kExfatPercentInUse = 0x70;
constexpr size_t kExfatSectorShift = 0x6C;
constexpr size_t kExfatClusterShift = 0x6D;
constexpr size_t kExfatFatCount = 0x6E;

constexpr quint8 kJumpShort = 0xEB; // every FAT boot sector starts with a jump over its BPB
constexpr quint8 kJumpNear = 0xE9;
constexpr quint32 kMinSectorBytes = 512;
constexpr quint32 kMaxSectorBytes = 4096;
constexpr quint8 kOldestMedia = 0xF0; // media bytes are F0 or F8 to FF
constexpr quint8 kFixedMediaFloor = 0xF8;
constexpr quint32 kDirEntryBytes = 32;
// Cluster counts that decide between FAT12 and FAT16 (the published rule).
constexpr quint64 kFat12MaxClusters = 4084;
constexpr quint64 kFat16MaxClusters = 65524;
constexpr int kExfatMinSectorShift = 9;
constexpr int kExfatMaxSectorShift = 12;
constexpr int kExfatMaxClusterShift = 25; // clusters of at most 32 MiB
// The FAT starts behind the main and backup boot regions (24 sectors).
constexpr quint32 kExfatMinFatOffset = 24;

bool hasSignature(LeReader& r) { return r.u8(kSignatureOffset) == 0x55 && r.u8(kSignatureOffset + 1) == 0xAA; }

VolumeCandidate make(VolumeCandidate::Kind kind, const uchar* sector, quint64 at, quint64 sectors, quint32 sectorBytes)
{
    VolumeCandidate c;
    c.kind = kind;
    c.volumeStart = at;
    c.bootOffset = at;
    c.totalSectors = sectors;
    c.sectorBytes = sectorBytes;
    c.bootSector = QByteArray(reinterpret_cast<const char*>(sector), int(BootSectorCandidates::kSectorBytes));
    return c;
}

VolumeCandidate ntfs(const uchar* sector, quint64 at)
{
    LeReader r(sector, BootSectorCandidates::kSectorBytes);
    NtfsGeometry g;
    bool signature = false;
    if (!r.matches(kOemOffset, "NTFS    ", 8) || !NtfsGeometry::parse(sector, BootSectorCandidates::kSectorBytes, &g, &signature))
        return {};
    const quint64 sectors = r.u64(kNtfsTotalSectors);
    const quint64 clusterSectors = g.clusterBytes / g.sectorBytes;
    if (sectors == 0 || checked::mulSat(g.mftLcn, clusterSectors) >= sectors)
        return {};
    return make(VolumeCandidate::Ntfs, sector, at, sectors, g.sectorBytes);
}

VolumeCandidate fat(const uchar* sector, quint64 at)
{
    LeReader r(sector, BootSectorCandidates::kSectorBytes);
    const quint8 jump = r.u8(0);
    const quint32 bps = r.u16(kBytesPerSector);
    const quint32 spc = r.u8(kSectorsPerCluster);
    const quint32 reserved = r.u16(kReservedSectors);
    const quint32 fats = r.u8(kFatCount);
    const quint32 rootEntries = r.u16(kRootEntries);
    const quint8 media = r.u8(kMedia);
    const quint32 fat16 = r.u16(kFatSectors16);
    const quint32 total16 = r.u16(kTotalSectors16);
    const quint64 total = total16 ? total16 : r.u32(kTotalSectors32);
    const quint64 fatSectors = fat16 ? fat16 : r.u32(kFatSectors32);
    if ((jump != kJumpShort && jump != kJumpNear) || bps < kMinSectorBytes || bps > kMaxSectorBytes
        || !checked::isPowerOfTwo(bps) || !checked::isPowerOfTwo(spc) || reserved == 0 || fats < 1 || fats > 2
        || (media != kOldestMedia && media < kFixedMediaFloor) || total == 0 || fatSectors == 0)
        return {};
    // The FAT32 form of the BPB has no fixed root directory and no 16-bit FAT size.
    const bool fat32Form = fat16 == 0 && rootEntries == 0;
    if (!fat32Form && (fat16 == 0 || rootEntries == 0))
        return {};
    const quint64 rootSectors = (quint64(rootEntries) * kDirEntryBytes + bps - 1) / bps;
    const quint64 dataStart = reserved + fats * fatSectors + rootSectors;
    if (dataStart >= total)
        return {};
    const quint64 clusters = (total - dataStart) / spc;
    VolumeCandidate::Kind kind = VolumeCandidate::Fat32;
    quint64 entryBits = 32;
    if (!fat32Form) {
        kind = clusters <= kFat12MaxClusters ? VolumeCandidate::Fat12 : VolumeCandidate::Fat16;
        entryBits = kind == VolumeCandidate::Fat12 ? 12 : 16;
        if (clusters > kFat16MaxClusters)
            return {};
    }
    // The FAT must have an entry for every cluster.
    if (fatSectors * bps * 8 / entryBits < clusters + 2)
        return {};
    return make(kind, sector, at, total, bps);
}

VolumeCandidate exfat(const uchar* sector, quint64 at)
{
    LeReader r(sector, BootSectorCandidates::kSectorBytes);
    if (!r.matches(kOemOffset, "EXFAT   ", 8))
        return {};
    for (size_t i = kExfatZeroStart; i < kExfatZeroEnd; ++i) {
        if (r.u8(i) != 0)
            return {};
    }
    const int sectorShift = r.u8(kExfatSectorShift);
    const int clusterShift = r.u8(kExfatClusterShift);
    const quint32 fats = r.u8(kExfatFatCount);
    const quint64 length = r.u64(kExfatVolumeLength);
    const quint32 fatOffset = r.u32(kExfatFatOffset);
    const quint32 fatLength = r.u32(kExfatFatLength);
    const quint32 heap = r.u32(kExfatHeapOffset);
    const quint64 clusters = r.u32(kExfatClusterCount);
    const quint64 root = r.u32(kExfatRootCluster);
    if (sectorShift < kExfatMinSectorShift || sectorShift > kExfatMaxSectorShift
        || sectorShift + clusterShift > kExfatMaxClusterShift || fats < 1 || fats > 2 || fatOffset < kExfatMinFatOffset
        || quint64(fatOffset) + quint64(fatLength) * fats > heap || clusters == 0 || root < 2 || root >= clusters + 2
        || heap + (clusters << clusterShift) > length)
        return {};
    return make(VolumeCandidate::ExFat, sector, at, length, 1u << sectorShift);
}
} // namespace

quint64 VolumeCandidate::statedBytes() const
{
    return checked::mulSat(kind == Ntfs ? checked::addSat(totalSectors, 1) : totalSectors, sectorBytes);
}

QString VolumeCandidate::kindName(Kind kind)
{
    switch (kind) {
    case Ntfs: return QStringLiteral("NTFS");
    case Fat12: return QStringLiteral("FAT12");
    case Fat16: return QStringLiteral("FAT16");
    case Fat32: return QStringLiteral("FAT32");
    case ExFat: return QStringLiteral("exFAT");
    case None: break;
    }
    return {};
}

VolumeCandidate BootSectorCandidates::primary(const uchar* sector, quint64 diskOffset)
{
    LeReader r(sector, kSectorBytes);
    if (!hasSignature(r))
        return {};
    VolumeCandidate c = ntfs(sector, diskOffset);
    if (!c.isValid())
        c = exfat(sector, diskOffset);
    if (!c.isValid())
        c = fat(sector, diskOffset);
    return c;
}

VolumeCandidate BootSectorCandidates::backup(const uchar* sector, quint64 diskOffset)
{
    VolumeCandidate c = primary(sector, diskOffset);
    quint64 distance = 0;
    LeReader r(sector, kSectorBytes);
    if (c.kind == VolumeCandidate::Ntfs) {
        distance = checked::mulSat(c.totalSectors, c.sectorBytes);
    } else if (c.kind == VolumeCandidate::ExFat) {
        distance = quint64(kExfatBackupSector) * c.sectorBytes;
    } else if (c.kind == VolumeCandidate::Fat32) {
        // The copy lies where the BPB says, inside the reserved area.
        const quint32 backupSector = r.u16(kFat32BackupSector);
        if (backupSector == 0 || backupSector >= r.u16(kReservedSectors))
            return {};
        distance = quint64(backupSector) * c.sectorBytes;
    }
    if (distance == 0 || distance > diskOffset)
        return {};
    c.volumeStart = diskOffset - distance;
    c.fromBackup = true;
    return c;
}

QList<VolumeCandidate> BootSectorCandidates::test(const uchar* sector, quint64 diskOffset)
{
    QList<VolumeCandidate> out;
    // Nearly every sector ends without 55 AA: the one test most sectors need.
    if (sector[kSignatureOffset] != 0x55 || sector[kSignatureOffset + 1] != 0xAA)
        return out;
    const VolumeCandidate own = primary(sector, diskOffset);
    if (!own.isValid())
        return out;
    out.append(own);
    const VolumeCandidate copy = backup(sector, diskOffset);
    if (copy.isValid())
        out.append(copy);
    return out;
}

bool BootSectorCandidates::exfatChecksumOk(const uchar* region, size_t bytes, quint32 sectorBytes)
{
    // Bytes 106, 107 (volume flags) and 112 (percent in use) change while the
    // volume is used and are left out of the sum.
    const size_t summed = size_t(kExfatChecksumSector) * sectorBytes;
    LeReader r(region, bytes);
    if (!r.has(0, summed + sectorBytes))
        return false;
    quint32 sum = 0;
    for (size_t i = 0; i < summed; ++i) {
        if (i == kExfatVolumeFlags || i == kExfatVolumeFlags + 1 || i == kExfatPercentInUse)
            continue;
        sum = ((sum & 1) ? 0x80000000u : 0u) + (sum >> 1) + region[i];
    }
    for (size_t at = summed; at < summed + sectorBytes; at += 4) {
        if (r.u32(at) != sum)
            return false;
    }
    return true;
}
