// Restores into targets that fill up, refuse a folder, or hold links to the
// outside: every file not written is listed, the exit status says so, and
// nothing outside the target appears or changes. The source guard compares
// devices, so a symlink to the source's mount point does not get past it.
#include "cli/CliApp.h"
#include "fixtures/CliRunner.h"
#include "imaging/SmallVolumes.h"
#include "scan/device/SourceGuard.h"
#include "scan/device/TargetDir.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {
void writeFile(const QString& path, const QByteArray& data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(data);
}

QStringList restoreArgs(const QString& image, const QString& to)
{
    return {"restore", "--images-only", "--to", to, image};
}
} // namespace

TEST(HostileTarget, EveryUnwrittenFileIsListedAndNothingOutsideChanges)
{
    QTemporaryDir dir;
    const QString image = dir.filePath("volume.img");
    writeFile(image, SmallVolumes::ntfs());
    const QString scratch = dir.filePath("scratch");
    ASSERT_EQ(CliRunner::run(restoreArgs(image, scratch)).exitCode, CliApp::Ok);
    const QStringList files = CliRunner::filesBelow(scratch);
    const QString deep = files.filter("picture.jpg").value(0); // a file in a folder
    const QString folder = QFileInfo(deep).path();
    ASSERT_FALSE(deep.isEmpty());
    const QString outside = dir.filePath("outside");
    writeFile(outside + "/victim", "untouched");

    struct Case {
        const char* name;
        std::function<void(const QString& target)> prepare;
        quint64 budget; // bytes the target takes, 0 for no limit
    };
    const Case cases[] = {
        {"full", [](const QString&) {}, 100},
        {"file in place of a folder", [&](const QString& t) { writeFile(t + "/" + folder, "x"); }, 0},
        {"links to the outside", [&](const QString& t) {
             QDir().mkpath(QFileInfo(t + "/" + folder).path());
             QFile::link(outside, t + "/" + folder);
             for (const QString& f : files)
                 if (!f.startsWith(folder + "/"))
                     QFile::link(outside + "/victim", t + "/" + f);
         }, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QString target = dir.filePath(QString::fromLatin1(c.name).replace(' ', '_'));
        QDir().mkpath(target);
        c.prepare(target);
        if (c.budget) {
            TargetDir::setWriteBudgetForTests(c.budget);
            EXPECT_EQ(CliApp::run({"ostrel-cli", "restore", "--images-only", "--to", target, image}), CliApp::NotRestored);
            TargetDir::setWriteBudgetForTests(0);
        } else {
            const CliResult r = CliRunner::run(restoreArgs(image, target));
            EXPECT_EQ(r.exitCode, CliApp::NotRestored) << r.errors.toStdString();
            EXPECT_FALSE(r.lines.filter("not written: " + deep).isEmpty()) << r.lines.join('\n').toStdString();
        }
        EXPECT_EQ(CliRunner::filesBelow(outside), QStringList{"victim"});
        EXPECT_EQ(CliRunner::readFile(outside + "/victim"), QByteArray("untouched"));
    }
}

TEST(HostileTarget, GuardSeesThroughALinkToTheSourceMountPoint)
{
    QTemporaryDir dir;
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(dir.path()).constData(), &st), 0);
    const QString devText = QStringLiteral("%1:%2").arg(major(st.st_dev)).arg(minor(st.st_dev));
    // A disk sdz with partitions sdz1, sdz2; sdz2 is mounted where the temporary folder lies.
    const QString sys = dir.filePath("sys");
    writeFile(sys + "/class/block/sdz/dev", "250:0\n");
    writeFile(sys + "/block/sdz/sdz1/dev", "250:1\n");
    writeFile(sys + "/block/sdz/sdz2/dev", "250:2\n");
    writeFile(sys + "/class/block/sdz2/dev", "250:2\n");
    writeFile(sys + "/class/block/sdy/dev", "250:16\n");
    const QString mountInfo = dir.filePath("mountinfo");
    writeFile(mountInfo, QStringLiteral("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
                                        "40 1 %1 / %2 rw shared:1 - ext4 /dev/sdz2 rw\n").arg(devText, dir.path()).toUtf8());
    QDir().mkpath(dir.filePath("mnt/sub"));
    QFile::link(dir.filePath("mnt"), dir.filePath("link"));
    const SourceGuard guard({sys, mountInfo});

    struct Case {
        QString target;
        QString source;
        bool refused;
    };
    const Case cases[] = {
        {dir.filePath("link/sub/out"), "/dev/sdz", true},  // a partition of the source disk, through a link
        {dir.filePath("link"), "/dev/sdz2", true},
        {dir.filePath("mnt/new/deeper"), "/dev/sdz", true}, // not made yet
        {dir.filePath("link"), "/dev/sdy", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.target.toStdString() + " " + c.source.toStdString());
        EXPECT_EQ(!guard.refusal(c.target, c.source).isEmpty(), c.refused);
    }
}
