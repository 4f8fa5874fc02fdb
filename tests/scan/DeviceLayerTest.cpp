#include "imaging/DiskImageBuilder.h"
#include "scan/device/DeviceHandle.h"
#include "scan/device/FileSource.h"
#include "scan/device/ImageDeviceLayer.h"
#include "scan/device/MemorySource.h"

#include <QFile>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace {
constexpr quint64 kMiB = 1024 * 1024;

// A disk with an NTFS partition, a partition of another type, and a FAT32 partition
// whose type byte says nothing but whose boot sector does.
QByteArray mixedDisk()
{
    DiskImageBuilder b(8 * kMiB);
    b.writeMbr({{0x07, 2048, 2048}, {0x83, 4096, 2048}, {0x01, 6144, 2048}});
    b.put(6144 * 512, DiskImageBuilder::fat32BootSector(2048));
    return b.bytes();
}
} // namespace

TEST(DeviceLayer, LettersGoFromCAcrossDisksInLayoutOrder)
{
    ImageDeviceLayer layer;
    layer.addImageData("one.img", mixedDisk());
    DiskImageBuilder bare(kMiB);
    bare.put(0, DiskImageBuilder::ntfsBootSector(2048));
    layer.addImageData("two.img", bare.bytes());
    layer.addImageData("blank.img", QByteArray(int(kMiB), '\0'));

    EXPECT_EQ(layer.listDisks(), QList<int>({0, 1, 2}));
    EXPECT_EQ(layer.lettersOfDisk(0), QList<QChar>({'C', 'D'}));
    EXPECT_EQ(layer.lettersOfDisk(1), QList<QChar>({'E'}));
    // A blank disk is one volume to carve, with a letter of its own.
    EXPECT_EQ(layer.lettersOfDisk(2), QList<QChar>({'F'}));

    struct Case {
        QChar letter;
        int disk;
        quint32 partition;
        int type;
    };
    const Case cases[] = {{'C', 0, 1, 0x07}, {'D', 0, 3, 0x01}, {'E', 1, 1, 0x07}, {'e', 1, 1, 0x07}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.letter.toLatin1());
        EXPECT_EQ(layer.deviceNumberOfLetter(c.letter), c.disk);
        ASSERT_TRUE(layer.partitionOfLetter(c.letter));
        EXPECT_EQ(layer.partitionOfLetter(c.letter)->partitionNumber, c.partition);
        EXPECT_EQ(layer.partitionTypeOfLetter(c.letter), c.type);
    }
    EXPECT_EQ(layer.deviceNumberOfLetter('G'), -1);
    int error = 0;
    EXPECT_FALSE(layer.openVolume('G', &error).isValid());
    EXPECT_NE(error, 0);
}

TEST(DeviceLayer, VolumeHandleClipsAtThePartitionEnd)
{
    ImageDeviceLayer layer;
    QByteArray disk = mixedDisk();
    disk[2048 * 512 + 2048 * 512 - 1] = 'L'; // last byte of partition 1
    disk[4096 * 512] = 'N';                  // first byte of partition 2
    layer.addImageData("disk.img", disk);
    int error = 0;
    const DeviceHandle volume = layer.openVolume('C', &error);
    ASSERT_TRUE(volume.isValid());
    EXPECT_EQ(volume.length(), 2048u * 512);
    char buf[16] = {};
    EXPECT_EQ(volume.read(buf, 16, 2048 * 512 - 1), 1);
    EXPECT_EQ(buf[0], 'L');
    EXPECT_EQ(volume.read(buf, 16, 2048 * 512), 0);
    EXPECT_EQ(volume.slice(2048 * 512 - 4, 100).length(), 4u);
}

TEST(DeviceLayer, GeometryGivesTheExactSizeAndImagesAreNamedByFile)
{
    ImageDeviceLayer layer;
    layer.addImageData("card.img", QByteArray(int(3 * kMiB + 512), '\0'));
    const auto g = layer.diskGeometry(0);
    ASSERT_TRUE(g);
    EXPECT_EQ(g->sizeBytes(), 3 * kMiB + 512);
    EXPECT_EQ(layer.diskIdentity(0)->model, QByteArray("card.img"));
    EXPECT_FALSE(layer.diskGeometry(1));
}

TEST(DeviceLayer, ImageFilesAreOpenedReadOnlyAndFolderIsListed)
{
    QTemporaryDir dir;
    DiskImageBuilder b(4 * kMiB);
    b.writeMbr({{0x0C, 2048, 4096}});
    b.put(2048 * 512, DiskImageBuilder::fat32BootSector(4096));
    ASSERT_TRUE(b.save(dir.filePath("b.img")));
    ASSERT_TRUE(b.save(dir.filePath("a.img")));

    QList<int> flagsSeen;
    FileSource::setOpenObserver([&](const QString&, int flags) { flagsSeen.append(flags); });
    ImageDeviceLayer layer(dir.path());
    EXPECT_EQ(layer.listDisks().size(), 2);
    EXPECT_EQ(layer.diskIdentity(0)->model, QByteArray("a.img"));
    int error = 0;
    EXPECT_EQ(layer.addImageFile(dir.filePath("a.img"), &error), 0) << "an image already listed keeps its number";
    EXPECT_EQ(layer.addImageFile(dir.filePath("b.img"), &error), 1);
    ASSERT_TRUE(QFile::copy(dir.filePath("a.img"), dir.filePath("c.img")));
    EXPECT_EQ(layer.addImageFile(dir.filePath("c.img"), &error), 2);
    EXPECT_EQ(layer.addImageFile(dir.filePath("missing.img"), &error), -1);
    EXPECT_EQ(error, ENOENT);
    EXPECT_TRUE(layer.openVolume('C', &error).isValid());
    FileSource::setOpenObserver(nullptr);

    ASSERT_FALSE(flagsSeen.isEmpty());
    for (int flags : flagsSeen) {
        EXPECT_EQ(flags & O_ACCMODE, O_RDONLY);
        EXPECT_TRUE(flags & O_CLOEXEC);
    }
}

TEST(DeviceHandle, ReadsFailOnAnInvalidHandleAndPassSourceErrors)
{
    char buf[8];
    EXPECT_EQ(DeviceHandle().read(buf, 8, 0), -1);
    auto source = std::make_shared<MemorySource>(QByteArray(4096, 'x'));
    source->setReadFilter([](quint64 pos, quint64) { return pos < 1024; });
    const DeviceHandle h(source);
    EXPECT_EQ(h.read(buf, 8, 0), 8);
    // A sector the source refuses comes back as zeros and is recorded.
    QList<BadRange> bad;
    EXPECT_EQ(h.read(buf, 8, 2048, &bad), 8);
    EXPECT_EQ(QByteArray(buf, 8), QByteArray(8, '\0'));
    EXPECT_EQ(bad.size(), 1);
}
