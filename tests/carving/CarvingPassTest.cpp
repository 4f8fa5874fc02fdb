#include "CarvingVolume.h"
#include "carving/BlockWindow.h"
#include "carving/CarvingPass.h"

#include <QFile>
#include <QRandomGenerator>
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

using namespace carvedHeaders;

namespace {
bool runNtfs(CarvingVolume& v, std::vector<quint8>* bitmap, quint64 clusterCount = 0)
{
    NtfsCarvingGeometry g{v.blockBytes, {}, bitmap ? bitmap->size() * 8 : 0, clusterCount};
    if (bitmap)
        g.clusterFree = [bitmap](quint64 c) { return !((*bitmap)[c / 8] >> (c % 8) & 1); };
    return CarvingPass::runNtfs(v.context(), g);
}

bool runFat32(CarvingVolume& v, quint64 fatBytes, std::function<bool(quint64)> free = {})
{
    return CarvingPass::runFat32(v.context(), {v.blockBytes, v.dataOffset, fatBytes, std::move(free)});
}

QByteArray sample(const char* path)
{
    QFile f(QStringLiteral("/usr/share/forensics-samples/original-files/") + path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}
} // namespace

TEST(CarvingPass, CarvesWholeFilesFromFreeBlocksOnly)
{
    const QByteArray photo = sample("pic1/IMG_1054.JPG"), logo = sample("pic1/debian_logo.png"), pdf = sample("text1/a-text.pdf");
    if (photo.isEmpty())
        GTEST_SKIP() << "forensics-samples-files is not installed";
    struct Case {
        bool ntfs;
        QStringList expected;
    };
    // 4 KiB blocks: the photo at 2 (169 blocks, block 100 in use), the logo at
    // 200 (on NTFS its first cluster is marked, on FAT32 it is a listed file's),
    // the PDF at 210. On FAT32 block n is cluster n.
    const Case cases[] = {
        {true, {"JPG文件-00001/IMG_20200912_114938.jpg 401408 cut lcn2+98", "PDF文件-00001/F000000211.pdf 18505 lcn210+5"}},
        {false, {"JPG文件-00001/IMG_20200912_114938.jpg 401408 cut c2+98", "PDF文件-00001/F000000209.pdf 18505 c210+5"}},
    };
    for (const Case& c : cases) {
        CarvingVolume v(300, 4096);
        const quint64 shift = c.ntfs ? 0 : 2;
        v.put(2 - shift, photo);
        v.put(200 - shift, logo);
        v.put(210 - shift, pdf);
        std::vector<quint8> bitmap(300 / 8, 0);
        for (quint64 used : {0, 1, 100, c.ntfs ? 200 : 0})
            bitmap[used / 8] |= quint8(1 << (used % 8));
        if (!c.ntfs)
            v.listed = {{(200 - 2) * 4096 + 100, 10}};
        auto free = [&bitmap](quint64 b) { return b / 8 < bitmap.size() && !(bitmap[b / 8] >> (b % 8) & 1); };
        if (c.ntfs) {
            EXPECT_TRUE(runNtfs(v, &bitmap));
        } else {
            EXPECT_TRUE(runFat32(v, 300 * 4, free));
        }
        EXPECT_EQ(v.listing().join("\n").toStdString(), c.expected.join("\n").toStdString());
        EXPECT_EQ(v.results, 2u);
        EXPECT_EQ(v.extra()->children.first()->ntfs, c.ntfs);
    }
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
        const QByteArray headers[] = {sevenZip(5000, 20), bmp(9000, 54), bmp(64, 54), "\xFF\xD8\xFE"};
        for (quint64 b = 0; b < kBlocks; ++b) {
            if (rng.bounded(100) < 15)
                batched.put(b, headers[rng.bounded(4)]);
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
        EXPECT_GT(batched.results, 50u);
        EXPECT_LT(batched.results, sound.results) << "the bad blocks' hits are lost";
        EXPECT_EQ(batched.running, single.running);
        EXPECT_LE(batched.largestRead, BlockWindow::kChunkBytes);
    }
}

TEST(CarvingPass, StopAtACheckPointKeepsWhatWasFound)
{
    CarvingVolume f(20000, 512);
    f.put(6, bmp(9000, 54));
    f.put(12000, bmp(9000, 54));
    f.onCheck = [&f] { return f.checks == 2; };
    EXPECT_FALSE(runFat32(f, 20002 * 4));
    EXPECT_EQ(f.checks, 2);
    EXPECT_EQ(f.results, 2u) << "found before the stop";
    EXPECT_EQ(f.listing().size(), 2);
}
