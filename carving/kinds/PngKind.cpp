#include "carving/kinds/PngKind.h"
#include "carving/CarveSource.h"

#include <cstring>

namespace {
constexpr char kSignature[] = "\x89PNG\r\n\x1A\n";
constexpr quint64 kSignatureBytes = 8;
constexpr quint64 kChunkOverhead = 12;               // length, type, CRC
constexpr quint64 kMaxChunkData = 0x7FFFFFFF;        // the format's own limit
constexpr int kMaxChunks = 1 << 20;                  // a stream of small IDAT chunks stays below this

bool isLetter(uchar c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
} // namespace

bool PngKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= kSignatureBytes && std::memcmp(head, kSignature, kSignatureBytes) == 0;
}

CarveEnd PngKind::findEnd(CarveSource& source) const
{
    quint64 pos = kSignatureBytes;
    for (int i = 0; i < kMaxChunks; ++i) {
        const quint64 length = source.be32(pos);
        const uchar* type = source.at(pos + 4, 4);
        if (!type || length > kMaxChunkData || !std::all_of(type, type + 4, isLetter))
            break;
        // The first chunk is always IHDR: anything else is no PNG at all.
        if (i == 0 && std::memcmp(type, "IHDR", 4) != 0)
            return {};
        const quint64 next = pos + kChunkOverhead + length;
        if (const quint64 other = source.otherFileBetween(pos, next))
            return cutAt(other);
        if (std::memcmp(type, "IEND", 4) == 0)
            return next <= source.limit() ? whole(next) : cutAt(pos);
        pos = next;
    }
    return cutAt(pos);
}
