// Format recovery on volumes that real tools formatted again over their files:
// every picture must come back, by an old file record or by its signature.
#include "carving/BlockAlignment.h"
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
// How much of each found file must equal the start of its original.
constexpr int kCompareBytes = 4096;

void expectEveryPictureFound(const QString& xzName)
{
    const QString fixtures = TestPaths::sourceDir() + "/tests/fixtures/carving";
    QTemporaryDir dir;
    const QString image = CliRunner::unxz(fixtures + "/" + xzName, dir.path(), "volume.img");
    ASSERT_FALSE(image.isEmpty());
    const QString out = dir.filePath("out");
    const CliResult r = CliRunner::run({"restore", "--images-only", "--mode", "format", "--to", out, image});
    ASSERT_EQ(r.exitCode, 0) << r.errors.toStdString();

    QList<QByteArray> found;
    for (const QString& rel : CliRunner::filesBelow(out))
        found.append(CliRunner::readFile(out + "/" + rel).left(kCompareBytes));
    const QStringList originals = QDir(fixtures + "/pictures").entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(originals.size(), 7);
    for (const QString& name : originals) {
        const QByteArray start = CliRunner::readFile(fixtures + "/pictures/" + name).left(kCompareBytes);
        const bool any = std::any_of(found.begin(), found.end(), [&](const QByteArray& f) { return f == start; });
        EXPECT_TRUE(any) << name.toStdString() << " not found in " << out.toStdString();
    }
}
} // namespace

TEST(FormatRecovery, NtfsQuickFormattedByMkntfs) { expectEveryPictureFound("ntfs-quickformatted.img.xz"); }

TEST(FormatRecovery, Fat32RemadeByMkfsFat) { expectEveryPictureFound("fat32-remade.img.xz"); }

// Camera cards made by the real tools with the sample files, then quick-formatted:
// format recovery brings back every file whose format has an end to find.
TEST(FormatRecovery, QuickFormattedCardsGiveTheSampleFilesBack)
{
    const QString samples = QStringLiteral("/usr/share/forensics-samples/original-files");
    if (!QDir(samples).exists() || QStandardPaths::findExecutable("mkntfs", {"/usr/sbin", "/sbin"}).isEmpty())
        GTEST_SKIP() << "forensics-samples-files, dosfstools, mtools or ntfs-3g missing";
    QTemporaryDir dir;
    QProcess make;
    make.start("bash", {TestPaths::sourceDir() + "/tests/fixtures/carving/make-cards.sh", dir.path()});
    ASSERT_TRUE(make.waitForFinished(300000) && make.exitCode() == 0) << make.readAllStandardError().toStdString();
    const QStringList originals = QString::fromUtf8(CliRunner::readFile(dir.filePath("originals.txt"))).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(originals.size(), 36);
    // How many originals a format recovery of the card gives back byte for byte.
    const auto sameAsOriginals = [&](const QString& card, const QString& out) {
        const CliResult r = CliRunner::run({"restore", "--mode", "format", "--to", out, dir.filePath(card)});
        EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
        QSet<QByteArray> found;
        for (const QString& rel : CliRunner::filesBelow(out))
            found.insert(CliRunner::readFile(out + "/" + rel));
        return int(std::count_if(originals.begin(), originals.end(),
                                 [&](const QString& f) { return found.contains(CliRunner::readFile(samples + "/" + f)); }));
    };
    // FAT32: all but the two XCF pictures and the shell script, which have no end of their own.
    for (const auto& [card, least] : {std::pair<QString, int>{"fat32-card.img", 33}, {"ntfs-card.img", 36}})
        EXPECT_GE(sameAsOriginals(card, dir.filePath("out-" + card)), least) << card.toStdString();
    // FAT32: the old folders are found and name their files. The new root took
    // the old one's cluster, so DCIM and Docs are known by their first cluster
    // only; FAT names compare without case.
    const QString out = dir.filePath("out-fat32-card.img");
    QSet<QString> folders;
    int named = 0;
    for (const QString& f : originals) {
        const QString name = f.section('/', -1);
        const QByteArray content = CliRunner::readFile(samples + "/" + f);
        for (const QString& rel : CliRunner::filesBelow(out)) {
            const QStringList parts = rel.split('/');
            if (parts.size() == 3 && parts[1].startsWith("DIR") && !parts[2].compare(name, Qt::CaseInsensitive)
                && CliRunner::readFile(out + "/" + rel) == content) {
                ++named;
                folders.insert(parts[1] + (f.startsWith("pic") || f.startsWith("movie") ? "DCIM" : "Docs"));
            }
        }
    }
    EXPECT_GE(named, 34);
    EXPECT_EQ(folders.size(), 2); // the pictures in one folder, the documents in the other

    // The same cards with their boot sectors wiped (the FAT32 one's backup and
    // FSInfo too, the NTFS one's copy in its last sector): no file system is
    // left to read, and carving the whole volume still gives the files back.
    for (const auto& [card, least] : {std::pair<QString, int>{"fat32-card.img", 33}, {"ntfs-card.img", 33}}) {
        QFile f(dir.filePath(card));
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        const bool fat = card.startsWith(QLatin1String("fat"));
        ASSERT_TRUE(f.write(QByteArray(fat ? 32 * 512 : 512, '\0')) > 0);
        ASSERT_TRUE(f.seek(f.size() - 512) && f.write(QByteArray(512, '\0')) == 512);
        f.close();
        EXPECT_GE(sameAsOriginals(card, dir.filePath("raw-" + card)), least) << "wiped " << card.toStdString();
    }
}

TEST(FormatRecovery, BlockSizeFollowsTheHeadersMostAgreeOn)
{
    struct Case {
        const char* why;
        QList<quint64> headers;
        BlockAlignment want;
    };
    const Case cases[] = {
        {"4 KiB clusters behind a 2 KiB data offset", {2048, 2048 + 4096, 2048 + 3 * 4096, 2048 + 10 * 4096}, {4096, 2048}},
        {"32 KiB clusters, one stray match", {0, 32768, 5 * 32768, 9 * 32768, 9 * 32768 + 1536}, {32768, 0}},
        {"too few to tell", {4096, 8192}, {512, 0}},
        {"no agreement beyond sectors", {512, 1024, 1536, 2048, 2560, 3072}, {512, 0}},
    };
    for (const Case& c : cases) {
        const BlockAlignment got = BlockAlignment::fromHeaders(c.headers);
        EXPECT_EQ(got.blockBytes, c.want.blockBytes) << c.why;
        EXPECT_EQ(got.offset, c.want.offset) << c.why;
    }
}
