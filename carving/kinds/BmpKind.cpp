#include "carving/kinds/BmpKind.h"
#include "carving/CarveSource.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

#include <algorithm>

namespace {
constexpr size_t kFileSize = 0x02, kReserved = 0x06, kPixelOffset = 0x0A, kInfoSize = 0x0E;
constexpr size_t kWidth = 0x12, kHeight = 0x16, kBitCount = 0x1C, kCompression = 0x1E;
constexpr size_t kHeaderBytes = 0x22;
// The information header sizes of the known BMP versions.
constexpr quint32 kInfoSizes[] = {12, 40, 52, 56, 64, 108, 124};
constexpr quint32 kMinFileSize = 0x41; // file header, the smallest information header and one pixel byte
constexpr quint32 kUncompressed = 0;
} // namespace

bool BmpKind::matches(const uchar* head, size_t bytes) const
{
    LeReader r(head, bytes);
    const quint32 fileSize = r.u32(kFileSize);
    const quint32 infoSize = r.u32(kInfoSize);
    const bool known = std::find(std::begin(kInfoSizes), std::end(kInfoSizes), infoSize) != std::end(kInfoSizes);
    return r.matches(0, "BM", 2) && r.u32(kReserved) == 0 && known && r.u32(kPixelOffset) < fileSize
        && fileSize >= kMinFileSize && r.ok();
}

CarveEnd BmpKind::findEnd(CarveSource& source) const
{
    const uchar* head = source.at(0, kHeaderBytes);
    if (!head)
        return {};
    LeReader r(head, kHeaderBytes);
    const quint64 fileSize = r.u32(kFileSize);
    if (r.u32(kInfoSize) < 40 || r.u32(kCompression) != kUncompressed)
        return fileSize <= source.limit() ? whole(fileSize) : CarveEnd{};
    // Rows are padded to four bytes; a bottom-up picture has a positive height.
    const quint64 width = r.u32(kWidth), bits = r.u16(kBitCount);
    const qint64 height = qint32(r.u32(kHeight));
    const quint64 rowBytes = (checked::mulSat(width, bits) + 31) / 32 * 4;
    const quint64 pixels = checked::addSat(r.u32(kPixelOffset), checked::mulSat(rowBytes, quint64(std::abs(height))));
    if (pixels > fileSize || fileSize > source.limit())
        return {};
    return whole(fileSize);
}
