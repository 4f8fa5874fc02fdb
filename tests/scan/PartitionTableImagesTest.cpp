// Partition tables written by real tools: sfdisk's extended boot record with
// its logical partition moved to slot 1, and third-party MBR and GPT disks
// (read from the shared folder beside the repository; skipped when absent).
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"
#include "scan/device/FileSource.h"
#include "scan/device/PartitionTable.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
// Unpacks archive (tar, gzip or xz) into dir; the path of the disk inside, or empty.
QString unpack(const QString& archive, const QString& dir, const QString& inside)
{
    QProcess p;
    p.setWorkingDirectory(dir);
    if (archive.endsWith(".xz"))
        return CliRunner::unxz(archive, dir, inside);
    if (archive.endsWith(".tgz")) {
        p.start("tar", {"xf", archive});
    } else {
        p.setStandardOutputFile(dir + "/" + inside);
        p.start("gzip", {"-dc", archive});
    }
    p.waitForFinished(-1);
    return p.exitCode() == 0 && QFileInfo::exists(dir + "/" + inside) ? dir + "/" + inside : QString();
}

struct Case {
    QString archive;
    const char* inside;
    DriveLayout::Style style;
    QList<quint32> numbers;
    QStringList names;
};

void expectLayout(const Case& c)
{
    SCOPED_TRACE(c.inside);
    QTemporaryDir dir;
    const QString disk = unpack(c.archive, dir.path(), c.inside);
    ASSERT_FALSE(disk.isEmpty());
    int error = 0;
    const DriveLayout layout = PartitionTable::read(DeviceHandle(FileSource::open(disk, &error)));
    EXPECT_EQ(layout.style, c.style);
    QList<quint32> numbers;
    QStringList names;
    for (const PartitionEntry& e : layout.entries) {
        numbers << e.partitionNumber;
        names << e.typeName;
    }
    EXPECT_EQ(numbers, c.numbers);
    EXPECT_EQ(names, c.names);
}

const QString kFat16 = QStringLiteral("FAT16");
} // namespace

TEST(PartitionTableImages, LogicalPartitionInTheSecondSlotOfItsRecord)
{
    expectLayout({TestPaths::sourceDir() + "/tests/fixtures/disks/ebr-slot1.img.xz", "ebr.img", DriveLayout::Mbr, {5, 6},
                  {kFat16, kFat16}});
}

TEST(PartitionTableImages, ThirdPartyDisksListEveryPartitionWithItsTypeName)
{
    const QString shared = TestPaths::sourceDir() + "/../shared/thirdparty/dfir_ntfs/";
    if (!QFileInfo::exists(shared))
        GTEST_SKIP() << "no third-party images at " << shared.toStdString();
    expectLayout({shared + "mbr-win-512.raw.tgz", "mbr-win-512.raw", DriveLayout::Mbr, {1, 2, 3, 5, 6, 7, 8},
                  QStringList(7, kFat16)});
    expectLayout({shared + "gpt-512-3p.raw.gz", "gpt.raw", DriveLayout::Gpt, {1, 2, 3},
                  {"Linux filesystem", "Linux filesystem", "EFI system"}});
}


