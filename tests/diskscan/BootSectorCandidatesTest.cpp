#include "diskscan/BootSectorCandidates.h"
#include "imaging/Fat32ImageBuilder.h"
#include "imaging/NtfsImageBuilder.h"

#include <QtEndian>
#include <gtest/gtest.h>

namespace {
using Kind = VolumeCandidate::Kind;
constexpr quint64 kAt = 1000 * 512; // where the tested sector lies on the disk

QByteArray with(QByteArray s, int offset, quint32 value, int width)
{
    for (int i = 0; i < width; ++i)
        s[offset + i] = char(value >> (8 * i));
    return s;
}

// A FAT12/16 BPB: 512-byte sectors, one per cluster, one reserved, two FATs, 512 root entries.
QByteArray fat16Form(quint16 totalSectors, quint16 fatSectors)
{
    QByteArray s = with(Fat32ImageBuilder().bootSector(), 0x0E, 1, 2);
    s = with(with(s, 0x11, 512, 2), 0x13, totalSectors, 2);
    return with(with(s, 0x16, fatSectors, 2), 0x20, 0, 4);
}
} // namespace

TEST(BootSectorCandidates, KnowsVolumesByTheirStructureAndTheirBackupsByWhereTheyLie)
{
    const QByteArray fat32 = Fat32ImageBuilder().bootSector();
    NtfsImageBuilder::Geometry g;
    g.totalClusters = 4096;
    const QByteArray ntfs = NtfsImageBuilder(g).build().left(512);
    const quint64 ntfsSectors = qFromLittleEndian<quint64>(ntfs.constData() + 0x28);
    struct Case {
        const char* what;
        QByteArray sector;
        Kind kind;
        qint64 backupStart; // -1: no backup reading
    };
    const Case cases[] = {
        {"FAT32 with any OEM text", with(fat32, 3, 0x2E736B6D, 4), Kind::Fat32, -1},
        {"FAT32 naming its backup at sector 6", with(fat32, 0x32, 6, 2), Kind::Fat32, qint64(kAt - 6 * 512)},
        {"FAT16 by its cluster count", fat16Form(20000, 80), Kind::Fat16, -1},
        {"FAT12 by its cluster count", fat16Form(4000, 12), Kind::Fat12, -1},
        {"a FAT too small for the clusters", fat16Form(20000, 20), Kind::None, -1},
        {"three sectors a cluster", with(fat32, 0x0D, 3, 1), Kind::None, -1},
        {"sectors of 256 bytes", with(fat32, 0x0B, 256, 2), Kind::None, -1},
        {"three FATs", with(fat32, 0x10, 3, 1), Kind::None, -1},
        {"no jump", with(fat32, 0, 0, 1), Kind::None, -1},
        {"no media byte", with(fat32, 0x15, 0, 1), Kind::None, -1},
        {"no 55 AA", with(fat32, 0x1FE, 0, 2), Kind::None, -1},
        {"NTFS, small", ntfs, Kind::Ntfs, -1},
        {"NTFS backup at the volume's last sector", ntfs, Kind::Ntfs, 0},
        {"NTFS whose MFT lies outside", with(ntfs, 0x30, 0xFFFFFF, 4), Kind::None, -1},
        {"NTFS stating 0 sectors", with(ntfs, 0x28, 0, 4), Kind::None, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(c.sector.size(), 512);
        const auto* bytes = reinterpret_cast<const uchar*>(c.sector.constData());
        // The NTFS backup case tests the sector at the volume's last sector.
        const quint64 at = c.kind == Kind::Ntfs && c.backupStart == 0 ? ntfsSectors * 512 : kAt;
        const QList<VolumeCandidate> found = BootSectorCandidates::test(bytes, at);
        ASSERT_EQ(found.isEmpty(), c.kind == Kind::None);
        if (c.kind == Kind::None)
            continue;
        EXPECT_EQ(found[0].kind, c.kind);
        EXPECT_EQ(found[0].volumeStart, at);
        EXPECT_FALSE(found[0].fromBackup);
        ASSERT_EQ(found.size(), c.backupStart < 0 ? 1 : 2);
        if (c.backupStart >= 0) {
            EXPECT_TRUE(found[1].fromBackup);
            EXPECT_EQ(found[1].volumeStart, quint64(c.backupStart));
        }
    }
}
