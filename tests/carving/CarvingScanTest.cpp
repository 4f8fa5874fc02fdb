#include "CarvingVolume.h"
#include "carving/CarvingPass.h"
#include "fixtures/SignalWaiter.h"
#include "scan/PartScan.h"
#include "scan/device/MemorySource.h"

#include <QSignalSpy>
#include <atomic>
#include <gtest/gtest.h>

namespace {
// A scanner whose run is the FAT32 carving pass alone, wired as the volume
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
        const CarvingContext c{&top, 0, [this](void* b, quint64 n, quint64 o) { return read(b, n, partOffset + o); },
                               [this] { return checkPoint(); }, [this](int done) { steps = done + 1; },
                               &running, &results, &total};
        CarvingPass::runFat32(c, {512, 0, 4002 * 4});
        emit scanDone(results, total);
    }
};
} // namespace

TEST(CarvingScan, PauseHoldsThePassAndStopEndsItWithWhatItFound)
{
    QByteArray disk(4096 + 4000 * 512, '\0');
    disk.replace(4096 + 6 * 512, 3, carvedHeaders::jpg());    // cluster 8
    disk.replace(4096 + 2998 * 512, 3, carvedHeaders::jpg()); // cluster 3000
    CarvingScan scan{DeviceHandle(std::make_shared<MemorySource>(disk))};
    QSignalSpy done(&scan, &PartScan::scanDone);
    scan.setRunning(false);
    scan.start();
    while (scan.steps.load() < CarvingPass::kCheckEvery - 1)
        QThread::yieldCurrentThread();
    QThread::msleep(50);
    EXPECT_EQ(scan.steps.load(), CarvingPass::kCheckEvery - 1) << "held at the first check point";
    scan.stop();
    waitForThread(&scan);
    ASSERT_EQ(done.count(), 1);
    EXPECT_EQ(done.at(0).at(0).toULongLong(), 1u) << "the JPG at cluster 3000 lies behind the stop";
    EXPECT_EQ(done.at(0).at(1).toULongLong(), 250u * 512);
}
