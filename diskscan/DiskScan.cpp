#include "diskscan/DiskScan.h"
#include "diskscan/BootSectorCandidates.h"
#include "diskscan/VolumeConfirm.h"
#include "exfat/ExfatVolumeScan.h"
#include "fat32/Fat32VolumeScan.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "results/SavedTree.h"
#include "scan/CheckedMath.h"
#include "scan/ChunkReader.h"
#include "scan/device/DeviceLayer.h"

#include <QDataStream>
#include <QIODevice>
#include <QDateTime>
#include <QDebug>
#include <cerrno>
#include <cstring>
#include <vector>

namespace {
constexpr quint64 kSector = BootSectorCandidates::kSectorBytes;
// The walk reads this much at a time, in order, and tests every sector inside:
// large enough that the disk streams, small enough to stay a modest buffer.
constexpr quint64 kChunkBytes = ChunkReader::kChunkBytes;
// Where a FAT32 BPB usually keeps its backup boot sector.
constexpr quint64 kFat32BackupSector = 6;
// The layout of the search's part of a saved point.
constexpr quint32 kStateVersion = 1;
// More volumes than this on one disk is a damaged saved scan, not a disk.
constexpr quint32 kMaxSavedVolumes = 65536;

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
    const QList<PartScan*> parts = ResultTree::of(rootFolder) ? ResultTree::of(rootFolder)->takeParts() : QList<PartScan*>();
    for (PartScan* p : parts) {
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

PartScan* DiskScan::partition(int index) const
{
    const ResultTree* tree = ResultTree::of(rootFolder);
    return tree ? tree->part(index) : nullptr;
}

int DiskScan::partitionCount() const
{
    const ResultTree* tree = ResultTree::of(rootFolder);
    return tree ? tree->partCount() : 0;
}

quint64 DiskScan::fileContent(char* buffer, FoundFile* record)
{
    PartScan* scanner = partition(partIndex);
    return scanner ? scanner->fileContent(buffer, record) : 0;
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
        const QList<PartScan*> parts = ResultTree::of(rootFolder) ? ResultTree::of(rootFolder)->parts() : QList<PartScan*>();
        for (PartScan* p : parts) {
            p->keepBoth = keepBoth;
            p->restoreReport.setWholeSink(restoreReport.wholeSink());
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
    // The partition scanners live in the result tree: a root outside one has nowhere to keep them.
    if (!ResultTree::of(rootFolder)) {
        qCritical("DiskScan: the root folder is in no result tree");
        emit scanDone(0, 0);
        return;
    }
    const quint64 size = getDiskSize();
    qDebug() << "diskSize=" << size;
    totalResults = 0;
    totalSize = 0;
    runState = Running;
    m_nextNumber = 0;
    m_resumeAt = 0;
    foundVolumes.clear();
    resumePoint = ResumePoint();
    qDebug() << "begin:" << now();
    ChunkReader reader([this](void* buffer, quint64 bytes, quint64 at, QList<BadRange>*) { return readAhead(buffer, bytes, at); },
                       secondReader(), kChunkBytes);
    quint64 position = startPosition(size);
    quint64 asked = position; // where the next chunk to ask for begins
    searchEnd = size;
    while (position < size) {
        // A stop during the last chunk may have cut a partition's scan short:
        // the point stays where that chunk began.
        if (!stopRequested())
            noteResumePoint(walkPoint(position, size));
        if (checkPoint())
            break;
        searchPosition = position;
        const quint64 want = qMin(kChunkBytes, size - position);
        if (!reader.nextIs(position, want)) {
            reader.drop();
            asked = position;
        }
        for (; reader.canAsk() && asked < size; asked += qMin(kChunkBytes, size - asked))
            reader.ask(asked, qMin(kChunkBytes, size - asked));
        searchChunk(*reader.take());
        // A scanned volume whose extent is trusted is not read again.
        position = qMax(position + want, m_resumeAt - m_resumeAt % kSector);
    }
    searchPosition = qMin(position, size);
    if (!stopRequested())
        noteResumePoint(walkPoint(size, size));
    qDebug() << "end:" << now();
    emit scanDone(totalResults, totalSize);
}

qint64 DiskScan::readAhead(void* buffer, quint64 bytes, quint64 position)
{
    if (!secondReader())
        return readDisk(buffer, bytes, position);
    const qint64 got = diskHandle.read(buffer, bytes, position);
    if (got > 0)
        bytesRead += quint64(got);
    return got;
}

void DiskScan::searchChunk(const ChunkReader::Chunk& chunk)
{
    if (chunk.got == qint64(chunk.bytes)) {
        testSectors(chunk.data, chunk.bytes, chunk.position);
        return;
    }
    // A chunk that failed or fell short is read again sector by sector, so
    // only the sectors that cannot be read are passed over, and no test runs
    // on bytes that were not read.
    uchar sector[kSector];
    for (quint64 at = chunk.position; at + kSector <= chunk.position + chunk.bytes && !stopRequested(); at += kSector) {
        if (readDisk(sector, kSector, at) == qint64(kSector))
            testSectors(sector, kSector, at);
    }
}

void DiskScan::testSectors(const uchar* data, quint64 bytes, quint64 position)
{
    for (quint64 at = 0; at + kSector <= bytes; at += kSector) {
        const quint64 offset = position + at;
        if (offset < m_resumeAt)
            continue;
        for (const VolumeCandidate& c : BootSectorCandidates::test(data + at, offset))
            consider(c);
    }
}

bool DiskScan::alreadyFound(const VolumeCandidate& c) const
{
    for (const FoundVolume& f : foundVolumes) {
        if (f.volume.kind == c.kind && f.volume.volumeStart == c.volumeStart)
            return true;
    }
    return false;
}

void DiskScan::consider(const VolumeCandidate& c)
{
    if (alreadyFound(c) || stopRequested())
        return;
    qDebug("offset=%llX totalSectors=%llX", static_cast<unsigned long long>(c.bootOffset),
           static_cast<unsigned long long>(c.totalSectors));
    const VolumeConfirm::Result opened = VolumeConfirm::open(diskHandle, c);
    if (!opened.opened) {
        // A stray copy, or bytes that look like a boot sector: the walk goes
        // on at the next sector, whatever length they claim.
        qDebug("offset=%llX: %s does not open, passed over", static_cast<unsigned long long>(c.bootOffset),
               qPrintable(VolumeCandidate::kindName(c.kind)));
        return;
    }
    const int number = m_nextNumber;
    emit diskScanBegin(number, VolumeCandidate::kindName(c.kind));
    const QString name = folderName(c, number);
    FoundVolume found{c, -1};
    if (PartScan* scanner = scannerFor(c, name)) {
        found.partIndex = number;
        foundVolumes.append(found);
        scanPartition(scanner, name, number);
        emit diskScanEnd();
        ++m_nextNumber;
    } else {
        // Found, but no scanner reads this kind: it takes no number.
        qDebug("offset=%llX: %s found, no scanner for it", static_cast<unsigned long long>(c.volumeStart),
               qPrintable(VolumeCandidate::kindName(c.kind)));
        foundVolumes.append(found);
    }
    if (opened.trustedBytes)
        m_resumeAt = qMax(m_resumeAt, checked::addSat(c.volumeStart, opened.trustedBytes));
    if (!c.fromBackup)
        considerOlderUnder(c);
}

void DiskScan::considerOlderUnder(const VolumeCandidate& newer)
{
    for (quint64 sector : {kFat32BackupSector, quint64(BootSectorCandidates::kExfatBackupSector)}) {
        uchar bytes[kSector];
        const quint64 at = checked::addSat(newer.volumeStart, sector * kSector);
        if (readDisk(bytes, kSector, at) != qint64(kSector))
            continue;
        const VolumeCandidate older = BootSectorCandidates::backup(bytes, at);
        if (older.isValid() && older.kind != newer.kind && older.volumeStart == newer.volumeStart)
            consider(older);
    }
}

PartScan* DiskScan::scannerFor(const VolumeCandidate& c, const QString& name)
{
    // Where a kind gains a scanner, it is built here on the handle that gives
    // it the boot sector the volume was found by.
    const DeviceHandle handle = VolumeConfirm::scannerHandle(diskHandle, c);
    switch (c.kind) {
    case VolumeCandidate::Ntfs:
        if (NtfsVolumeScan::canOpen(handle, c.volumeStart))
            return new NtfsVolumeScan(name, handle, c.volumeStart);
        break;
    case VolumeCandidate::Fat12:
    case VolumeCandidate::Fat16:
    case VolumeCandidate::Fat32:
        if (Fat32VolumeScan::canOpen(handle, c.volumeStart))
            return new Fat32VolumeScan(name, handle, c.volumeStart);
        break;
    case VolumeCandidate::ExFat:
        if (ExfatVolumeScan::canOpen(handle, c.volumeStart))
            return new ExfatVolumeScan(name, handle, c.volumeStart);
        break;
    case VolumeCandidate::None: break;
    }
    return nullptr;
}

void DiskScan::scanPartition(PartScan* scanner, const QString& name, int number)
{
    attachPartition(scanner, rootFolder->addChild(name, number, scanner->inherits("NtfsVolumeScan")), number);
    if (scanner->inherits("NtfsVolumeScan"))
        qDebug() << "NAME=" << name;
    setCurrent(scanner);
    if (!stopRequested()) {
        scanner->start(QThread::InheritPriority);
        scanner->wait();
    }
    setCurrent(nullptr);
}

void DiskScan::attachPartition(PartScan* scanner, FolderNode* folder, int number)
{
    scanner->moveToThread(thread()); // it outlives this run; it lives beside this object
    scanner->handleLock = &m_diskLock;
    scanner->bytesCounter = &bytesRead;
    scanner->partIndex = number;
    // Added on the partition's own thread before it ends, so the sums are
    // complete when the wait below returns.
    connect(scanner, &PartScan::scanDone, this, &DiskScan::scanDoneSlot, Qt::DirectConnection);
    connect(scanner, &PartScan::scanOne, this, &PartScan::scanOne);
    connect(scanner, &PartScan::undeleteProgress, this, &PartScan::undeleteProgress);
    scanner->rootFolder = folder;
    // Listed once it is whole: previews read its root folder from here on.
    ResultTree::of(rootFolder)->addPart(scanner);
}

QString DiskScan::folderName(const VolumeCandidate& c, int number)
{
    QString name = QStringLiteral("%1 %2").arg(number).arg(VolumeCandidate::kindName(c.kind));
    if (c.fromBackup)
        name += QStringLiteral(" (备份引导扇区)");
    return name;
}

ResumePoint DiskScan::walkPoint(quint64 position, quint64 end) const
{
    ResumePoint p;
    p.phase = position < end ? ResumePoint::DiskWalk : ResumePoint::Done;
    p.position = position;
    p.end = end;
    p.results = totalResults;
    p.totalSize = totalSize;
    p.keepFolders = m_nextNumber;
    QDataStream out(&p.scannerState, QIODevice::WriteOnly);
    out << kStateVersion << quint32(m_nextNumber) << m_resumeAt << quint32(foundVolumes.size());
    for (const FoundVolume& f : foundVolumes) {
        const VolumeCandidate& v = f.volume;
        out << quint8(v.kind) << v.volumeStart << v.totalSectors << v.sectorBytes << v.fromBackup << v.bootOffset
            << v.bootSector << qint32(f.partIndex);
    }
    return p;
}

quint64 DiskScan::startPosition(quint64 size)
{
    const ResumePoint from = resumeFrom;
    if (from.phase == ResumePoint::Start)
        return 0;
    const bool fits = (from.phase == ResumePoint::DiskWalk || from.phase == ResumePoint::Done) && from.end == size
                      && from.position <= size;
    if (fits && takeUp(from)) {
        totalResults = from.results;
        totalSize = from.totalSize;
        return from.phase == ResumePoint::Done ? size : from.position;
    }
    // Not this disk's search: it begins again on an empty tree.
    qCritical("DiskScan: the saved search does not fit this disk; searching from the start");
    SavedTree::clear(rootFolder);
    resumeFrom = ResumePoint();
    return 0;
}

bool DiskScan::takeUp(const ResumePoint& point)
{
    QDataStream in(point.scannerState);
    quint32 version = 0, next = 0, count = 0;
    quint64 resumeAt = 0;
    in >> version >> next >> resumeAt >> count;
    if (in.status() != QDataStream::Ok || version != kStateVersion || count > kMaxSavedVolumes
        || qsizetype(next) != rootFolder->children.size())
        return false;
    QList<FoundVolume> volumes;
    int scanned = 0;
    for (quint32 i = 0; i < count; ++i) {
        FoundVolume f;
        VolumeCandidate& v = f.volume;
        quint8 kind = 0;
        qint32 partIndex = -1;
        in >> kind >> v.volumeStart >> v.totalSectors >> v.sectorBytes >> v.fromBackup >> v.bootOffset >> v.bootSector >> partIndex;
        // Partitions are numbered in the order they were found, each once.
        if (in.status() != QDataStream::Ok || kind == VolumeCandidate::None || kind > VolumeCandidate::ExFat
            || v.bootSector.size() > qsizetype(kSector) || (partIndex != -1 && partIndex != scanned))
            return false;
        v.kind = VolumeCandidate::Kind(kind);
        f.partIndex = partIndex;
        scanned += partIndex >= 0;
        volumes.append(f);
    }
    if (quint32(scanned) != next)
        return false;
    QList<PartScan*> scanners;
    for (const FoundVolume& f : volumes) {
        if (f.partIndex < 0)
            continue;
        const QString name = folderName(f.volume, f.partIndex);
        PartScan* scanner = rootFolder->children.at(f.partIndex)->name == name ? scannerFor(f.volume, name) : nullptr;
        if (!scanner) {
            qDeleteAll(scanners);
            return false;
        }
        scanners.append(scanner);
    }
    for (int i = 0; i < scanners.size(); ++i)
        attachPartition(scanners.at(i), rootFolder->children.at(i), i);
    foundVolumes = volumes;
    m_nextNumber = int(next);
    m_resumeAt = resumeAt;
    return true;
}
