#include "imaging/DiskImageBuilder.h"
#include "fixtures/SignalWaiter.h"
#include "scan/PartScan.h"
#include "scan/device/ImageDeviceLayer.h"
#include "scan/device/MemorySource.h"

#include <QSignalSpy>
#include <atomic>
#include <gtest/gtest.h>

namespace {
// A scanner whose loop has a check point every step, emits scanOne with the
// step, and ends with scanDone; the test steers it through the handshake below.
class LoopScan : public PartScan {
public:
    explicit LoopScan(DeviceHandle h) : PartScan("loop", std::move(h), 0) {}
    ~LoopScan() override { stopAndWait(); }
    void setRunning(bool running) override { pauseOrResume(running); }
    void stop() override { requestStop(); }

    std::atomic<int> steps{0};
    std::atomic<bool> gate{true}; // the loop spins while false, between check points
    std::atomic<bool> spinning{false};

protected:
    void run() override
    {
        runState = Running;
        // Runs until stopped: only a stop ends it, so no test depends on speed.
        for (int i = 0;; ++i) {
            while (!gate.load()) {
                spinning = true;
                QThread::yieldCurrentThread();
            }
            if (checkPoint())
                break;
            steps = i + 1;
        }
        emit scanDone(quint64(steps.load()), 0);
    }
};

DeviceHandle memoryHandle(int bytes)
{
    QByteArray data(bytes, '\0');
    for (int i = 0; i < bytes; ++i)
        data[i] = char(i / 512);
    return DeviceHandle(std::make_shared<MemorySource>(data));
}
} // namespace

TEST(PartScan, ReadBlocksCountsWholeBlocksFromThePartitionOffset)
{
    auto source = std::make_shared<MemorySource>(QByteArray(10 * 512 + 100, '\0'));
    source->setReadFilter([](quint64 pos, quint64) { return pos != 0; });
    PartScan scan("x", DeviceHandle(source), 512);
    static char buf[20 * 512];
    struct Case {
        quint32 count;
        quint64 position;
        int shift;
        qint64 expected;
    };
    const Case cases[] = {
        {2, 0, 9, 2},      // bytes 512..1535
        {20, 0, 9, 9},     // 9 whole sectors, then 100 bytes that are not a whole one
        {1, 9, 9, 0},      // the last 100 bytes: less than a block
        {1, 20, 9, 0},     // past the end
        {1, 0, 12, 1},     // one 4096-byte block
        {1, 1, 12, 0},     // 4096+512.. only 1636 bytes left
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.count << "@" << c.position << " shift " << c.shift);
        EXPECT_EQ(scan.readBlocks(buf, c.count, c.position, c.shift), c.expected);
    }
    PartScan atZero("x", DeviceHandle(source), 0);
    EXPECT_EQ(atZero.readBlocks(buf, 1, 0, 9), 1) << "an unreadable block comes back as zeros";
    EXPECT_EQ(atZero.readBlocks(buf, 1, ~quint64(0), 12), -1) << "a position past 64 bits";
}

TEST(PartScan, ReadIsAtAbsolutePositionsAndNamedVolumesOpenThroughTheLayer)
{
    PartScan scan("x", memoryHandle(4096), 1024);
    char b = 0;
    ASSERT_EQ(scan.read(&b, 1, 1024), 1);
    EXPECT_EQ(b, 2) << "partOffset is not added by read";

    ImageDeviceLayer layer;
    DiskImageBuilder disk(2 * 1024 * 1024);
    disk.put(0, DiskImageBuilder::ntfsBootSector(4096));
    layer.addImageData("vol.img", disk.bytes());
    DeviceLayer::setInstance(&layer);
    PartScan byLetter("C");
    EXPECT_TRUE(byLetter.handle.isValid());
    EXPECT_EQ(byLetter.getPartType(), 7);
    PartScan byName("not a letter");
    EXPECT_FALSE(byName.handle.isValid());
    EXPECT_EQ(byName.getPartType(), 0);
    EXPECT_EQ(byName.read(&b, 1, 0), -1);
    DeviceLayer::setInstance(nullptr);
}

void startHeldAtGate(LoopScan& scan)
{
    scan.gate = false;
    scan.start();
    while (!scan.spinning.load())
        QThread::yieldCurrentThread();
}

TEST(PartScan, PauseResumeAndStopAtCheckPoints)
{
    LoopScan scan(memoryHandle(512));
    QSignalSpy done(&scan, &PartScan::scanDone);
    startHeldAtGate(scan);
    scan.setRunning(false);
    scan.gate = true; // the first check point now waits
    scan.setRunning(true);
    while (scan.steps.load() < 5)
        QThread::yieldCurrentThread();
    scan.stop();
    waitForThread(&scan);
    ASSERT_EQ(done.count(), 1);
    EXPECT_GE(done.at(0).at(0).toULongLong(), 5u);
}

TEST(PartScan, StopWhilePausedWakesTheThreadAndEndsTheScan)
{
    LoopScan scan(memoryHandle(512));
    QSignalSpy done(&scan, &PartScan::scanDone);
    startHeldAtGate(scan);
    scan.setRunning(false);
    scan.gate = true;
    scan.stop();
    waitForThread(&scan);
    ASSERT_EQ(done.count(), 1);
    EXPECT_LE(done.at(0).at(0).toULongLong(), 1u) << "at most the step after the wait runs";
}

TEST(PartScan, DestroyingARunningOrPausedScannerWaitsForItsThread)
{
    for (bool paused : {false, true}) {
        auto* scan = new LoopScan(memoryHandle(512));
        startHeldAtGate(*scan);
        if (paused)
            scan->setRunning(false);
        scan->gate = true;
        delete scan; // must neither hang nor leave the thread on freed memory
    }
    SUCCEED();
}
