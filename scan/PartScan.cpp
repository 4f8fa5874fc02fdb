#include "scan/PartScan.h"
#include "scan/RestoreTarget.h"
#include "scan/device/DeviceLayer.h"

#include <QDebug>
#include <QDir>
#include <cerrno>
#include <cstring>
#include <utility>

PartScan::PartScan(const QString& name, QObject* parent)
    : QThread(parent), deviceName(name)
{
    if (deviceName.size() == 1)
        openVolume();
}

PartScan::PartScan(const QString& name, DeviceHandle diskHandle, quint64 offset, QObject* parent)
    : QThread(parent), partOffset(offset), deviceName(name), handle(std::move(diskHandle))
{
}

PartScan::~PartScan()
{
    stopAndWait();
}

void PartScan::openVolume()
{
    int error = 0;
    handle = DeviceLayer::instance().openVolume(deviceName.at(0), &error);
    // An invalid handle fails every read: the scanner's boot sector check then
    // reports the volume unopenable.
    if (!handle.isValid())
        qCritical("%s: cannot open the volume: %s", "PartScan::openVolume", strerror(error));
}

int PartScan::getPartType()
{
    if (deviceName.size() != 1) {
        qCritical("%s DeviceIoControl return: %lu", "PartScan::getPartType", static_cast<unsigned long>(ENODEV));
        return 0;
    }
    return DeviceLayer::instance().partitionTypeOfLetter(deviceName.at(0));
}

qint64 PartScan::read(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad)
{
    QMutexLocker lock(handleLock);
    // The handle logs bad ranges and a gone device once each; a failed read here
    // is one of those, so it is not logged again.
    const qint64 got = handle.read(buffer, bytes, position, bad);
    if (got > 0)
        *bytesCounter += quint64(got);
    return got;
}

qint64 PartScan::readBeside(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad)
{
    if (!secondReader())
        return read(buffer, bytes, position, bad);
    const qint64 got = handle.read(buffer, bytes, position, bad);
    if (got > 0)
        *bytesCounter += quint64(got);
    return got;
}

bool PartScan::deviceFailed() const
{
    return handle.health() && handle.health()->gone();
}

QList<BadRange> PartScan::badRanges() const
{
    return handle.health() ? handle.health()->ranges() : QList<BadRange>();
}

qint64 PartScan::readBlocks(void* buffer, quint32 count, quint64 position, int shift, QList<BadRange>* bad)
{
    // A block is at most 1 GiB; a position beyond 64 bits lies past any device.
    if (shift < 0 || shift > 30 || (position << shift) >> shift != position)
        return -1;
    const quint64 bytes = quint64(count) << shift;
    const quint64 byteOffset = (position << shift) + partOffset;
    if (byteOffset < partOffset)
        return -1;
    return read(buffer, bytes, byteOffset, bad) >> shift;
}

quint64 PartScan::fileContent(char*, FoundFile*)
{
    qDebug() << "return 0";
    return 0;
}

void PartScan::undelete(QString) {}
void PartScan::setRunning(bool) {}
void PartScan::stop() {}
void PartScan::parseBootSector() {}

bool PartScan::checkPoint()
{
    QMutexLocker lock(&mutex);
    // After a pause the state is not looked at again: a stop given while
    // paused takes effect at the next check point.
    if (runState == Paused) {
        pauseCond.wait(&mutex);
        return false;
    }
    // A device that has gone ends the scan with what it found so far.
    return runState == Stopped || deviceFailed();
}

void PartScan::noteResumePoint(const ResumePoint& point)
{
    resumePoint = point;
    if (onResumePoint)
        onResumePoint();
}

void PartScan::restoreTree(const QString& targetDir, const RestoreWalk::Content& content)
{
    restoreReport.clear();
    RestoreTarget target;
    int error = 0;
    QDir().mkpath(targetDir); // a folder the user named but that is not there yet is made
    if (!target.open(targetDir, &error))
        qCritical("cannot open the restore target %s: %s", qUtf8Printable(targetDir), strerror(error));
    // Progress is coalesced: one queued signal per file would flood the window
    // on a folder of small files.
    quint64 files = 0;
    quint64 bytes = 0;
    QElapsedTimer clock;
    clock.start();
    const auto written = [&](quint64 size) {
        ++files;
        bytes += size;
        if (clock.elapsed() < kProgressMsecs)
            return;
        clock.restart();
        emit undeleteProgress(std::exchange(files, 0), std::exchange(bytes, 0));
    };
    RestoreWalk::run(rootFolder, target, keepBoth, content, &restoreReport, written, filter);
    if (files)
        emit undeleteProgress(files, bytes);
}

void PartScan::finishRestore()
{
    emit undeleteDone(restoreReport.written(), restoreReport.damaged(), restoreReport.failed());
}

void PartScan::pauseOrResume(bool running)
{
    QMutexLocker lock(&mutex);
    runState = running ? Running : Paused;
    if (running)
        pauseCond.wakeAll();
}

void PartScan::requestStop()
{
    QMutexLocker lock(&mutex);
    runState = Stopped;
    pauseCond.wakeAll();
}

void PartScan::stopAndWait()
{
    requestStop();
    wait();
}
