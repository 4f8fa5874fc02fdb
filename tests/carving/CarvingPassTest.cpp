#include "CarvingVolume.h"
#include "carving/BlockWindow.h"
#include "carving/CarvingPass.h"

#include <QRandomGenerator>
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

using namespace carvedHeaders;

namespace {
bool runNtfs(CarvingVolume& v, std::vector<quint8>* bitmap, quint64 clusterCount = 0)
{
    const NtfsCarvingGeometry g{v.blockBytes, bitmap ? bitmap->data() : nullptr, bitmap ? bitmap->size() : 0, clusterCount};
    return CarvingPass::runNtfs(v.context(), g);
}

bool runFat32(CarvingVolume& v, quint64 fatBytes)
{
    return CarvingPass::runFat32(v.context(), {v.blockBytes, v.dataOffset, fatBytes});
}
} // namespace

TEST(CarvingPassNtfs, WalksClearBitsAndNamesEveryHitApart)
{
    CarvingVolume v(64, 4096);
    v.put(3, jpg());
    v.put(10, png());
    v.put(12, jpg());               // same bitmap byte as the PNG
    v.put(20, jpg());               // in use
    v.data.replace(5 * 4096 + 512, 4, jpg()); // not at a block start
    std::vector<quint8> bitmap(8, 0);
    bitmap[2] = 1 << 4;
    v.running = 100;
    v.results = 7;
    v.totalSize = 1000;
    EXPECT_TRUE(runNtfs(v, &bitmap));
    EXPECT_EQ(v.listing(), QStringList({"JPG文件-00001/F000000100.jpg 65536 lcn3+17/17",
                                        "JPG文件-00001/F000000102.jpg 65536 lcn12+17/17",
                                        "PNG文件-00001/F000000101.png 4096 lcn10+2/2"}));
    EXPECT_EQ(v.running, 108u) << "one step per bitmap byte";
    EXPECT_EQ(v.results, 10u);
    EXPECT_EQ(v.totalSize, 1000u + 2 * 65536 + 4096);
    EXPECT_TRUE(v.progress.isEmpty()) << "no progress signal on NTFS";
    EXPECT_TRUE(v.extra()->children.first()->ntfs);
}

TEST(CarvingPassNtfs, ClusterSizeAndCountShapeTheWalk)
{
    struct Case {
        quint32 clusterBytes;
        quint64 clusterCount;
        QStringList expected;
    };
    const Case cases[] = {
        {512, 40, {"JPG文件-00001/F000000000.jpg 65536 lcn1+129/129", "PNG文件-00001/F000000004.png 4096 lcn33+9/9"}},
        {65536, 40, {"JPG文件-00001/F000000000.jpg 65536 lcn1+2/2", "PNG文件-00001/F000000004.png 4096 lcn33+1/1"}},
        {4096, 33, {"JPG文件-00001/F000000000.jpg 65536 lcn1+17/17"}}, // behind the count is another volume
        {3000, 40, {}},
        {4u << 20, 40, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.clusterBytes);
        CarvingVolume v(40, qMin(c.clusterBytes, 65536u));
        v.put(1, jpg());
        v.put(33, png());
        v.blockBytes = c.clusterBytes;
        EXPECT_TRUE(runNtfs(v, nullptr, c.clusterCount)) << "no bitmap: every cluster counts as free";
        EXPECT_EQ(v.listing(), c.expected);
    }
}

TEST(CarvingPassFat32, WalksEveryClusterFromEightWithinTheFat)
{
    CarvingVolume v(45, 1024, 1536);
    v.put(7 - 2, jpg());
    v.put(8 - 2, jpg());
    v.put(39 - 2, png());
    v.put(40 - 2, "GIF89a"); // no FAT entry
    v.running = (quint64(1) << 32) + 50;
    EXPECT_TRUE(runFat32(v, 40 * 4 + 3));
    EXPECT_EQ(v.listing(), QStringList({"JPG文件-00001/F4294967346.jpg 256000 c8x32", // stops at the FAT's end
                                        "PNG文件-00001/F4294967377.png 1024 c39x1"}));
    EXPECT_EQ(v.progress.size(), 32);
    EXPECT_EQ(v.progress.value(0), 50) << "the running number's low 32 bits, before each cluster";
    EXPECT_EQ(v.running, (quint64(1) << 32) + 82);
    EXPECT_FALSE(v.extra()->ntfs);
    EXPECT_FALSE(v.extra()->children.first()->ntfs);

    CarvingVolume small(16, 512);
    EXPECT_TRUE(runFat32(small, 35));
    EXPECT_TRUE(small.progress.isEmpty() && small.extra()) << "a FAT of eight entries has nothing to walk";
    CarvingVolume wild(16, 512);
    wild.put(15 - 2, jpg());
    EXPECT_TRUE(runFat32(wild, quint64(1) << 40));
    EXPECT_EQ(wild.listing(), QStringList({"JPG文件-00001/F000000007.jpg 128000 c15x250"})) << "a wild FAT ends at the device's end";
}

TEST(CarvingPass, UnreadBytesAreNeverTested)
{
    // Block 261 reuses the buffer slot of block 5, a JPG; the reads that cover it fail.
    CarvingVolume v(600, 4096);
    v.put(5, jpg());
    v.put(262, png());
    v.fails = [](quint64 offset, quint64 bytes) { return offset <= 261 * 4096 && 261 * 4096 < offset + bytes; };
    EXPECT_TRUE(runNtfs(v, nullptr, 600));
    EXPECT_EQ(v.listing(), QStringList({"JPG文件-00001/F000000000.jpg 65536 lcn5+17/17",
                                        "PNG文件-00001/F000000032.png 4096 lcn262+2/2"}));

    // The device ends inside block 300; block 301 shares its slot with block 45.
    CarvingVolume e(300, 4096);
    e.data.append(QByteArray(2000, char(0xFF)));
    e.put(45, jpg());
    std::vector<quint8> bitmap(64, 0);
    EXPECT_TRUE(runNtfs(e, &bitmap));
    EXPECT_EQ(e.listing(), QStringList({"JPG文件-00001/F000000005.jpg 65536 lcn45+17/17"}));
    EXPECT_LT(e.running, 64u) << "the walk ends at the device's end";
}

TEST(CarvingPass, BatchedReadsFindWhatBlockByBlockReadsFind)
{
    struct Case {
        bool ntfs;
        quint32 blockBytes;
        quint64 dataOffset;
    };
    for (const Case& c : {Case{true, 4096, 0}, Case{true, 512, 0}, Case{false, 2048, 3 * 512}}) {
        SCOPED_TRACE(c.blockBytes);
        constexpr quint64 kBlocks = 2400;
        CarvingVolume batched(kBlocks, c.blockBytes, c.dataOffset);
        std::vector<quint8> bitmap(kBlocks / 8, 0);
        std::vector<quint64> bad;
        QRandomGenerator rng(1234);
        const QByteArray headers[] = {jpg(), png(), sevenZip(5000, 20), bmp(9000, 54), bmp(64, 54), "\xFF\xD8\xFE"};
        for (quint64 b = 0; b < kBlocks; ++b) {
            if (rng.bounded(100) < 15)
                batched.put(b, headers[rng.bounded(6)]);
            if (c.ntfs && rng.bounded(100) < 30)
                bitmap[b / 8] |= quint8(1 << (b % 8));
            if (rng.bounded(100) < 2)
                bad.push_back(c.dataOffset + b * c.blockBytes);
        }
        CarvingVolume single = batched, sound = batched;
        const quint64 bs = c.blockBytes;
        batched.fails = [bad, bs](quint64 offset, quint64 bytes) {
            return std::any_of(bad.begin(), bad.end(), [&](quint64 b) { return b < offset + bytes && offset < b + bs; });
        };
        const auto badRead = batched.fails;
        single.fails = [badRead, bs](quint64 offset, quint64 bytes) { return bytes > bs || badRead(offset, bytes); };
        for (CarvingVolume* v : {&batched, &single, &sound})
            c.ntfs ? runNtfs(*v, &bitmap) : runFat32(*v, quint32(kBlocks + 2) * 4);
        EXPECT_EQ(batched.listing(), single.listing());
        EXPECT_GT(batched.results, 100u);
        EXPECT_LT(batched.results, sound.results) << "the bad blocks' hits are lost";
        EXPECT_EQ(batched.running, single.running);
        EXPECT_LE(batched.largestRead, BlockWindow::kChunkBytes);
        EXPECT_LE(sound.reads, kBlocks * c.blockBytes / BlockWindow::kChunkBytes + 1) << "one read a chunk";
    }
}

TEST(CarvingPass, StopAtACheckPointKeepsWhatWasFound)
{
    CarvingVolume n(8 * 2500, 512);
    n.put(0, jpg());
    n.put(8 * 1500, jpg());
    n.onCheck = [] { return true; };
    EXPECT_FALSE(runNtfs(n, nullptr, 8 * 2500));
    EXPECT_EQ(n.checks, 1);
    EXPECT_EQ(n.running, 1000u) << "asked after the 1000th bitmap byte";
    EXPECT_EQ(n.listing().size(), 1);

    CarvingVolume f(2500, 512);
    f.put(8 - 2, jpg());
    f.put(1500, jpg());
    f.onCheck = [&f] { return f.checks == 2; };
    EXPECT_FALSE(runFat32(f, 2502 * 4));
    EXPECT_EQ(f.running, 999u + 999u) << "asked before the 1000th cluster, then every 999th";
    EXPECT_EQ(f.results, 2u);
}
