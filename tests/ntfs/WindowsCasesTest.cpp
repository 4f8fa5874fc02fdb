// Volumes as Windows and ntfs-3g leave them, compared with what is known to be
// deleted: a fragmented MFT, a file moved into a newer folder, streams,
// compressed files, an attribute list (tests/fixtures/make-ntfs-cases.sh),
// the same volume with a broken boot sector, and volumes made elsewhere that
// hold nothing deleted.
#include "ScanListing.h"
#include "fixtures/TestPaths.h"
#include "ntfs/NtfsVolumeScan.h"
#include "fixtures/ScanRun.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

namespace {
// The volume's boot sector is its first 512 bytes, its backup the last 512.
constexpr int kSector = 512;
constexpr int kSectorsPerClusterOffset = 0x0D;

void zeroFirstSector(QByteArray* v) { v->replace(0, kSector, QByteArray(kSector, '\0')); }
void zeroClusterSize(QByteArray* v) { (*v)[kSectorsPerClusterOffset] = 0; }
void zeroBackup(QByteArray* v) { v->replace(v->size() - kSector, kSector, QByteArray(kSector, '\0')); }

QString writeImage(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size() ? path : QString();
}
} // namespace

TEST(NtfsCases, EveryDeletedFileAndStreamComesBackAtItsPathAndNothingLive)
{
    const QString fixtures = TestPaths::sourceDir() + QStringLiteral("/tests/fixtures/");
    QTemporaryDir tmp;
    const QString made = CliRunner::unxz(fixtures + QStringLiteral("ntfs-cases.img.xz"), tmp.path(), QStringLiteral("made.img"));
    ASSERT_FALSE(made.isEmpty());
    const QByteArray volume = CliRunner::readFile(made);
    QMap<QString, QStringList> deleted; // "C/path" -> size, sha256
    QStringList live;
    for (const QString& line : QString::fromUtf8(CliRunner::readFile(fixtures + QStringLiteral("ntfs-cases.manifest"))).split('\n', Qt::SkipEmptyParts)) {
        const QStringList f = line.split('\t');
        if (f.first() == QLatin1String("LIVE"))
            live.append(QStringLiteral("C/") + f[1]);
        else
            deleted.insert(QStringLiteral("C/") + f[0], f.mid(1));
    }
    ASSERT_FALSE(deleted.isEmpty());

    const struct {
        const char* what;
        void (*damage)(QByteArray*);
    } cases[] = {
        {"as ntfs-3g left it", nullptr},
        {"first sector zeroed", zeroFirstSector},
        {"cluster size 0", zeroClusterSize},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QByteArray bytes = volume;
        if (c.damage)
            c.damage(&bytes);
        const QString image = writeImage(tmp.filePath(QString::fromLatin1(c.what) + QStringLiteral(".img")), bytes);
        const QMap<QString, quint64> listed = scanListing({image});
        EXPECT_EQ(listed.keys().join('\n').toStdString(), deleted.keys().join('\n').toStdString());
        for (const QString& path : live)
            EXPECT_FALSE(listed.contains(path)) << path.toStdString();
        const QString target = tmp.filePath(QStringLiteral("out-") + QString::fromLatin1(c.what));
        restoreAll(target, {image});
        for (auto it = deleted.cbegin(); it != deleted.cend(); ++it) {
            SCOPED_TRACE(it.key().toStdString());
            EXPECT_EQ(listed.value(it.key()), it.value()[0].toULongLong());
            // A stream "file:stream" is restored as "file_stream".
            const QByteArray restored = CliRunner::readFile(target + '/' + QString(it.key()).replace(':', '_'));
            EXPECT_EQ(QCryptographicHash::hash(restored, QCryptographicHash::Sha256).toHex().toStdString(), it.value()[1].toStdString());
        }
    }

    QByteArray bothBad = volume;
    zeroClusterSize(&bothBad);
    zeroBackup(&bothBad);
    const CliResult r = CliRunner::run({"scan", "--images-only", writeImage(tmp.filePath("both.img"), bothBad)});
    EXPECT_EQ(r.exitCode, 7) << r.errors.toStdString();
}

// One unreadable stored cluster of a compressed unit spoils all the unit
// expands to: the restore reports that file range, not the cluster's bytes.
TEST(NtfsCases, AnUnreadableCompressedUnitIsReportedDamagedWhole)
{
    QTemporaryDir tmp;
    const QByteArray volume = CliRunner::readFile(
        CliRunner::unxz(TestPaths::sourceDir() + QStringLiteral("/tests/fixtures/ntfs-cases.img.xz"), tmp.path(), QStringLiteral("made.img")));
    ScanRun probe(new NtfsVolumeScan(QStringLiteral("C"), memoryVolume(volume), 0));
    ASSERT_TRUE(probe.run());
    QString path;
    VolumeScan::StoredRun unit;
    const QMap<QString, FoundFile*> files = probe.byPath();
    for (auto it = files.cbegin(); it != files.cend() && path.isEmpty(); ++it)
        for (const VolumeScan::StoredRun& r : probe.as<NtfsVolumeScan>()->storedRuns(*it.value()))
            if (r.expandsTo && path.isEmpty())
                path = it.key(), unit = r;
    ASSERT_FALSE(path.isEmpty());
    const auto readable = [&](quint64 at, quint64 bytes) { return at > unit.volumeOffset || at + bytes <= unit.volumeOffset; };
    ScanRun h(new NtfsVolumeScan(QStringLiteral("C"), memoryVolume(volume, readable), 0));
    ASSERT_TRUE(h.run());
    ASSERT_TRUE(h.restore(tmp.filePath(QStringLiteral("out"))));
    QStringList damaged;
    for (const RestoredFile& f : h.scan->restoreReport.files())
        for (const BadRange& r : f.badRanges)
            damaged << QStringLiteral("%1 %2+%3").arg(f.path).arg(r.offset).arg(r.length);
    EXPECT_EQ(damaged.join('\n').toStdString(), QStringLiteral("C/%1 %2+%3").arg(path).arg(unit.fileOffset).arg(unit.expandsTo).toStdString());
}

// Volumes made by Windows and by mkntfs elsewhere: three with nothing deleted
// (The Sleuth Kit lists no deleted file on them, and neither does the scan),
// and one whose index slack keeps the name of a deleted file, whose record was reused.
TEST(NtfsCases, VolumesMadeElsewhereListWhatIsDeleted)
{
    const QString shared = TestPaths::sourceDir() + QStringLiteral("/../shared/thirdparty/");
    const struct {
        const char* image;
        const char* listed;
    } cases[] = {{"dfir_ntfs/ntfs3.raw.gz", ""}, {"dfir_ntfs/ntfs3_attrlist.raw.gz", ""}, {"ntfs-crate/testfs1.xz", ""},
                 {"dfir_ntfs/ntfs_index.raw.gz", "C/test_dir/BBBBBBBBBBBBB-del.txt"}};
    if (!QFile::exists(shared + QLatin1String(cases[0].image)))
        GTEST_SKIP() << "no third-party images beside the repository";
    QTemporaryDir tmp;
    for (const auto& c : cases) {
        const QString name = QString::fromLatin1(c.image);
        SCOPED_TRACE(c.image);
        const QString image = CliRunner::unxz(shared + name, tmp.path(), name.section('/', -1) + QStringLiteral(".img"));
        ASSERT_FALSE(image.isEmpty());
        EXPECT_EQ(scanListing({image}).keys().join('\n').toStdString(), c.listed);
    }
}
