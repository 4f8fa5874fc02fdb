#include "exfat/ExfatBootSector.h"
#include "exfat/ExfatDirectory.h"
#include "exfat/ExfatTimestamp.h"
#include "fixtures/ExfatImageBuilder.h"

#include <gtest/gtest.h>

namespace {
using Entry = ExfatImageBuilder::Entry;

Entry entry(const QString& name, bool deleted = false)
{
    Entry e;
    e.name = name;
    e.deleted = deleted;
    e.firstCluster = 9;
    e.dataLength = 5000;
    e.validLength = 3000;
    return e;
}
} // namespace

TEST(ExfatBootSector, OpensFromTheMainRegionOrItsBackup)
{
    struct Case {
        const char* why;
        std::function<void(QByteArray&)> damage;
        bool opens;
        bool fromBackup;
    };
    const Case cases[] = {
        {"intact", [](QByteArray&) {}, true, false},
        {"volume flags and percent in use are left out of the sum",
         [](QByteArray& r) { r[0x6A] = 2, r[0x70] = 50; }, true, false},
        {"an extended boot sector changed", [](QByteArray& r) { r[700] = 1; }, true, true},
        {"the boot sector zeroed", [](QByteArray& r) { r.replace(0, 512, QByteArray(512, 0)); }, true, true},
    };
    for (const Case& c : cases) {
        ExfatImageBuilder b(64);
        c.damage(b.bootRegion());
        const QByteArray image = b.image();
        ExfatBootSector g;
        ASSERT_EQ(ExfatBootSector::locate(ExfatImageBuilder::readerOf(image), quint64(image.size()), &g), c.opens) << c.why;
        EXPECT_EQ(g.fromBackup, c.fromBackup) << c.why;
        EXPECT_EQ(g.clusterBytes(), 1024u);
        EXPECT_EQ(g.rootCluster, ExfatImageBuilder::kRoot);
        EXPECT_EQ(g.clusterOffset(4), b.clusterOffset(4)) << c.why;
    }
    QByteArray both = ExfatImageBuilder(64).image();
    both[20] = 1, both[12 * 512 + 20] = 1;
    ExfatBootSector g;
    EXPECT_FALSE(ExfatBootSector::locate(ExfatImageBuilder::readerOf(both), quint64(both.size()), &g)) << "both regions damaged";
}

TEST(ExfatBootSector, RefusesOrClampsWildGeometry)
{
    struct Case {
        const char* why;
        int offset, width;
        quint64 value;
        bool opens;
        quint32 clusters;
    };
    const Case cases[] = {
        {"as built", 0x5C, 4, 64, true, 64},
        {"cluster count beyond the volume", 0x5C, 4, 0xFFFFFFF0, true, 64},
        {"sector shift 8", 0x6C, 1, 8, false, 0},
        {"cluster of 64 MiB", 0x6D, 1, 17, false, 0},
        {"no FATs", 0x6E, 1, 0, false, 0},
        {"FAT inside the boot regions", 0x50, 4, 12, false, 0},
        {"heap overlapping the FAT", 0x58, 4, 24, false, 0},
        {"root beyond the heap", 0x60, 4, 70, false, 0},
        {"a FAT BPB where exFAT keeps zeros", 0x0B, 2, 512, false, 0},
    };
    for (const Case& c : cases) {
        QByteArray sector = ExfatImageBuilder(64).image().left(512);
        for (int i = 0; i < c.width; ++i)
            sector[c.offset + i] = char((c.value >> (8 * i)) & 0xFF);
        ExfatBootSector g;
        EXPECT_EQ(ExfatBootSector::parse(sector.constData(), 512, 1 << 20, &g), c.opens) << c.why;
        if (c.opens) {
            EXPECT_EQ(g.clusterCount, c.clusters) << c.why;
        }
    }
}

TEST(ExfatEntrySet, DecodesLiveAndDeletedSetsAndRefusesBrokenOnes)
{
    const QString longName = QString::fromUtf8("照片 2020 \xF0\x9F\x93\xB7 a long report.txt"); // two name entries
    struct Case {
        const char* why;
        QByteArray set;
        size_t available; // entries
        bool good;
    };
    Entry badSum = entry(QStringLiteral("x.txt"), true);
    badSum.breakChecksum = true;
    QByteArray mixed = ExfatImageBuilder::entrySet(entry(QStringLiteral("x.txt"), true));
    mixed[32] = char(0xC0); // the stream still in use under a deleted file entry
    QByteArray noName = ExfatImageBuilder::entrySet(entry(QStringLiteral("x.txt")));
    noName[64] = char(0xC0);
    const Case cases[] = {
        {"live", ExfatImageBuilder::entrySet(entry(longName)), 4, true},
        {"deleted", ExfatImageBuilder::entrySet(entry(longName, true)), 4, true},
        {"cut off by the end of the directory", ExfatImageBuilder::entrySet(entry(longName)), 3, false},
        {"checksum", ExfatImageBuilder::entrySet(badSum), 3, false},
        {"live and deleted entries mixed", mixed, 3, false},
        {"a name entry of the wrong type", noName, 3, false},
    };
    for (const Case& c : cases) {
        ExfatEntrySet s;
        const auto got = ExfatEntrySet::decode(reinterpret_cast<const uchar*>(c.set.constData()), c.available, &s);
        ASSERT_EQ(got == ExfatEntrySet::Outcome::Good, c.good) << c.why;
        if (!c.good)
            continue;
        EXPECT_TRUE(s.name == longName) << c.why;
        EXPECT_EQ(s.deleted, c.set[0] == 0x05) << c.why;
        EXPECT_EQ(s.entryCount, 4);
        EXPECT_EQ(s.firstCluster, 9u);
        EXPECT_EQ(s.dataLength, 5000u);
        EXPECT_EQ(s.validLength, 3000u);
        EXPECT_TRUE(s.noFatChain);
        EXPECT_EQ(s.modifiedMsecs, 1603771260000u) << "2020-10-27 04:01:00 UTC";
    }
}

TEST(ExfatDirectory, SkipsBrokenSetsAndFindsTheBitmap)
{
    ExfatImageBuilder b(64);
    Entry broken = entry(QStringLiteral("broken.txt"), true);
    broken.breakChecksum = true;
    b.addEntrySet(ExfatImageBuilder::kRoot, entry(QStringLiteral("a.txt")));
    b.addEntrySet(ExfatImageBuilder::kRoot, broken);
    b.addEntrySet(ExfatImageBuilder::kRoot, entry(QStringLiteral("b.txt"), true));
    const QByteArray image = b.image();
    const auto* root = reinterpret_cast<const uchar*>(image.constData() + b.clusterOffset(ExfatImageBuilder::kRoot));
    const ExfatDirectory dir = ExfatDirectory::read(root, ExfatImageBuilder::kClusterBytes);
    ASSERT_EQ(dir.sets.size(), 2);
    EXPECT_EQ(dir.sets[0].name, QStringLiteral("a.txt"));
    EXPECT_EQ(dir.sets[1].name, QStringLiteral("b.txt"));
    EXPECT_EQ(dir.corruptSets, 1);
    EXPECT_EQ(dir.bitmapCluster, ExfatImageBuilder::kBitmapCluster);
    EXPECT_EQ(dir.bitmapBytes, 8u);
}

TEST(ExfatTimestamp, TakesTenMillisecondStepsAndTheZone)
{
    struct Case {
        quint32 stamp;
        quint8 tenMs, offset;
        quint64 ms;
    };
    const quint64 base = 1603771260000; // 2020-10-27 04:01:00 UTC
    const Case cases[] = {
        {0x515B2020, 0, 0x80, base},
        {0x515B2020, 199, 0x80, base + 1990},
        {0x515B2020, 250, 0x80, base + 1990},                  // steps beyond 199 clamp
        {0x515B2020, 0, 0x80 | 32, base - 8 * 3600000},         // UTC+8
        {0x515B2020, 0, 0x80 | (0x80 - 20), base + 5 * 3600000}, // UTC-5
        {0x515B2020, 0, 0x00, base - 8 * 3600000},              // no zone: read as UTC+8
        {0x515B2021, 0, 0x80, base + 2000},
        {0x00210000, 0, 0x80, 315532800000},                    // 1980-01-01
        {0x51BB2020, 0, 0x80, 0},                               // month 13
    };
    for (const Case& c : cases)
        EXPECT_EQ(ExfatTimestamp::toMsecs(c.stamp, c.tenMs, c.offset), c.ms) << std::hex << c.stamp << " " << int(c.offset);
}
