// exFAT volumes written by Linux and by Windows, scanned and restored through ostrel-cli.
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
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

// The sample's exFAT partition is typed 0x83: the volume is known by its boot sector.
TEST(ExfatRealImage, ForensicsSampleDeletedFoldersComeBackByteForByteWithTheirStamps)
{
    const QString originals = QString(kSamples) + "/original-files/";
    if (!QFile::exists(QString(kSamples) + "/fs.exfat.xz"))
        GTEST_SKIP() << "forensics-samples-exfat is not installed";
    QTemporaryDir dir;
    const QString image = CliRunner::unxz(QString(kSamples) + "/fs.exfat.xz", dir.path(), "fs.exfat");
    ASSERT_FALSE(image.isEmpty());
    const QStringList deleted = {
        "audio2/deleted.mp3", "audio2/deleted.ogg", "audio2/deleted.wav",
        "movie2/movie-hello.avi", "movie2/movie-hello.mp4", "movie2/movie-hello.mpeg", "movie2/movie-hello.ogg",
        "pic2/IMG_20191224_234846.jpg", "pic2/IMG_20200124_231153.jpg", "pic2/IMG_20200608_111614.jpg",
        "pic2/d-debian.jpg", "pic2/d-debian.png", "pic2/d-debian.ppm", "pic2/d-debian.xcf",
        "text2/d-text.docx", "text2/d-text.odt", "text2/d-text.pdf", "text2/test.sh",
    };
    const qint64 stamp = 1603771260; // 2020-10-27 04:01:00 UTC
    QStringList expected;
    quint64 total = 0;
    for (const QString& f : deleted) {
        const qint64 size = QFileInfo(originals + f).size();
        expected << QStringLiteral("C/%1\t%2\t2020-10-27T04:01:00Z").arg(f).arg(size);
        total += quint64(size);
    }
    expected << QStringLiteral("results=18,totalsize=%1").arg(total);
    EXPECT_EQ(runCli({"scan", image + "@1"}).lines, expected);

    const QString target = dir.filePath("out");
    ASSERT_EQ(runCli({"restore", "--to", target, image + "@1"}).exitCode, 0);
    for (const QString& f : deleted) {
        const QString path = target + "/C/" + f;
        EXPECT_TRUE(CliRunner::maskPngTime(CliRunner::readFile(path)) == CliRunner::maskPngTime(CliRunner::readFile(originals + f)))
            << f.toStdString();
        EXPECT_EQ(QFileInfo(path).lastModified().toSecsSinceEpoch(), stamp) << f.toStdString();
    }
}

TEST(ExfatRealImage, WindowsDeletionsAreListedByTheirNames)
{
    const QString gz = TestPaths::sourceDir() + "/../shared/thirdparty/dfir_ntfs/exfat_win.raw.gz";
    if (!QFile::exists(gz))
        GTEST_SKIP() << "no " << gz.toStdString();
    QTemporaryDir dir;
    const QString image = CliRunner::unxz(gz, dir.path(), "exfat_win.raw");
    ASSERT_FALSE(image.isEmpty());
    // The deleted files The Sleuth Kit lists (fls -rd).
    const QStringList expected = {
        "C/1.bin\t1\t2022-01-23T17:35:24Z",
        "C/333.bin\t3\t2022-01-23T17:35:24Z",
        "C/555.bin\t3\t2022-01-23T17:35:24Z",
        QString::fromUtf8("C/Текстовый документ.txt\t0\t2022-01-23T17:55:52Z"),
        "results=4,totalsize=7",
    };
    EXPECT_EQ(runCli({"scan", image}).lines, expected);
}
