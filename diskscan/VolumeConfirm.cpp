#include "diskscan/VolumeConfirm.h"
#include "diskscan/BackupBootLocator.h"
#include "diskscan/BootSectorCandidates.h"
#include "ntfs/NtfsVolumeScan.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

#include <vector>

namespace {
constexpr quint64 kSector = BootSectorCandidates::kSectorBytes;
constexpr size_t kReservedSectors = 0x0E;
constexpr size_t kMedia = 0x15;
constexpr size_t kExfatHeapOffset = 0x58;
constexpr size_t kExfatClusterCount = 0x5C;
constexpr size_t kExfatRootCluster = 0x60;
constexpr size_t kExfatClusterShift = 0x6D;
constexpr quint32 kExfatFirstCluster = 2;
// The bitmap's entry is among the first of the root directory; one read of
// this much (or the cluster, if smaller) finds it.
constexpr quint64 kRootDirRead = 64 * 1024;
constexpr size_t kDirEntryBytes = 32;
constexpr quint8 kBitmapEntryType = 0x81;
constexpr size_t kBitmapFirstCluster = 20;
constexpr size_t kBitmapLength = 24;
} // namespace

DeviceHandle VolumeConfirm::scannerHandle(const DeviceHandle& disk, const VolumeCandidate& c)
{
    return c.fromBackup ? BackupBootLocator::withBootSector(disk, c.volumeStart, c.bootSector) : disk;
}

VolumeConfirm::Result VolumeConfirm::open(const DeviceHandle& disk, const VolumeCandidate& c)
{
    Result r;
    switch (c.kind) {
    case VolumeCandidate::Ntfs: r.opened = openNtfs(disk, c); break;
    case VolumeCandidate::Fat12:
    case VolumeCandidate::Fat16:
    case VolumeCandidate::Fat32: r.opened = openFat(disk, c); break;
    case VolumeCandidate::ExFat: r.opened = openExfat(disk, c); break;
    case VolumeCandidate::None: break;
    }
    const quint64 end = checked::addSat(c.volumeStart, c.statedBytes());
    if (r.opened && end <= disk.length() && endAttested(disk, c))
        r.trustedBytes = c.statedBytes();
    return r;
}

bool VolumeConfirm::endAttested(const DeviceHandle& disk, const VolumeCandidate& c)
{
    // NTFS's end is attested by the backup at its last sector (found there,
    // or the very sector that named the volume); the FAT family's extent by
    // a FAT sized for it, which the candidate test checked already.
    if (c.kind != VolumeCandidate::Ntfs || c.fromBackup)
        return true;
    return !BackupBootLocator::ntfsBackup(disk, c.volumeStart, c.statedBytes()).isEmpty();
}

bool VolumeConfirm::openNtfs(const DeviceHandle& disk, const VolumeCandidate& c)
{
    return NtfsVolumeScan::canOpen(scannerHandle(disk, c), c.volumeStart);
}

bool VolumeConfirm::openFat(const DeviceHandle& disk, const VolumeCandidate& c)
{
    LeReader boot(c.bootSector.constData(), size_t(c.bootSector.size()));
    const quint64 fatAt = checked::addSat(c.volumeStart, checked::mulSat(boot.u16(kReservedSectors), c.sectorBytes));
    const quint8 media = boot.u8(kMedia);
    uchar entry[4];
    // FAT[0] holds the media byte and ones above it; FAT[1]'s first byte is all ones too.
    return boot.ok() && disk.read(entry, sizeof entry, fatAt) == qint64(sizeof entry) && entry[0] == media
        && entry[1] == 0xFF;
}

bool VolumeConfirm::openExfat(const DeviceHandle& disk, const VolumeCandidate& c)
{
    std::vector<uchar> region(size_t(BootSectorCandidates::kExfatChecksumSector + 1) * c.sectorBytes);
    if (disk.read(region.data(), region.size(), c.bootOffset) != qint64(region.size())
        || !BootSectorCandidates::exfatChecksumOk(region.data(), region.size(), c.sectorBytes))
        return false;
    LeReader boot(c.bootSector.constData(), size_t(c.bootSector.size()));
    const quint64 heap = checked::mulSat(boot.u32(kExfatHeapOffset), c.sectorBytes);
    const quint64 clusters = boot.u32(kExfatClusterCount);
    const quint64 root = boot.u32(kExfatRootCluster);
    const int shift = boot.u8(kExfatClusterShift);
    const quint64 clusterBytes = quint64(c.sectorBytes) << shift;
    const quint64 rootAt = checked::addSat(checked::addSat(c.volumeStart, heap),
                                           checked::mulSat(root - kExfatFirstCluster, clusterBytes));
    std::vector<uchar> dir(size_t(qMin(clusterBytes, kRootDirRead)));
    if (!boot.ok() || root < kExfatFirstCluster || disk.read(dir.data(), dir.size(), rootAt) != qint64(dir.size()))
        return false;
    LeReader r(dir.data(), dir.size());
    for (size_t at = 0; at + kDirEntryBytes <= dir.size(); at += kDirEntryBytes) {
        if (r.u8(at) != kBitmapEntryType)
            continue;
        const quint64 first = r.u32(at + kBitmapFirstCluster);
        return first >= kExfatFirstCluster && first < clusters + kExfatFirstCluster
            && r.u64(at + kBitmapLength) >= (clusters + 7) / 8;
    }
    return false;
}
