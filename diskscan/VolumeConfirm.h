#pragma once
#include "diskscan/VolumeCandidate.h"
#include "scan/device/DeviceHandle.h"

// Opens what a boot sector names, to tell a volume from a stray copy or bytes
// that happen to look like a boot sector: NTFS by the first record of its MFT,
// FAT by the media byte its first FAT entry repeats, exFAT by its boot
// region's checksum and the allocation bitmap in its root directory.
class VolumeConfirm {
public:
    struct Result {
        bool opened = false;
        // How far behind the volume's start the search may go on: the stated
        // extent where both of its ends are attested and it lies on the disk,
        // else 0 and the search looks inside it too.
        quint64 trustedBytes = 0;
    };

    static Result open(const DeviceHandle& disk, const VolumeCandidate& candidate);
    // The disk as the volume's scanner sees it: a volume found by its backup
    // has the backup in its first sector.
    static DeviceHandle scannerHandle(const DeviceHandle& disk, const VolumeCandidate& candidate);

private:
    static bool openNtfs(const DeviceHandle& disk, const VolumeCandidate& c);
    static bool openFat(const DeviceHandle& disk, const VolumeCandidate& c);
    static bool openExfat(const DeviceHandle& disk, const VolumeCandidate& c);
    static bool endAttested(const DeviceHandle& disk, const VolumeCandidate& c);
};
