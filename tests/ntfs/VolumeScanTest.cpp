// Scans of built NTFS volumes: what is listed, where it is filed, and what a
// restore writes.
#include "ntfs/NtfsVolumeScan.h"
#include "results/NtfsFile.h"
#include "fixtures/ScanRun.h"
#include "results/FolderNode.h"
#include "scan/device/MemorySource.h"
#include "fixtures/CliRunner.h"
#include "imaging/DiskImageBuilder.h"
#include "imaging/NtfsImageBuilder.h"
#include "scan/device/ImageDeviceLayer.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
using Builder = NtfsImageBuilder;
using Entry = NtfsImageBuilder::Entry;

const QString kOrphans1 = QStringLiteral("孤立文件-00001/");

NtfsVolumeScan* scannerOn(const QByteArray& disk, quint64 offset = 0)
{
    return new NtfsVolumeScan(QStringLiteral("vol"), memoryVolume(disk), offset);
}

QByteArray pattern(int size, int seed) { return DiskImageBuilder::pattern(size, seed); }
QByteArray readFile(const QString& path) { return CliRunner::readFile(path); }

// A deleted entry whose content lives in its record.
Entry residentDeleted(QList<Builder::Name> names, const QByteArray& content, qint64 slot = -1)
{
    Entry e;
    e.names = std::move(names);
    e.content = content;
    e.resident = e.deleted = true;
    e.slot = slot;
    return e;
}

// A volume with one deleted file of each shape, and the contents they should read as.
struct ShapesVolume {
    Builder b;
    QMap<QString, QByteArray> expected; // path below the volume folder -> content
    QByteArray image;

    ShapesVolume()
    {
        const quint32 docs = b.addDirectory("docs");
        const quint32 sub = b.addDirectory("sub", docs, true);
        expected["docs/small.txt"] = pattern(100, 1);
        b.addFile("small.txt", expected["docs/small.txt"], docs);
        expected["docs/sub/big.bin"] = pattern(5000, 2);
        b.addFile("big.bin", expected["docs/sub/big.bin"], sub);
        b.addFile("alive.txt", pattern(3000, 3), docs, false);
        b.addFile("empty.txt", QByteArray(), docs);

        Entry frag;
        frag.names = {{"frag.bin", docs}};
        frag.content = pattern(5 * 4096 - 100, 4);
        const quint64 first = b.allocate(2);
        b.allocate(1);
        frag.extents = {{qint64(b.allocate(3)), 3}, {qint64(first), 2}}; // second piece lies before the first
        frag.deleted = true;
        b.add(frag);
        expected["docs/frag.bin"] = frag.content;

        Entry sparse;
        sparse.names = {{"sparse.bin", docs}};
        sparse.content = QByteArray(4096, 'A') + QByteArray(3 * 4096, '\0') + QByteArray(1000, 'B');
        sparse.extents = {{qint64(b.allocate(1)), 1}, {-1, 3}, {qint64(b.allocate(1)), 1}};
        sparse.deleted = true;
        b.add(sparse);
        expected["docs/sparse.bin"] = sparse.content;

        // Two names: the first one in the record counts.
        b.add(residentDeleted({{"first.txt", docs}, {"second.txt", Builder::kRoot}}, pattern(50, 5)));
        expected["docs/first.txt"] = pattern(50, 5);
        // Counted, but without a long name it is filed nowhere.
        b.add(residentDeleted({{"DOSONLY.TXT", docs, Builder::kDos}}, pattern(30, 6)));
        b.add(residentDeleted({{"Both Names.txt", Builder::kRoot, Builder::kWin32AndDos}}, pattern(40, 7)));
        expected["Both Names.txt"] = pattern(40, 7);
        // A name no Linux folder can hold as it is.
        b.add(residentDeleted({{"..", docs}}, pattern(10, 8)));
        expected["docs/.."] = pattern(10, 8);
        image = b.build();
    }
};
} // namespace

TEST(NtfsVolumeScan, ListsDeletedFilesOfEveryShapeWithTheirContent)
{
    ShapesVolume v;
    ScanRun h(scannerOn(v.image));
    h.run(); // its DOS-only record counts without a place in the tree
    ASSERT_EQ(h.doneSignals, 1);
    const auto files = h.byPath();
    EXPECT_EQ(files.keys(), v.expected.keys());
    quint64 total = 30; // the DOS-only record counts without a place in the tree
    for (auto it = v.expected.cbegin(); it != v.expected.cend(); ++it) {
        SCOPED_TRACE(it.key().toStdString());
        ASSERT_TRUE(files.contains(it.key()));
        EXPECT_EQ(files[it.key()]->size, quint64(it.value().size()));
        EXPECT_EQ(files[it.key()]->modifiedMsecs, 1577836800000ull);
        EXPECT_TRUE(h.content(files[it.key()]) == it.value());
        total += quint64(it.value().size());
    }
    EXPECT_EQ(h.results, quint64(v.expected.size() + 1));
    EXPECT_EQ(h.totalSize, total);
}

TEST(NtfsVolumeScan, RestoreWritesCheckedFoldersBelowTheTarget)
{
    ShapesVolume v;
    ScanRun h(scannerOn(v.image));
    h.run(); // its DOS-only record counts without a place in the tree
    ASSERT_EQ(h.doneSignals, 1);
    QTemporaryDir out;
    // Its own files unticked, its subfolders still ticked.
    for (FoundFile* f : h.root()->findChild("docs")->files)
        f->selected = false;
    ASSERT_TRUE(h.restore(out.path()));
    EXPECT_EQ(h.written, 2);
    const QString root = out.path() + "/vol/";
    EXPECT_TRUE(readFile(root + "docs/sub/big.bin") == v.expected["docs/sub/big.bin"]);
    EXPECT_TRUE(readFile(root + "Both Names.txt") == v.expected["Both Names.txt"]);
    EXPECT_FALSE(QFile::exists(root + "docs/small.txt"));
    EXPECT_EQ(QFileInfo(root + "docs/sub/big.bin").lastModified().toMSecsSinceEpoch(), 1577836800000ll);

    QTemporaryDir all;
    for (FoundFile* f : h.root()->findChild("docs")->files)
        f->selected = true;
    ASSERT_TRUE(h.restore(all.path()));
    const QString allRoot = all.path() + "/vol/";
    for (const char* path : {"docs/frag.bin", "docs/sparse.bin", "docs/small.txt", "docs/first.txt"})
        EXPECT_TRUE(readFile(allRoot + path) == v.expected[path]) << path;
    EXPECT_TRUE(readFile(allRoot + "docs/_.._") == v.expected["docs/.."]) << "a name of '..' stays inside";
}

TEST(NtfsVolumeScan, FilterTakesNameEndingsCaseSensitively)
{
    Builder b;
    for (const char* name : {"a.jpg", "b.JPG", "c.png", "d.txt"})
        b.addFile(name, pattern(20, 1));
    const QByteArray image = b.build();
    struct Case {
        QString filter;
        QStringList listed;
    };
    const Case cases[] = {
        {"*", {"a.jpg", "b.JPG", "c.png", "d.txt"}},
        {"", {"a.jpg", "b.JPG", "c.png", "d.txt"}},
        {".jpg", {"a.jpg"}},
        {".JPG", {"b.JPG"}},
        {".jpg;.png", {"a.jpg", "c.png"}},
        {".gif", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.filter.toStdString());
        ScanRun h(scannerOn(image));
        h.scan->fileFilter = c.filter;
        ASSERT_TRUE(h.run());
        EXPECT_EQ(h.byPath().keys(), c.listed);
        EXPECT_EQ(h.results, quint64(c.listed.size()));
    }
}

// A file is filed below its folder wherever their records stand and whenever
// the folder was made; only a folder record reused since (its sequence number
// no longer the one the file's reference names) or none at all orphans it.
TEST(NtfsVolumeScan, FilesWithoutAChainToTheRootAreOrphaned)
{
    Builder b(Builder::Geometry(), 640);
    b.add(residentDeleted({{"early.txt", 17}}, pattern(10, 1), 16)); // its directory's record stands behind it
    Entry dir;
    dir.names = {{"late dir"}};
    dir.directory = true;
    dir.slot = 17;
    b.add(dir);

    Entry newer; // made after the file was: moved in
    newer.names = {{"newer"}};
    newer.directory = true;
    newer.created = Builder::kDefaultTime + 100 * 10000000ull;
    const quint32 newerDir = b.add(newer);
    b.addFile("in newer.txt", pattern(10, 2), newerDir);

    const quint32 reused = b.addDirectory("reused");
    const quint32 stale = b.addFile("stale parent.txt", pattern(10, 4), reused);

    const quint32 loopA = b.addDirectory("A", 0); // parent fixed below
    const quint32 loopB = b.addDirectory("B", loopA);
    Entry fixA;
    fixA.names = {{"A", loopB}};
    fixA.directory = true;
    fixA.slot = loopA;
    b.add(fixA);
    b.addFile("looped.txt", pattern(10, 3), loopA);

    for (int i = 0; i < 501; ++i)
        b.addFile(QStringLiteral("lost%1.txt").arg(i), pattern(10, i), 3000);
    QByteArray image = b.build();
    // The folder's record now has sequence number 3: the file's reference (1) names an earlier use of it.
    Entry reusedEntry;
    reusedEntry.names = {{"reused"}};
    reusedEntry.directory = true;
    QByteArray folder = b.record(reusedEntry, reused);
    folder[0x10] = 3;
    Builder::applyFixups(&folder);
    image.replace(int(b.slotOffset(reused)), folder.size(), folder);
    ScanRun h(scannerOn(image));
    ASSERT_TRUE(h.run());
    const auto files = h.byPath();
    EXPECT_TRUE(files.contains("late dir/early.txt"));
    EXPECT_TRUE(files.contains("newer/in newer.txt"));
    EXPECT_TRUE(files.contains(kOrphans1 + "stale parent.txt")) << stale;
    EXPECT_TRUE(files.contains(kOrphans1 + "B/A/looped.txt"));
    const FolderNode* first = h.root()->findChild("孤立文件-00001");
    const FolderNode* second = h.root()->findChild("孤立文件-00002");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->directCount(), 500);
    EXPECT_EQ(second->directCount(), 3 + 501 - 500 - 1);
    EXPECT_EQ(h.results, 505u);
}

TEST(NtfsVolumeScan, ReadsEveryGeometry)
{
    struct Case {
        const char* what;
        Builder::Geometry geometry;
    };
    const Case cases[] = {
        {"512-byte sectors, 4 KiB clusters, 1 KiB records", {512, 4096, 1024, 2048}},
        {"4K sectors and records", {4096, 4096, 4096, 2048}},
        {"512-byte clusters", {512, 512, 1024, 8192}},
        {"64 KiB clusters", {512, 65536, 1024, 128}},
        {"256 KiB clusters", {4096, 262144, 4096, 40}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Builder b(c.geometry);
        const quint32 dir = b.addDirectory("gone", Builder::kRoot, true);
        const QByteArray big = pattern(300000, 1);
        b.addFile("big.bin", big, dir);
        b.addFile("small.txt", pattern(90, 2), dir);
        b.addFile("alive.txt", pattern(90, 3), dir, false);
        ScanRun h(scannerOn(b.build()));
        EXPECT_EQ(h.as<NtfsVolumeScan>()->volume.geometry.clusterBytes, c.geometry.clusterBytes);
        ASSERT_TRUE(h.run());
        const auto files = h.byPath();
        EXPECT_EQ(files.keys(), QStringList({"gone/big.bin", "gone/small.txt"}));
        if (files.contains("gone/big.bin")) {
            EXPECT_TRUE(h.content(files["gone/big.bin"]) == big);
        }
        if (files.contains("gone/small.txt")) {
            EXPECT_TRUE(h.content(files["gone/small.txt"]) == pattern(90, 2));
        }
    }
}

TEST(NtfsVolumeScan, FragmentedMftIsNumberedByItsRunsAndEveryFragmentScanned)
{
    // The runs all in record 0, or continued in extension record 17 through an
    // attribute list held in record 0 or in a cluster of its own.
    for (const int spill : {0, 1, 2}) {
        SCOPED_TRACE(spill);
        Builder b(Builder::Geometry(), 96, {{4, 8}, {600, 8}, {1200, 8}});
        if (spill)
            b.spillMftData(17, spill == 2);
        Entry late; // in the third fragment
        late.names = {{"late.bin"}};
        late.content = pattern(9000, 1);
        late.deleted = true;
        late.slot = 80;
        b.add(late);
        // Resident: its content is read again from where its record was found.
        const Entry lateSmall = residentDeleted({{"late.txt"}}, pattern(300, 2), 90);
        b.add(lateSmall);
        Entry alive = late; // in use in the second fragment: its bit in the MFT bitmap counts
        alive.names = {{"alive.bin"}};
        alive.deleted = false;
        alive.slot = 40;
        b.add(alive);
        ScanRun h(scannerOn(b.build()));
        EXPECT_EQ(h.as<NtfsVolumeScan>()->volume.mft->runCount(), 3);
        ASSERT_TRUE(h.run());
        EXPECT_EQ(h.byPath().keys(), QStringList({"late.bin", "late.txt"}));
        if (h.byPath().size() == 2) {
            EXPECT_TRUE(h.content(h.byPath()["late.bin"]) == late.content);
            EXPECT_TRUE(h.content(h.byPath()["late.txt"]) == lateSmall.content);
        }
    }
}

TEST(NtfsVolumeScan, ReachesRecordsBehindTheMftAndStopsAtTheVolumesEnd)
{
    Builder b;
    Entry stale = residentDeleted({{"old.txt"}}, pattern(300, 1)); // of an earlier MFT, far behind this one's end
    b.putRecordAt(4 * 4096 + 1000 * 1024, b.record(stale, 1000));
    QByteArray volume = b.build();

    // The volume on a disk at 1 MiB, with a record right behind its end that belongs to no one.
    DiskImageBuilder disk(2 * 1024 * 1024 + quint64(volume.size()) + 8192);
    disk.writeMbr({{7, 2048, quint32(volume.size() / 512)}});
    disk.put(2048 * 512, volume);
    stale.names = {{"beyond.txt"}};
    disk.put(2048 * 512 + quint64(volume.size()), b.record(stale, 1));
    ScanRun h(scannerOn(disk.bytes(), 2048 * 512));
    ASSERT_TRUE(h.run());
    const auto files = h.byPath();
    EXPECT_EQ(files.keys(), QStringList({"old.txt"}));
    if (files.contains("old.txt")) {
        EXPECT_TRUE(h.content(files["old.txt"]) == stale.content) << "read again by its number";
    }
}

namespace {
class MountedLayer : public ImageDeviceLayer {
public:
    QString mountPoint;
    QString mountPointOfLetter(QChar) override { return mountPoint; }
};

// Keeps the cluster bitmap as the carving pass gets to see it.
class BitmapProbe : public NtfsVolumeScan {
public:
    using NtfsVolumeScan::NtfsVolumeScan;
    std::vector<bool> seen;

protected:
    void carveFreeBlocks(const CarvingContext&) override
    {
        for (quint64 c = 0; c < clusterBitmap.clusters(); ++c)
            seen.push_back(clusterBitmap.inUse(c));
    }
};
} // namespace

TEST(NtfsVolumeScan, FilesThatLiveUnderTheSamePathAreLeftOut)
{
    Builder b;
    const quint32 dir = b.addDirectory("docs");
    b.addFile("replaced.txt", pattern(20, 1), dir);
    b.addFile("gone.txt", pattern(20, 2), dir);
    MountedLayer layer;
    QTemporaryDir mount;
    layer.mountPoint = mount.path();
    QDir(mount.path()).mkpath("docs");
    QFile live(mount.path() + "/docs/replaced.txt");
    ASSERT_TRUE(live.open(QIODevice::WriteOnly));
    live.close();
    layer.addImageData("vol.img", b.build());
    DeviceLayer::setInstance(&layer);
    ScanRun h(new NtfsVolumeScan(QStringLiteral("C")));
    ASSERT_TRUE(h.run());
    EXPECT_EQ(h.byPath().keys(), QStringList({"docs/gone.txt"}));
    DeviceLayer::setInstance(nullptr);
}

TEST(NtfsVolumeScan, MarksTheFirstClusterOfEachFoundRunForTheCarvingPass)
{
    Builder b;
    Entry frag;
    frag.names = {{"frag.bin"}};
    frag.content = pattern(3 * 4096, 1);
    const quint64 a = b.allocate(1);
    const quint64 gap = b.allocate(1);
    const quint64 c = b.allocate(2);
    frag.extents = {{qint64(a), 1}, {qint64(c), 2}};
    frag.deleted = true;
    b.add(frag);
    const QByteArray image = b.build();
    auto* probe = new BitmapProbe(QStringLiteral("vol"), DeviceHandle(std::make_shared<MemorySource>(image)), 0);
    probe->doExtra = true;
    ScanRun h(probe);
    ASSERT_TRUE(h.run());
    ASSERT_EQ(probe->seen.size(), probe->volume.volumeClusters) << "one bit per cluster of the volume";
    EXPECT_TRUE(probe->seen[4]) << "the MFT, from $Bitmap";
    EXPECT_TRUE(probe->seen[a]);
    EXPECT_TRUE(probe->seen[c]);
    EXPECT_FALSE(probe->seen[c + 1]) << "only where a run begins";
    EXPECT_FALSE(probe->seen[gap]) << "free, and no run begins there";
    EXPECT_FALSE(h.as<NtfsVolumeScan>()->clusterBitmap.isValid()) << "freed behind the carving pass";

    QByteArray noBitmap = image; // $Bitmap's record unreadable: the scan goes on without marks
    noBitmap.replace(int(b.slotOffset(6)), 4, "BAAD");
    auto* blind = new BitmapProbe(QStringLiteral("vol"), DeviceHandle(std::make_shared<MemorySource>(noBitmap)), 0);
    blind->doExtra = true;
    ScanRun h2(blind);
    ASSERT_TRUE(h2.run());
    EXPECT_TRUE(blind->seen.empty());
    EXPECT_EQ(h2.byPath().keys(), QStringList({"frag.bin"}));
}

// A volume whose structures can't carry a scan is refused with the reason,
// never by ending the program.
TEST(NtfsVolumeScan, RefusesWhatItCannotScanWithTheReason)
{
    Builder b;
    b.addFile("x.txt", pattern(10, 1));
    const QByteArray good = b.build();
    QByteArray notNtfs = good;
    notNtfs.replace(3, 4, "MSWI");
    QByteArray record2048 = good;
    record2048[0x40] = char(-11);
    QByteArray badMft = good;
    badMft.replace(4 * 4096, 4, "BAAD");
    Builder noBitmap;
    noBitmap.dropMftAttribute(0xB0);
    auto unreadableMft = std::make_shared<MemorySource>(good);
    unreadableMft->setReadFilter([](quint64 pos, quint64) { return pos != 4 * 4096; }); // $MFT is at cluster 4
    struct Case {
        NtfsVolumeScan* scan;
        const char* problem;
    };
    const Case cases[] = {
        {scannerOn(notNtfs), "it's not a valid ntfs volume"},
        {scannerOn(record2048), "it's not a valid ntfs volume"},
        {scannerOn(badMft), "$MFT record has a bad header"},
        {scannerOn(noBitmap.build()), "$MFT record has no $BITMAP"},
        {scannerOn(QByteArray(100, '\0')), "cannot read boot sector"},
        {new NtfsVolumeScan("vol", DeviceHandle(unreadableMft), 0), "$MFT record has a bad header"},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(c.scan->openProblem().contains(QLatin1String(c.problem))) << c.scan->openProblem().toStdString();
        ScanRun h(c.scan);
        ASSERT_TRUE(h.run());
        EXPECT_TRUE(h.byPath().isEmpty());
    }
}

TEST(NtfsVolumeScan, PassesOverRecordsItCannotReadAndCountsThem)
{
    Builder b;
    b.addFile("x.txt", pattern(10, 1));
    auto failing = std::make_shared<MemorySource>(b.build());
    failing->setReadFilter([](quint64 pos, quint64 bytes) { return pos > 6 * 4096 || pos + bytes <= 6 * 4096; });
    ScanRun h(new NtfsVolumeScan("vol", DeviceHandle(failing), 0));
    ASSERT_TRUE(h.run());
    EXPECT_EQ(h.byPath().keys(), QStringList({"x.txt"}));
    EXPECT_GE(h.as<NtfsVolumeScan>()->readErrors(), 1u);
}

// Damaged records are passed over or listed with what can be read of them:
// nothing is ever larger than the volume or read from outside it.
TEST(NtfsVolumeScan, DamagedRecordsStayInsideTheVolume)
{
    ShapesVolume v;
    // Records 16 onward lie behind the sixteen system records; damage them byte by byte.
    const int first = int(v.b.slotOffset(16));
    const int end = int(v.b.slotOffset(40));
    quint32 seed = 12345;
    const auto next = [&seed] { return seed = seed * 1103515245u + 12345u; };
    for (int round = 0; round < 200; ++round) {
        QByteArray damaged = v.image;
        for (int i = 0; i < 40; ++i)
            damaged[first + int(next() % quint32(end - first))] = char(next() >> 16);
        ScanRun h(scannerOn(damaged));
        h.run();
        ASSERT_EQ(h.doneSignals, 1);
        
        for (NtfsFile* f : h.byPath<NtfsFile>()) {
            ASSERT_LE(f->size, quint64(damaged.size()));
            const QByteArray content = h.content(f);
            EXPECT_TRUE(content.isEmpty() || quint64(content.size()) == f->size);
        }
        QTemporaryDir out;
        h.restore(out.path());
        EXPECT_LE(h.written, h.byPath().size());
    }
}
