#include "fat32/Fat32VolumeScan.h"
#include "carving/CarvingPass.h"
#include "fat32/Fat32BootSector.h"
#include "fat32/Fat32DirEntry.h"
#include "fat32/Fat32LongName.h"
#include "fat32/Fat32Table.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "scan/CheckedMath.h"
#include "scan/RestoreSink.h"

#include <QByteArray>
#include <QDebug>
#include <QQueue>
#include <QSet>
#include <climits>
#include <cstring>

namespace {
const char kBootSectorWhere[] = "Fat32VolumeScan::parseBootSector";
// The pause and stop check falls on every 1000th directory entry.
constexpr int kCheckEvery = 1000;
// During the carving pass the bar moves every this many clusters.
constexpr int kCarvingProgressEvery = 64;
// The carving pass has a tenth of the progress scale behind the directory walk.
constexpr double kCarvingShare = 1.1;
// Reads of file content go in stretches of consecutive clusters up to this
// size: few calls on small clusters, bounded memory on large files.
constexpr quint64 kMaxSpanBytes = 1 << 20;
} // namespace

// What one directory walk carries from directory to directory.
struct Fat32VolumeScan::Walk {
    QQueue<Directory> queue;
    QSet<quint32> clustersRead; // no directory cluster is read twice: chains can loop or merge
    Fat32LongName pending;       // not emptied between directories, as the slots belong to no one
    QByteArray buffer;          // one cluster
    quint64 running = 0;
    quint64 results = 0;
    quint64 totalSize = 0;
    int checkCounter = 1;
    bool stop = false;
};

Fat32VolumeScan::Fat32VolumeScan(const QString& name, QObject* parent) : PartScan(name, parent)
{
    parseBootSector();
}

Fat32VolumeScan::Fat32VolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : PartScan(name, std::move(h), offset, parent)
{
    parseBootSector();
}

// The scanner owns the visible root and the tree below it.
Fat32VolumeScan::~Fat32VolumeScan()
{
    stopAndWait();
    delete rootFolder;
}

void Fat32VolumeScan::setRunning(bool running) { pauseOrResume(running); }
void Fat32VolumeScan::stop() { requestStop(); }

void Fat32VolumeScan::parseBootSector()
{
    char sector[Fat32BootSector::kSectorBytes];
    if (readBlocks(sector, 1, 0, 9) <= 0)
        qFatal("%s: cannot read boot sector", kBootSectorWhere);
    if (!Fat32BootSector::parse(sector, sizeof sector, &boot))
        qFatal("%s: it's not a valid fat32 volume", kBootSectorWhere);
    const Fat32BootSector& g = boot;
    fatCount = g.fatCount;
    clusterBytes = g.clusterBytes;
    clusterShift = g.clusterShift;
    fatBytes = g.fatBytes;
    fatOffset = g.fatOffset;
    dataOffset = g.dataOffset;
    rootCluster = g.rootCluster;
    volumeBytes = g.volumeBytes;
    qDebug("%X %X %llX %llX %llX", clusterBytes, unsigned(fatCount), volumeBytes, fatBytes, fatOffset);
    qDebug("%llX %X", dataOffset, rootCluster);
}

bool Fat32VolumeScan::canOpen(const DeviceHandle& handle, quint64 partOffset)
{
    char sector[Fat32BootSector::kSectorBytes];
    Fat32BootSector boot;
    return handle.read(sector, sizeof sector, partOffset) == qint64(sizeof sector)
        && Fat32BootSector::parse(sector, sizeof sector, &boot);
}

bool Fat32VolumeScan::clusterPosition(quint32 cluster, quint64* position) const
{
    if (cluster < Fat32Table::kFirstDataCluster)
        return false;
    uint64_t offset = 0;
    uint64_t absolute = 0;
    if (!checked::mul(cluster - Fat32Table::kFirstDataCluster, clusterBytes, &offset)
        || !checked::add(offset, dataOffset, &offset) || !checked::add(offset, partOffset, &absolute))
        return false;
    *position = absolute;
    return true;
}

quint64 Fat32VolumeScan::bytesFromVolumeStart() const
{
    return handle.length() > partOffset ? handle.length() - partOffset : 0;
}

quint64 Fat32VolumeScan::fatEntriesToLoad() const
{
    return boot.usableFatEntries(bytesFromVolumeStart());
}

void Fat32VolumeScan::loadFat()
{
    fat = std::make_unique<Fat32Table>(fatEntriesToLoad());
    // One read of the whole table; what a short or failed read leaves stays 0.
    read(fat->bytes(), fat->byteCount(), checked::addSat(partOffset, fatOffset));
    fat->fixByteOrder();
}

void Fat32VolumeScan::run()
{
    if (!restoreDir.isEmpty()) {
        undelete(restoreDir);
        return;
    }
    if (!rootFolder) {
        emit scanDone(0, 0);
        return;
    }
    rootFolder->partIndex = partIndex;
    qCritical("begin");
    {
        QMutexLocker lock(&mutex);
        runState = Running;
    }
    const double scale = double(fatEntriesToLoad()) * (doExtra ? kCarvingShare : 1.0);
    emit scanBegin(int(qMin(scale, double(INT_MAX))));
    loadFat();
    rootFolder->ntfs = false;

    Walk walk;
    walk.buffer = QByteArray(int(clusterBytes), '\0');
    walk.queue.enqueue(Directory{{}, rootCluster, false, true, rootFolder});
    while (!walk.queue.isEmpty() && !walk.stop) {
        Directory dir = walk.queue.dequeue();
        readDirectory(walk, dir);
    }
    qCritical("results=%llu,totalsize=%llu", walk.results, walk.totalSize);
    if (doExtra && !walk.stop)
        carvingPass(&walk.running, &walk.results, &walk.totalSize);
    fat.reset();
    emit scanDone(walk.results, walk.totalSize);
    qCritical("results=%llu,totalsize=%llu", walk.results, walk.totalSize);
}

void Fat32VolumeScan::readDirectory(Walk& walk, Directory& dir)
{
    if (walk.clustersRead.contains(dir.firstCluster))
        return;
    const QList<uint> chain = fat->chain(dir.firstCluster);
    uchar* data = reinterpret_cast<uchar*>(walk.buffer.data());
    for (int i = 0; i < chain.size() && !walk.stop; ++i) {
        const quint32 cluster = chain[i];
        if (walk.clustersRead.contains(cluster))
            continue;
        walk.clustersRead.insert(cluster);
        quint64 position = 0;
        const qint64 got = clusterPosition(cluster, &position) ? read(data, clusterBytes, position) : -1;
        const bool first = i == 0;
        if (got <= 0) {
            qCritical("fat32 read error");
            // Without its first cluster a subdirectory can't be told from other data.
            if (first && !dir.root)
                return;
            continue;
        }
        if (first && !dir.root && !Fat32DirEntry::startsWithDotEntries(data, size_t(got)))
            return;
        if (!readEntries(walk, dir, data, got))
            return;
    }
}

// False when the directory ends here: its end mark, or a stop.
bool Fat32VolumeScan::readEntries(Walk& walk, Directory& dir, const uchar* data, qint64 bytes)
{
    for (qint64 at = 0; at + Fat32DirEntry::kBytes <= bytes; at += Fat32DirEntry::kBytes) {
        const uchar* raw = data + at;
        const Fat32DirEntry entry = Fat32DirEntry::decode(raw);
        if (entry.isEnd())
            return false;
        if (entry.isSlot()) {
            walk.pending.add(raw);
        } else {
            const QString longName = walk.pending.count() > 0 ? walk.pending.take() : QString();
            takeEntry(walk, dir, entry, longName.isEmpty() ? entry.shortName : longName);
        }
        if (!countEntry(walk))
            return false;
    }
    return true;
}

void Fat32VolumeScan::takeEntry(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name)
{
    if (!entry.isDirectory()) {
        // In a deleted directory every file is gone, whatever its own entry shows.
        if (entry.isDeleted() || dir.deleted)
            fileDeleted(walk, dir, entry, name);
        return;
    }
    if (entry.isDotEntry() || walk.clustersRead.contains(entry.firstCluster))
        return;
    Directory sub;
    sub.path = dir.path;
    if (!name.isEmpty())
        sub.path.append(name);
    sub.firstCluster = entry.firstCluster;
    sub.deleted = entry.isDeleted();
    walk.queue.enqueue(sub);
}

// Counts the entry for the progress bar and runs the pause and stop check;
// false when the scan is to stop.
bool Fat32VolumeScan::countEntry(Walk& walk)
{
    ++walk.running;
    emit scanOne(int(quint32(walk.running)));
    if (walk.checkCounter % kCheckEvery == 0) {
        if (checkPoint()) {
            walk.stop = true;
            return false;
        }
        walk.checkCounter = 1;
    }
    ++walk.checkCounter;
    return true;
}

void Fat32VolumeScan::fileDeleted(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name)
{
    auto* file = new Fat32File;
    file->name = name;
    file->modifiedMsecs = Fat32DirEntry::stampMsecs(entry.date, entry.time);
    // A size beyond the volume is damage; the size is what a preview allocates.
    file->size = qMin<quint64>(entry.size, bytesFromVolumeStart());
    file->clusters = fat->chain(entry.firstCluster);
    const quint64 needed = (quint64(entry.size) + clusterBytes - 1) >> clusterShift;
    fat->continueOverFree(&file->clusters, needed);
    folderOf(dir)->addFile(file);
    ++walk.results;
    walk.totalSize += file->size;
}

FolderNode* Fat32VolumeScan::folderOf(Directory& dir)
{
    if (dir.folder)
        return dir.folder;
    FolderNode* folder = rootFolder;
    for (const QString& part : dir.path)
        folder = folder->obtainChild(part, partIndex, false);
    dir.folder = folder;
    return folder;
}

void Fat32VolumeScan::carvingPass(quint64* running, quint64* results, quint64* totalSize)
{
    CarvingContext c;
    c.root = rootFolder;
    c.partIndex = partIndex;
    c.read = [this](void* buffer, quint64 bytes, quint64 offset) { return read(buffer, bytes, partOffset + offset); };
    c.checkPoint = [this] { return checkPoint(); };
    // One queued signal per cluster would flood the window on a large card;
    // the bar cannot show a finer step than this anyway.
    c.scanOne = [this](int done) {
        if (done % kCarvingProgressEvery == 0)
            emit scanOne(done);
    };
    c.runningNumber = running;
    c.results = results;
    c.totalSize = totalSize;
    CarvingPass::runFat32(c, {clusterBytes, dataOffset, fatBytes});
}

void Fat32VolumeScan::forEachSpan(const Fat32File* file, const SpanVisitor& visit) const
{
    quint64 done = 0;
    const QList<uint>& clusters = file->clusters;
    for (int i = 0; i < clusters.size() && done < file->size;) {
        quint64 position = 0;
        if (!clusterPosition(clusters[i], &position)) {
            done += clusterBytes;
            ++i;
            continue;
        }
        // Gather the clusters that follow on the disk into one read.
        quint64 bytes = clusterBytes;
        int next = i + 1;
        while (next < clusters.size() && clusters[next] == clusters[next - 1] + 1 && bytes + clusterBytes <= kMaxSpanBytes) {
            bytes += clusterBytes;
            ++next;
        }
        bytes = qMin(bytes, file->size - done);
        visit(position, bytes, done);
        done += quint64(next - i) * clusterBytes;
        i = next;
    }
}

RestoreFailure Fat32VolumeScan::writeContent(Fat32File* file, RestoreSink& sink)
{
    if (file->clusters.isEmpty())
        return file->size == 0 ? RestoreFailure::None : RestoreFailure::RecordUnreadable;
    QByteArray buffer(int(qMin<quint64>(qMax<quint64>(file->size, 1), kMaxSpanBytes)), '\0');
    bool gone = false;
    forEachSpan(file, [&](quint64 position, quint64 bytes, quint64 fileOffset) {
        if (gone || sink.failure() != RestoreFailure::None)
            return;
        QList<BadRange> bad;
        const qint64 got = read(buffer.data(), bytes, position, &bad);
        gone = got < 0;
        // Short only at the device's end: what lies beyond it is zeros, and said so.
        const quint64 kept = got > 0 ? quint64(got) : 0;
        if (kept < bytes) {
            std::memset(buffer.data() + kept, 0, size_t(bytes - kept));
            sink.noteOutside(fileOffset + kept, bytes - kept);
        }
        sink.noteBadReads(bad, position, fileOffset, bytes);
        sink.write(fileOffset, buffer.constData(), bytes);
    });
    return gone ? RestoreFailure::DeviceFailed : RestoreFailure::None;
}

void Fat32VolumeScan::undelete(QString targetDir)
{
    restoreTree(targetDir, [this](FoundFile* found, RestoreSink& sink) {
        auto* file = dynamic_cast<Fat32File*>(found);
        return file ? writeContent(file, sink) : RestoreFailure::RecordUnreadable;
    });
    finishRestore();
}

quint64 Fat32VolumeScan::fileContent(char* buffer, FoundFile* record)
{
    auto* file = dynamic_cast<Fat32File*>(record);
    if (!file)
        return 0;
    if (!buffer) {
        const quint64 bytes = checked::addSat(file->size, clusterBytes);
        qDebug() << "return" << bytes;
        return bytes;
    }
    if (file->clusters.isEmpty())
        return 0;
    forEachSpan(file, [&](quint64 position, quint64 bytes, quint64 fileOffset) {
        read(buffer + fileOffset, bytes, position);
    });
    return file->size;
}
