// Images written by real FAT32 tools, scanned and restored through ostrel-cli.
#include "PrintQString.h"
#include "fixtures/CliRunner.h"
#include "imaging/Fat32ImageBuilder.h"
#include "fixtures/TestPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
const char kSamples[] = "/usr/share/forensics-samples";

CliResult runCli(const QStringList& args)
{
    const CliResult r = CliRunner::run(args + QStringList{"--images-only"});
    if (r.exitCode != 0)
        ADD_FAILURE() << "ostrel-cli: " << r.errors.toStdString();
    return r;
}
} // namespace

TEST(Fat32RealImage, MtoolsDeletionsComeBackWhole)
{
    QTemporaryDir dir;
    const QString image = CliRunner::unxz(TestPaths::sourceDir() + "/tests/fixtures/fat32-mtools.img.xz", dir.path(), "m.img");
    ASSERT_FALSE(image.isEmpty());
    struct Case {
        QString path;
        const char* tag;
        int size;
    };
    const Case cases[] = {
        {"_HORT.TXT", "short", 300},
        {"_mpty.dat", "empty", 0}, // an empty file comes back empty
        {"docs/Annual Report 2021.txt", "report", 5000},
        {QString::fromUtf8("docs/résumé 履历.txt"), "resume", 2600},
        {"docs/_.bin", "big", 100000},
        {"_rchive/old letter.txt", "letter", 3000},
        {"_rchive/_019/photo list.txt", "photos", 800},
        {"many/file number 37.txt", "many37", 100},
    };
    QStringList expected;
    for (const Case& c : cases)
        expected << QStringLiteral("C/%1\t%2\t2021-06-15T02:30:00Z").arg(c.path).arg(c.size);
    expected << "results=8,totalsize=111800";
    const CliResult scan = runCli({"scan", image});
    EXPECT_EQ(scan.exitCode, 0);
    EXPECT_EQ(scan.lines, expected);

    const QString target = dir.filePath("out");
    ASSERT_EQ(runCli({"restore", "--to", target, image}).exitCode, 0);
    for (const Case& c : cases) {
        EXPECT_EQ(CliRunner::readFile(target + "/C/" + c.path), Fat32ImageBuilder::pattern(c.tag, c.size)) << c.path.toStdString();
    }
}

TEST(Fat32RealImage, ForensicsSampleDeletedFoldersAreRestoredByteForByte)
{
    const QString originals = QString(kSamples) + "/original-files/";
    if (!QFile::exists(QString(kSamples) + "/fs.vfat.xz"))
        GTEST_SKIP() << "forensics-samples-vfat is not installed";
    QTemporaryDir dir;
    const QString image = CliRunner::unxz(QString(kSamples) + "/fs.vfat.xz", dir.path(), "fs.vfat");
    ASSERT_FALSE(image.isEmpty());
    // d-debian.ppm (its long name in slots at the end of pic2's first cluster)
    // and d-debian.xcf lie in pic2's second cluster, which is not the next free
    // one: the search over free clusters finds it and puts it on pic2.
    const QStringList deleted = {
        "audio2/deleted.mp3", "audio2/deleted.ogg", "audio2/deleted.wav",
        "movie2/movie-hello.avi", "movie2/movie-hello.mp4", "movie2/movie-hello.mpeg", "movie2/movie-hello.ogg",
        "pic2/IMG_20191224_234846.jpg", "pic2/IMG_20200124_231153.jpg", "pic2/IMG_20200608_111614.jpg",
        "pic2/d-debian.jpg", "pic2/d-debian.png", "pic2/d-debian.ppm", "pic2/d-debian.xcf",
        "text2/d-text.docx", "text2/d-text.odt", "text2/d-text.pdf", "text2/test.sh",
    };
    QStringList expected;
    quint64 total = 0;
    for (const QString& f : deleted) {
        const qint64 size = QFileInfo(originals + f).size();
        expected << QStringLiteral("C/%1\t%2").arg(f).arg(size);
        total += quint64(size);
    }
    expected << QStringLiteral("results=18,totalsize=%1").arg(total);
    const CliResult scan = runCli({"scan", image + "@1"});
    EXPECT_EQ(scan.exitCode, 0);
    QStringList listed;
    for (const QString& line : scan.lines)
        listed << line.section('\t', 0, 1); // the stamps aren't checked here
    EXPECT_EQ(listed, expected);

    const QString target = dir.filePath("out");
    ASSERT_EQ(runCli({"restore", "--to", target, image + "@1"}).exitCode, 0);
    for (const QString& f : deleted) {
        const QByteArray got = CliRunner::readFile(target + "/C/" + f);
        const QByteArray want = CliRunner::readFile(originals + f);
        if (f.endsWith(".png"))
            EXPECT_TRUE(CliRunner::maskPngTime(got) == CliRunner::maskPngTime(want)) << f.toStdString();
        else
            EXPECT_TRUE(got == want) << f.toStdString();
    }
}
