// Restores of hostile names stay inside the target folder, two files of one
// name both survive with --keep-both, and the source is only ever opened for reading.
#include "fixtures/CliRunner.h"
#include "fixtures/ScanRun.h"
#include "imaging/SmallVolumes.h"
#include "results/FolderNode.h"
#include "scan/RestoreTarget.h"
#include "scan/SafeFileName.h"
#include "scan/device/TargetDir.h"
#include "scan/device/FileSource.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace {
QList<QPair<TargetDir::FileOp, int>> fileOps; // filled on the restore's thread, read after it ended
const QString kLongName = QString(251, QChar('n')) + QStringLiteral(".txt");
const QString kLongWide = QString(200, QChar(0x00E9)) + QStringLiteral(".txt"); // 400 UTF-8 bytes
const QString kHostile[] = {QString(), QStringLiteral(".."), QStringLiteral("."), QStringLiteral("a/b"), QStringLiteral("../../escape"),
                            QStringLiteral("x") + QChar(0) + QStringLiteral("y"), kLongName, kLongWide,
                            QStringLiteral("bad") + QChar(0xD800) + QStringLiteral("half")};

QByteArray ntfsWithHostileNames()
{
    NtfsImageBuilder b = SmallVolumes::ntfsBuilder();
    for (const QString& name : kHostile)
        b.addFile(name, QByteArray(600, 'h'));
    return b.build();
}

QByteArray fatWithHostileNames()
{
    Fat32ImageBuilder b = SmallVolumes::fat32Builder();
    int n = 0;
    for (const QString& name : kHostile) {
        if (name.contains(QChar(0)))
            continue; // a long name ends at its first 0 unit: FAT can't hold this one
        Fat32ImageBuilder::Entry e;
        e.shortName = QByteArray("HOST") + QByteArray::number(n++) + ".TXT";
        e.longName = name;
        e.deleted = true;
        b.addFile(Fat32ImageBuilder::kRoot, e, QByteArray(600, 'h'));
    }
    return b.image();
}

QStringList filesBelow(const QString& dir)
{
    QStringList out;
    QDirIterator it(dir, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        out.append(it.next());
    return out;
}
} // namespace

TEST(RestoreSafety, HostileNamesStayInsideTheTarget)
{
    for (const Fs fs : {Fs::Ntfs, Fs::Fat32}) {
        SCOPED_TRACE(fs == Fs::Ntfs ? "NTFS" : "FAT32");
        ScanRun s(fs == Fs::Ntfs ? ntfsWithHostileNames() : fatWithHostileNames(), fs);
        ASSERT_TRUE(s.run());
        QTemporaryDir root;
        const QString target = root.filePath(QStringLiteral("a/target"));
        // Each file is made with one open, dated on it, and not cut: its writes reached its size.
        TargetDir::setFileOpObserverForTests([](TargetDir::FileOp op, int fd) { fileOps.append({op, fd}); });
        fileOps.clear();
        ASSERT_TRUE(s.restore(target));
        TargetDir::setFileOpObserverForTests(nullptr);
        for (qsizetype i = 0; i < fileOps.size(); i += 2)
            EXPECT_TRUE(fileOps[i].first == TargetDir::FileOp::Create && fileOps.value(i + 1) == qMakePair(TargetDir::FileOp::SetDate, fileOps[i].second));
        EXPECT_EQ(fileOps.size(), 2 * s.files().size());

        const QStringList files = filesBelow(root.path());
        EXPECT_EQ(s.written, s.files().size());
        EXPECT_EQ(files.size(), s.files().size()) << files.join('\n').toStdString();
        for (const QString& f : files) {
            EXPECT_TRUE(f.startsWith(target + QLatin1Char('/'))) << f.toStdString();
            EXPECT_LE(QFileInfo(f).fileName().toUtf8().size(), 255);
        }
    }
}

TEST(RestoreSafety, NumberedNamesKeepTheirExtensionAndFit)
{
    QTemporaryDir dir;
    struct Case {
        QString name;
        QString second; // the name the second file of that name gets
    };
    const Case cases[] = {{QStringLiteral("photo.jpg"), QStringLiteral("photo (2).jpg")},
                          {QStringLiteral("README"), QStringLiteral("README (2)")},
                          {QStringLiteral(".."), QStringLiteral("_. (2)._")},
                          {kLongName, QString(247, QChar('n')) + QStringLiteral(" (2).txt")}};
    RestoreTarget target;
    ASSERT_TRUE(target.open(dir.path(), nullptr));
    RestoreFailure why = RestoreFailure::None;
    const std::unique_ptr<TargetDir> folder = target.folder({}, &why);
    ASSERT_TRUE(folder);
    for (const Case& c : cases) {
        const QString safe = SafeFileName::component(c.name);
        QString first, second, replaced;
        EXPECT_TRUE(target.create(*folder, safe, true, &first, &why));
        EXPECT_TRUE(target.create(*folder, safe, true, &second, &why));
        EXPECT_TRUE(target.create(*folder, safe, false, &replaced, &why));
        EXPECT_EQ(second, c.second);
        EXPECT_EQ(replaced, first);
    }
}

TEST(RestoreSafety, KeepBothWritesEveryFileOfOneName)
{
    NtfsImageBuilder b = SmallVolumes::ntfsBuilder();
    b.addFile(QStringLiteral("same.txt"), QByteArray("first"));
    b.addFile(QStringLiteral("same.txt"), QByteArray("second"));
    QTemporaryDir dir;
    const QString image = dir.filePath(QStringLiteral("volume.img"));
    QFile f(image);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(b.build());
    f.close();

    for (const bool keepBoth : {false, true}) {
        SCOPED_TRACE(keepBoth);
        const QString out = dir.filePath(QStringLiteral("out%1").arg(keepBoth));
        QStringList args{"restore", "--images-only", "--to", out, image};
        if (keepBoth)
            args.insert(1, "--keep-both");
        ASSERT_EQ(CliRunner::run(args).exitCode, 0);
        const QStringList written = CliRunner::filesBelow(out).filter(QStringLiteral("same"));
        ASSERT_FALSE(written.isEmpty());
        const QString folder = QFileInfo(out + '/' + written.first()).path();
        QStringList contents;
        for (const QString& rel : written)
            contents.append(QString::fromUtf8(CliRunner::readFile(out + '/' + rel)));
        if (!keepBoth) {
            EXPECT_EQ(written.size(), 1); // the wizard's way: the later file replaces the earlier
            continue;
        }
        ASSERT_EQ(written.size(), 2) << written.join(' ').toStdString();
        contents.sort();
        EXPECT_EQ(contents, QStringList({"first", "second"}));
        // A second restore over the first: the file already there is kept too.
        QFile old(folder + "/same.txt");
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        ASSERT_EQ(CliRunner::run(args).exitCode, 0);
        EXPECT_EQ(CliRunner::readFile(folder + "/same.txt"), QByteArray("old"));
        EXPECT_EQ(CliRunner::filesBelow(out).filter(QStringLiteral("same")).size(), 4);
    }
}

TEST(RestoreSafety, SourceIsOnlyOpenedForReading)
{
    QTemporaryDir dir;
    struct Case {
        QByteArray image;
        bool wholeDisk;
    };
    for (const Case& c : {Case{SmallVolumes::ntfs(), false}, Case{SmallVolumes::disk(), true}}) {
        const QByteArray& volume = c.image;
        const bool whole = c.wholeDisk;
        const QString image = dir.filePath(QStringLiteral("source.img"));
        QFile f(image);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(volume);
        f.close();
        const QByteArray before = QCryptographicHash::hash(volume, QCryptographicHash::Sha256);

        QList<int> flagsSeen;
        FileSource::setOpenObserver([&](const QString&, int flags) { flagsSeen.append(flags); });
        {
            ScanRun s(image, whole);
            ASSERT_TRUE(s.scan);
            ASSERT_TRUE(s.run());
            ASSERT_TRUE(s.restore(dir.filePath(QStringLiteral("out"))));
        }
        FileSource::setOpenObserver(nullptr);

        ASSERT_FALSE(flagsSeen.isEmpty());
        for (int flags : flagsSeen) {
            EXPECT_EQ(flags & O_ACCMODE, O_RDONLY);
            EXPECT_TRUE(flags & O_CLOEXEC);
        }
        EXPECT_EQ(QCryptographicHash::hash(CliRunner::readFile(image), QCryptographicHash::Sha256), before);
        EXPECT_FALSE(CliRunner::filesBelow(dir.filePath(QStringLiteral("out"))).isEmpty());
    }
}
