// The sample NTFS disk of Debian's forensics-samples: a deleted folder of
// files of each kind, all recovered by a quick scan and restored byte-identical.
#include "ScanListing.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {
const QString kSample = QStringLiteral("/usr/share/forensics-samples/fs.ntfs.xz");
const QString kOriginals = QStringLiteral("/usr/share/forensics-samples/original-files/");

const QStringList kDeleted = {
    "audio2/deleted.mp3", "audio2/deleted.ogg", "audio2/deleted.wav",
    "movie2/movie-hello.avi", "movie2/movie-hello.mp4", "movie2/movie-hello.mpeg", "movie2/movie-hello.ogg",
    "pic2/IMG_20191224_234846.jpg", "pic2/IMG_20200124_231153.jpg", "pic2/IMG_20200608_111614.jpg",
    "pic2/d-debian.jpg", "pic2/d-debian.png", "pic2/d-debian.ppm", "pic2/d-debian.xcf",
    "text2/d-text.docx", "text2/d-text.odt", "text2/d-text.pdf", "text2/test.sh",
};
} // namespace

TEST(ForensicsSample, QuickScanListsAndRestoresTheDeletedFilesThroughTheCommandLine)
{
    if (!QFile::exists(kSample))
        GTEST_SKIP() << "forensics-samples-ntfs is not installed";
    QTemporaryDir tmp;
    const QString image = CliRunner::unxz(kSample, tmp.path(), QStringLiteral("fs.ntfs"));
    ASSERT_FALSE(image.isEmpty());
    const QString source = image + QStringLiteral("@1");

    const QMap<QString, quint64> listed = scanListing({source});
    for (const QString& name : kDeleted) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(listed.contains(QStringLiteral("C/") + name));
        EXPECT_EQ(listed[QStringLiteral("C/") + name], quint64(QFileInfo(kOriginals + name).size()));
    }

    const QString target = tmp.filePath(QStringLiteral("out"));
    restoreAll(target, {source});
    for (const QString& name : kDeleted) {
        SCOPED_TRACE(name.toStdString());
        const QByteArray original = CliRunner::readFile(kOriginals + name);
        const QByteArray restored = CliRunner::readFile(target + QStringLiteral("/C/") + name);
        // The shipped picture was saved again later: only its tIME chunk differs.
        if (name.endsWith(QLatin1String(".png")))
            EXPECT_TRUE(CliRunner::maskPngTime(original) == CliRunner::maskPngTime(restored));
        else
            EXPECT_TRUE(original == restored);
    }
}
