#pragma once
#include "diskscan/VolumeCandidate.h"
#include "scan/device/DeviceHandle.h"

// Finds the copies file systems keep of their boot sector, for a volume whose
// first sector is broken: NTFS in the volume's last sector, FAT32 in sector 6
// (as its BPB says), exFAT a whole boot region from sector 12. Opening the
// volume through withBootSector() then gives its scanner the backup's geometry.
class BackupBootLocator {
public:
    // The NTFS backup boot sector of the volume at volumeStart that is
    // volumeBytes long (a partition entry's length, or the rest of the
    // device); empty when that sector is no NTFS boot sector that fits.
    static QByteArray ntfsBackup(const DeviceHandle& device, quint64 volumeStart, quint64 volumeBytes);

    // The backup that names a volume at volumeStart: NTFS's at its end, then
    // FAT32's and exFAT's near its start. Invalid when none is there.
    static VolumeCandidate find(const DeviceHandle& device, quint64 volumeStart, quint64 volumeBytes);

    // A handle on device on which the volume at volumeStart has boot as its first sector.
    static DeviceHandle withBootSector(const DeviceHandle& device, quint64 volumeStart, const QByteArray& boot);

    // The device as a scanner should open the volume at volumeStart: itself
    // when the first sector is a boot sector, else patched with the backup
    // found; *usedBackup tells which.
    static DeviceHandle repaired(const DeviceHandle& device, quint64 volumeStart, quint64 volumeBytes, bool* usedBackup);
};
