#include "diskscan/BackupBootLocator.h"
#include "diskscan/BootSectorCandidates.h"
#include "scan/CheckedMath.h"
#include "scan/device/PatchedSource.h"

namespace {
constexpr quint64 kSector = BootSectorCandidates::kSectorBytes;
// The sectors a FAT32 BPB may name for its backup lie in the reserved area;
// mkfs.fat and Windows use 6. The exFAT backup region always starts at 12.
constexpr quint64 kFat32BackupSector = 6;

VolumeCandidate readAt(const DeviceHandle& device, quint64 position, bool asBackup)
{
    uchar sector[kSector];
    if (device.read(sector, kSector, position) != qint64(kSector))
        return {};
    return asBackup ? BootSectorCandidates::backup(sector, position) : BootSectorCandidates::primary(sector, position);
}
} // namespace

QByteArray BackupBootLocator::ntfsBackup(const DeviceHandle& device, quint64 volumeStart, quint64 volumeBytes)
{
    const quint64 end = checked::addSat(volumeStart, qMin(volumeBytes, device.length() - qMin(volumeStart, device.length())));
    if (end < volumeStart + kSector)
        return {};
    const VolumeCandidate c = readAt(device, end - kSector, true);
    if (c.kind != VolumeCandidate::Ntfs || c.volumeStart != volumeStart)
        return {};
    return c.bootSector;
}

VolumeCandidate BackupBootLocator::find(const DeviceHandle& device, quint64 volumeStart, quint64 volumeBytes)
{
    const QByteArray ntfs = ntfsBackup(device, volumeStart, volumeBytes);
    if (!ntfs.isEmpty())
        return BootSectorCandidates::backup(reinterpret_cast<const uchar*>(ntfs.constData()),
                                            checked::addSat(volumeStart, volumeBytes) - kSector);
    for (quint64 sectorNumber : {kFat32BackupSector, quint64(BootSectorCandidates::kExfatBackupSector)}) {
        // A 4096-byte-sector volume keeps the copy 6 or 12 of its own sectors in.
        for (quint64 sectorBytes = kSector; sectorBytes <= 4096; sectorBytes *= 2) {
            const VolumeCandidate c = readAt(device, checked::addSat(volumeStart, sectorNumber * sectorBytes), true);
            if (c.isValid() && c.kind != VolumeCandidate::Ntfs && c.volumeStart == volumeStart)
                return c;
        }
    }
    return {};
}

DeviceHandle BackupBootLocator::withBootSector(const DeviceHandle& device, quint64 volumeStart, const QByteArray& boot)
{
    return PatchedSource::patch(device, volumeStart, boot);
}

DeviceHandle BackupBootLocator::repaired(const DeviceHandle& device, quint64 volumeStart, quint64 volumeBytes, bool* usedBackup)
{
    *usedBackup = false;
    if (readAt(device, volumeStart, false).isValid())
        return device;
    const VolumeCandidate backup = find(device, volumeStart, volumeBytes);
    if (!backup.isValid())
        return device;
    *usedBackup = true;
    return withBootSector(device, volumeStart, backup.bootSector);
}
