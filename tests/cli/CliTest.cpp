// ostrel-cli as a user runs it: errors and their exit codes, and the three
// recoveries of the demo disk, restored files compared with what was written.
#include "cli/CliApp.h"
#include "fixtures/CliRunner.h"
#include "tools/demo/DemoDisk.h"
#include "imaging/DiskImageBuilder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
class CliDemo : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dir = new QTemporaryDir;
        demo = dir->filePath("demo-copy.img");
        ASSERT_TRUE(DemoDisk::save(DemoDisk::build(), demo));
        blank = dir->filePath("blank.img");
        ASSERT_TRUE(DiskImageBuilder(4 * 1024 * 1024).save(blank));
        wiped = dir->filePath("wiped.img");
        QByteArray image = DemoDisk::build();
        image.replace(446, 64, QByteArray(64, '\0')); // the partition table is gone
        ASSERT_TRUE(DemoDisk::save(image, wiped));
    }
    static void TearDownTestSuite() { delete dir; }

    static QJsonObject json(const QStringList& args)
    {
        const CliResult r = CliRunner::run(args + QStringList{"--images-only", "--json"});
        EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
        return QJsonDocument::fromJson(r.lines.join('\n').toUtf8()).object();
    }

    // What a restore wrote, by path below the target's root folder.
    static QMap<QString, QByteArray> restored(const QString& target, const QString& root)
    {
        QMap<QString, QByteArray> out;
        const QString base = target + "/" + root;
        for (const QString& rel : CliRunner::filesBelow(base))
            out.insert(rel, CliRunner::readFile(base + "/" + rel));
        return out;
    }

    static QTemporaryDir* dir;
    static QString demo, blank, wiped;
};
QTemporaryDir* CliDemo::dir = nullptr;
QString CliDemo::demo, CliDemo::blank, CliDemo::wiped;

// The files a metadata scan of one demo volume must bring back, by their path in the tree.
QMap<QString, QByteArray> expectedFiles(DemoDisk::Volume volume, const QString& prefix)
{
    QMap<QString, QByteArray> out;
    for (const DemoDisk::File& f : DemoDisk::files()) {
        if (f.volume != volume)
            continue;
        if (f.fate == DemoDisk::Deleted) {
            out.insert(prefix + f.path, f.content);
        } else if (f.fate == DemoDisk::Orphaned) {
            out.insert(prefix + "孤立文件-00001/" + f.path, f.content);
        }
    }
    return out;
}

// Carved files get generated names: they are compared by their first bytes.
bool carvedFound(const QMap<QString, QByteArray>& got, const QByteArray& original)
{
    const QByteArray start = original.left(4096);
    for (auto it = got.begin(); it != got.end(); ++it) {
        if (it.key().contains("额外文件/") && it.value().startsWith(start))
            return true;
    }
    return false;
}
} // namespace

TEST_F(CliDemo, ErrorsHaveTheirOwnExitCodes)
{
    struct Case {
        QStringList args;
        int exit;
    };
    const Case cases[] = {
        {{}, CliApp::Usage},
        {{"frobnicate"}, CliApp::Usage},
        {{"scan"}, CliApp::Usage},
        {{"scan", "--mode", "quick", demo + "@1"}, CliApp::Usage},
        {{"restore", demo + "@1"}, CliApp::Usage},
        {{"scan", dir->filePath("missing.img")}, CliApp::NoSource},
        {{"scan", "Q"}, CliApp::NoSource},
        {{"scan", "--mode", "partition", "disk:99"}, CliApp::NoSource},
        {{"scan", demo + "@3"}, CliApp::BadPartition},
        {{"scan", demo}, CliApp::BadPartition}, // two volumes: which one?
        {{"restore", "--to", "/proc/ostrel-cannot-be-made", demo + "@1"}, CliApp::BadTarget},
        {{"scan", blank}, CliApp::Unrecognised},
        {{"scan", "--help"}, CliApp::Ok},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        const CliResult r = CliRunner::run(c.args + QStringList{"--images-only"});
        EXPECT_EQ(r.exitCode, c.exit) << r.errors.toStdString();
    }
    EXPECT_TRUE(CliRunner::run({"scan", "--images-only", blank}).errors.contains("无法识别的文件系统。"));
}

TEST_F(CliDemo, FileRecoveryOfBothVolumes)
{
    for (auto [part, volume] : {std::pair{1, DemoDisk::Ntfs}, std::pair{2, DemoDisk::Fat32}}) {
        SCOPED_TRACE(part);
        QTemporaryDir target;
        const QJsonObject doc = json({"restore", "--to", target.path(), demo + "@" + QString::number(part)});
        const QString root = doc["root"].toString();
        const QMap<QString, QByteArray> want = expectedFiles(volume, QString());
        EXPECT_EQ(doc["results"].toInt(), want.size());
        EXPECT_EQ(doc["restoredFiles"].toInt(), want.size());
        const QMap<QString, QByteArray> got = restored(target.path(), root);
        EXPECT_EQ(got.keys(), want.keys());
        for (auto it = want.begin(); it != want.end(); ++it)
            EXPECT_TRUE(got.value(it.key()) == it.value()) << it.key().toStdString();
        // The JSON tree lists the same files with sizes and ISO times.
        for (const QJsonValue& f : doc["files"].toArray()) {
            const QString path = f["path"].toString().mid(root.size() + 1);
            EXPECT_EQ(qint64(f["size"].toDouble()), want.value(path).size()) << path.toStdString();
            EXPECT_TRUE(f["modified"].toString().endsWith('Z'));
        }
    }
}

TEST_F(CliDemo, FormatRecoveryAlsoCarvesThePicturesInFreeSpace)
{
    for (auto [part, volume] : {std::pair{1, DemoDisk::Ntfs}, std::pair{2, DemoDisk::Fat32}}) {
        SCOPED_TRACE(part);
        QTemporaryDir target;
        const QJsonObject doc = json({"restore", "--mode", "format", "--to", target.path(), demo + "@" + QString::number(part)});
        const QMap<QString, QByteArray> got = restored(target.path(), doc["root"].toString());
        for (const DemoDisk::File& f : DemoDisk::files()) {
            if (f.volume == volume && f.fate == DemoDisk::FreeSpace) {
                EXPECT_TRUE(carvedFound(got, f.content)) << f.path.toStdString();
            }
        }
        const QMap<QString, QByteArray> metadata = expectedFiles(volume, QString());
        for (auto it = metadata.begin(); it != metadata.end(); ++it)
            EXPECT_TRUE(got.value(it.key()) == it.value()) << it.key().toStdString();
    }
}

TEST_F(CliDemo, PartitionRecoveryFindsBothVolumesBehindAWipedTable)
{
    QTemporaryDir target;
    const QJsonObject doc = json({"restore", "--mode", "partition", "--to", target.path(), wiped});
    QMap<QString, QByteArray> want = expectedFiles(DemoDisk::Ntfs, "0 NTFS/");
    want.insert(expectedFiles(DemoDisk::Fat32, "1 FAT32/"));
    const QMap<QString, QByteArray> got = restored(target.path(), doc["root"].toString());
    EXPECT_EQ(got.keys(), want.keys());
    for (auto it = want.begin(); it != want.end(); ++it)
        EXPECT_TRUE(got.value(it.key()) == it.value()) << it.key().toStdString();
}

TEST_F(CliDemo, OnlyRestoresTheChosenFolders)
{
    QTemporaryDir target;
    const QJsonObject scan = json({"scan", demo + "@1"});
    const QString root = scan["root"].toString();
    const CliResult r = CliRunner::run({"restore", "--images-only", "--only", root + "/我的文档/照片", "--to", target.path(), demo + "@1"});
    ASSERT_EQ(r.exitCode, 0) << r.errors.toStdString();
    // As the check boxes do it: ticking 照片 takes its files, and none of its parent's own.
    QStringList want;
    for (const QString& path : expectedFiles(DemoDisk::Ntfs, QString()).keys()) {
        if (path.startsWith("我的文档/照片/"))
            want.append(path);
    }
    EXPECT_EQ(restored(target.path(), root).keys(), want);
    EXPECT_FALSE(want.contains("项目/方案.txt"));
    EXPECT_EQ(CliRunner::run({"restore", "--images-only", "--only", "nowhere", "--to", target.path(), demo + "@1"}).exitCode, CliApp::Usage);
}
