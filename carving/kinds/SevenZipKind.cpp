#include "carving/kinds/SevenZipKind.h"
#include "carving/CarveSource.h"
#include "scan/CheckedMath.h"

#include <cstring>

namespace {
constexpr uchar kMagic[] = {0x37, 0x7A, 0xBC, 0xAF, 0x27, 0x1C};
constexpr quint64 kNextHeaderOffset = 0x0C, kNextHeaderSize = 0x14;
constexpr quint64 kStartHeaderBytes = 0x20;
constexpr quint64 kHeader = 0x01, kEncodedHeader = 0x17; // the end header's first property id
} // namespace

bool SevenZipKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= sizeof kMagic && std::memcmp(head, kMagic, sizeof kMagic) == 0;
}

CarveEnd SevenZipKind::findEnd(CarveSource& source) const
{
    const quint64 offset = source.le64(kNextHeaderOffset), size = source.le64(kNextHeaderSize);
    uint64_t end = 0;
    if (!source.ok() || size == 0 || !checked::add(offset, size, &end) || !checked::add(end, kStartHeaderBytes, &end)
        || end > source.limit())
        return {};
    const quint64 id = source.u8(kStartHeaderBytes + offset);
    if (!source.ok())
        return cutAt(kStartHeaderBytes + offset);
    return id == kHeader || id == kEncodedHeader ? whole(end) : cutAt(kStartHeaderBytes + offset);
}
