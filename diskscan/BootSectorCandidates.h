#pragma once
#include "diskscan/VolumeCandidate.h"

#include <QList>
#include <cstddef>

// The test the disk search makes on every sector: is this the boot sector of
// an NTFS, FAT12/16/32 or exFAT volume, judged by the consistency of its
// fields rather than by any maker's text. One sector can name two volumes:
// the one starting at it, and, read as a backup copy, the one it belongs to
// (NTFS keeps the copy in its last sector, FAT32 in sector 6, exFAT a whole
// boot region from sector 12).
class BootSectorCandidates {
public:
    static constexpr size_t kSectorBytes = 512;

    // sector holds kSectorBytes bytes lying at diskOffset. The primary reading
    // comes first; a backup reading only where it names a start on the disk.
    static QList<VolumeCandidate> test(const uchar* sector, quint64 diskOffset);

    // The volume that starts at this sector, if its boot sector is consistent.
    static VolumeCandidate primary(const uchar* sector, quint64 diskOffset);
    // The volume this sector is the backup boot sector of, if any.
    static VolumeCandidate backup(const uchar* sector, quint64 diskOffset);

    // The exFAT boot region's checksum: sectors 0 to 10 (region holds them and
    // sector 11, each sectorBytes long) against the value sector 11 repeats.
    static bool exfatChecksumOk(const uchar* region, size_t bytes, quint32 sectorBytes);
    // The sector of a boot region the exFAT checksum sector lies in.
    static constexpr quint32 kExfatChecksumSector = 11;
    // Sectors from the volume's start to its FAT32 and exFAT backups.
    static constexpr quint32 kExfatBackupSector = 12;
};
