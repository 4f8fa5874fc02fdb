// A volume made by mkntfs and filled through ntfs-3g (tests/fixtures/make-real-ntfs.sh):
// every deleted file of its manifest is listed at its path and restored intact,
// live files are not listed.
#include "CliRunner.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QTemporaryDir>

TEST(RealNtfsImage, DeletedFilesAndFoldersComeBackUnderTheirUnicodePaths)
{
    // Beside this file when the test runs outside ctest.
    const QString source = qEnvironmentVariable("OSTREL_SOURCE_DIR");
    const QString fixtures = source.isEmpty() ? QFileInfo(QStringLiteral(__FILE__)).absolutePath() + QStringLiteral("/../fixtures/")
                                              : source + QStringLiteral("/tests/fixtures/");
    QTemporaryDir tmp;
    const QString image = tmp.filePath(QStringLiteral("real-ntfs.img"));
    ASSERT_TRUE(CliRunner::decompress(fixtures + QStringLiteral("real-ntfs.img.xz"), image));
    const QStringList manifest = QString::fromUtf8(CliRunner::readAll(fixtures + QStringLiteral("real-ntfs.manifest")))
                                     .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_FALSE(manifest.isEmpty());

    const QMap<QString, quint64> listed = CliRunner::listing(CliRunner::run({QStringLiteral("scan"), image}));
    const QString target = tmp.filePath(QStringLiteral("out"));
    CliRunner::run({QStringLiteral("restore"), QStringLiteral("--to"), target, image});
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
        const QByteArray restored = CliRunner::readAll(target + QStringLiteral("/C/") + fields[0]);
        EXPECT_EQ(QCryptographicHash::hash(restored, QCryptographicHash::Sha256).toHex(), fields[2].toLatin1());
    }
}
