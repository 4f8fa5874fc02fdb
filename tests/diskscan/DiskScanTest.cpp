#include "diskscan/DiskScan.h"
#include "fixtures/DiskImageBuilder.h"
#include "fixtures/Fat32ImageBuilder.h"
#include "fixtures/NtfsImageBuilder.h"
#include "fixtures/SignalWaiter.h"
#include "results/FolderNode.h"
#include "scan/device/ImageDeviceLayer.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
constexpr quint64 kSector = 512;
constexpr quint64 kMiB = 1024 * 1024;
// An NTFS volume of this size, the smallest the search once scanned, and
// more, shows that nothing about the volumes' sizes is assumed.
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

// A disk search over an in-memory disk, run to its end.
struct Search {
    ImageDeviceLayer layer;
    FolderNode top;
    std::unique_ptr<DiskScan> scan;
    QList<QList<QVariant>> begins;
    int ends = 0;
    quint64 results = 0;

    explicit Search(const QByteArray& disk)
    {
        layer.addImageData("disk.img", disk);
        DeviceLayer::setInstance(&layer);
        scan = std::make_unique<DiskScan>(0);
        scan->rootFolder = top.addChild("disk.img", 0, true);
    }
    ~Search()
    {
        scan.reset();
        top.children.clear();
        DeviceLayer::setInstance(nullptr);
    }
    void run()
    {
        QSignalSpy begin(scan.get(), &PartScan::diskScanBegin);
        QSignalSpy end(scan.get(), &PartScan::diskScanEnd);
        QSignalSpy done(scan.get(), &PartScan::scanDone);
        scan->start();
        waitForThread(scan.get());
        ASSERT_EQ(done.count(), 1);
        results = done.at(0).at(0).toULongLong();
        for (const auto& b : begin)
            begins.append(b);
        ends = int(end.count());
    }
    QStringList folders() const
    {
        QStringList names;
        for (const FolderNode* f : scan->rootFolder->children)
            names.append(f->name);
        return names;
    }
};
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

    Search s(disk.bytes());
    s.run();
    EXPECT_EQ(s.folders(), QStringList({"0 NTFS", "1 FAT32"}));
    ASSERT_EQ(s.begins.size(), 2);
    EXPECT_EQ(s.begins[1].at(0).toInt(), 1);
    EXPECT_EQ(s.begins[1].at(1).toString(), QString("FAT32"));
    EXPECT_EQ(s.ends, 2);
    EXPECT_EQ(s.results, 2u);
    ASSERT_EQ(s.scan->partScans.size(), 2);
    EXPECT_EQ(s.scan->partScans[0]->partOffset, ntfsAt);
    EXPECT_EQ(s.scan->partScans[1]->partOffset, fatAt);

    // Previews go through the scanner the file's folder names.
    FolderNode* fatFolder = s.scan->rootFolder->children[1];
    ASSERT_EQ(fatFolder->files.size(), 1);
    s.scan->partIndex = fatFolder->partIndex;
    QByteArray buf(int(s.scan->fileContent(nullptr, fatFolder->files[0])), '\0');
    buf.resize(int(s.scan->fileContent(buf.data(), fatFolder->files[0])));
    EXPECT_TRUE(buf == fatFile);

    QTemporaryDir target;
    QSignalSpy undone(s.scan.get(), &PartScan::undeleteDone);
    s.scan->setRestoreDir(target.path());
    s.scan->start();
    waitForThread(s.scan.get());
    EXPECT_EQ(undone.count(), 1);
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
        Search s(disk.bytes());
        s.run();
        EXPECT_EQ(s.folders(), c.folders);
        EXPECT_EQ(s.begins.size(), c.folders.size());
    }
}

TEST(DiskScan, StopEndsTheSearchWithWhatItFound)
{
    DiskImageBuilder disk(16 * kMiB);
    const QByteArray fat = fat32Volume(pattern(500, 5));
    disk.put(kMiB, fat);
    disk.put(kMiB + quint64(fat.size()) + 4 * kSector, fat);
    Search s(disk.bytes());
    // Stop as soon as the first partition's scan is over: the second is never built.
    QObject::connect(s.scan.get(), &PartScan::diskScanEnd, s.scan.get(), [&] { s.scan->stop(); },
                     Qt::DirectConnection);
    s.run();
    EXPECT_EQ(s.folders(), QStringList({"0 FAT32"}));
    EXPECT_EQ(s.results, 1u);
}
