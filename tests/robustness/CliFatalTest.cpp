// ostrel-cli ends on a fatal message with the message on stderr and status 7,
// not with a core dump: for messages of a scanner's constructor and for those
// raised on a scan's own thread.
#include "cli/CliApp.h"
#include "fixtures/CliRunner.h"
#include "imaging/SmallVolumes.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

TEST(CliFatal, DamagedVolumeEndsWithItsMessageAndStatusSeven)
{
    QTemporaryDir dir;
    QByteArray volume = SmallVolumes::ntfs();
    volume[0x36] = char(0x10); // $MFT far past the end
    const QString image = dir.filePath(QStringLiteral("damaged.img"));
    QFile f(image);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(volume);
    f.close();
    for (const char* command : {"scan", "restore"}) {
        QStringList args{command, "--images-only", image};
        if (QLatin1String(command) == QLatin1String("restore"))
            args << "--to" << dir.filePath(QStringLiteral("out"));
        const CliResult r = CliRunner::run(args);
        EXPECT_EQ(r.exitCode, CliApp::Fatal) << r.errors.toStdString(); // -1 for a crash
        EXPECT_TRUE(r.errors.contains(QStringLiteral("ostrel-cli: fatal: NtfsVolumeScan::parseBootSector: cannot read $MFT record")))
            << r.errors.toStdString();
    }
}

TEST(CliFatalDeathTest, MessageOnTheScanThreadEndsTheProcessTheSameWay)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CliApp::run({QStringLiteral("ostrel-cli")}); // installs the handler, prints the usage
            QThread* scan = QThread::create([] { qFatal("%s: cannot read record cluster %d", "NtfsVolumeScan::run()", 24); });
            scan->start();
            scan->wait();
        },
        testing::ExitedWithCode(CliApp::Fatal), "ostrel-cli: fatal: NtfsVolumeScan::run\\(\\): cannot read record cluster 24");
}
