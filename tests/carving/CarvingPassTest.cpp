#include "CarvingVolume.h"
#include "carving/BlockWindow.h"
#include "carving/CarvingPass.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>
#include <vector>

using namespace carvedHeaders;

namespace {
bool runNtfs(CarvingVolume& v, std::vector<quint8>* bitmap, quint64 clusterCount = 0)
{
    NtfsCarvingGeometry g;
    g.clusterBytes = v.blockBytes;
    g.bitmap = bitmap ? bitmap->data() : nullptr;
    g.bitmapBytes = bitmap ? bitmap->size() : 0;
    g.clusterCount = clusterCount;
    return CarvingPass::runNtfs(v.context(), g);
}

bool runFat32(CarvingVolume& v, quint32 fatBytes)
{
    return CarvingPass::runFat32(v.context(), {v.blockBytes, v.dataOffset, fatBytes});
}

void setBit(std::vector<quint8>& bitmap, quint64 cluster)
{
    bitmap[cluster / 8] |= quint8(1u << (cluster % 8));
}
} // namespace

TEST(CarvingPassNtfs, WalksClearBitsAndNamesEveryHitApart)
{
    CarvingVolume v(64, 4096);
    v.put(3, jpg());
    v.put(10, png());
    v.put(12, jpg()); // same bitmap byte as the PNG
    v.put(20, jpg()); // in use
    v.data[5 * 4096 + 512] = char(0xFF); // a signature off the block start
    v.data[5 * 4096 + 513] = char(0xD8);
    v.data[5 * 4096 + 514] = char(0xFF);
    std::vector<quint8> bitmap(8, 0);
    setBit(bitmap, 20);
    v.running = 100;
    v.results = 7;
    v.totalSize = 1000;

    EXPECT_TRUE(runNtfs(v, &bitmap));
    EXPECT_EQ(v.listing(), QStringList({
                               "JPG文件-00001/F000000100.jpg 65536 lcn3+17/17",
                               "JPG文件-00001/F000000102.jpg 65536 lcn12+17/17",
                               "PNG文件-00001/F000000101.png 4096 lcn10+2/2",
                           }));
    EXPECT_EQ(v.running, 108u) << "one step per bitmap byte";
    EXPECT_EQ(v.results, 10u);
    EXPECT_EQ(v.totalSize, 1000u + 2 * 65536 + 4096);
    EXPECT_TRUE(v.progress.isEmpty()) << "no progress signal on NTFS";
    EXPECT_EQ(v.extra()->name, QStringLiteral("额外文件"));
    EXPECT_TRUE(v.extra()->children.first()->ntfs);
    EXPECT_EQ(v.extra()->children.first()->partIndex, 3);
}

TEST(CarvingPassNtfs, RunLengthFollowsTheClusterSize)
{
    struct Case {
        quint32 clusterBytes;
        quint64 jpgRun;
        quint64 pngRun;
    };
    for (const Case& c : {Case{512, 129, 9}, Case{4096, 17, 2}, Case{65536, 2, 1}}) {
        SCOPED_TRACE(c.clusterBytes);
        CarvingVolume v(40, c.clusterBytes);
        v.put(1, jpg());
        v.put(33, png());
        EXPECT_TRUE(runNtfs(v, nullptr, 40));
        EXPECT_EQ(v.listing(), QStringList({
                                   QStringLiteral("JPG文件-00001/F000000000.jpg 65536 lcn1+%1/%1").arg(c.jpgRun),
                                   QStringLiteral("PNG文件-00001/F000000004.png 4096 lcn33+%1/%1").arg(c.pngRun),
                               }));
    }
}

TEST(CarvingPassNtfs, ClusterCountBoundsTheWalk)
{
    CarvingVolume v(64, 4096);
    v.put(19, jpg());
    v.put(20, jpg());
    EXPECT_TRUE(runNtfs(v, nullptr, 20)) << "no bitmap: every cluster below the count is free";
    EXPECT_EQ(v.listing(), QStringList({"JPG文件-00001/F000000002.jpg 65536 lcn19+17/17"}));
    EXPECT_EQ(v.running, 3u);

    CarvingVolume w(64, 4096);
    w.put(45, jpg());
    std::vector<quint8> bitmap(8, 0);
    EXPECT_TRUE(runNtfs(w, &bitmap, 40)) << "clusters behind the volume's end are another volume's";
    EXPECT_TRUE(w.listing().isEmpty());
}

TEST(CarvingPassNtfs, EmptyOrRefusedGeometryLeavesOnlyTheExtraFolder)
{
    for (quint32 clusterBytes : {4096u, 3000u, 256u, 4u << 20}) {
        SCOPED_TRACE(clusterBytes);
        CarvingVolume v(4, 4096);
        v.put(0, jpg());
        v.blockBytes = clusterBytes;
        EXPECT_TRUE(runNtfs(v, nullptr, clusterBytes == 4096 ? 0 : 4));
        ASSERT_NE(v.extra(), nullptr);
        EXPECT_TRUE(v.extra()->children.isEmpty());
        EXPECT_EQ(v.results, 0u);
    }
}

TEST(CarvingPassFat32, WalksEveryClusterFromEightWithinTheFat)
{
    CarvingVolume v(45, 1024, 1536); // cluster c at 1536 + (c - 2) * 1024
    v.put(7 - 2, jpg());
    v.put(8 - 2, jpg());
    v.put(39 - 2, png());
    v.put(40 - 2, bytes({'G', 'I', 'F', '8', '9', 'a'})); // no FAT entry
    v.running = (quint64(1) << 32) + 50;

    EXPECT_TRUE(runFat32(v, 40 * 4 + 3));
    EXPECT_EQ(v.listing(), QStringList({
                               "JPG文件-00001/F4294967346.jpg 256000 c8x32", // the clusters stop at the FAT's end
                               "PNG文件-00001/F4294967377.png 1024 c39x1",
                           }));
    ASSERT_EQ(v.progress.size(), 32);
    EXPECT_EQ(v.progress.first(), 50) << "the low 32 bits of the running number, before each cluster";
    EXPECT_EQ(v.progress.last(), 81);
    EXPECT_EQ(v.running, (quint64(1) << 32) + 82);
    EXPECT_FALSE(v.extra()->ntfs);
    EXPECT_FALSE(v.extra()->children.first()->ntfs);
}

TEST(CarvingPassFat32, SmallFatsWalkNothing)
{
    for (quint32 fatBytes : {0u, 32u, 35u, 36u}) {
        SCOPED_TRACE(fatBytes);
        CarvingVolume v(16, 512);
        v.put(8 - 2, jpg());
        EXPECT_TRUE(runFat32(v, fatBytes));
        EXPECT_EQ(v.results, fatBytes >= 36 ? 1u : 0u);
        EXPECT_NE(v.extra(), nullptr);
    }
}

TEST(CarvingPass, UnreadBytesAreNeverTested)
{
    // Block 5 of the first chunk leaves a JPG in the buffer slot that block 261
    // (in the second chunk) reuses; the reads that cover block 261 fail.
    CarvingVolume v(600, 4096);
    v.put(5, jpg());
    v.put(262, png());
    const quint64 bad = 261 * 4096;
    v.fails = [bad](quint64 offset, quint64 bytes) { return offset <= bad && bad < offset + bytes; };
    EXPECT_TRUE(runNtfs(v, nullptr, 600));
    EXPECT_EQ(v.listing(), QStringList({"JPG文件-00001/F000000000.jpg 65536 lcn5+17/17",
                                        "PNG文件-00001/F000000032.png 4096 lcn262+2/2"}));

    // The volume ends inside block 300; block 301 shares its slot with block 45.
    CarvingVolume e(300, 4096);
    e.data.append(QByteArray(2000, char(0xFF)));
    e.put(45, jpg());
    std::vector<quint8> bitmap(64, 0);
    EXPECT_TRUE(runNtfs(e, &bitmap));
    EXPECT_EQ(e.listing(), QStringList({"JPG文件-00001/F000000005.jpg 65536 lcn45+17/17"}));
    EXPECT_LT(e.running, 64u) << "the walk ends at the device's end";
}

namespace {
// A volume of random blocks: signatures, near misses, used clusters and bad sectors.
struct RandomVolume {
    CarvingVolume volume;
    std::vector<quint8> bitmap;
    std::vector<quint64> badBlocks;
    int expectedHits = 0;

    RandomVolume(quint64 blocks, quint32 blockBytes, quint64 dataOffset, bool useBitmap, quint64 firstCounted)
        : volume(blocks, blockBytes, dataOffset), bitmap(useBitmap ? blocks / 8 : 0, 0)
    {
        QRandomGenerator rng(1234);
        const QByteArray headers[] = {jpg(), png(), sevenZip(5000, 20), bmp(9000, 54), bmp(64, 54), bytes({0xFF, 0xD8, 0xFE})};
        for (quint64 b = 0; b < blocks; ++b) {
            const int roll = int(rng.bounded(100));
            const bool used = useBitmap && rng.bounded(100) < 30;
            const bool bad = rng.bounded(100) < 2;
            if (used)
                setBit(bitmap, b);
            if (bad)
                badBlocks.push_back(dataOffset + b * blockBytes);
            if (roll < 15) {
                const int h = roll % 6;
                volume.put(b, headers[h]);
                const quint64 number = useBitmap ? b : b + 2;
                expectedHits += h < 4 && !used && !bad && number >= firstCounted;
            }
        }
        const quint64 bytesPerBlock = blockBytes;
        std::vector<quint64> bad = badBlocks;
        volume.fails = [bad, bytesPerBlock](quint64 offset, quint64 bytes) {
            for (quint64 b : bad) {
                if (b < offset + bytes && offset < b + bytesPerBlock)
                    return true;
            }
            return false;
        };
    }
};
} // namespace

TEST(CarvingPass, BatchedReadsFindWhatBlockByBlockReadsFind)
{
    struct Case {
        const char* what;
        bool ntfs;
        quint32 blockBytes;
        quint64 dataOffset;
    };
    for (const Case& c : {Case{"ntfs", true, 4096, 0}, Case{"ntfs 512", true, 512, 0}, Case{"fat32", false, 2048, 3 * 512}}) {
        SCOPED_TRACE(c.what);
        const quint64 blocks = 2400;
        const quint32 fatBytes = quint32(blocks + 2) * 4;
        RandomVolume batched(blocks, c.blockBytes, c.dataOffset, c.ntfs, c.ntfs ? 0 : 8);
        RandomVolume single(blocks, c.blockBytes, c.dataOffset, c.ntfs, c.ntfs ? 0 : 8);
        auto failsAlone = single.volume.fails;
        const quint64 bs = c.blockBytes;
        single.volume.fails = [failsAlone, bs](quint64 offset, quint64 bytes) { return bytes > bs || failsAlone(offset, bytes); };
        if (c.ntfs) {
            runNtfs(batched.volume, &batched.bitmap);
            runNtfs(single.volume, &single.bitmap);
        } else {
            runFat32(batched.volume, fatBytes);
            runFat32(single.volume, fatBytes);
        }
        EXPECT_EQ(batched.volume.listing().size(), batched.expectedHits);
        EXPECT_EQ(batched.volume.listing(), single.volume.listing());
        EXPECT_EQ(batched.volume.totalSize, single.volume.totalSize);
        EXPECT_EQ(batched.volume.running, single.volume.running);
        EXPECT_LE(batched.volume.largestRead, BlockWindow::kChunkBytes);

        RandomVolume sound(blocks, c.blockBytes, c.dataOffset, c.ntfs, c.ntfs ? 0 : 8);
        sound.volume.fails = nullptr;
        c.ntfs ? runNtfs(sound.volume, &sound.bitmap) : runFat32(sound.volume, fatBytes);
        const quint64 chunks = blocks * c.blockBytes / BlockWindow::kChunkBytes + 1;
        EXPECT_LE(sound.volume.reads, chunks + 1) << "one read per chunk on a sound device";
    }
}

TEST(CarvingPass, StopAtACheckPointKeepsWhatWasFound)
{
    // NTFS asks every 1000 bitmap bytes, FAT32 before every 1000th cluster.
    CarvingVolume n(8 * 2500, 512);
    n.put(0, jpg());
    n.put(8 * 1500, jpg());
    n.onCheck = [] { return true; };
    EXPECT_FALSE(runNtfs(n, nullptr, 8 * 2500));
    EXPECT_EQ(n.checks, 1);
    EXPECT_EQ(n.running, 1000u);
    EXPECT_EQ(n.results, 1u);
    EXPECT_EQ(n.listing().size(), 1);

    CarvingVolume f(2500, 512);
    f.put(8 - 2, jpg());
    f.put(1500, jpg());
    int answers = 0;
    f.onCheck = [&answers] { return ++answers == 2; };
    EXPECT_FALSE(runFat32(f, 2502 * 4));
    EXPECT_EQ(f.checks, 2);
    EXPECT_EQ(f.running, 999u + 999u) << "the first check on the 1000th step, then every 999th";
    EXPECT_EQ(f.progress.size(), 1998);
    EXPECT_EQ(f.results, 2u);
}
