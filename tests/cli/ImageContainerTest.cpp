// Disk image containers and split images list exactly what the raw image they
// were made from lists, in every recovery mode. The containers are made by the
// tools that write them for real (qemu-img, ewfacquire, split), and they
// carry the raw image's name, so only their signatures tell what they are.
#include "fixtures/CliRunner.h"
#include "fixtures/TestPaths.h"
#include "tools/demo/DemoDisk.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QXmlStreamReader>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>

namespace {
// Converting the demo disk takes a few seconds per container.
constexpr int kConvertMsecs = 120000;

struct Container {
    const char* name;
    QString program;
    QStringList args;   // %RAW% and %OUT% stand for the raw image and folder/demo.img
    QString written;    // the file the scan opens, as the tool names it
    bool rename = false; // renamed demo.img: only its signature tells what it is
};

QString make(const QTemporaryDir& dir, const Container& c, const QString& raw)
{
    const QString folder = dir.filePath(QString::fromLatin1(c.name));
    QDir().mkpath(folder);
    const QString out = folder + "/demo.img";
    QStringList args;
    for (QString a : c.args)
        args.append(a.replace("%RAW%", raw).replace("%OUT%", out));
    QProcess p;
    p.setWorkingDirectory(folder);
    p.start(c.program, args);
    if (!p.waitForFinished(kConvertMsecs) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return {};
    const QString written = folder + "/" + c.written;
    if (c.rename)
        return QFile::rename(written, out) ? out : QString();
    return written;
}

// The scan's listing, one file a line, then the totals.
std::string listing(const QStringList& modeArgs, const QString& image, const QString& at)
{
    const CliResult r = CliRunner::run(QStringList{"scan", "--images-only"} + modeArgs + QStringList{image + at});
    EXPECT_EQ(r.exitCode, 0) << image.toStdString() << ": " << r.errors.toStdString();
    return r.lines.join('\n').toStdString();
}
} // namespace

// The demo disk the build writes, and a scratch folder for what is made of it.
class DemoImage : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(QFile::exists(raw)) << "the build writes " << raw.toStdString(); }
    // The bytes at offset of the raw image.
    QByteArray rawBytes(qint64 offset, qint64 length) const
    {
        QFile f(raw);
        return f.open(QIODevice::ReadOnly) && f.seek(offset) ? f.read(length) : QByteArray();
    }
    QTemporaryDir dir;
    const QString raw = TestPaths::binaryDir() + "/images/demo.img";
};

TEST_F(DemoImage, ContainersListExactlyWhatTheRawImageLists)
{
    const Container containers[] = {
        {"vhd", "qemu-img", {"convert", "-O", "vpc", "%RAW%", "%OUT%"}, "demo.img"},
        {"vhdx", "qemu-img", {"convert", "-O", "vhdx", "%RAW%", "%OUT%"}, "demo.img"},
        {"vmdk", "qemu-img", {"convert", "-O", "vmdk", "%RAW%", "%OUT%"}, "demo.img"},
        {"qcow2", "qemu-img", {"convert", "-O", "qcow2", "%RAW%", "%OUT%"}, "demo.img"},
        {"e01", "ewfacquire", {"-u", "-q", "-c", "fast", "-t", "demo", "%RAW%"}, "demo.E01", true},
        {"split", "split", {"-b", "64M", "%RAW%", "demo.img."}, "demo.img.aa"},
    };
    // One scan per mode: the NTFS volume, the FAT32 volume with carving, the whole disk.
    const QList<QPair<QStringList, QString>> modes = {
        {{}, "@1"}, {{"--mode", "format"}, "@2"}, {{"--mode", "partition"}, ""}};
    QList<std::string> expected;
    for (const auto& [args, at] : modes) {
        expected.append(listing(args, raw, at));
        ASSERT_GT(std::count(expected.last().begin(), expected.last().end(), '\n'), 1); // files, then the totals
    }
    for (const Container& c : containers) {
        const QString made = make(dir, c, raw);
        ASSERT_FALSE(made.isEmpty()) << "cannot make the " << c.name << " container";
        for (int m = 0; m < modes.size(); ++m)
            EXPECT_EQ(listing(modes[m].first, made, modes[m].second), expected[m]) << c.name << " " << modes[m].second.toStdString();
    }
}

// The CSV and DFXML listings hold the files the text listing holds, and the
// byte runs of the DFXML listing point at each file's content on the image.
TEST_F(DemoImage, CsvAndDfxmlListTheFilesAndWhereTheirContentLies)
{
    for (auto [part, volume] : {std::pair{1, DemoDisk::Ntfs}, std::pair{2, DemoDisk::Fat32}}) {
        const QString csv = dir.filePath("list.csv"), dfxml = dir.filePath("list.xml");
        const QString source = raw + "@" + QString::number(part);
        const QStringList text = QString::fromStdString(listing({"--csv", csv, "--dfxml", dfxml}, source, "")).split('\n');
        const QByteArray csvBytes = CliRunner::readFile(csv);
        ASSERT_TRUE(csvBytes.startsWith("\xEF\xBB\xBFpath,name,size,modified,status\r\n"));
        const QStringList rows = QString::fromUtf8(csvBytes.mid(3)).split("\r\n", Qt::SkipEmptyParts);
        ASSERT_EQ(rows.size(), text.size()); // the header against the totals line
        for (int i = 1; i < rows.size(); ++i)
            EXPECT_TRUE(rows[i].startsWith(text[i - 1].section('\t', 0, 0) + ",")) << rows[i].toStdString();

        QMap<QString, QByteArray> onImage; // file path: the bytes its runs cover
        QXmlStreamReader xml(CliRunner::readFile(dfxml));
        QString name;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("filename"))
                name = xml.readElementText();
            else if (xml.name() == QLatin1String("byte_run"))
                onImage[name] += rawBytes(xml.attributes().value("img_offset").toLongLong(), xml.attributes().value("len").toLongLong());
        }
        ASSERT_FALSE(xml.hasError()) << xml.errorString().toStdString();
        int compared = 0;
        for (const DemoDisk::File& f : DemoDisk::files()) {
            for (auto it = onImage.cbegin(); it != onImage.cend(); ++it) {
                if (f.volume == volume && f.fate == DemoDisk::Deleted && it.key().endsWith("/" + f.path)) {
                    EXPECT_EQ(it.value(), f.content) << it.key().toStdString();
                    ++compared;
                }
            }
        }
        EXPECT_GT(compared, 2) << "volume " << part;
    }
}
