#include "scan/PartScan.h"
#include "scan/device/DeviceLayer.h"

#include <QDebug>
#include <cerrno>

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
    if (!handle.isValid())
        qFatal("%s: CreateFileW return: %lu", "PartScan::openVolume", static_cast<unsigned long>(error));
}

int PartScan::getPartType()
{
    if (deviceName.size() != 1) {
        qCritical("%s DeviceIoControl return: %lu", "PartScan::getPartType", static_cast<unsigned long>(ENODEV));
        return 0;
    }
    return DeviceLayer::instance().partitionTypeOfLetter(deviceName.at(0));
}

qint64 PartScan::read(void* buffer, quint64 bytes, quint64 position)
{
    QMutexLocker lock(handleLock);
    const qint64 got = handle.read(buffer, bytes, position);
    if (got < 0)
        qCritical("%s ReadFile return: %lu", "PartScan::read", static_cast<unsigned long>(errno));
    else
        *bytesCounter += quint64(got);
    return got;
}

qint64 PartScan::readBlocks(void* buffer, quint32 count, quint64 position, int shift)
{
    // A block is at most 1 GiB; a position beyond 64 bits lies past any device.
    if (shift < 0 || shift > 30 || (position << shift) >> shift != position)
        return -1;
    const quint64 bytes = quint64(count) << shift;
    const quint64 byteOffset = (position << shift) + partOffset;
    if (byteOffset < partOffset)
        return -1;
    return read(buffer, bytes, byteOffset) >> shift;
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
    return runState == Stopped;
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
