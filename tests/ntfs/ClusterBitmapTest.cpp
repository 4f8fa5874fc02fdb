#include "ntfs/ClusterBitmap.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace {
constexpr quint64 kWindowClusters = ClusterBitmap::kWindowBytes * 8;

// A bitmap of the given clusters with the given bits set, read from memory;
// reads of a region that is "unreadable" leave zeros, as the scanner's reads do.
struct MemoryBitmap {
    std::vector<uchar> bytes;
    std::vector<std::pair<quint64, quint64>> reads; // (offset, bytes)
    bool unreadable = false;

    ClusterBitmap open(quint64 clusters, quint64 unit, std::vector<quint64> set)
    {
        bytes.assign(size_t(clusters / 8 + unit + 1), 0);
        for (quint64 c : set)
            bytes[size_t(c / 8)] |= uchar(1u << (c % 8));
        return ClusterBitmap([this](char* out, quint64 offset, quint64 n) {
            reads.emplace_back(offset, n);
            if (!unreadable)
                std::copy_n(bytes.begin() + qint64(offset), qMin<quint64>(n, bytes.size() - offset), out);
        }, clusters, unit);
    }
};
} // namespace

TEST(ClusterBitmap, AnswersAcrossWindowsClaimsAndTheBitmapsEnd)
{
    struct Case {
        const char* name;
        quint64 clusters;
        quint64 unit;
        std::vector<quint64> set;
        std::vector<std::pair<quint64, quint64>> claims;
        std::vector<quint64> inUse, free;
        size_t reads;
    };
    const quint64 w = kWindowClusters;
    const Case cases[] = {
        {"windows crossing", 3 * w, 4096, {w - 1, w, 2 * w + 5}, {}, {w - 1, w, 2 * w + 5}, {w - 2, w + 1, 2 * w + 4}, 3},
        {"claims merge", 4096, 512, {0}, {{10, 1}, {11, 1}, {5, 2}, {6, 1}, {100, 3}}, {0, 5, 6, 10, 11, 100, 102}, {4, 7, 9, 12, 103}, 1},
        {"short bitmap", 20, 512, {3}, {}, {3, 20, 21, w}, {0, 19}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MemoryBitmap m;
        ClusterBitmap b = m.open(c.clusters, c.unit, c.set);
        for (auto [first, count] : c.claims)
            b.claim(first, count);
        std::vector<std::pair<quint64, bool>> asks; // in ascending order, as the walk asks
        for (quint64 n : c.inUse)
            asks.emplace_back(n, true);
        for (quint64 n : c.free)
            asks.emplace_back(n, false);
        std::sort(asks.begin(), asks.end());
        for (auto [n, used] : asks)
            EXPECT_EQ(b.inUse(n), used) << n;
        EXPECT_EQ(m.reads.size(), c.reads) << "each window read once";
        for (auto [offset, n] : m.reads) {
            EXPECT_LE(n, ClusterBitmap::kWindowBytes);
            EXPECT_EQ(offset % c.unit, 0u);
            EXPECT_EQ(n % c.unit, 0u);
            EXPECT_LE(offset + n, (c.clusters / 8 + c.unit) / c.unit * c.unit) << "never past the stored bitmap";
        }
    }
}

TEST(ClusterBitmap, MergesClaimsAndFindsTheNextFreeCluster)
{
    MemoryBitmap m;
    ClusterBitmap b = m.open(4096, 512, {16, 17, 18, 19, 20, 21, 22, 23, 24});
    for (quint64 c : {30, 26, 25, 28, 27, 29})
        b.claim(c, 1);
    b.claim(40, 5);
    b.claim(42, 10);
    ASSERT_EQ(b.claimed().size(), 2u);
    EXPECT_EQ(b.claimed()[0].first, 25u);
    EXPECT_EQ(b.claimed()[0].end, 31u);
    EXPECT_EQ(b.claimed()[1].first, 40u);
    EXPECT_EQ(b.claimed()[1].end, 52u);
    EXPECT_EQ(b.nextFree(16, 100), 31u) << "past the bits and the claims after them";
    EXPECT_EQ(b.nextFree(40, 45), 45u) << "none before the limit";
    EXPECT_EQ(b.nextFree(5000, 6000), 6000u) << "behind the bitmap nothing is free";
}

TEST(ClusterBitmap, WithoutABitmapEveryClusterIsFree)
{
    MemoryBitmap m;
    m.unreadable = true;
    ClusterBitmap unreadable = m.open(4096, 512, {1, 2, 3});
    ClusterBitmap none;
    none.claim(7, 1);
    for (quint64 c : {1, 3, 7, 4000}) {
        EXPECT_FALSE(unreadable.inUse(c)) << "an unreadable window reads as zeros";
        EXPECT_FALSE(none.inUse(c));
    }
    EXPECT_TRUE(none.claimed().empty());
    EXPECT_EQ(none.nextFree(9, 20), 9u);
    EXPECT_EQ(none.clusters(), 0u);
}
