#include "fat32/Fat32VolumeScan.h"
#include "carving/CarvingPass.h"
#include "fat32/Fat32DirEntry.h"
#include "fat32/Fat32LongName.h"
#include "fat32/Fat32Table.h"
#include "fat32/FatEntryDecoder.h"
#include "results/ExtentList.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "scan/CheckedMath.h"

#include <QByteArray>
#include <QDebug>
#include <QQueue>
#include <QSet>

namespace {
const char kBootSectorWhere[] = "Fat32VolumeScan::parseBootSector";
} // namespace

// What one directory walk carries from directory to directory.
struct Fat32VolumeScan::Walk {
    ScanTotals& totals;
    QQueue<Directory> queue;
    QSet<quint32> clustersRead; // no directory cluster is read twice: chains can loop or merge
    Fat32LongName pending;       // not emptied between directories, as the slots belong to no one
    QByteArray buffer;          // one cluster
    bool stop = false;
};

Fat32VolumeScan::Fat32VolumeScan(const QString& name, QObject* parent) : VolumeScan(name, parent)
{
    parseBootSector();
}

Fat32VolumeScan::Fat32VolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : VolumeScan(name, std::move(h), offset, parent)
{
    parseBootSector();
}

Fat32VolumeScan::~Fat32VolumeScan()
{
    stopAndWait();
}

void Fat32VolumeScan::parseBootSector()
{
    char sector[Fat32BootSector::kSectorBytes];
    if (readBlocks(sector, 1, 0, 9) <= 0) {
        setOpenProblem(QStringLiteral("%1: cannot read boot sector").arg(QLatin1String(kBootSectorWhere)));
        return;
    }
    if (!Fat32BootSector::parseAny(sector, sizeof sector, &boot)) {
        setOpenProblem(QStringLiteral("%1: it's not a valid fat volume").arg(QLatin1String(kBootSectorWhere)));
        return;
    }
    const quint64 device = bytesFromVolumeStart();
    setVolumeBytes(boot.volumeBytes ? qMin(boot.volumeBytes, device) : device);
    qDebug("%X %X %llX %llX %llX", boot.clusterBytes, unsigned(boot.fatCount), boot.volumeBytes, boot.fatBytes,
           boot.fatOffset);
    qDebug("%llX %X", boot.dataOffset, boot.rootCluster);
}

bool Fat32VolumeScan::canOpen(const DeviceHandle& handle, quint64 partOffset)
{
    char sector[Fat32BootSector::kSectorBytes];
    Fat32BootSector boot;
    return handle.read(sector, sizeof sector, partOffset) == qint64(sizeof sector)
        && Fat32BootSector::parseAny(sector, sizeof sector, &boot);
}

bool Fat32VolumeScan::clusterOffset(quint32 cluster, uint64_t* offset) const
{
    if (cluster < Fat32Table::kFirstDataCluster)
        return false;
    uint64_t within = 0;
    return checked::mul(cluster - Fat32Table::kFirstDataCluster, boot.clusterBytes, &within)
        && checked::add(within, boot.dataOffset, offset);
}

quint64 Fat32VolumeScan::bytesFromVolumeStart() const
{
    return handle.length() > partOffset ? handle.length() - partOffset : 0;
}

const Fat32Table& Fat32VolumeScan::table() const
{
    QMutexLocker lock(&m_fatLock);
    if (!m_fat) {
        m_fat = std::make_unique<Fat32Table>(boot.usableFatEntries(bytesFromVolumeStart()));
        auto* self = const_cast<Fat32VolumeScan*>(this);
        // One read of the whole table; what a short or failed read leaves stays 0.
        if (boot.fatBits == 32) {
            self->readVolume(m_fat->bytes(), m_fat->byteCount(), boot.fatOffset);
            m_fat->fixByteOrder();
        } else {
            // A narrow FAT is widened to 32-bit entries with FAT32's marks.
            QByteArray raw(int((m_fat->entryCount() * quint64(boot.fatBits) + 7) / 8), '\0');
            self->readVolume(raw.data(), quint64(raw.size()), boot.fatOffset);
            FatEntryDecoder::decode(reinterpret_cast<const uchar*>(raw.constData()), size_t(raw.size()), boot.fatBits,
                                    reinterpret_cast<quint32*>(m_fat->bytes()), m_fat->entryCount());
        }
    }
    return *m_fat;
}

quint64 Fat32VolumeScan::progressTotal() const
{
    return boot.usableFatEntries(bytesFromVolumeStart());
}

bool Fat32VolumeScan::scanMetadata(ScanTotals& totals)
{
    rootFolder->ntfs = false;
    table();
    Walk walk{totals, {}, {}, {}, QByteArray(int(boot.clusterBytes), '\0'), false};
    walk.queue.enqueue(Directory{{}, boot.rootCluster, false, true, rootFolder});
    while (!walk.queue.isEmpty() && !walk.stop) {
        Directory dir = walk.queue.dequeue();
        readDirectory(walk, dir);
    }
    return !walk.stop;
}

void Fat32VolumeScan::readDirectory(Walk& walk, Directory& dir)
{
    if (dir.root && boot.rootDirBytes) {
        readFixedRoot(walk, dir);
        return;
    }
    if (walk.clustersRead.contains(dir.firstCluster))
        return;
    const QList<uint> chain = table().chain(dir.firstCluster);
    uchar* data = reinterpret_cast<uchar*>(walk.buffer.data());
    for (int i = 0; i < chain.size() && !walk.stop; ++i) {
        const quint32 cluster = chain[i];
        if (walk.clustersRead.contains(cluster))
            continue;
        walk.clustersRead.insert(cluster);
        uint64_t offset = 0;
        const qint64 got = clusterOffset(cluster, &offset) ? readVolume(data, boot.clusterBytes, offset) : -1;
        const bool first = i == 0;
        if (got <= 0) {
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

// FAT12 and FAT16 keep the root in a region of its own between the FATs and cluster 2.
void Fat32VolumeScan::readFixedRoot(Walk& walk, Directory& dir)
{
    QByteArray region(int(boot.rootDirBytes), '\0');
    const qint64 got = readVolume(region.data(), boot.rootDirBytes, boot.rootDirOffset);
    if (got > 0)
        readEntries(walk, dir, reinterpret_cast<const uchar*>(region.constData()), got);
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
        if (step(++walk.totals.position)) {
            walk.stop = true;
            return false;
        }
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

void Fat32VolumeScan::fileDeleted(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name)
{
    auto* file = new Fat32File;
    file->name = name;
    file->modifiedMsecs = Fat32DirEntry::stampMsecs(entry.date, entry.time);
    // A size beyond the volume is damage; the size is what a preview allocates.
    file->size = qMin<quint64>(entry.size, bytesFromVolumeStart());
    file->firstCluster = entry.firstCluster;
    folderOf(dir)->addFile(file);
    ++walk.totals.results;
    walk.totals.totalSize += file->size;
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

void Fat32VolumeScan::carveFreeBlocks(const CarvingContext& context)
{
    // The pass counts 32-bit entries; a narrow FAT has as many clusters as its
    // widened table. Clusters in use hold live files, whatever their first bytes look like.
    CarvingPass::runFat32(context, {boot.clusterBytes, boot.dataOffset, table().byteCount(),
                                    [this](quint64 cluster) { return table().isFree(cluster); }});
}

bool Fat32VolumeScan::hasContent(const FoundFile& found) const
{
    const auto* file = dynamic_cast<const Fat32File*>(&found);
    return file && table().isDataCluster(file->firstCluster);
}

bool Fat32VolumeScan::extentsOf(const FoundFile& found, Extents* extents) const
{
    if (!hasContent(found))
        return false;
    const auto& file = static_cast<const Fat32File&>(found);
    const Fat32Table& fat = table();
    ExtentList list(volumeBytes(), file.size);
    uint64_t offset = 0;
    if (file.carvedClusters) {
        const quint64 clusters = qMin<quint64>(file.carvedClusters, fat.entryCount() - file.firstCluster);
        if (clusterOffset(file.firstCluster, &offset))
            list.add(offset, checked::mulSat(clusters, boot.clusterBytes));
    } else {
        const quint64 needed = (file.size >> boot.clusterShift) + 1;
        fat.visitFileClusters(file.firstCluster, needed, [&](quint32 cluster) {
            return clusterOffset(cluster, &offset) ? list.add(offset, boot.clusterBytes) : list.addHole(boot.clusterBytes);
        });
    }
    *extents = list.take();
    return true;
}
