#pragma once
#include "fat32/Fat32VolumeScan.h"
#include "fixtures/SignalWaiter.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/FolderNode.h"
#include "scan/device/MemorySource.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <sys/resource.h>

#include <functional>
#include <memory>

#if defined(__SANITIZE_ADDRESS__)
#define OSTREL_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OSTREL_UNDER_ASAN 1
#endif
#endif

enum class Fs { Ntfs, Fat32 };

// Runs scans of damaged images as the wizard does, with the scanner's thread
// and the tree's top node, and reports how they ended.
struct BoundedScan {
    // No scan of these small images comes near this; more is a hang.
    static constexpr qint64 kTimeLimitMsecs = 60000;
    // Address space for a scan in a child: a size taken from the disk unclamped
    // runs into it. Sanitizers reserve far more, so the cap is off under them.
    static constexpr rlim_t kMemoryBytes = rlim_t(2) << 30;

    QByteArray image;
    std::shared_ptr<const ByteSource> source; // read instead of image when set
    Fs fs = Fs::Ntfs;
    bool deep = false;
    FolderNode top;
    std::unique_ptr<PartScan> scan;
    FolderNode* volume = nullptr;
    int doneSignals = 0;
    qint64 elapsedMsecs = 0;

    BoundedScan(QByteArray img, Fs kind, bool doExtra = false) : image(std::move(img)), fs(kind), deep(doExtra) {}
    ~BoundedScan()
    {
        scan.reset(); // frees the volume folder with its tree
        top.children.clear();
    }

    // Builds the scanner (its constructor may end the program) and runs it to its end.
    void run()
    {
        const DeviceHandle handle(source ? source : std::make_shared<MemorySource>(image));
        if (fs == Fs::Ntfs)
            scan = std::make_unique<NtfsVolumeScan>(QStringLiteral("E"), handle, 0);
        else
            scan = std::make_unique<Fat32VolumeScan>(QStringLiteral("E"), handle, 0);
        volume = top.addChild(QStringLiteral("E"), 0, fs == Fs::Ntfs);
        scan->rootFolder = volume;
        scan->doExtra = deep;
        scan->fileFilter = QStringLiteral("*");
        QSignalSpy done(scan.get(), &PartScan::scanDone);
        QElapsedTimer clock;
        clock.start();
        scan->start();
        while (!scan->wait(10) && clock.elapsed() < kTimeLimitMsecs)
            QCoreApplication::processEvents();
        if (scan->isRunning())
            scan->stop();
        waitForThread(scan.get());
        elapsedMsecs = clock.elapsed();
        doneSignals = int(done.count());
    }

    bool endedWithDone() const { return doneSignals == 1 && elapsedMsecs < kTimeLimitMsecs; }

    static void capMemory()
    {
#ifndef OSTREL_UNDER_ASAN
        const rlimit cap{kMemoryBytes, kMemoryBytes};
        setrlimit(RLIMIT_AS, &cap);
#endif
    }
};
