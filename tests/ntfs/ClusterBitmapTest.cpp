#include "ntfs/ClusterBitmap.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

// Each case walks its asks in ascending order, as the carving walk does.
TEST(ClusterBitmap, AnswersAcrossWindowsClaimsAndTheBitmapsEnd)
{
    struct Case {
        const char* name;
        quint64 clusters, unit;
        std::vector<quint64> set;
        std::vector<std::pair<quint64, quint64>> claims;
        std::vector<quint64> inUse, free;
        size_t reads; // each window once
        bool unreadable;
    };
    const quint64 w = ClusterBitmap::kWindowBytes * 8;
    const Case cases[] = {
        {"windows crossing", 3 * w, 4096, {w - 1, w, 2 * w + 5}, {}, {w - 1, w, 2 * w + 5}, {w - 2, w + 1, 2 * w + 4}, 3, false},
        {"claims merge", 4096, 512, {0}, {{10, 1}, {11, 1}, {5, 2}, {6, 1}, {100, 3}}, {0, 5, 6, 10, 11, 100, 102}, {4, 7, 12, 103}, 1, false},
        {"short bitmap", 20, 512, {3}, {}, {3, 20, w}, {0, 19}, 1, false},
        {"unreadable: zeros", 4096, 512, {1, 2}, {{7, 1}}, {7}, {1, 2, 8}, 1, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<uchar> bytes(size_t(c.clusters / 8 + c.unit), 0);
        for (quint64 n : c.set)
            bytes[size_t(n / 8)] |= uchar(1u << (n % 8));
        std::vector<std::pair<quint64, quint64>> reads;
        ClusterBitmap b([&](char* out, quint64 offset, quint64 n) {
            reads.emplace_back(offset, n);
            if (!c.unreadable)
                std::copy_n(bytes.begin() + qint64(offset), qMin<quint64>(n, bytes.size() - offset), out);
        }, c.clusters, c.unit);
        for (auto [first, count] : c.claims)
            b.claim(first, count);
        std::vector<std::pair<quint64, bool>> asks;
        for (quint64 n : c.inUse)
            asks.emplace_back(n, true);
        for (quint64 n : c.free)
            asks.emplace_back(n, false);
        std::sort(asks.begin(), asks.end());
        for (auto [n, used] : asks)
            EXPECT_EQ(b.inUse(n), used) << n;
        EXPECT_EQ(reads.size(), c.reads);
        for (auto [offset, n] : reads) {
            EXPECT_EQ(offset % c.unit + n % c.unit, 0u);
            EXPECT_LE(offset + n, (c.clusters / 8 + c.unit) / c.unit * c.unit) << "never past the stored bitmap";
        }
    }
}

TEST(ClusterBitmap, ClaimsMergeAndCountAsInUse)
{
    std::vector<uchar> bytes(512, 0);
    bytes[2] = bytes[3] = 0xFF; // clusters 16-31
    ClusterBitmap b([&](char* out, quint64, quint64) { std::copy(bytes.begin(), bytes.end(), out); }, 4096, 512);
    for (auto [first, count] : {std::pair{34, 2}, {32, 1}, {33, 1}, {40, 5}, {42, 10}})
        b.claim(first, count);
    // Asked out of order, so the answer from the last claim or gap can't carry over.
    for (quint64 c : {51, 15, 36, 31, 39, 32, 52, 16, 35, 40, 33, 45})
        EXPECT_EQ(b.inUse(c), (c >= 16 && c < 36) || (c >= 40 && c < 52)) << c;
    ClusterBitmap none; // $Bitmap unreadable: every cluster free, nothing claimed
    none.claim(7, 1);
    EXPECT_FALSE(none.inUse(7));
}
