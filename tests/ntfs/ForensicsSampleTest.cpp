// The sample NTFS disk of Debian's forensics-samples: a deleted folder of
// files of each kind, all recovered by a quick scan and restored byte-identical.
#include "CliRunner.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
const QString kSample = QStringLiteral("/usr/share/forensics-samples/fs.ntfs.xz");
const QString kOriginals = QStringLiteral("/usr/share/forensics-samples/original-files");

const QStringList kDeleted = {
    "audio2/deleted.mp3", "audio2/deleted.ogg", "audio2/deleted.wav",
    "movie2/movie-hello.avi", "movie2/movie-hello.mp4", "movie2/movie-hello.mpeg", "movie2/movie-hello.ogg",
    "pic2/IMG_20191224_234846.jpg", "pic2/IMG_20200124_231153.jpg", "pic2/IMG_20200608_111614.jpg",
    "pic2/d-debian.jpg", "pic2/d-debian.png", "pic2/d-debian.ppm", "pic2/d-debian.xcf",
    "text2/d-text.docx", "text2/d-text.odt", "text2/d-text.pdf", "text2/test.sh",
};

// Blanks the data of every PNG tIME chunk: the shipped copy was re-stamped.
QByteArray maskPngTime(QByteArray png)
{
    for (qsizetype at = png.indexOf("tIME"); at >= 4; at = png.indexOf("tIME", at + 4)) {
        const quint32 length = (quint8(png[at - 4]) << 24) | (quint8(png[at - 3]) << 16)
            | (quint8(png[at - 2]) << 8) | quint8(png[at - 1]);
        for (qsizetype i = at + 4; i < at + 4 + qsizetype(length) + 4 && i < png.size(); ++i)
            png[i] = 0; // the time and the chunk's CRC
    }
    return png;
}

void expectSameAsOriginal(const QString& relative, const QByteArray& restored)
{
    QByteArray original = CliRunner::readAll(kOriginals + QLatin1Char('/') + relative);
    ASSERT_FALSE(original.isEmpty()) << relative.toStdString();
    if (relative.endsWith(QLatin1String(".png")))
        EXPECT_TRUE(maskPngTime(original) == maskPngTime(restored)) << relative.toStdString();
    else
        EXPECT_TRUE(original == restored) << relative.toStdString();
}

class ForensicsSample : public testing::Test {
protected:
    void SetUp() override
    {
        if (!QFile::exists(kSample))
            GTEST_SKIP() << "forensics-samples-ntfs is not installed";
        ASSERT_TRUE(tmp.isValid());
        image = tmp.filePath(QStringLiteral("fs.ntfs"));
        ASSERT_TRUE(CliRunner::decompress(kSample, image));
    }
    QTemporaryDir tmp;
    QString image;
};
} // namespace

TEST_F(ForensicsSample, QuickScanListsAndRestoresTheDeletedFilesThroughTheCommandLine)
{
    const QString source = image + QStringLiteral("@1");
    const QString scanOut = CliRunner::run({QStringLiteral("scan"), source});
    const QMap<QString, quint64> listed = CliRunner::listing(scanOut);
    for (const QString& name : kDeleted) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(listed.contains(QStringLiteral("C/") + name));
        EXPECT_EQ(listed[QStringLiteral("C/") + name], quint64(QFileInfo(kOriginals + QLatin1Char('/') + name).size()));
    }

    const QString target = tmp.filePath(QStringLiteral("out"));
    CliRunner::run({QStringLiteral("restore"), QStringLiteral("--to"), target, source});
    for (const QString& name : kDeleted)
        expectSameAsOriginal(name, CliRunner::readAll(target + QStringLiteral("/C/") + name));
}
