#include "CarvingVolume.h"
#include "carving/CarvingPass.h"
#include "fixtures/SignalWaiter.h"
#include "scan/PartScan.h"
#include "scan/device/MemorySource.h"

#include <QSignalSpy>
#include <atomic>
#include <gtest/gtest.h>

namespace {
constexpr quint32 kCluster = 512;
constexpr quint64 kClusters = 4000;

// A scanner that runs only the FAT32 carving pass, wired the way the volume
// scanners wire it: reads at partOffset, the base's check point, scanOne.
class CarvingScan : public PartScan {
public:
    explicit CarvingScan(DeviceHandle h) : PartScan("carve", std::move(h), 4096) {}
    ~CarvingScan() override { stopAndWait(); }
    void setRunning(bool running) override { pauseOrResume(running); }
    void stop() override { requestStop(); }

    FolderNode top;
    std::atomic<int> steps{0};

protected:
    void run() override
    {
        quint64 running = 0, results = 0, total = 0;
        CarvingContext c;
        c.root = &top;
        c.read = [this](void* b, quint64 n, quint64 o) { return read(b, n, partOffset + o); };
        c.checkPoint = [this] { return checkPoint(); };
        c.scanOne = [this](int done) {
            steps = done + 1;
            emit scanOne(done);
        };
        c.runningNumber = &running;
        c.results = &results;
        c.totalSize = &total;
        CarvingPass::runFat32(c, {kCluster, 0, quint32(kClusters + 2) * 4});
        emit scanDone(results, total);
    }
};

DeviceHandle volumeWithJpgsAt(std::initializer_list<quint64> clusters)
{
    QByteArray disk(int(4096 + kClusters * kCluster), '\0');
    for (quint64 c : clusters)
        disk.replace(int(4096 + (c - 2) * kCluster), 3, carvedHeaders::jpg());
    return DeviceHandle(std::make_shared<MemorySource>(disk));
}

// Starts the scan paused, so that it waits at its first check point, and
// returns when it has got there.
void startHeldAtFirstCheckPoint(CarvingScan& scan)
{
    scan.setRunning(false);
    scan.start();
    while (scan.steps.load() < CarvingPass::kCheckEvery - 1)
        QThread::yieldCurrentThread();
}
} // namespace

TEST(CarvingScan, PauseHoldsThePassAtItsCheckPointUntilResumed)
{
    CarvingScan scan(volumeWithJpgsAt({8, 3000}));
    QSignalSpy done(&scan, &PartScan::scanDone);
    startHeldAtFirstCheckPoint(scan);
    QThread::msleep(50);
    EXPECT_EQ(scan.steps.load(), 999) << "held at the first check point";
    EXPECT_TRUE(scan.isRunning());
    scan.setRunning(true);
    waitForThread(&scan);
    ASSERT_EQ(done.count(), 1);
    EXPECT_EQ(done.at(0).at(0).toULongLong(), 2u);
    EXPECT_EQ(scan.steps.load(), int(kClusters - 8 + 2 - 1) + 1);
}

TEST(CarvingScan, StopEndsThePassWithWhatItFound)
{
    CarvingScan scan(volumeWithJpgsAt({8, 3000}));
    QSignalSpy done(&scan, &PartScan::scanDone);
    startHeldAtFirstCheckPoint(scan);
    scan.stop();
    waitForThread(&scan);
    ASSERT_EQ(done.count(), 1);
    EXPECT_EQ(done.at(0).at(0).toULongLong(), 1u) << "the JPG at cluster 3000 lies behind the stop";
    EXPECT_EQ(done.at(0).at(1).toULongLong(), 250u * kCluster);
    ASSERT_EQ(scan.top.children.size(), 1);
    EXPECT_EQ(scan.top.children.first()->children.first()->files.size(), 1);
}
