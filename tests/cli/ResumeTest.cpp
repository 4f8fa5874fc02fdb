// A scan saved with --save, stopped about half way (Ctrl-C, kill -9) and gone
// on with --resume lists what an uninterrupted scan lists, and reads well
// under 60% of the source again. Saved files that are damaged or of another
// source are refused.
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"
#include "imaging/ExfatImageBuilder.h"
#include "scan/SavedScan.h"
#include "tools/demo/DemoDisk.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <iostream>

namespace {
constexpr quint32 kExfatClusters = 40000;

struct Halt {
    const char* name;
    QStringList scan;   // mode and source, the image's path put before the last
    const char* how;    // OSTREL_TEST_HALT
    quint64 sourceBytes;
};

QJsonObject jsonOf(const CliResult& r)
{
    EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
    QJsonObject doc = QJsonDocument::fromJson(r.lines.join('\n').toUtf8()).object();
    return doc;
}

class ResumeTest : public testing::TestWithParam<Halt> {
protected:
    static void SetUpTestSuite()
    {
        dir = new QTemporaryDir;
        demo = dir->filePath("demo.img");
        ASSERT_TRUE(DemoDisk::save(DemoDisk::build(), demo));
        // An exFAT volume with pictures in free clusters on both sides of its middle.
        ExfatImageBuilder exfat(kExfatClusters);
        for (quint32 i = 1; i <= 8; ++i)
            exfat.writeAt(i * kExfatClusters / 9, DemoDisk::picture("png", int(i), 64, 48));
        // Lost folders in free clusters on both sides: the folder search's findings are saved.
        ASSERT_FALSE(CliRunner::unxz(TestPaths::sourceDir() + "/tests/fixtures/fat-folders.img.xz", dir->path(), "folders").isEmpty());
        QFile f(dir->filePath("exfat.img"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(exfat.image()) > 0);
    }
    static void TearDownTestSuite() { delete dir; }
    static QTemporaryDir* dir;
    static QString demo;
};
QTemporaryDir* ResumeTest::dir = nullptr;
QString ResumeTest::demo;

TEST_P(ResumeTest, GoesOnToTheSameListingReadingUnder60PercentAgain)
{
    const Halt& h = GetParam();
    QStringList scan = QStringList{"scan", "--images-only", "--json"} + h.scan;
    scan.last() = scan.last().startsWith('@') || scan.last().isEmpty() ? demo + scan.last() : dir->filePath(scan.last());
    QJsonObject whole = jsonOf(CliRunner::run(scan));
    const QString saved = dir->filePath(QString("%1.scan").arg(h.name));
    qputenv("OSTREL_TEST_HALT", h.how);
    const CliResult halted = CliRunner::run(scan + QStringList{"--save", saved, "--save-every", "0"});
    qunsetenv("OSTREL_TEST_HALT");
    const bool killed = QByteArray(h.how) == "KILL";
    EXPECT_EQ(halted.exitCode, killed ? -1 : 0) << halted.errors.toStdString();
    SavedScan state;
    QString why;
    ASSERT_TRUE(SavedScan::read(saved, &state, &why)) << why.toStdString();
    EXPECT_NE(state.point.phase, ResumePoint::Done); // it stopped half way, past the middle
    EXPECT_GE(state.point.position * 2, state.point.end);

    QJsonObject resumed = jsonOf(CliRunner::run({"scan", "--images-only", "--json", "--resume", saved}));
    const double again = resumed.take("bytesRead").toDouble();
    const double first = whole.take("bytesRead").toDouble();
    EXPECT_EQ(resumed, whole);
    EXPECT_GT(resumed.value("results").toInt(), 0);
    EXPECT_LT(again, 0.6 * h.sourceBytes);
    std::cout << h.name << ": read again " << again / h.sourceBytes * 100 << "% of the source ("
              << again / first * 100 << "% of an uninterrupted scan's reads)\n";
}

INSTANTIATE_TEST_SUITE_P(
    DemoDisk, ResumeTest,
    testing::Values(Halt{"FormatCtrlC", {"--mode", "format", "@1"}, "INT", DemoDisk::kNtfsBytes},
                    Halt{"FormatKill", {"--mode", "format", "@1"}, "KILL", DemoDisk::kNtfsBytes},
                    Halt{"FatFormatCtrlC", {"--mode", "format", "@2"}, "INT", DemoDisk::kFat32Bytes},
                    Halt{"FatFoldersKill", {"--mode", "format", "folders"}, "KILL", 34 << 20},
                    Halt{"ExfatFormatKill", {"--mode", "format", "exfat.img"}, "KILL", kExfatClusters * 1024},
                    Halt{"PartitionCtrlC", {"--mode", "partition", ""}, "INT", DemoDisk::kDiskBytes},
                    Halt{"PartitionKill", {"--mode", "partition", ""}, "KILL", DemoDisk::kDiskBytes}),
    [](const testing::TestParamInfo<Halt>& info) { return info.param.name; });

TEST_F(ResumeTest, RefusesDamagedSavesAndOtherSources)
{
    const QString saved = dir->filePath("quick.scan");
    ASSERT_EQ(CliRunner::run({"scan", "--images-only", "--save", saved, demo + "@1"}).exitCode, 0);
    const QByteArray good = CliRunner::readFile(saved);
    QByteArray flipped = good;
    flipped[flipped.size() / 2] = char(flipped[flipped.size() / 2] ^ 0x40);
    const struct {
        QByteArray bytes;
        const char* message;
    } cases[] = {{good.left(good.size() - 1), "cut short"}, {flipped, "damaged"}, {"garbage", "not a saved scan"}};
    for (const auto& c : cases) {
        QFile f(saved);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(c.bytes) == c.bytes.size());
        f.close();
        const CliResult r = CliRunner::run({"scan", "--images-only", "--resume", saved});
        EXPECT_EQ(r.exitCode, 9);
        EXPECT_TRUE(r.errors.contains(c.message)) << r.errors.toStdString();
    }
    // The same saved scan after the source changed in its first MiB.
    QFile f(saved);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(good) == good.size());
    f.close();
    QFile image(demo);
    ASSERT_TRUE(image.open(QIODevice::ReadWrite) && image.seek(DemoDisk::kNtfsStart + 3 * 512));
    const QByteArray before = image.read(1);
    image.seek(DemoDisk::kNtfsStart + 3 * 512);
    image.write(QByteArray(1, char(before[0] ^ 1)));
    image.close();
    const CliResult r = CliRunner::run({"scan", "--images-only", "--resume", saved});
    ASSERT_TRUE(image.open(QIODevice::ReadWrite) && image.seek(DemoDisk::kNtfsStart + 3 * 512));
    image.write(before);
    EXPECT_EQ(r.exitCode, 9);
    EXPECT_TRUE(r.errors.contains("saved from another source")) << r.errors.toStdString();
}
} // namespace
