#include "diskscan/DiskScan.h"
#include "diskscan/BootSectorProbe.h"
#include "fat32/Fat32VolumeScan.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/FolderNode.h"
#include "scan/CheckedMath.h"
#include "scan/device/DeviceLayer.h"

#include <QDateTime>
#include <QDebug>
#include <cerrno>
#include <cstring>
#include <vector>

namespace {
constexpr quint64 kSector = BootSectorProbe::kSectorBytes;
// The walk reads this much at a time and tests every sector inside.
constexpr quint64 kChunkBytes = 1024 * 1024;
// NTFS volumes this small are skipped: they take no number and get no scanner.
constexpr quint64 kSmallestNtfsVolume = 0x9600000;
// The NTFS backup boot sector lies right behind the stated length; the walk
// resumes behind it.
constexpr quint64 kResumeBehindVolume = 512;

QString now()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}
} // namespace

DiskScan::DiskScan(int disk, QObject* parent) : PartScan(QString(), parent), m_disk(disk)
{
    openDisk(disk);
}

DiskScan::~DiskScan()
{
    stop();
    wait();
    // The visible root and the partition folders below it are freed as one tree.
    for (PartScan* p : partScans) {
        p->rootFolder = nullptr;
        delete p;
    }
    delete rootFolder;
}

void DiskScan::openDisk(int disk)
{
    int error = 0;
    diskHandle = DeviceLayer::instance().openDisk(disk, &error);
    // The base's handle too, so a disk that goes during the search ends it.
    handle = diskHandle;
    // An unopenable disk is searched over zero bytes: the search ends at once.
    if (!diskHandle.isValid())
        qCritical("%s: cannot open the disk: %s", "DiskScan::openDisk", strerror(error));
}

quint64 DiskScan::getDiskSize()
{
    const auto geometry = DeviceLayer::instance().diskGeometry(m_disk);
    if (!geometry)
        return 0;
    if (geometry->mediaType == DiskGeometry::kRemovableMedia)
        qDebug("RemovableMedia");
    else if (geometry->mediaType == DiskGeometry::kFixedMedia)
        qDebug("FixedMedia");
    else
        qDebug("Other Media");
    return qMin(geometry->sizeBytes(), diskHandle.length());
}

qint64 DiskScan::readDisk(void* buffer, quint64 bytes, quint64 position)
{
    QMutexLocker lock(&m_diskLock);
    // Bad ranges and a gone disk are logged once each by the handle, not per read.
    const qint64 got = diskHandle.read(buffer, bytes, position);
    if (got > 0)
        bytesRead += quint64(got);
    return got;
}

quint64 DiskScan::fileContent(char* buffer, FoundFile* record)
{
    if (partIndex < 0 || partIndex >= partScans.size())
        return 0;
    return partScans[partIndex]->fileContent(buffer, record);
}

void DiskScan::setCurrent(PartScan* scanner)
{
    QMutexLocker lock(&m_currentLock);
    m_current = scanner;
}

void DiskScan::setRunning(bool running)
{
    pauseOrResume(running);
    QMutexLocker lock(&m_currentLock);
    if (m_current)
        m_current->setRunning(running);
}

void DiskScan::stop()
{
    requestStop();
    QMutexLocker lock(&m_currentLock);
    if (m_current)
        m_current->stop();
}

bool DiskScan::stopRequested()
{
    QMutexLocker lock(&mutex);
    return runState == Stopped;
}

void DiskScan::scanDoneSlot(quint64 results, quint64 size)
{
    QMutexLocker lock(&mutex);
    totalResults += results;
    totalSize += size;
}

void DiskScan::run()
{
    if (!restoreDir.isEmpty()) {
        restoreReport.clear();
        for (PartScan* p : partScans) {
            p->keepBoth = keepBoth;
            p->undelete(restoreDir);
            restoreReport.append(p->restoreReport);
        }
        finishRestore();
        return;
    }
    search();
}

void DiskScan::search()
{
    const quint64 size = getDiskSize();
    qDebug() << "diskSize=" << size;
    totalResults = 0;
    totalSize = 0;
    runState = Running;
    int number = 0;
    qDebug() << "begin:" << now();
    std::vector<uchar> chunk(kChunkBytes);
    quint64 position = 0;
    searchEnd = size;
    while (position < size && !checkPoint()) {
        searchPosition = position;
        const quint64 want = qMin(kChunkBytes, size - position);
        const qint64 got = readDisk(chunk.data(), want, position);
        quint64 next = position + want;
        if (got == qint64(want)) {
            testSectors(chunk.data(), want, position, &number, &next);
        } else {
            // A chunk that failed or fell short is read again sector by sector,
            // so only the sectors that cannot be read are passed over.
            for (quint64 at = position; at < position + want; at += kSector) {
                if (readDisk(chunk.data(), kSector, at) == qint64(kSector) && testSectors(chunk.data(), kSector, at, &number, &next))
                    break;
            }
        }
        position = next;
    }
    searchPosition = qMin(position, size);
    qDebug() << "end:" << now();
    emit scanDone(totalResults, totalSize);
}

bool DiskScan::testSectors(const uchar* data, quint64 bytes, quint64 position, int* partitionNumber, quint64* next)
{
    for (quint64 at = 0; at + kSector <= bytes; at += kSector) {
        const BootSectorProbe::Result r = BootSectorProbe::test(data + at);
        const quint64 offset = position + at;
        if (r.ntfsCandidate)
            qDebug("offset=%llX totalSectors=%llX", static_cast<unsigned long long>(offset), static_cast<unsigned long long>(r.ntfsSectors));
        if (r.fat32Candidate)
            qDebug("offset=%llX totalSectors=%llX", static_cast<unsigned long long>(offset), static_cast<unsigned long long>(r.fat32Sectors));
        if (r.kind() != BootSectorProbe::None) {
            *next = onHit(r.kind(), offset, r.totalSectors(), partitionNumber);
            return true;
        }
    }
    return false;
}

quint64 DiskScan::onHit(int kind, quint64 offset, quint64 totalSectors, int* partitionNumber)
{
    const bool ntfs = kind == BootSectorProbe::Ntfs;
    const quint64 length = checked::mulSat(totalSectors, kSector);
    const quint64 next = checked::addSat(checked::addSat(offset, length), kResumeBehindVolume);
    emit diskScanBegin(*partitionNumber, ntfs ? QStringLiteral("NTFS") : QStringLiteral("FAT32"));
    if ((ntfs && length <= kSmallestNtfsVolume) || stopRequested())
        return next;
    // A stray boot sector (the backup of a lost volume, a copy inside an
    // image file, garbage behind the text) gets no scanner, so its fatal
    // message can't end the search; the walk goes on behind the sector.
    if (!(ntfs ? NtfsVolumeScan::canOpen(diskHandle, offset) : Fat32VolumeScan::canOpen(diskHandle, offset))) {
        qDebug("offset=%llX: boot sector does not open, passed over", static_cast<unsigned long long>(offset));
        emit diskScanEnd();
        return offset + kSector;
    }
    const QString name = QStringLiteral("%1 %2").arg(*partitionNumber).arg(ntfs ? QStringLiteral("NTFS") : QStringLiteral("FAT32"));
    PartScan* scanner = ntfs ? static_cast<PartScan*>(new NtfsVolumeScan(name, diskHandle, offset))
                             : static_cast<PartScan*>(new Fat32VolumeScan(name, diskHandle, offset));
    scanPartition(scanner, name, *partitionNumber);
    emit diskScanEnd();
    ++*partitionNumber;
    return next;
}

void DiskScan::scanPartition(PartScan* scanner, const QString& name, int number)
{
    scanner->moveToThread(thread()); // it outlives this run; it lives beside this object
    scanner->handleLock = &m_diskLock;
    scanner->bytesCounter = &bytesRead;
    scanner->partIndex = number;
    partScans.append(scanner);
    // Added on the partition's own thread before it ends, so the sums are
    // complete when the wait below returns.
    connect(scanner, &PartScan::scanDone, this, &DiskScan::scanDoneSlot, Qt::DirectConnection);
    connect(scanner, &PartScan::scanOne, this, &PartScan::scanOne);
    connect(scanner, &PartScan::undeleteOne, this, &PartScan::undeleteOne);
    FolderNode* folder = rootFolder->addChild(name, number, scanner->inherits("NtfsVolumeScan"));
    scanner->rootFolder = folder;
    if (scanner->inherits("NtfsVolumeScan"))
        qDebug() << "NAME=" << name;
    setCurrent(scanner);
    if (!stopRequested()) {
        scanner->start(QThread::InheritPriority);
        scanner->wait();
    }
    setCurrent(nullptr);
}
