#include "carving/kinds/GifKind.h"
#include "carving/CarveSource.h"

#include <cstring>

namespace {
constexpr quint64 kHeaderBytes = 13; // signature and logical screen descriptor
constexpr quint64 kFlagsOffset = 10;
constexpr quint64 kImageDescriptorBytes = 10;
constexpr uchar kColourTableFlag = 0x80;
constexpr uchar kExtension = 0x21, kImage = 0x2C, kTrailer = 0x3B;
constexpr int kMaxBlocks = 1 << 24; // sub-blocks and blocks of one file

quint64 colourTableBytes(quint64 flags) { return flags & kColourTableFlag ? 3u << ((flags & 7) + 1) : 0; }
} // namespace

bool GifKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= 6 && (std::memcmp(head, "GIF87a", 6) == 0 || std::memcmp(head, "GIF89a", 6) == 0);
}

bool GifKind::skipSubBlocks(CarveSource& source, quint64* pos)
{
    for (int i = 0; i < kMaxBlocks; ++i) {
        const quint64 size = source.u8(*pos);
        if (!source.ok())
            return false;
        *pos += 1 + size;
        if (size == 0)
            return true;
    }
    return false;
}

CarveEnd GifKind::findEnd(CarveSource& source) const
{
    quint64 pos = kHeaderBytes + colourTableBytes(source.u8(kFlagsOffset));
    quint64 good = pos;
    for (int i = 0; i < kMaxBlocks && source.ok(); ++i) {
        const quint64 type = source.u8(pos);
        if (type == kTrailer && source.ok())
            return whole(pos + 1);
        if (type == kExtension)
            pos += 2; // introducer, label
        else if (type == kImage)
            pos += kImageDescriptorBytes + colourTableBytes(source.u8(pos + 9)) + 1; // and the LZW code size
        else
            break;
        if (!skipSubBlocks(source, &pos))
            break;
        good = pos;
    }
    return cutAt(good);
}
