#include "carving/BlockAlignment.h"
#include "carving/CarveKinds.h"

#include <QHash>
#include <QList>
#include <vector>

namespace {
constexpr quint32 kSectorBytes = 512;
constexpr quint32 kLargestBlock = 64 * 1024;      // the largest cluster FAT and NTFS volumes commonly use
constexpr quint64 kWindowBytes = 1 << 20;         // one sampled stretch
constexpr int kWindows = 32;                      // stretches spread over the volume: 32 MiB read at most
constexpr int kMinHeaders = 4;                    // fewer say nothing about a layout
constexpr int kAgreePercent = 70;                 // stray matches (inside files, random data) may disagree

// The share of offsets on the most common boundary of blocks of this size, and that boundary.
int agreement(const QList<quint64>& offsets, quint32 blockBytes, quint32* offset)
{
    QHash<quint32, int> counts;
    int best = 0;
    for (quint64 at : offsets) {
        const quint32 residue = quint32(at % blockBytes);
        const int n = ++counts[residue];
        if (n > best) {
            best = n;
            *offset = residue;
        }
    }
    return best * 100 / int(offsets.size());
}
} // namespace

BlockAlignment BlockAlignment::fromHeaders(const QList<quint64>& offsets)
{
    BlockAlignment sectors;
    if (offsets.size() < kMinHeaders)
        return sectors;
    for (quint32 block = kLargestBlock; block > kSectorBytes; block /= 2) {
        quint32 offset = 0;
        if (agreement(offsets, block, &offset) >= kAgreePercent)
            return {block, offset};
    }
    return sectors;
}

BlockAlignment BlockAlignment::guess(const Read& read, quint64 volumeBytes)
{
    const CarveKinds& kinds = CarveKinds::all();
    QList<quint64> headers;
    std::vector<uchar> window(kWindowBytes);
    const quint64 step = qMax<quint64>(volumeBytes / kWindows, kWindowBytes) & ~quint64(kSectorBytes - 1);
    for (quint64 start = 0; start < volumeBytes && step > 0; start += step) {
        const qint64 got = read(window.data(), kWindowBytes, start);
        if (got <= 0)
            continue;
        for (quint64 at = 0; at + kSectorBytes <= quint64(got); at += kSectorBytes) {
            if (kinds.headerAt(window.data() + at, size_t(quint64(got) - at)))
                headers.append(start + at);
        }
    }
    return fromHeaders(headers);
}
