#include "diskscan/DiskScan.h"
#include "imaging/DiskImageBuilder.h"
#include "imaging/Fat32ImageBuilder.h"
#include "imaging/NtfsImageBuilder.h"
#include "fixtures/ScanRun.h"
#include "results/FolderNode.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
constexpr quint64 kSector = 512;
constexpr quint64 kMiB = 1024 * 1024;
// The smallest NTFS volume the search scans is larger than this.
constexpr quint64 kSmallestScanned = 0x9600000;

QByteArray pattern(int size, int seed) { return DiskImageBuilder::pattern(size, seed); }

// An NTFS volume of the given size with one deleted file in a deleted folder.
QByteArray ntfsVolume(quint64 bytes, const QByteArray& content)
{
    NtfsImageBuilder::Geometry g;
    g.totalClusters = bytes / g.clusterBytes;
    NtfsImageBuilder b(g);
    const quint32 dir = b.addDirectory("lost", NtfsImageBuilder::kRoot, true);
    b.addFile("report.txt", content, dir);
    return b.build();
}

// A FAT32 volume with one deleted file, its boot sector saying what oem says.
QByteArray fat32Volume(const QByteArray& content, const char* oem = "MSDOS5.0")
{
    Fat32ImageBuilder b;
    std::memcpy(b.bootSector().data() + 3, oem, 8);
    Fat32ImageBuilder::Entry e;
    e.shortName = "PHOTO.JPG";
    e.longName = "photo.jpg";
    e.deleted = true;
    b.addFile(Fat32ImageBuilder::kRoot, e, content);
    return b.image();
}

} // namespace

TEST(DiskScan, FindsVolumesBehindAWipedTableAtOddOffsetsAndRestoresThem)
{
    const QByteArray ntfsFile = pattern(9000, 1);
    const QByteArray fatFile = pattern(3000, 2);
    const quint64 ntfsAt = 63 * kSector;                     // an old-style, unaligned start
    const QByteArray ntfs = ntfsVolume(kSmallestScanned + 8 * kMiB, ntfsFile);
    const quint64 fatAt = ntfsAt + quint64(ntfs.size()) + 7 * kSector; // odd sector offset
    const QByteArray fat = fat32Volume(fatFile);
    DiskImageBuilder disk(fatAt + quint64(fat.size()) + kMiB);
    disk.put(ntfsAt, ntfs);
    disk.put(fatAt, fat);

    ScanRun s(disk.bytes(), Fs::Disk);
    ASSERT_TRUE(s.run());
    EXPECT_EQ(s.topFolders(), QStringList({"0 NTFS", "1 FAT32"}));
    ASSERT_EQ(s.diskBegins.size(), 2);
    EXPECT_EQ(s.diskBegins[1].at(0).toInt(), 1);
    EXPECT_EQ(s.diskBegins[1].at(1).toString(), QString("FAT32"));
    EXPECT_EQ(s.diskEnds, 2);
    EXPECT_EQ(s.results, 2u);
    const auto* search = static_cast<DiskScan*>(s.scan.get());
    ASSERT_EQ(search->partitionCount(), 2);
    EXPECT_EQ(search->partition(0)->partOffset, ntfsAt);
    EXPECT_EQ(search->partition(1)->partOffset, fatAt);

    // Previews go through the scanner the file's folder names.
    EXPECT_TRUE(s.content("1 FAT32/photo.jpg") == fatFile);
    EXPECT_TRUE(s.content("0 NTFS/lost/report.txt") == ntfsFile);

    QTemporaryDir target;
    ASSERT_TRUE(s.restore(target.path()));
    QFile a(target.filePath("disk.img/0 NTFS/lost/report.txt"));
    QFile b(target.filePath("disk.img/1 FAT32/photo.jpg"));
    ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
    EXPECT_TRUE(a.readAll() == ntfsFile);
    EXPECT_TRUE(b.readAll() == fatFile);
}

TEST(DiskScan, FindsSmallNtfsAndAnyOemFat32AndStopsAtTheDisksEnd)
{
    struct Case {
        const char* what;
        quint64 ntfsBytes;      // 0: none
        const char* fatOem;     // null: none
        bool fatCutShort;       // the disk ends inside the FAT32 volume
        QStringList folders;
    };
    const Case cases[] = {
        {"a small NTFS is scanned too", 16 * kMiB, "MSDOS5.0", false, {"0 NTFS", "1 FAT32"}},
        {"FAT32 with another OEM text", 0, "mkfs.fat", false, {"0 FAT32"}},
        {"a volume cut short by the disk's end", 0, "MSWIN4.1", true, {"0 FAT32"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QByteArray fatFile = pattern(1000, 3);
        QByteArray fat = c.fatOem ? fat32Volume(fatFile, c.fatOem) : QByteArray();
        QByteArray ntfs = c.ntfsBytes ? ntfsVolume(c.ntfsBytes, pattern(100, 4)) : QByteArray();
        const quint64 tail = c.fatCutShort ? 0 : kMiB;
        if (c.fatCutShort)
            fat.chop(fat.size() / 4);
        DiskImageBuilder disk(kMiB + quint64(ntfs.size()) + 2 * kSector + quint64(fat.size()) + tail);
        disk.writeMbr({}); // a table with no entries: the search never reads it
        disk.put(kMiB, ntfs);
        if (!fat.isEmpty())
            disk.put(kMiB + quint64(ntfs.size()) + 2 * kSector, fat);
        ScanRun s(disk.bytes(), Fs::Disk);
        ASSERT_TRUE(s.run());
        EXPECT_EQ(s.topFolders(), c.folders);
        EXPECT_EQ(s.diskBegins.size(), c.folders.size());
    }
}

TEST(DiskScan, StopEndsTheSearchWithWhatItFound)
{
    DiskImageBuilder disk(16 * kMiB);
    const QByteArray fat = fat32Volume(pattern(500, 5));
    disk.put(kMiB, fat);
    disk.put(kMiB + quint64(fat.size()) + 4 * kSector, fat);
    ScanRun s(disk.bytes(), Fs::Disk);
    // Stop as soon as the first partition's scan is over: the second is never built.
    QObject::connect(s.scan.get(), &PartScan::diskScanEnd, s.scan.get(), [&] { s.scan->stop(); },
                     Qt::DirectConnection);
    ASSERT_TRUE(s.run());
    EXPECT_EQ(s.topFolders(), QStringList({"0 FAT32"}));
    EXPECT_EQ(s.results, 1u);
}
