#pragma once
#include <QtGlobal>

// Turns a FAT of 12-, 16- or 32-bit entries into 32-bit entries with the
// FAT32 marks, so one chain walker serves every FAT type: the end marks of a
// narrow FAT become 0x0FFFFFFF and its bad-cluster mark 0x0FFFFFF7.
class FatEntryDecoder {
public:
    // Fills `count` entries of `out` from `rawBytes` bytes of the FAT as it
    // lies on disk; entries the bytes don't reach are 0 (free).
    static void decode(const uchar* raw, size_t rawBytes, int bits, quint32* out, quint64 count);
    // Entry n of the raw FAT, or 0 when it lies beyond the bytes given.
    static quint32 rawEntry(const uchar* raw, size_t rawBytes, int bits, quint64 n);
};
