#pragma once
#include <QtGlobal>

// The test the disk search makes on every 512-byte sector: is this the boot
// sector of an NTFS or a FAT32 volume, and how long does it say the volume is.
class BootSectorProbe {
public:
    enum Kind { None, Ntfs, Fat32 };
    struct Result {
        bool ntfsCandidate = false;  // 55 AA and "NTFS" at offset 3
        quint64 ntfsSectors = 0;
        bool fat32Candidate = false; // 55 AA, "MSDOS5.0" and "FAT32" at 0x52
        quint64 fat32Sectors = 0;

        // NTFS wins; a candidate that states 0 sectors is no hit.
        Kind kind() const
        {
            if (ntfsCandidate && ntfsSectors != 0)
                return Ntfs;
            if (fat32Candidate && fat32Sectors != 0)
                return Fat32;
            return None;
        }
        quint64 totalSectors() const { return kind() == Ntfs ? ntfsSectors : fat32Sectors; }
    };
    static constexpr int kSectorBytes = 512;

    // sector points to kSectorBytes bytes.
    static Result test(const uchar* sector);
};
