#include "diskscan/BootSectorProbe.h"
#include "imaging/DiskImageBuilder.h"

#include <gtest/gtest.h>

namespace {
QByteArray with(QByteArray sector, int offset, const QByteArray& bytes)
{
    sector.replace(offset, bytes.size(), bytes);
    return sector;
}
} // namespace

TEST(BootSectorProbe, RecognisesNtfsAndFat32BootSectorsOnly)
{
    const QByteArray ntfs = DiskImageBuilder::ntfsBootSector(0x64000);
    const QByteArray fat = DiskImageBuilder::fat32BootSector(0x20000);
    struct Case {
        const char* what;
        QByteArray sector;
        BootSectorProbe::Kind kind;
        quint64 sectors;
    };
    const Case cases[] = {
        {"ntfs", ntfs, BootSectorProbe::Ntfs, 0x64000},
        {"fat32", fat, BootSectorProbe::Fat32, 0x20000},
        {"ntfs without 55 AA", with(ntfs, 0x1FE, QByteArray(2, '\0')), BootSectorProbe::None, 0},
        {"ntfs stating 0 sectors", with(ntfs, 0x28, QByteArray(8, '\0')), BootSectorProbe::None, 0},
        {"fat32 with another OEM text", DiskImageBuilder::fat32BootSector(0x20000, "mkfs.fat"), BootSectorProbe::None, 0},
        {"fat32 stating 0 sectors", with(fat, 0x20, QByteArray(4, '\0')), BootSectorProbe::None, 0},
        {"MSDOS5.0 but FAT16", with(fat, 0x52, "FAT16"), BootSectorProbe::None, 0},
        {"an MBR", with(QByteArray(512, '\0'), 0x1FE, "\x55\xAA"), BootSectorProbe::None, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(c.sector.size(), 512);
        const auto r = BootSectorProbe::test(reinterpret_cast<const uchar*>(c.sector.constData()));
        EXPECT_EQ(r.kind(), c.kind);
        if (c.kind != BootSectorProbe::None) {
            EXPECT_EQ(r.totalSectors(), c.sectors);
        }
    }
}
