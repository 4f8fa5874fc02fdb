#include "carving/kinds/OggKind.h"
#include "carving/CarveSource.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {
constexpr quint64 kPageHeaderBytes = 27, kTypeOffset = 5, kSerialOffset = 14, kSegmentsOffset = 26;
constexpr uchar kFirstPage = 0x02, kLastPage = 0x04;
constexpr int kMaxPages = 1 << 26; // pages of a long recording
} // namespace

bool OggKind::matches(const uchar* head, size_t bytes) const
{
    return bytes >= kPageHeaderBytes && std::memcmp(head, "OggS", 4) == 0 && head[4] == 0 && (head[kTypeOffset] & kFirstPage);
}

CarveEnd OggKind::findEnd(CarveSource& source) const
{
    std::vector<quint64> open;
    quint64 pos = 0;
    for (int i = 0; i < kMaxPages; ++i) {
        const uchar* h = source.at(pos, kPageHeaderBytes);
        if (!h || std::memcmp(h, "OggS", 4) != 0 || h[4] != 0)
            break;
        const quint64 type = h[kTypeOffset];
        const quint64 serial = source.le32(pos + kSerialOffset);
        const uchar* lacing = source.at(pos + kPageHeaderBytes, h[kSegmentsOffset]);
        if (!lacing)
            break;
        quint64 bytes = kPageHeaderBytes + h[kSegmentsOffset];
        for (int s = 0; s < h[kSegmentsOffset]; ++s)
            bytes += lacing[s];
        const auto it = std::find(open.begin(), open.end(), serial);
        if ((type & kFirstPage) && it == open.end() && open.size() < size_t(kMaxStreams))
            open.push_back(serial);
        else if (it == open.end())
            break; // a page of a stream this file never began
        pos += bytes;
        if (type & kLastPage) {
            open.erase(std::find(open.begin(), open.end(), serial));
            if (open.empty())
                return whole(pos);
        }
    }
    source.clearError();
    return cutAt(pos);
}
