#pragma once
#include <QtGlobal>
#include <cstddef>
#include <cstdint>

// The sizes an NTFS volume is built on, taken from its boot sector.
struct NtfsGeometry {
    quint32 sectorBytes = 512;
    quint32 clusterBytes = 4096;
    int clusterShift = 12;
    quint32 recordBytes = 1024;
    quint64 totalSectors = 0; // as the boot sector states it; 0 when absent
    quint64 mftLcn = 0;

    // Fills *out from the first sector of a volume. False when the sector does
    // not say "NTFS" (*signatureOk false) or states sizes no NTFS volume has.
    static bool parse(const uint8_t* sector, size_t size, NtfsGeometry* out, bool* signatureOk);

};
