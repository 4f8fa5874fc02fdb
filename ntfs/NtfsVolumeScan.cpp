#include "ntfs/NtfsVolumeScan.h"
#include "carving/CarvingPass.h"
#include "diskscan/BackupBootLocator.h"
#include "ntfs/FileNameAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordDecoder.h"
#include "ntfs/ParentChain.h"
#include "ntfs/RunList.h"
#include "results/FolderNode.h"
#include "results/ExtentList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"
#include "scan/device/DeviceLayer.h"

#include <QDebug>
#include <QFile>
#include <cstring>

namespace {
// The record loop looks at least this far, even behind a small MFT.
constexpr quint64 kMinScanBytes = 128ull * 1024 * 1024;
// The loop's counter starts here, so it looks at limit - 16 record slots.
constexpr qint64 kFirstBatchNumber = 16;
// A batch of records is read at once: two clusters of 4096 bytes, or one larger cluster.
constexpr quint32 kBatchBytes = 8192;
// Record 6 of every NTFS volume is $Bitmap, the cluster allocation bitmap.
constexpr quint32 kBitmapRecord = 6;

constexpr quint64 ceilDiv(quint64 a, quint64 b) { return a / b + (a % b ? 1 : 0); }
} // namespace

NtfsVolumeScan::NtfsVolumeScan(const QString& name, QObject* parent) : VolumeScan(name, parent)
{
    parseBootSector();
}

NtfsVolumeScan::NtfsVolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : VolumeScan(name, std::move(h), offset, parent)
{
    parseBootSector();
}

NtfsVolumeScan::~NtfsVolumeScan()
{
    stopAndWait();
    qDeleteAll(directories);
}

// ---------------------------------------------------------------- volume open

void NtfsVolumeScan::parseBootSector()
{
    // A volume whose first sector is broken opens with the copy NTFS keeps in
    // its last sector: the handle reads the copy in the first one's place.
    bool usedBackup = false;
    const quint64 rest = handle.length() - qMin(partOffset, handle.length());
    const DeviceHandle repaired = BackupBootLocator::repaired(handle, partOffset, rest, &usedBackup);
    if (usedBackup) {
        qDebug("%s: boot sector taken from its backup", "NtfsVolumeScan::parseBootSector");
        handle = repaired;
    }
    volume = NtfsVolume::open(handle, partOffset);
    setOpenProblem(volume.problem);
    setVolumeBytes(volume.volumeClusters << volume.geometry.clusterShift);
    orphans.reset();
}

bool NtfsVolumeScan::canOpen(const DeviceHandle& handle, quint64 partOffset)
{
    return NtfsVolume::open(handle, partOffset).opened();
}

// ---------------------------------------------------------------- record decoding

bool NtfsVolumeScan::parseFileRecord(uint8_t* record, MftRecordInfo& info)
{
    auto* file = new NtfsFile;
    file->mftRecord = info.recordNumber;
    file->recordOffset = info.foundAt;
    info.file = file;
    decoder().data(record, &info, volume.volumeClusters);
    quint32 length = 0;
    // Content without a usable name counts as a result but has no place in the tree.
    if (file->size != 0 && (decoder().attribute(record, info, MftRecord::kFileNameType, &length) < 0 || fileRecordName(record, info)))
        return true;
    delete file;
    info.file = nullptr;
    return false;
}

// ---------------------------------------------------------------- reads over runs

qint64 NtfsVolumeScan::readClusters(void* buffer, quint32 count, quint64 vcn, const QList<DataRun*>& runs)
{
    char* out = static_cast<char*>(buffer);
    qint64 total = 0;
    for (const RunList::Extent& e : RunList::extents(runs, vcn, count)) {
        const quint64 bytes = e.count << volume.geometry.clusterShift;
        std::memset(out, 0, bytes);
        // Clusters behind the volume's end belong to no one: they stay zero.
        const quint64 inside = e.lcn < volume.volumeClusters ? qMin(e.count, volume.volumeClusters - e.lcn) : 0;
        if (e.sparse) {
            total += qint64(e.count);
        } else if (inside > 0) {
            QList<BadRange> bad;
            const qint64 got = readBlocks(out, quint32(inside), e.lcn, volume.geometry.clusterShift, &bad);
            if (got < 0)
                return -1;
            // Unreadable sectors came back as zeros: the records in them are passed over.
            countReadErrors(bad.isEmpty() ? 0 : 1);
            total += got;
        }
        out += bytes;
    }
    return total;
}

qint64 NtfsVolumeScan::readRecord(void* buffer, quint32 number)
{
    const NtfsFile* mft = volume.mft.get();
    if (!mft)
        return -1;
    const quint64 streamByte = quint64(number) * volume.geometry.recordBytes;
    const quint64 vcn = streamByte >> volume.geometry.clusterShift;
    if (volume.geometry.recordBytes >= volume.geometry.clusterBytes) {
        const quint32 clusters = volume.geometry.recordBytes >> volume.geometry.clusterShift;
        const qint64 got = readClusters(buffer, clusters, vcn, mft->runs);
        return got < 0 ? -1 : got << volume.geometry.clusterShift;
    }
    const QList<RunList::Extent> where = RunList::extents(mft->runs, vcn, 1);
    if (where.isEmpty() || where.first().sparse || where.first().lcn >= volume.volumeClusters)
        return -1;
    const quint64 within = streamByte & (volume.geometry.clusterBytes - 1);
    QList<BadRange> bad;
    const qint64 got = read(buffer, volume.geometry.recordBytes, (where.first().lcn << volume.geometry.clusterShift) + within + partOffset, &bad);
    countReadErrors(bad.isEmpty() ? 0 : 1);
    return got;
}

// ---------------------------------------------------------------- scan pass

qint64 NtfsVolumeScan::recordLimit() const
{
    const quint64 recordCount = volume.mft->size / volume.geometry.recordBytes;
    return qint64(qMax(checked::mulSat(recordCount, NtfsVolume::kMftReachFactor), kMinScanBytes / volume.geometry.recordBytes));
}

quint64 NtfsVolumeScan::progressTotal() const
{
    return quint64(recordLimit());
}

bool NtfsVolumeScan::scanMetadata(ScanTotals& totals)
{
    mountPoint = deviceName.size() == 1 ? DeviceLayer::instance().mountPointOfLetter(deviceName.at(0)) : QString();
    loadClusterBitmap();
    const bool stopped = recordLoop(recordLimit(), volume.mft->size / volume.geometry.recordBytes, &totals);
    qDeleteAll(directories);
    directories.clear();
    return !stopped;
}

void NtfsVolumeScan::scanFinished()
{
    clusterBitmap.clear();
    bitmapClusters = 0;
}

void NtfsVolumeScan::carveFreeBlocks(const CarvingContext& c)
{
    // Only the first run of $Bitmap was read; without it every cluster counts as free.
    const quint64 bitmapBytes = qMin(quint64(clusterBitmap.size()), checked::mulSat(bitmapClusters, volume.geometry.clusterBytes));
    NtfsCarvingGeometry g;
    g.clusterBytes = volume.geometry.clusterBytes;
    g.bitmap = clusterBitmap.isEmpty() ? nullptr : reinterpret_cast<const quint8*>(clusterBitmap.constData());
    g.bitmapBytes = bitmapBytes;
    g.clusterCount = volume.volumeClusters;
    CarvingPass::runNtfs(c, g);
}

void NtfsVolumeScan::loadClusterBitmap()
{
    clusterBitmap.clear();
    bitmapClusters = 0;
    QByteArray record(int(volume.geometry.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(record.data());
    MftRecordInfo info;
    if (readRecord(bytes, kBitmapRecord) < qint64(volume.geometry.recordBytes) || !decoder().header(bytes, &info))
        return;
    NtfsFile bitmapFile;
    info.file = &bitmapFile;
    if (!decoder().data(bytes, &info, volume.volumeClusters) || bitmapFile.resident || bitmapFile.runs.isEmpty()
        || bitmapFile.runs.first()->sparse)
        return;
    // One bit per cluster of the volume; a longer first run holds nothing more.
    const quint64 needed = ceilDiv(ceilDiv(volume.volumeClusters, 8), volume.geometry.clusterBytes);
    bitmapClusters = qMin(bitmapFile.runs.first()->length, needed);
    clusterBitmap = QByteArray(qsizetype(bitmapClusters << volume.geometry.clusterShift), '\0');
    readClusters(clusterBitmap.data(), quint32(bitmapClusters), 0, bitmapFile.runs);
}

NtfsVolumeScan::BatchPlace NtfsVolumeScan::batchPlace(quint64 vcn, quint32 clusters) const
{
    for (const RunList::Extent& e : RunList::extents(volume.mft->runs, vcn, clusters)) {
        if (!e.sparse && e.lcn < volume.volumeClusters)
            return BatchPlace::Inside;
    }
    // Behind the last run the stream only moves further out.
    return vcn >= RunList::clusterTotal(volume.mft->runs) ? BatchPlace::PastEnd : BatchPlace::OutsideVolume;
}

bool NtfsVolumeScan::recordLoop(qint64 limit, quint64 recordCount, ScanTotals* totals)
{
    const quint32 batchBytes = qMax(kBatchBytes, volume.geometry.clusterBytes);
    const quint32 batchClusters = batchBytes >> volume.geometry.clusterShift;
    const quint32 batchRecords = batchBytes / volume.geometry.recordBytes;
    QByteArray buffer(int(batchBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(buffer.data());
    quint64 vcn = 0;
    for (qint64 batch = kFirstBatchNumber; batch < limit; batch += batchRecords, vcn += batchClusters) {
        const BatchPlace place = batchPlace(vcn, batchClusters);
        if (place == BatchPlace::PastEnd)
            break;
        // A batch that can't be read is passed over and counted; the records behind it still count.
        if (place == BatchPlace::Inside && readClusters(bytes, batchClusters, vcn, volume.mft->runs) <= 0) {
            countReadErrors(1);
        } else if (place == BatchPlace::Inside) {
            for (quint32 i = 0; i < batchRecords; ++i) {
                const quint64 streamByte = (vcn << volume.geometry.clusterShift) + quint64(i) * volume.geometry.recordBytes;
                scanRecord(bytes + i * volume.geometry.recordBytes, totals->position + i, recordCount,
                           volumeOffsetOf(streamByte), totals);
            }
        }
        totals->position += batchRecords;
        if (step(totals->position))
            return true;
    }
    return false;
}

bool NtfsVolumeScan::recordInUse(quint64 position) const
{
    const quint64 byte = position / 8;
    return byte < quint64(volume.mftBitmap.size()) && (quint8(volume.mftBitmap.at(qsizetype(byte))) >> (position % 8)) & 1;
}

quint64 NtfsVolumeScan::volumeOffsetOf(quint64 streamByte) const
{
    const QList<RunList::Extent> where = RunList::extents(volume.mft->runs, streamByte >> volume.geometry.clusterShift, 1);
    if (where.isEmpty() || where.first().sparse)
        return 0;
    return (where.first().lcn << volume.geometry.clusterShift) + (streamByte & (volume.geometry.clusterBytes - 1));
}

void NtfsVolumeScan::scanRecord(uint8_t* record, quint64 position, quint64 recordCount, quint64 foundAt, ScanTotals* totals)
{
    MftRecordInfo info;
    info.foundAt = foundAt;
    if (!decoder().header(record, &info))
        return;
    if (info.flags & MftRecord::kDirectoryFlag) {
        recordDirectory(record, info);
        return;
    }
    // The in-use flag of the record is not trusted: the MFT bitmap decides,
    // and behind the live MFT every record is a candidate.
    if (position < recordCount && recordInUse(position))
        return;
    if (!parseFileRecord(record, info))
        return;
    ++totals->results;
    totals->totalSize += info.file->size;
    if (!info.filed)
        delete info.file;
}

void NtfsVolumeScan::recordDirectory(const uint8_t* record, MftRecordInfo& info)
{
    QString name;
    if (!decoder().fileName(record, &info, &name))
        return;
    if (!name.isEmpty())
        info.path = name;
    // The first record that states a number keeps it.
    if (info.path.isEmpty() || directories.contains(info.recordNumber))
        return;
    directories.insert(info.recordNumber, new DirectoryEntry{info.parentRecord, info.created, info.path});
}

bool NtfsVolumeScan::fileRecordName(const uint8_t* record, MftRecordInfo& info)
{
    QString name;
    if (!decoder().fileName(record, &info, &name) || name.isEmpty())
        return false;
    NtfsFile* file = info.file;
    file->name = name;
    if (file->name == QLatin1String("$Bitmap"))
        return true;
    if (!filterAccepts(file->name))
        return false;
    file->modifiedMsecs = FileNameAttribute::toMsecs(info.modified);

    QStringList folders = ParentChain::walk(directories, info.parentRecord, info.created).folders;
    FolderNode* folder = nullptr;
    if (!folders.isEmpty() && folders.first() == QLatin1String(".")) {
        folders.removeFirst();
        if (isLive(folders, file->name))
            return false;
        folder = rootFolder;
    } else {
        folder = currentOrphanFolder();
    }
    for (const QString& part : folders)
        folder = folder->obtainChild(part, partIndex, true);
    info.path = (folders + QStringList{file->name}).join(QLatin1Char('/'));
    folder->addFile(file);
    info.filed = true;
    markClusters(file);
    return true;
}

bool NtfsVolumeScan::isLive(const QStringList& folders, const QString& name) const
{
    if (mountPoint.isEmpty())
        return false;
    return QFile::exists(mountPoint + QLatin1Char('/') + (folders + QStringList{name}).join(QLatin1Char('/')));
}

FolderNode* NtfsVolumeScan::currentOrphanFolder()
{
    return orphans.current(rootFolder, partIndex, true);
}

void NtfsVolumeScan::markClusters(const NtfsFile* file)
{
    if (file->resident || clusterBitmap.isEmpty())
        return;
    // Only the first cluster of a run: the carving pass tests where runs begin.
    for (const DataRun* run : file->runs) {
        if (run->length == 0 || run->sparse || run->lcn / 8 >= quint64(clusterBitmap.size()))
            continue;
        const qsizetype byte = qsizetype(run->lcn / 8);
        clusterBitmap[byte] = char(quint8(clusterBitmap.at(byte)) | (1u << (run->lcn % 8)));
    }
}

// ---------------------------------------------------------------- extraction

bool NtfsVolumeScan::hasContent(const FoundFile& found) const
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    return file && (file->resident || !file->runs.isEmpty());
}

bool NtfsVolumeScan::extentsOf(const FoundFile& found, Extents* extents) const
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    if (!file || file->resident || file->runs.isEmpty())
        return false;
    ExtentList list(volumeBytes(), file->size);
    for (const DataRun* run : file->runs) {
        const quint64 bytes = checked::mulSat(run->length, volume.geometry.clusterBytes);
        const bool more = run->sparse ? list.addHole(bytes) : list.add(checked::mulSat(run->lcn, volume.geometry.clusterBytes), bytes);
        if (run->length == 0 || !more)
            break;
    }
    *extents = list.take();
    return true;
}

bool NtfsVolumeScan::readContent(const FoundFile& found, const ContentSink& sink)
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    if (!file || !file->resident)
        return VolumeScan::readContent(found, sink);
    const QByteArray content = residentContent(file);
    sink(0, content.constData(), quint64(content.size()));
    return true;
}

QByteArray NtfsVolumeScan::residentContent(const NtfsFile* file)
{
    QByteArray record(int(volume.geometry.recordBytes), '\0');
    const qint64 got = file->recordOffset != 0 ? readVolume(record.data(), volume.geometry.recordBytes, file->recordOffset)
                                               : readRecord(record.data(), file->mftRecord);
    MftRecordInfo info;
    if (got < qint64(volume.geometry.recordBytes) || !decoder().header(reinterpret_cast<uint8_t*>(record.data()), &info)) {
        countReadErrors(1);
        return {};
    }
    const quint64 start = qMin<quint64>(file->residentOffset, volume.geometry.recordBytes);
    return record.mid(int(start), int(qMin<quint64>(file->size, volume.geometry.recordBytes - start)));
}
