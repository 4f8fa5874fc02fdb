// The sample NTFS disk of Debian's forensics-samples: a deleted folder of
// files of each kind, all recovered by a quick scan and restored byte-identical.
#include "ScanHarness.h"
#include "scan/device/ImageDeviceLayer.h"

#include <QDir>
#include <QFile>
#include <QProcess>
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

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool decompress(const QString& from, const QString& to)
{
    QProcess xz;
    xz.setStandardOutputFile(to);
    xz.start(QStringLiteral("xz"), {QStringLiteral("-dc"), from});
    return xz.waitForFinished(120000) && xz.exitStatus() == QProcess::NormalExit && xz.exitCode() == 0;
}

void expectSameAsOriginal(const QString& relative, const QByteArray& restored)
{
    QByteArray original = readAll(kOriginals + QLatin1Char('/') + relative);
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
        ASSERT_TRUE(decompress(kSample, image));
    }
    QTemporaryDir tmp;
    QString image;
};
} // namespace

TEST_F(ForensicsSample, EngineFindsAndRestoresTheDeletedFiles)
{
    ImageDeviceLayer layer;
    int error = 0;
    ASSERT_GE(layer.addImageFile(image, &error), 0) << error;
    DeviceLayer::setInstance(&layer);
    ScanHarness h(new NtfsVolumeScan(QStringLiteral("C")));
    h.run();
    const auto files = h.files();
    for (const QString& name : kDeleted) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(files.contains(name));
        EXPECT_EQ(files[name]->size, quint64(QFileInfo(kOriginals + QLatin1Char('/') + name).size()));
        expectSameAsOriginal(name, h.content(files[name]));
    }

    const QString target = tmp.filePath(QStringLiteral("out"));
    h.scan->setRestoreDir(target);
    h.scan->start();
    waitForThread(h.scan.get());
    for (const QString& name : kDeleted)
        expectSameAsOriginal(name, readAll(target + QStringLiteral("/C/") + name));
    DeviceLayer::setInstance(nullptr);
}
