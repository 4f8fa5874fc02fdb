#include "exfat/ExfatBootSector.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

#include <QByteArray>

namespace {
constexpr size_t kFileSystemName = 0x03;
constexpr char kExfatName[] = "EXFAT   ";
constexpr size_t kExfatNameLength = 8;
// FAT's BIOS parameter block lies here; exFAT keeps it zero so FAT code can't mistake it.
constexpr size_t kMustBeZero = 0x0B;
constexpr size_t kMustBeZeroLength = 53;
constexpr size_t kVolumeLength = 0x48;
constexpr size_t kFatOffset = 0x50;
constexpr size_t kFatLength = 0x54;
constexpr size_t kHeapOffset = 0x58;
constexpr size_t kClusterCount = 0x5C;
constexpr size_t kRootCluster = 0x60;
constexpr size_t kVolumeFlags = 0x6A; // two bytes, left out of the checksum
constexpr size_t kSectorShift = 0x6C;
constexpr size_t kClusterShiftField = 0x6D;
constexpr size_t kFatCount = 0x6E;
constexpr size_t kPercentInUse = 0x70; // left out of the checksum
constexpr size_t kSignature = 0x1FE;
constexpr quint16 kSignatureValue = 0xAA55;
// Clusters are at most 32 MiB.
constexpr quint32 kMaxClusterShift = 25;
// The first region and its backup come before the FAT.
constexpr quint64 kMinFatOffsetSectors = 24;
// The highest cluster number the format allows is 0xFFFFFFF6; the FAT
// walker shared with FAT32 takes 28-bit numbers, which covers 8 TiB of 32 KiB clusters.
constexpr quint64 kMaxClusterCount = 0x0FFFFFF5;
constexpr quint64 kFatEntryBytes = 4;

bool zeroes(LeReader& r, size_t offset, size_t length)
{
    const uint8_t* p = r.bytes(offset, length);
    for (size_t i = 0; p && i < length; ++i) {
        if (p[i])
            return false;
    }
    return p != nullptr;
}

quint64 clampedClusterCount(const ExfatBootSector& g, quint64 stated, quint64 volumeEnd)
{
    quint64 count = qMin(stated, kMaxClusterCount);
    count = qMin(count, g.fatBytes / kFatEntryBytes - ExfatBootSector::kFirstDataCluster);
    const quint64 heapBytes = volumeEnd > g.heapOffset ? volumeEnd - g.heapOffset : 0;
    return qMin(count, heapBytes >> g.clusterShift);
}
} // namespace

bool ExfatBootSector::parse(const void* sector, size_t size, quint64 deviceBytes, ExfatBootSector* out)
{
    LeReader r(sector, size);
    if (!r.matches(kFileSystemName, kExfatName, kExfatNameLength) || !zeroes(r, kMustBeZero, kMustBeZeroLength)
        || r.u16(kSignature) != kSignatureValue)
        return false;
    ExfatBootSector g;
    g.sectorShift = r.u8(kSectorShift);
    const quint32 sectorsPerClusterShift = r.u8(kClusterShiftField);
    const quint8 fatCount = r.u8(kFatCount);
    if (!r.ok() || g.sectorShift < kMinSectorShift || g.sectorShift > kMaxSectorShift
        || sectorsPerClusterShift > kMaxClusterShift - g.sectorShift || fatCount < 1 || fatCount > 2)
        return false;
    g.clusterShift = g.sectorShift + sectorsPerClusterShift;
    // 32-bit sector counts shifted by at most 12 bits stay far inside 64 bits.
    g.fatOffset = quint64(r.u32(kFatOffset)) << g.sectorShift;
    g.fatBytes = quint64(r.u32(kFatLength)) << g.sectorShift;
    g.heapOffset = quint64(r.u32(kHeapOffset)) << g.sectorShift;
    g.volumeBytes = checked::mulSat(r.u64(kVolumeLength), quint64(1) << g.sectorShift);
    if (g.fatOffset < (kMinFatOffsetSectors << g.sectorShift) || g.fatBytes < kFatEntryBytes * 3
        || g.heapOffset < g.fatOffset + g.fatBytes * fatCount)
        return false;
    const quint64 volumeEnd = qMin(g.volumeBytes, deviceBytes);
    g.clusterCount = quint32(clampedClusterCount(g, r.u32(kClusterCount), volumeEnd));
    g.rootCluster = r.u32(kRootCluster);
    if (!r.ok() || !g.isCluster(g.rootCluster))
        return false;
    *out = g;
    return true;
}

quint32 ExfatBootSector::regionChecksum(const uchar* region, size_t sectorBytes)
{
    quint32 sum = 0;
    const size_t bytes = sectorBytes * kChecksumSector;
    for (size_t i = 0; i < bytes; ++i) {
        if (i == kVolumeFlags || i == kVolumeFlags + 1 || i == kPercentInUse)
            continue;
        sum = ((sum & 1) ? 0x80000000u : 0) + (sum >> 1) + region[i];
    }
    return sum;
}

bool ExfatBootSector::regionIsIntact(const uchar* region, size_t sectorBytes)
{
    const quint32 sum = regionChecksum(region, sectorBytes);
    LeReader r(region + sectorBytes * kChecksumSector, sectorBytes);
    // The checksum sector repeats the sum in every one of its four-byte words.
    for (size_t at = 0; at < sectorBytes; at += 4) {
        if (r.u32(at) != sum)
            return false;
    }
    return r.ok();
}

bool ExfatBootSector::locate(const ReadAt& read, quint64 deviceBytes, ExfatBootSector* out)
{
    const size_t regionMax = size_t(kRegionSectors) << kMaxSectorShift;
    QByteArray region(int(regionMax), '\0');
    auto* data = reinterpret_cast<uchar*>(region.data());
    // The main region, then the backup 12 sectors in, for each sector size.
    constexpr int kBackupShifts[] = {0, 9, 10, 11, 12};
    for (int backupShift : kBackupShifts) {
        const quint64 at = backupShift ? quint64(kRegionSectors) << backupShift : 0;
        region.fill('\0');
        if (read(data, regionMax, at) < qint64(kRegionSectors) << kMinSectorShift)
            continue;
        ExfatBootSector g;
        if (!parse(data, regionMax, deviceBytes, &g) || (backupShift && quint32(backupShift) != g.sectorShift))
            continue;
        if (!regionIsIntact(data, size_t(1) << g.sectorShift))
            continue;
        g.fromBackup = backupShift != 0;
        *out = g;
        return true;
    }
    return false;
}
