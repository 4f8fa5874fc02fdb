// What a folder delete leaves on FAT volumes written by real tools: folders of
// many clusters, folders in deleted folders, folders nothing names any more.
#include "PrintQString.h"
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"
#include "ntfs/ScanListing.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {
// The listed path that matches a manifest path, where "*" stands for a folder whose name is gone.
QString listedPath(const QMap<QString, quint64>& listed, const QString& pattern)
{
    QString expression = QRegularExpression::escape(QStringLiteral("C/") + pattern);
    expression.replace(QStringLiteral("\\*"), QStringLiteral("[^/]+"));
    const QStringList matches = QStringList(listed.keys()).filter(QRegularExpression(QRegularExpression::anchoredPattern(expression)));
    return matches.isEmpty() ? QString() : matches.first();
}
} // namespace

TEST(FatFolderSearch, DeletedFoldersComeBackWholeAndUnnamedOnesBelowTheirParent)
{
    const QString fixtures = TestPaths::sourceDir() + QStringLiteral("/tests/fixtures/");
    QTemporaryDir tmp;
    const QString image = CliRunner::unxz(fixtures + "fat-folders.img.xz", tmp.path(), "fat-folders.img");
    ASSERT_FALSE(image.isEmpty());
    const QStringList manifest = QString::fromUtf8(CliRunner::readFile(fixtures + "fat-folders.manifest")).split('\n', Qt::SkipEmptyParts);
    ASSERT_GT(manifest.size(), 300);

    const QMap<QString, quint64> listed = scanListing({image});
    const QString target = tmp.filePath("out");
    restoreAll(target, {image});
    int deleted = 0;
    for (const QString& line : manifest) {
        const QStringList fields = line.split('\t');
        SCOPED_TRACE(line.toStdString());
        if (fields.first() == QLatin1String("LIVE")) {
            EXPECT_FALSE(listed.contains("C/" + fields[1]));
            continue;
        }
        ++deleted;
        const QString path = listedPath(listed, fields[0]);
        ASSERT_FALSE(path.isEmpty());
        EXPECT_EQ(listed[path], fields[1].toULongLong());
        const QByteArray restored = CliRunner::readFile(target + "/" + path);
        EXPECT_EQ(QCryptographicHash::hash(restored, QCryptographicHash::Sha256).toHex(), fields[2].toLatin1());
    }
    EXPECT_EQ(listed.size(), deleted);
}

// Volumes damaged on purpose (a directory loop, an endless chain, two files in
// one cluster, a volume larger than its image) end their scans in both modes.
TEST(FatFolderSearch, ThirdPartyImagesEndCleanly)
{
    const QString images = TestPaths::sourceDir() + QStringLiteral("/../shared/thirdparty/fatcat/");
    if (!QFile::exists(images + "deleted.img.gz"))
        GTEST_SKIP() << "the third-party FAT images are absent";
    QTemporaryDir tmp;
    for (const char* name : {"deleted", "directory-loop", "empty", "fake-big-disk-1T", "full-fat", "hello-world",
                             "infinite-file", "repair", "two-file-same-cluster"}) {
        SCOPED_TRACE(name);
        const QString image = tmp.filePath(QString::fromLatin1(name) + ".img");
        ASSERT_EQ(QProcess::execute("sh", {"-c", QStringLiteral("gzip -dc '%1%2.img.gz' > '%3'").arg(images, name, image)}), 0);
        for (const char* mode : {"file", "format"}) {
            const CliResult r = CliRunner::run({"scan", "--images-only", "--mode", mode, image});
            EXPECT_EQ(r.exitCode, 0) << mode << " " << r.errors.toStdString();
            EXPECT_TRUE(!r.lines.isEmpty() && r.lines.last().startsWith("results=")) << mode;
        }
    }
    const QString target = tmp.filePath("out");
    restoreAll(target, {tmp.filePath("deleted.img")});
    EXPECT_EQ(CliRunner::readFile(target + "/C/deleted/file.txt"), QByteArray("This file was deleted!\n"));
}
