#include "fat32/Fat32BootSector.h"
#include "fat32/FatEntryDecoder.h"

#include <QByteArray>
#include <gtest/gtest.h>

namespace {
// A FAT12/16 boot sector: 512-byte sectors, one reserved sector, 2 FATs, 512 root entries.
QByteArray narrowBoot(quint16 totalSectors, quint8 sectorsPerCluster, quint16 fatSectors, const char* label)
{
    QByteArray s(512, '\0');
    auto put = [&s](int at, quint32 v, int width) {
        for (int i = 0; i < width; ++i)
            s[at + i] = char((v >> (8 * i)) & 0xFF);
    };
    put(0x0B, 512, 2);
    s[0x0D] = char(sectorsPerCluster);
    put(0x0E, 1, 2);
    s[0x10] = 2;
    put(0x11, 512, 2);
    put(0x13, totalSectors, 2);
    put(0x16, fatSectors, 2);
    memcpy(s.data() + 0x36, label, 8);
    put(0x1FE, 0xAA55, 2);
    return s;
}
} // namespace

TEST(FatBootSector, TheClusterCountDecidesTheFatType)
{
    struct Case {
        const char* why;
        QByteArray sector;
        bool opens;
        int bits;
        quint64 dataOffset;
    };
    // Data starts behind 1 reserved sector, two FATs and 32 sectors of root entries.
    const Case cases[] = {
        {"4084 clusters: FAT12 whatever the label", narrowBoot(4084 + 1 + 24 + 32, 1, 12, "FAT16   "), true, 12, (1 + 24 + 32) * 512},
        {"4085 clusters: FAT16", narrowBoot(4085 + 1 + 32 + 32, 1, 16, "FAT12   "), true, 16, (1 + 32 + 32) * 512},
        {"FAT16 of 64 KiB clusters", narrowBoot(65000, 128, 4, "FAT16   "), true, 12, (1 + 8 + 32) * 512},
        {"no signature", narrowBoot(8000, 1, 16, "FAT16   ").left(510), false, 0, 0},
        {"3 sectors per cluster", narrowBoot(8000, 3, 16, "FAT16   "), false, 0, 0},
        {"no room for data", narrowBoot(40, 1, 16, "FAT16   "), false, 0, 0},
    };
    for (const Case& c : cases) {
        Fat32BootSector g;
        ASSERT_EQ(Fat32BootSector::parseAny(c.sector.constData(), size_t(c.sector.size()), &g), c.opens) << c.why;
        if (!c.opens)
            continue;
        EXPECT_EQ(g.fatBits, c.bits) << c.why;
        EXPECT_EQ(g.dataOffset, c.dataOffset) << c.why;
        EXPECT_EQ(g.rootDirBytes, 512u * 32) << c.why;
        EXPECT_EQ(g.rootDirOffset, g.dataOffset - 512 * 32) << c.why;
    }
}

TEST(FatEntryDecoder, NarrowEntriesWidenWithTheirMarks)
{
    // 12-bit entries 0..3 = 0xFF8, 0xFFF, 0x003, 0xFF7 packed in pairs of three bytes,
    // then entry 4 = 0x123 with entry 5 = 0x456.
    const uchar fat12[] = {0xF8, 0xFF, 0xFF, 0x03, 0x70, 0xFF, 0x23, 0x61, 0x45};
    const uchar fat16[] = {0xF8, 0xFF, 0xFF, 0xFF, 0x03, 0x00, 0xF7, 0xFF, 0x34, 0x12};
    struct Case {
        const uchar* raw;
        size_t bytes;
        int bits;
        std::vector<quint32> entries;
    };
    const Case cases[] = {
        {fat12, sizeof fat12, 12, {0x0FFFFFFF, 0x0FFFFFFF, 3, 0x0FFFFFF7, 0x123, 0x456, 0}},
        {fat16, sizeof fat16, 16, {0x0FFFFFFF, 0x0FFFFFFF, 3, 0x0FFFFFF7, 0x1234, 0}},
    };
    for (const Case& c : cases) {
        std::vector<quint32> out(c.entries.size(), 99);
        FatEntryDecoder::decode(c.raw, c.bytes, c.bits, out.data(), out.size());
        EXPECT_EQ(out, c.entries) << c.bits;
    }
}
