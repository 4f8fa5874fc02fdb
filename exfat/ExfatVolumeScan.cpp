#include "exfat/ExfatVolumeScan.h"
#include "exfat/ExfatVolume.h"
#include "carving/CarvingPass.h"
#include "results/ExfatFile.h"
#include "results/Fat32File.h"
#include "results/ExtentList.h"
#include "results/FolderNode.h"

#include <QDebug>
#include <algorithm>

namespace {
ExfatBootSector::ReadAt readerOn(const DeviceHandle& handle, quint64 partOffset)
{
    return [&handle, partOffset](void* buffer, quint64 bytes, quint64 offset) {
        return handle.read(buffer, bytes, partOffset + offset);
    };
}

quint64 bytesFrom(const DeviceHandle& handle, quint64 partOffset)
{
    return handle.length() > partOffset ? handle.length() - partOffset : 0;
}
} // namespace

ExfatVolumeScan::ExfatVolumeScan(const QString& name, QObject* parent) : VolumeScan(name, parent)
{
    parseBootSector();
}

ExfatVolumeScan::ExfatVolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : VolumeScan(name, std::move(h), offset, parent)
{
    parseBootSector();
}

ExfatVolumeScan::~ExfatVolumeScan()
{
    stopAndWait();
}

void ExfatVolumeScan::parseBootSector()
{
    const quint64 device = bytesFrom(handle, partOffset);
    m_opened = ExfatBootSector::locate(readerOn(handle, partOffset), device, &m_boot);
    if (!m_opened)
        qCritical("ExfatVolumeScan::parseBootSector: neither boot region of %s holds", qPrintable(deviceName));
    setVolumeBytes(m_opened ? qMin(m_boot.volumeBytes, device) : 0);
    qDebug("exfat cluster %X heap %llX clusters %X root %X%s", m_boot.clusterBytes(), m_boot.heapOffset,
           m_boot.clusterCount, m_boot.rootCluster, m_boot.fromBackup ? " (backup region)" : "");
}

bool ExfatVolumeScan::canOpen(const DeviceHandle& handle, quint64 partOffset)
{
    ExfatBootSector boot;
    return ExfatBootSector::locate(readerOn(handle, partOffset), bytesFrom(handle, partOffset), &boot);
}

quint64 ExfatVolumeScan::progressTotal() const
{
    return m_boot.clusterCount;
}

bool ExfatVolumeScan::scanMetadata(ScanTotals& totals)
{
    rootFolder->ntfs = false;
    if (!m_opened)
        return true;
    ExfatVolume volume(m_boot, [this](void* buffer, quint64 bytes, quint64 offset) {
        return readVolume(buffer, bytes, offset);
    });
    volume.load();
    m_bitmap = volume.bitmap();
    const bool finished = volume.walk(
        [&](const QStringList& folder, const ExfatEntrySet& set) {
            fileDeleted(totals, volume, folder, set);
            return true;
        },
        [&](quint64 sets) { return !step(totals.position = sets); });
    if (volume.corruptSets())
        qDebug("exfat: %d entry sets failed their checks", volume.corruptSets());
    return finished;
}

void ExfatVolumeScan::fileDeleted(ScanTotals& totals, const ExfatVolume& volume, const QStringList& folder,
                                  const ExfatEntrySet& set)
{
    auto* file = new ExfatFile;
    file->setName(set.name);
    file->modifiedMsecs = set.modifiedMsecs;
    // A size beyond the volume is damage; the size is what a preview allocates.
    file->size = qMin(set.dataLength, volumeBytes());
    ExtentList list(volumeBytes(), file->size);
    quint64 valid = qMin(set.validLength, file->size);
    for (const ExfatClusterRun& run : volume.clusterRuns(set)) {
        const quint64 bytes = qMin(quint64(run.count) << m_boot.clusterShift, valid);
        list.add(m_boot.clusterOffset(run.first), bytes);
        valid -= bytes;
    }
    // Bytes behind the valid data length were never written: they read as zeros.
    list.addHole(file->size);
    file->setExtents(list.take());
    folderOf(folder)->addFile(file);
    ++totals.results;
    totals.totalSize += file->size;
}

FolderNode* ExfatVolumeScan::folderOf(const QStringList& path)
{
    if (m_lastFolder && path == m_lastPath)
        return m_lastFolder;
    FolderNode* folder = rootFolder;
    for (const QString& part : path)
        folder = folder->obtainChild(part, partIndex, false);
    m_lastPath = path;
    m_lastFolder = folder;
    return folder;
}

void ExfatVolumeScan::scanFinished()
{
    m_lastFolder = nullptr;
    m_lastPath.clear();
}

bool ExfatVolumeScan::prepareCarvingResume(const QByteArray& state)
{
    if (!m_opened)
        return state.isEmpty();
    ExfatVolume volume(m_boot, [this](void* buffer, quint64 bytes, quint64 offset) { return readVolume(buffer, bytes, offset); });
    volume.load();
    m_bitmap = volume.bitmap();
    return state.isEmpty();
}

void ExfatVolumeScan::carveFreeBlocks(const CarvingContext& context)
{
    // The heap walked like a FAT32 data area: cluster 2 at its start, one
    // 32-bit FAT entry per cluster. Carved files are Fat32File records. Only
    // clusters the allocation bitmap leaves free: the rest hold live files.
    const quint64 fatBytes = (quint64(m_boot.clusterCount) + ExfatBootSector::kFirstDataCluster) * 4;
    CarvingPass::runFat32(context, {m_boot.clusterBytes(), m_boot.heapOffset, fatBytes,
                                    [this](quint64 cluster) { return m_bitmap.isFree(cluster); }});
}

bool ExfatVolumeScan::carvedExtents(const Fat32File& file, Extents* extents) const
{
    if (!m_boot.isCluster(file.firstCluster))
        return false;
    ExtentList list(volumeBytes(), file.size);
    list.add(m_boot.clusterOffset(file.firstCluster), quint64(file.carvedClusters) << m_boot.clusterShift);
    *extents = list.take();
    return true;
}

bool ExfatVolumeScan::extentsOf(const FoundFile& found, Extents* extents) const
{
    if (const auto* carved = dynamic_cast<const Fat32File*>(&found))
        return carvedExtents(*carved, extents);
    const auto* file = dynamic_cast<const ExfatFile*>(&found);
    // A file with no cluster on the volume has nothing to give back, not even zeros.
    const Extents own = file ? file->extents() : Extents();
    if (!file || std::all_of(own.begin(), own.end(), [](const Extent& e) { return e.hole; }))
        return false;
    *extents = own;
    return true;
}
