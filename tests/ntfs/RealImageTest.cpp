// A volume made by mkntfs and filled through ntfs-3g (tests/fixtures/make-real-ntfs.sh):
// every deleted file of its manifest is listed at its path and restored intact,
// live files are not listed.
#include "ScanListing.h"
#include "fixtures/TestPaths.h"

#include <QCryptographicHash>
#include <QTemporaryDir>

TEST(RealNtfsImage, DeletedFilesAndFoldersComeBackUnderTheirUnicodePaths)
{
    const QString fixtures = TestPaths::sourceDir() + QStringLiteral("/tests/fixtures/");
    QTemporaryDir tmp;
    const QString image = CliRunner::unxz(fixtures + QStringLiteral("real-ntfs.img.xz"), tmp.path(),
                                          QStringLiteral("real-ntfs.img"));
    ASSERT_FALSE(image.isEmpty());
    const QStringList manifest = QString::fromUtf8(CliRunner::readFile(fixtures + QStringLiteral("real-ntfs.manifest")))
                                     .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_FALSE(manifest.isEmpty());

    const QMap<QString, quint64> listed = scanListing({image});
    const QString target = tmp.filePath(QStringLiteral("out"));
    restoreAll(target, {image});
    for (const QString& line : manifest) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        SCOPED_TRACE(line.toStdString());
        if (fields.first() == QLatin1String("LIVE")) {
            EXPECT_FALSE(listed.contains(QStringLiteral("C/") + fields[1]));
            continue;
        }
        ASSERT_EQ(fields.size(), 3);
        ASSERT_TRUE(listed.contains(QStringLiteral("C/") + fields[0]));
        EXPECT_EQ(listed[QStringLiteral("C/") + fields[0]], fields[1].toULongLong());
        const QByteArray restored = CliRunner::readFile(target + QStringLiteral("/C/") + fields[0]);
        EXPECT_EQ(QCryptographicHash::hash(restored, QCryptographicHash::Sha256).toHex(), fields[2].toLatin1());
    }
}
