#include "fat32/FatEntryDecoder.h"
#include "scan/LeReader.h"

namespace {
constexpr quint32 kFat32Bad = 0x0FFFFFF7;
constexpr quint32 kFat32End = 0x0FFFFFFF;

// Marks sit at the top of a narrow entry's range: bad, then the end marks.
quint32 widen(quint32 v, int bits)
{
    if (bits == 32)
        return v;
    const quint32 bad = (1u << bits) - 9;
    if (v == bad)
        return kFat32Bad;
    return v > bad ? kFat32End : v;
}
} // namespace

quint32 FatEntryDecoder::rawEntry(const uchar* raw, size_t rawBytes, int bits, quint64 n)
{
    LeReader r(raw, rawBytes);
    if (bits == 32)
        return r.u32(size_t(n * 4));
    if (bits == 16)
        return r.u16(size_t(n * 2));
    // Two 12-bit entries share three bytes: an even entry takes the low 12
    // bits of its pair of bytes, an odd one the high 12.
    const quint16 pair = r.u16(size_t(n + n / 2));
    return (n & 1) ? quint32(pair >> 4) : quint32(pair & 0x0FFF);
}

void FatEntryDecoder::decode(const uchar* raw, size_t rawBytes, int bits, quint32* out, quint64 count)
{
    for (quint64 n = 0; n < count; ++n)
        out[n] = widen(rawEntry(raw, rawBytes, bits, n), bits);
}
