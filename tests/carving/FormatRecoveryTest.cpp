// Format recovery on volumes that real tools formatted again over their files:
// every picture must come back, by an old file record or by its signature.
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"

#include <QDir>
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
