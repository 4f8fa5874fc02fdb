// The sample NTFS disk of Debian's forensics-samples: a deleted folder of
// files of each kind, all recovered by a quick scan and restored byte-identical.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
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
    // The build folder; test executables lie one level below it.
    static QString binaryDir()
    {
        const QString fromEnv = qEnvironmentVariable("OSTREL_BINARY_DIR");
        return fromEnv.isEmpty() ? QCoreApplication::applicationDirPath() + QStringLiteral("/..") : fromEnv;
    }

    // Runs ostrel-cli to its end and returns what it printed; a failing run fails the test.
    static QString cli(const QStringList& arguments)
    {
        QProcess p;
        p.setProgram(binaryDir() + QStringLiteral("/ostrel-cli"));
        p.setArguments(arguments);
        p.start();
        const bool finished = p.waitForFinished(300000);
        EXPECT_TRUE(finished && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
            << p.program().toStdString() << " " << arguments.join(QLatin1Char(' ')).toStdString() << ": " << p.errorString().toStdString() << " exit "
            << p.exitCode() << " " << p.readAllStandardError().toStdString();
        return QString::fromUtf8(p.readAllStandardOutput());
    }

    QTemporaryDir tmp;
    QString image;
};
} // namespace

TEST_F(ForensicsSample, QuickScanListsAndRestoresTheDeletedFilesThroughTheCommandLine)
{
    const QString source = image + QStringLiteral("@1");
    const QString scanOut = cli({QStringLiteral("scan"), source});
    QMap<QString, quint64> listed;
    for (const QString& line : scanOut.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() == 3)
            listed.insert(fields[0], fields[1].toULongLong());
    }
    for (const QString& name : kDeleted) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(listed.contains(QStringLiteral("C/") + name));
        EXPECT_EQ(listed[QStringLiteral("C/") + name], quint64(QFileInfo(kOriginals + QLatin1Char('/') + name).size()));
    }

    const QString target = tmp.filePath(QStringLiteral("out"));
    cli({QStringLiteral("restore"), QStringLiteral("--to"), target, source});
    for (const QString& name : kDeleted)
        expectSameAsOriginal(name, readAll(target + QStringLiteral("/C/") + name));
}
