#include "carving/kinds/MpegPsKind.h"
#include "carving/CarveSource.h"

#include <cstring>

namespace {
constexpr uchar kStartCode[] = {0x00, 0x00, 0x01};
constexpr uchar kPack = 0xBA, kEnd = 0xB9, kFirstPacket = 0xBB;
constexpr quint64 kMpeg1PackBytes = 12, kMpeg2PackBytes = 14, kPacketHeaderBytes = 6;
constexpr int kMaxUnits = 1 << 26; // packs and packets of one stream

// The length of the pack header at p, or 0 when it is none.
quint64 packBytes(const uchar* p)
{
    if ((p[4] & 0xC0) == 0x40)
        return kMpeg2PackBytes + (p[13] & 0x07); // and its stuffing
    return (p[4] & 0xF0) == 0x20 ? kMpeg1PackBytes : 0;
}
} // namespace

bool MpegPsKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= kMpeg2PackBytes && std::memcmp(head, kStartCode, 3) == 0 && head[3] == kPack && packBytes(head) != 0;
}

CarveEnd MpegPsKind::findEnd(CarveSource& source) const
{
    quint64 pos = 0;
    for (int i = 0; i < kMaxUnits; ++i) {
        const uchar* h = source.at(pos, kMpeg2PackBytes);
        if (!h || std::memcmp(h, kStartCode, 3) != 0)
            break;
        if (h[3] == kEnd)
            return whole(pos + 4);
        const quint64 n = h[3] == kPack ? packBytes(h) : h[3] >= kFirstPacket ? kPacketHeaderBytes + (quint64(h[4]) << 8 | h[5]) : 0;
        if (n == 0)
            break;
        pos += n;
    }
    source.clearError();
    // Streams without an end code simply stop behind their last packet.
    return pos > 0 ? whole(qMin(pos, source.limit())) : CarveEnd{};
}
