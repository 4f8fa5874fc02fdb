#include "PrintQString.h"
#include "fat32/Fat32VolumeScan.h"
#include "results/Fat32File.h"
#include "fixtures/ScanRun.h"
#include "results/FolderNode.h"
#include "scan/device/MemorySource.h"
#include "fixtures/CliRunner.h"
#include "imaging/Fat32ImageBuilder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
using Entry = Fat32ImageBuilder::Entry;
constexpr quint32 kRoot = Fat32ImageBuilder::kRoot;

Entry named(const char* shortName, const QString& longName = {}, bool deleted = true)
{
    Entry e;
    e.shortName = shortName;
    e.longName = longName;
    e.deleted = deleted;
    return e;
}

// A scanner over the volume "E" in memory, as the wizard sets one up.
struct ScannedVolume : ScanRun {
    explicit ScannedVolume(const QByteArray& volume, bool doExtra = false, ReadFails readable = {})
        : ScanRun(new Fat32VolumeScan(QStringLiteral("E"), memoryVolume(volume, std::move(readable)), 0), false)
    {
        scan->doExtra = doExtra;
    }
    Fat32VolumeScan* fat() const { return as<Fat32VolumeScan>(); }
};

QByteArray pattern(const char* tag, int size) { return Fat32ImageBuilder::pattern(QString::fromLatin1(tag), size); }

// Marks a directory deleted the way a delete leaves it: entry 0xE5, chain cleared.
quint32 deletedDirectory(Fat32ImageBuilder& b, quint32 parent, Entry e)
{
    e.deleted = true;
    return b.addDirectory(parent, e);
}

// One volume that holds most of what a directory walk meets, 512-byte clusters.
struct MixedVolume {
    Fat32ImageBuilder b;
    quint32 photos = 0, oldDir = 0, gone = 0, big = 0, loop = 0, tail = 0;

    MixedVolume()
    {
        b.addFile(kRoot, named("LIVE.TXT", {}, false), pattern("live", 700));
        b.addFile(kRoot, named("QUARTE~1.TXT", QStringLiteral("Quarterly report.txt")), pattern("report", 1500));
        b.addFile(kRoot, named("TEST.TXT"), pattern("test", 100));
        b.addFile(kRoot, named("README"), pattern("readme", 20));
        b.addRaw(kRoot, Fat32ImageBuilder::rawEntry("\x05" "BC     TXT", 0x20, 0, 0));
        b.addFile(kRoot, named("EMPTY.TXT", QStringLiteral("empty.txt")), QByteArray());
        addSplitFile();
        addZeroSizedWithCluster();
        addTailFile();

        photos = deletedDirectory(b, kRoot, named("OLDPHO~1", QStringLiteral("Old Photos")));
        b.addFile(photos, named("A.JPG", QStringLiteral("a.jpg")), pattern("a", 600));
        b.addFile(photos, named("B.JPG", {}, false), pattern("b", 300)); // live entry, deleted folder
        const quint32 keep = b.addDirectory(photos, named("KEEP", {}, false));
        b.addFile(keep, named("C.TXT", {}, false), pattern("c", 10));
        b.addFile(keep, named("D.TXT"), pattern("d", 10));
        b.setFat(photos, 0);

        oldDir = deletedDirectory(b, kRoot, named("OLDDIR"));
        b.addFile(oldDir, named("X.TXT"), pattern("x", 10));
        b.setFat(oldDir, 0);

        gone = deletedDirectory(b, kRoot, named("GONE"));
        b.addFile(gone, named("Y.TXT"), pattern("y", 10));
        b.setFat(gone, 0);
        b.writeAt(gone, pattern("reused", 512)); // the cluster went to other data

        big = b.addDirectory(kRoot, named("BIG", {}, false));
        for (int i = 0; i < 40; ++i)
            b.addEntry(big, named(QByteArray("F") + QByteArray::number(i), {}, false));
        b.addFile(big, named("LAST.TXT"), pattern("last", 30));

        loop = b.addDirectory(kRoot, named("LOOP", {}, false));
        b.addFile(loop, named("L.TXT"), pattern("l", 10));
        b.setFat(loop, loop); // its chain leads back to itself

        Entry alias = named("ALIAS", {}, false); // a second entry for BIG's cluster
        alias.directory = true;
        alias.firstCluster = big;
        b.addEntry(kRoot, alias);
    }

    // Three clusters whose middle one went to a live file after the delete.
    void addSplitFile()
    {
        const QByteArray content = pattern("split", 1400);
        const quint32 first = b.allocate(4);
        b.writeAt(first, content.left(512));
        b.writeAt(first + 2, content.mid(512, 512));
        b.writeAt(first + 3, content.mid(1024));
        for (quint32 c = first; c < first + 4; ++c)
            b.setFat(c, 0);
        b.setFat(first + 1, Fat32ImageBuilder::kEnd);
        Entry live = named("MID.BIN", {}, false);
        live.firstCluster = first + 1;
        live.size = 512;
        b.addEntry(kRoot, live);
        Entry split = named("SPLIT.BIN", QStringLiteral("split.bin"));
        split.firstCluster = first;
        split.size = quint32(content.size());
        b.addEntry(kRoot, split);
    }

    void addZeroSizedWithCluster()
    {
        Entry e = named("ZERO.TXT");
        e.firstCluster = b.allocate(1);
        b.setFat(e.firstCluster, 0);
        b.addEntry(kRoot, e);
    }

    // A deleted file in the volume's last cluster that claims two: nothing
    // follows it, so its second half can only come back as zeros.
    void addTailFile()
    {
        tail = 2 + Fat32ImageBuilder::Geometry{}.clusters - 1;
        b.writeAt(tail, pattern("tail", 512));
        Entry e = named("TAIL.BIN");
        e.firstCluster = tail;
        e.size = 1024;
        b.addEntry(kRoot, e);
    }
};

QByteArray readFile(const QString& path) { return CliRunner::readFile(path); }
} // namespace

TEST(Fat32Scan, ListsDeletedFilesThroughLiveAndDeletedDirectories)
{
    MixedVolume v;
    ScannedVolume s(v.b.image());
    ASSERT_TRUE(s.run());
    const QStringList expected = {
        "Quarterly report.txt\t1500",
        "_EST.TXT\t100",
        "_EADME\t20",
        "empty.txt\t0",
        "split.bin\t1400",
        "_ERO.TXT\t0",
        "_AIL.BIN\t1024",
        "Old Photos/a.jpg\t600",
        "Old Photos/B.JPG\t300",
        "Old Photos/KEEP/_.TXT\t10",
        "_LDDIR/_.TXT\t10",
        "BIG/_AST.TXT\t30",
        "LOOP/_.TXT\t10",
    };
    EXPECT_EQ(s.listing(), expected);
    EXPECT_EQ(s.results, quint64(expected.size()));
    EXPECT_EQ(s.totalSize, 1500u + 100 + 20 + 1400 + 1024 + 600 + 300 + 10 + 10 + 30 + 10);
    EXPECT_FALSE(s.root()->ntfs);
    EXPECT_FALSE(s.root()->findChild("Old Photos")->ntfs);
}

// The preview reads through fileContent, the same clusters as the restore.
TEST(Fat32Scan, PreviewReadsTheListedClusters)
{
    MixedVolume v;
    ScannedVolume s(v.b.image());
    ASSERT_TRUE(s.run());
    EXPECT_EQ(s.content("split.bin"), pattern("split", 1400));
    EXPECT_EQ(s.content("_AIL.BIN").left(512), pattern("tail", 512));
    EXPECT_EQ(s.scan->fileContent(nullptr, s.file("split.bin")), 1400u);
}

TEST(Fat32Scan, ProgressIsScaledToTheFat)
{
    Fat32ImageBuilder b;
    b.addFile(kRoot, named("A.TXT"), pattern("a", 10));
    b.addFile(kRoot, named("LONGNA~1.TXT", QStringLiteral("long name.txt")), pattern("b", 10));
    ScannedVolume s(b.image());
    ASSERT_TRUE(s.run());
    ASSERT_EQ(s.beginTotals.size(), 1);
    EXPECT_EQ(s.beginTotals.first(), 514) << "entries of the FAT: 512 clusters and 2";

    ScannedVolume deep(b.image(), true);
    ASSERT_TRUE(deep.run());
    EXPECT_EQ(deep.beginTotals.first(), 514) << "the carving walk goes on over the same clusters";
    EXPECT_EQ(deep.results, 2u);
}

TEST(Fat32Scan, AnUnreadableDirectoryClusterIsSkipped)
{
    Fat32ImageBuilder b;
    const quint32 bad = b.addDirectory(kRoot, named("BAD", {}, false));
    b.addFile(bad, named("LOST.TXT"), pattern("lost", 10));
    const quint32 good = b.addDirectory(kRoot, named("GOOD", {}, false));
    b.addFile(good, named("FOUND.TXT"), pattern("found", 10));
    const quint64 badAt = b.clusterOffset(bad);
    ScannedVolume s(b.image(), false, [badAt](quint64 pos, quint64) { return pos != badAt; });
    ASSERT_TRUE(s.run());
    EXPECT_EQ(s.listing(), QStringList{"GOOD/_OUND.TXT\t10"});
    EXPECT_EQ(s.fat()->readErrors(), 1u);
}

TEST(Fat32Scan, AStopEndsTheWalkAtTheFirstCheckPoint)
{
    Fat32ImageBuilder::Geometry g;
    g.clusters = 200;
    Fat32ImageBuilder b(g);
    for (int i = 0; i < 1500; ++i)
        b.addEntry(kRoot, named(QByteArray("F") + QByteArray::number(i)));
    ScannedVolume s(b.image(), true);
    PartScan* scan = s.scan.get();
    QObject::connect(scan, &PartScan::scanBegin, scan, [scan] { scan->stop(); }, Qt::DirectConnection);
    s.run();
    EXPECT_EQ(s.results, 1000u);
    EXPECT_EQ(s.root()->findChild(QString::fromUtf8("额外文件")), nullptr);
}

TEST(Fat32Restore, WritesCheckedFoldersWithContentAndDates)
{
    MixedVolume v;
    ScannedVolume s(v.b.image());
    ASSERT_TRUE(s.run());
    // Its own files unticked, its subfolders still ticked.
    for (FoundFile* f : s.root()->findChild("Old Photos")->files)
        f->selected = false;
    QTemporaryDir target;
    ASSERT_TRUE(s.restore(target.path()));
    const QString e = target.path() + "/E/";
    struct Case {
        const char* path;
        QByteArray content; // "<missing>" when nothing is to be written
    };
    const Case cases[] = {
        {"Quarterly report.txt", pattern("report", 1500)},
        {"split.bin", pattern("split", 1400)},
        {"_AIL.BIN", pattern("tail", 512) + QByteArray(512, '\0')},
        {"_ERO.TXT", QByteArray()},
        {"empty.txt", QByteArray()}, // no cluster: an empty file
        {"Old Photos/a.jpg", "<missing>"},
        {"Old Photos/KEEP/_.TXT", pattern("d", 10)},
        {"BIG/_AST.TXT", pattern("last", 30)},
    };
    for (const Case& c : cases)
        EXPECT_EQ(readFile(e + c.path), c.content) << c.path;
    EXPECT_EQ(QFileInfo(e + "Quarterly report.txt").lastModified().toMSecsSinceEpoch(), 1577851200000);
    EXPECT_EQ(s.written, 11) << "every file written, none of the skipped";
}

TEST(Fat32Restore, LargeClustersAreCutToTheFileSize)
{
    Fat32ImageBuilder::Geometry g;
    g.sectorsPerCluster = 8;
    g.clusters = 64;
    g.reservedSectors = 6; // and one FAT: the data area starts where these say
    g.fatCount = 1;
    Fat32ImageBuilder b(g);
    b.addFile(kRoot, named("TWO.BIN", {}, false), QByteArray()); // keeps cluster numbering honest
    Entry both = named("BOTH.BIN");
    both.firstCluster = b.allocate(2); // live chain of two clusters, entry deleted
    both.size = 5000;
    b.writeAt(both.firstCluster, pattern("both", 8192).left(4096));
    b.writeAt(both.firstCluster + 1, pattern("both", 8192).mid(4096));
    b.addEntry(kRoot, both);
    b.addFile(kRoot, named("EXACT.BIN"), pattern("exact", 8192));
    ScannedVolume s(b.image());
    ASSERT_TRUE(s.run());
    EXPECT_EQ(s.fat()->geometry().clusterBytes, 4096u);
    QTemporaryDir target;
    ASSERT_TRUE(s.restore(target.path()));
    EXPECT_EQ(readFile(target.path() + "/E/_OTH.BIN"), pattern("both", 5000));
    EXPECT_EQ(readFile(target.path() + "/E/_XACT.BIN"), pattern("exact", 8192));
}

TEST(Fat32Restore, NamesFromTheDiskStayInsideTheTarget)
{
    Fat32ImageBuilder b;
    const quint32 dir = deletedDirectory(b, kRoot, named("DOTS", QStringLiteral("..")));
    b.addFile(dir, named("SLASH.TXT", QStringLiteral("a/../../b.txt")), pattern("slash", 10));
    ScannedVolume s(b.image());
    ASSERT_TRUE(s.run());
    QTemporaryDir target;
    ASSERT_TRUE(s.restore(target.path() + "/out"));
    EXPECT_EQ(readFile(target.path() + "/out/E/_.._/a_.._.._b.txt"), pattern("slash", 10));
    EXPECT_EQ(QDir(target.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList{"out"});
}

// What is not a FAT volume is refused with the reason, never by ending the program.
TEST(Fat32Scan, RefusesWhatIsNotAFatVolumeWithTheReason)
{
    QByteArray zeroClusterSize = Fat32ImageBuilder().image();
    zeroClusterSize[0x0D] = 0;
    struct Case {
        QByteArray volume;
        const char* problem;
    };
    const Case cases[] = {
        {zeroClusterSize, "it's not a valid fat volume"},
        {QByteArray(), "cannot read boot sector"},
    };
    for (const Case& c : cases) {
        Fat32VolumeScan scan("E", DeviceHandle(std::make_shared<MemorySource>(c.volume)), 0);
        EXPECT_TRUE(scan.openProblem().contains(QLatin1String(c.problem))) << scan.openProblem().toStdString();
    }
}

// Damaged FATs and directories end in a finished scan and a finished restore,
// never in a hang or a read outside a buffer: random bytes over the FATs and
// the first clusters, where the directories lie.
TEST(Fat32Scan, DamagedVolumesStillFinish)
{
    MixedVolume v;
    const QByteArray clean = v.b.image();
    QRandomGenerator random(0x0512F032);
    for (int round = 0; round < 60; ++round) {
        QByteArray damaged = clean;
        const int end = int(v.b.clusterOffset(v.loop + 1));
        for (int i = 0; i < 200; ++i)
            damaged[random.bounded(512, end)] = char(random.bounded(256));
        ScannedVolume s(damaged);
        ASSERT_TRUE(s.run()) << round;
        QTemporaryDir target;
        ASSERT_TRUE(s.restore(target.path()));
    }
}
