#include "carving/kinds/IcoKind.h"
#include "carving/CarveSource.h"
#include "scan/LeReader.h"

#include <algorithm>

namespace {
constexpr size_t kCount = 4;
constexpr quint64 kHeaderBytes = 6, kEntryBytes = 16;
constexpr size_t kEntryReserved = 3, kEntryPlanes = 4, kEntrySize = 8, kEntryOffset = 12;
constexpr quint64 kMaxPlanes = 1;
} // namespace

bool IcoKind::matches(const uchar* head, size_t bytes) const
{
    LeReader r(head, bytes);
    const quint64 count = r.u16(kCount);
    // The first image lies right behind the directory, in every icon writer.
    return r.u32(0) == 0x00010000 && count >= 1 && count <= kMaxImages && r.u8(kHeaderBytes + kEntryReserved) == 0
        && r.u32(kHeaderBytes + kEntryOffset) == kHeaderBytes + count * kEntryBytes && r.ok();
}

CarveEnd IcoKind::findEnd(CarveSource& source) const
{
    const quint64 count = source.le16(kCount);
    const uchar* directory = source.at(kHeaderBytes, size_t(count * kEntryBytes));
    if (!directory)
        return {};
    LeReader r(directory, size_t(count * kEntryBytes));
    quint64 end = 0;
    for (quint64 i = 0; i < count; ++i) {
        const size_t e = size_t(i * kEntryBytes);
        const quint64 offset = r.u32(e + kEntryOffset);
        if (r.u8(e + kEntryReserved) != 0 || r.u16(e + kEntryPlanes) > kMaxPlanes || offset < kHeaderBytes + count * kEntryBytes)
            return {};
        end = std::max(end, offset + r.u32(e + kEntrySize));
    }
    return end <= source.limit() ? whole(end) : CarveEnd{};
}
