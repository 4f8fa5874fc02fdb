#include "fat32/Fat32BootSector.h"
#include "fat32/Fat32DirEntry.h"
#include "fat32/Fat32LongName.h"
#include "fat32/Fat32Table.h"
#include "imaging/Fat32ImageBuilder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {
QByteArray bootWith(quint8 spc, quint16 reserved, quint8 fats, quint32 fatSectors, const char* type = "FAT32   ")
{
    Fat32ImageBuilder b;
    QByteArray s = b.bootSector();
    s[0x0D] = char(spc);
    s[0x0E] = char(reserved & 0xFF);
    s[0x0F] = char(reserved >> 8);
    s[0x10] = char(fats);
    for (int i = 0; i < 4; ++i)
        s[0x24 + i] = char((fatSectors >> (8 * i)) & 0xFF);
    std::memcpy(s.data() + 0x52, type, 8);
    return s;
}
} // namespace

TEST(Fat32BootSector, RefusesWhatCannotBeAFat32Volume)
{
    struct Case {
        const char* why;
        QByteArray sector;
        bool accepted;
    };
    const Case cases[] = {
        {"FAT32 and blanks", bootWith(1, 32, 2, 10, "FAT32   "), true},
        {"FAT32 and other bytes", bootWith(1, 32, 2, 10, "FAT32xyz"), true},
        {"a FAT32 layout labelled FAT16: the layout decides", bootWith(1, 32, 2, 10, "FAT16   "), true},
        {"0 sectors per cluster", bootWith(0, 32, 2, 10), false},
        {"3 sectors per cluster", bootWith(3, 32, 2, 10), false},
        {"no reserved sectors", bootWith(1, 0, 2, 10), false},
        {"FAT of 0 sectors", bootWith(1, 32, 2, 0), false},
        {"short buffer", bootWith(1, 32, 2, 10).left(0x50), false},
    };
    for (const Case& c : cases) {
        Fat32BootSector g;
        EXPECT_EQ(Fat32BootSector::parse(c.sector.constData(), size_t(c.sector.size()), &g), c.accepted) << c.why;
    }
}

TEST(Fat32BootSector, TheLoadedFatIsClampedToTheVolume)
{
    Fat32BootSector g;
    g.clusterBytes = 512;
    g.clusterShift = 9;
    g.dataOffset = 1 << 20;
    g.fatBytes = quint64(0xFFFFFFFF) * 512; // a wild FAT size
    g.volumeBytes = (1 << 20) + 100 * 512;
    EXPECT_EQ(g.usableFatEntries(~quint64(0)), 102u) << "100 clusters plus the two reserved entries";
    EXPECT_EQ(g.usableFatEntries((1 << 20) + 10 * 512), 12u) << "the device ends before the volume says";
    g.volumeBytes = ~quint64(0);
    EXPECT_LE(g.usableFatEntries(~quint64(0)), quint64(0x0FFFFFF7)) << "28-bit cluster numbers";
    g.fatBytes = 40;
    EXPECT_EQ(g.usableFatEntries(~quint64(0)), 10u);
}

TEST(Fat32Table, ChainsEndWhereTheFatSays)
{
    Fat32Table fat(16);
    quint32* e = reinterpret_cast<quint32*>(fat.bytes());
    e[3] = 0x0FFFFFFF;              // one cluster
    e[4] = 5, e[5] = 6, e[6] = 0x0FFFFFF8;
    e[7] = 8, e[8] = 0x0FFFFFF7;     // runs into the bad-cluster mark
    e[9] = 0xFFFFFFF8;               // end mark with the top bits set
    e[10] = 0x10000005;              // above the end marks: ends too
    e[11] = 12, e[12] = 11;          // a loop
    e[13] = 0;                       // cleared: a deleted file's first cluster alone
    e[14] = 99;                      // points past the table
    struct Case {
        quint32 start;
        QList<uint> chain;
    };
    const Case cases[] = {
        {0, {}}, {1, {}}, {3, {3}}, {4, {4, 5, 6}}, {7, {7, 8}}, {9, {9}}, {10, {10}},
        {13, {13}}, {14, {14}}, {16, {}}, {0x0FFFFFF7, {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(fat.chain(c.start), c.chain) << c.start;
    EXPECT_EQ(fat.chain(11).size(), 16) << "a loop ends at the table's length";
}

TEST(Fat32Table, ATinyCacheAnswersAsTheWholeTable)
{
    // Chains, loops, end and bad marks, reserved top bits and free stretches,
    // read through a cache far smaller than the table, block sizes that don't divide it.
    constexpr quint32 kEntries = 300;
    std::vector<quint32> raw(kEntries);
    quint32 seed = 12345;
    for (quint32& e : raw) {
        seed = seed * 1103515245u + 12345u;
        const quint32 pick = (seed >> 16) % 8;
        e = pick < 3 ? 0 : pick == 3 ? 0x0FFFFFFF : pick == 4 ? Fat32Table::kBadCluster : pick == 5 ? 0x30000000 : (seed >> 8) % (kEntries + 20);
    }
    Fat32Table whole(kEntries);
    std::memcpy(whole.bytes(), raw.data(), kEntries * sizeof(quint32));
    for (const auto& [blockEntries, blocks] : {std::pair{7, 2}, std::pair{64, 1}, std::pair{1000, 3}}) {
        const Fat32Table cached(kEntries, [&raw](quint64 first, quint32* out, quint64 count) {
            std::copy_n(raw.begin() + qsizetype(first), count, out);
        }, quint64(blockEntries), blocks);
        for (quint32 c = 0; c < kEntries + 2; ++c) {
            ASSERT_EQ(cached.chain(c), whole.chain(c)) << c;
            ASSERT_EQ(cached.isFree(c), whole.isFree(c)) << c;
            ASSERT_EQ(cached.nextFree(c), whole.nextFree(c)) << c;
            QList<uint> a, b;
            cached.visitFileClusters(c, 9, [&a](quint32 x) { a.append(x); return true; });
            whole.visitFileClusters(c, 9, [&b](quint32 x) { b.append(x); return true; });
            ASSERT_EQ(a, b) << c;
        }
    }
}

TEST(Fat32DirEntry, StampsAreTheWallClockAtUtcPlus8)
{
    struct Case {
        quint16 date, time;
        quint64 seconds;
    };
    const Case cases[] = {
        {0x0021, 0x0000, 315504000},  // 1980-01-01 00:00:00
        {0x0061, 0x0000, 320688000},  // 1980-03-01, behind a leap day
        {0x5021, 0x6000, 1577851200}, // 2020-01-01 12:00:00
        {0x285D, 0xBF7D, 951839998},  // 2000-02-29 23:59:58
    };
    for (const Case& c : cases)
        EXPECT_EQ(Fat32DirEntry::stampMsecs(c.date, c.time), c.seconds * 1000) << std::hex << c.date;
}

TEST(Fat32DirEntry, ShortNamesTakeTheCaseFlagsOfTheirParts)
{
    struct Case {
        const char* name11;
        quint8 first, flags;
        const char* shown;
    };
    const Case cases[] = {
        {"README  TXT", 'R', 0x00, "README.TXT"},
        {"README  TXT", 'R', 0x18, "readme.txt"},
        {"README  TXT", 'R', 0x08, "readme.TXT"},
        {"README  TXT", 0xE5, 0x10, "_EADME.txt"}, // deleted: the first letter stays lost
        {"A1_B~2     ", 'A', 0x08, "a1_b~2"},      // only letters change
    };
    for (const Case& c : cases) {
        uchar entry[Fat32DirEntry::kBytes] = {};
        std::copy(c.name11, c.name11 + 11, entry);
        entry[0] = c.first;
        entry[0x0C] = c.flags;
        EXPECT_EQ(Fat32DirEntry::decode(entry).shortName(), QLatin1String(c.shown)) << c.shown;
    }
}

TEST(Fat32LongName, NamesStayWholeUpToTwentySlots)
{
    // A surrogate pair split across two slots, and a name that fills its slot without a terminator.
    const QString name = QString::fromUtf8("照片 2020 \xF0\x9F\x93\xB7 report.txt");
    const QString thirteen = QStringLiteral("ABCDEFGHIJKLM");
    struct Case {
        QString name;
        int slotCount;
        int staged;
        int length;
    };
    const Case cases[] = {{name, 2, 2, int(name.size())}, {thirteen, 1, 1, 13}, {thirteen.repeated(25), 25, 20, 260}};
    for (const Case& c : cases) {
        Fat32LongName n;
        for (int s = c.slotCount; s >= 1; --s) {
            const QByteArray slot = Fat32ImageBuilder::slot(c.name.mid((s - 1) * 13, 13), quint8(s), false);
            n.add(reinterpret_cast<const uchar*>(slot.constData()));
        }
        EXPECT_EQ(n.count(), c.staged);
        const QString taken = n.take();
        EXPECT_EQ(taken.size(), c.length);
        if (c.staged == c.slotCount) {
            EXPECT_TRUE(taken == c.name);
        }
        EXPECT_EQ(n.count(), 0);
    }
}
