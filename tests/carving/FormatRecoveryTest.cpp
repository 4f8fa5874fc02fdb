// Format recovery on volumes that real tools formatted again over their files:
// every picture must come back, by an old file record or by its signature.
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"

#include <QDir>
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
    // FAT32: all but the two XCF pictures and the shell script, which have no end of their own.
    for (const auto& [card, least] : {std::pair<QString, int>{"fat32-card.img", 33}, {"ntfs-card.img", 36}}) {
        const QString out = dir.filePath("out-" + card);
        const CliResult r = CliRunner::run({"restore", "--mode", "format", "--to", out, dir.filePath(card)});
        ASSERT_EQ(r.exitCode, 0) << r.errors.toStdString();
        QSet<QByteArray> found;
        for (const QString& rel : CliRunner::filesBelow(out))
            found.insert(CliRunner::readFile(out + "/" + rel));
        const int same = int(std::count_if(originals.begin(), originals.end(),
                                           [&](const QString& f) { return found.contains(CliRunner::readFile(samples + "/" + f)); }));
        EXPECT_GE(same, least) << card.toStdString();
    }
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
}
