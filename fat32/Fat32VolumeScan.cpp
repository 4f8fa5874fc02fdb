#include "fat32/Fat32VolumeScan.h"
#include "carving/CarvingPass.h"
#include "fat32/Fat32DirEntry.h"
#include "fat32/FatDirectoryCheck.h"
#include "fat32/Fat32LongName.h"
#include "fat32/Fat32Table.h"
#include "scan/LeReader.h"
#include "fat32/FatEntryDecoder.h"
#include "results/ExtentList.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "scan/CheckedMath.h"

#include <QByteArray>
#include <QDebug>
#include <QQueue>
#include <QSet>
#include <utility>

namespace {
const char kBootSectorWhere[] = "Fat32VolumeScan::parseBootSector";
const char kCarvedFolder[] = "额外文件";

// A folder found in free space whose own entry is gone is called after its first cluster.
QString madeFolderName(quint32 cluster) { return QStringLiteral("DIR%1").arg(cluster); }
} // namespace

// What one directory walk carries from directory to directory.
struct Fat32VolumeScan::Walk {
    ScanTotals& totals;
    QQueue<Directory> queue;
    Fat32LongName pending;       // not emptied between directories, as the slots belong to no one
    QByteArray buffer;          // one cluster
    bool stop = false;
    bool ended = false;          // the directory being read met its end mark
    quint32 lastRead = 0;        // its last cluster whose entries were read
};

Fat32VolumeScan::Walk Fat32VolumeScan::newWalk(ScanTotals& totals) const
{
    return Walk{totals, {}, {}, QByteArray(int(boot.clusterBytes), '\0'), false, false, 0};
}

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
        const quint64 entries = boot.usableFatEntries(bytesFromVolumeStart());
        auto* self = const_cast<Fat32VolumeScan*>(this);
        // A FAT32 table is read block by block as it is needed; what a short
        // or failed read leaves stays 0.
        if (boot.fatBits == 32) {
            const auto load = [self](quint64 first, quint32* out, quint64 count) {
                self->readVolume(out, count * sizeof(quint32), self->boot.fatOffset + first * sizeof(quint32));
                for (quint64 i = 0; i < count; ++i)
                    out[i] = LeReader(out + i, sizeof(quint32)).u32(0);
            };
            m_fat = std::make_unique<Fat32Table>(entries, load);
        } else {
            m_fat = std::make_unique<Fat32Table>(entries);
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
    m_orphans.reset();
    Walk walk = newWalk(totals);
    Directory root;
    root.firstCluster = boot.rootCluster;
    root.root = true;
    root.folder = rootFolder;
    walk.queue.enqueue(root);
    if (!drain(walk))
        return false;
    m_search = std::make_unique<FatFolderSearch>(searchGeometry(), m_clustersRead);
    if (doExtra)
        return true; // the carving pass walks the free clusters and searches them on the way
    return walkFreeClusters(carvingContext(totals), false) && fileFoundFolders(totals);
}

bool Fat32VolumeScan::prepareCarvingResume(const QByteArray& state)
{
    FolderNode scratch;
    FolderNode* tree = std::exchange(rootFolder, &scratch);
    ScanTotals none;
    const bool walked = scanMetadata(none);
    rootFolder = tree;
    // Nothing may point into the scratch tree: folders are found again by their paths.
    for (auto& open : m_open)
        open.second.dir.folder = nullptr;
    m_orphans.rebase(rootFolder);
    return walked && m_search && m_search->restore(state);
}

QByteArray Fat32VolumeScan::carvingState() const
{
    return m_search ? m_search->state() : QByteArray();
}

void Fat32VolumeScan::scanFinished()
{
    m_clustersRead.clear();
    m_folderPaths.clear();
    m_search.reset();
    m_carvedStarts.clear();
    m_open.clear();
}

bool Fat32VolumeScan::readCluster(quint32 cluster, uchar* buffer)
{
    uint64_t offset = 0;
    return clusterOffset(cluster, &offset) && readVolume(buffer, boot.clusterBytes, offset) == qint64(boot.clusterBytes);
}

FatFolderSearch::Geometry Fat32VolumeScan::searchGeometry()
{
    FatFolderSearch::Geometry g;
    g.clusterBytes = boot.clusterBytes;
    g.clusterCount = table().entryCount();
    g.read = [this](quint32 cluster, uchar* buffer) { return readCluster(cluster, buffer); };
    g.nextFree = [this](quint32 after) { return table().nextFree(after); };
    return g;
}

bool Fat32VolumeScan::drain(Walk& walk)
{
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
    if (m_clustersRead.contains(dir.firstCluster))
        return;
    walk.ended = false;
    walk.lastRead = 0;
    const QList<uint> chain = table().chain(dir.firstCluster);
    for (int i = 0; i < chain.size() && !walk.stop; ++i)
        if (!readChainCluster(walk, dir, chain[i], i == 0))
            return;
    // A delete clears the chain: the folder's later clusters are the free ones behind, while they hold entries.
    if (!dir.deleted || walk.stop || chain.isEmpty())
        return;
    auto* data = reinterpret_cast<uchar*>(walk.buffer.data());
    FatFolderSearch::visitFolderTail(searchGeometry(), chain.last(), quint64(chain.size()), data, [&](quint32 cluster) {
        if (m_clustersRead.contains(cluster))
            return false;
        m_clustersRead.insert(cluster);
        walk.lastRead = cluster;
        return readEntries(walk, dir, data, boot.clusterBytes);
    });
    if (!walk.ended && !walk.stop && walk.lastRead)
        m_open[walk.lastRead] = OpenFolder{dir, walk.pending};
}

// False when the directory ends here: its end mark, a stop, or a first cluster
// that isn't a directory's.
bool Fat32VolumeScan::readChainCluster(Walk& walk, Directory& dir, quint32 cluster, bool first)
{
    if (m_clustersRead.contains(cluster))
        return true;
    m_clustersRead.insert(cluster);
    auto* data = reinterpret_cast<uchar*>(walk.buffer.data());
    uint64_t offset = 0;
    const qint64 got = clusterOffset(cluster, &offset) ? readVolume(data, boot.clusterBytes, offset) : -1;
    const bool checked = first && !dir.root && !dir.lone;
    // Without its first cluster a subdirectory can't be told from other data.
    if (got <= 0)
        return !(first && !dir.root);
    if (checked && !Fat32DirEntry::startsWithDotEntries(data, size_t(got)))
        return false;
    if (first)
        m_folderPaths.insert(cluster, dir.path);
    walk.lastRead = cluster;
    return readEntries(walk, dir, data, got);
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
        if (entry.isEnd()) {
            walk.ended = true;
            return false;
        }
        if (entry.isSlot()) {
            walk.pending.add(raw);
        } else {
            const QString longName = walk.pending.count() > 0 ? walk.pending.take() : QString();
            takeEntry(walk, dir, entry, longName);
        }
        if (step(++walk.totals.position)) {
            walk.stop = true;
            return false;
        }
    }
    return true;
}

void Fat32VolumeScan::takeEntry(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& longName)
{
    // The short name is made only for what is kept: most entries are live files.
    const auto name = [&] { return longName.isEmpty() ? entry.shortName() : longName; };
    if (!entry.isDirectory()) {
        // In a deleted directory every file is gone, whatever its own entry shows.
        if (entry.isDeleted() || dir.deleted)
            fileDeleted(walk, dir, entry, name());
        return;
    }
    if (entry.isDotEntry() || m_clustersRead.contains(entry.firstCluster))
        return;
    Directory sub;
    sub.path = dir.path;
    if (const QString n = name(); !n.isEmpty())
        sub.path.append(n);
    sub.firstCluster = entry.firstCluster;
    sub.found = dir.found;
    sub.deleted = entry.isDeleted() || dir.found;
    walk.queue.enqueue(sub);
}

void Fat32VolumeScan::fileDeleted(Walk& walk, Directory& dir, const Fat32DirEntry& entry, const QString& name)
{
    // Carved before its folder was met: the bytes are listed once.
    if (m_carvedStarts.contains(entry.firstCluster))
        return;
    auto* file = new Fat32File;
    file->setName(name);
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
    if (!m_search || !walkFreeClusters(context, true))
        return;
    noteCarvedStarts();
    ScanTotals totals{*context.runningNumber, *context.results, *context.totalSize};
    fileFoundFolders(totals);
    *context.runningNumber = totals.position;
    *context.results = totals.results;
    *context.totalSize = totals.totalSize;
}

bool Fat32VolumeScan::walkFreeClusters(const CarvingContext& context, bool carve)
{
    // The pass counts 32-bit entries; a narrow FAT has as many clusters as its
    // widened table. Clusters in use hold live files, whatever their first bytes
    // look like; the files the found folders name are theirs.
    // The table is taken once: the walk asks about every cluster.
    const Fat32Table& fat = table();
    const Fat32CarvingGeometry g{boot.clusterBytes, boot.dataOffset, fat.byteCount(), [this, &fat](quint64 cluster) {
                                     return fat.isFree(cluster) && !m_search->named(quint32(cluster));
                                 }};
    const auto claims = [this](quint64 cluster, const uchar* head, size_t bytes) {
        return m_search->claims(quint32(cluster), head, bytes);
    };
    return CarvingPass::runFat32(context, g, claims, carve);
}

void Fat32VolumeScan::noteCarvedStarts()
{
    QList<const FolderNode*> pending;
    if (const FolderNode* carved = rootFolder->findChild(QString::fromUtf8(kCarvedFolder)))
        pending.append(carved);
    while (!pending.isEmpty()) {
        const FolderNode* folder = pending.takeLast();
        for (const FolderNode* child : folder->children)
            pending.append(child);
        for (const FoundFile* f : folder->files)
            if (const auto* file = dynamic_cast<const Fat32File*>(f))
                m_carvedStarts.insert(file->firstCluster);
    }
}

// First the folders whose parent was read: the root (a ".." of 0) or a folder
// of the tree. Their subfolders are read through them, by their names. Then
// what is left: below a found parent that doesn't name them, or as orphans.
bool Fat32VolumeScan::fileFoundFolders(ScanTotals& totals)
{
    Walk walk = newWalk(totals);
    for (bool last : {false, true})
        for (const FatFolderSearch::FolderStart& start : m_search->folderStarts())
            if (!fileFoundStart(walk, start, last))
                return false;
    for (quint32 cluster : m_search->loneClusters())
        if (!fileLoneCluster(walk, cluster))
            return false;
    return true;
}

// A folder that grew while files were written into it has its later clusters
// among theirs: a cluster of entries goes on the nearest deleted folder before
// it that was still open, else it is an orphan.
bool Fat32VolumeScan::fileLoneCluster(Walk& walk, quint32 cluster)
{
    if (m_clustersRead.contains(cluster))
        return true;
    Directory lone;
    auto open = m_open.lower_bound(cluster);
    if (open != m_open.begin()) {
        --open;
        lone = open->second.dir;
        walk.pending = open->second.pending;
        m_open.erase(open);
    } else {
        lone.path = QStringList{m_orphans.current(rootFolder, partIndex, false)->name};
        lone.folder = nullptr;
    }
    lone.firstCluster = cluster;
    lone.deleted = true;
    lone.lone = true;
    lone.found = true;
    walk.queue.enqueue(lone);
    return drain(walk);
}

bool Fat32VolumeScan::fileFoundStart(Walk& walk, const FatFolderSearch::FolderStart& start, bool orphanIfUnplaced)
{
    if (m_clustersRead.contains(start.cluster))
        return true;
    Directory dir;
    const bool atRoot = start.parent == 0 || start.parent == boot.rootCluster;
    const auto parent = m_folderPaths.constFind(start.parent);
    if (atRoot || parent != m_folderPaths.constEnd())
        dir.path = atRoot ? QStringList() : *parent;
    else if (orphanIfUnplaced)
        dir.path = QStringList{m_orphans.current(rootFolder, partIndex, false)->name};
    else
        return true;
    dir.path.append(madeFolderName(start.cluster));
    dir.firstCluster = start.cluster;
    dir.deleted = true;
    dir.found = true;
    walk.queue.enqueue(dir);
    return drain(walk);
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
