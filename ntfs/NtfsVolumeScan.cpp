#include "ntfs/NtfsVolumeScan.h"
#include "carving/CarvingPass.h"
#include "diskscan/BackupBootLocator.h"
#include "ntfs/FileNameAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/ParentChain.h"
#include "ntfs/RunList.h"
#include "results/FolderNode.h"
#include "results/ExtentList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"
#include "scan/device/DeviceLayer.h"

#include <QDebug>
#include <QFile>
#include <cstring>

namespace {
// The boot sector is read as one 512-byte block, whatever the sector size.
constexpr quint32 kBootSectorBytes = 512;
constexpr int kBootSectorShift = 9;

// Offsets inside an attribute header.
constexpr size_t kNonResidentFlagOffset = 0x08;
constexpr size_t kResidentLengthOffset = 0x10;
constexpr size_t kResidentValueOffset = 0x14;
constexpr size_t kRunListOffset = 0x20;
constexpr size_t kAllocatedSizeOffset = 0x28;
constexpr size_t kRealSizeOffset = 0x30;

// The runs of $MFT are stretched sixteen times, so the scan reads on far
// behind the live MFT's end, where records of an earlier MFT may remain.
constexpr quint64 kMftReachFactor = 16;
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
    delete mftInfo.file;
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
    QByteArray sector(kBootSectorBytes, '\0');
    if (readBlocks(sector.data(), 1, 0, kBootSectorShift) <= 0)
        qFatal("%s: cannot read boot sector", "NtfsVolumeScan::parseBootSector");
    bool signatureOk = false;
    if (!NtfsGeometry::parse(reinterpret_cast<const uint8_t*>(sector.constData()), sector.size(), &geometry,
                             &signatureOk))
        qFatal("NtfsVolumeScan::openVolume(): it's not a valid ntfs volume");
    mftLcn = geometry.mftLcn;
    qDebug() << "a=" << mftLcn << partOffset;

    volumeClusters = clustersOnDevice(geometry, handle.length(), partOffset);
    setVolumeBytes(volumeClusters << geometry.clusterShift);

    QByteArray record(int(geometry.recordBytes), '\0');
    const quint64 position = checked::addSat(checked::mulSat(mftLcn, geometry.clusterBytes), partOffset);
    if (mftLcn >= volumeClusters || read(record.data(), geometry.recordBytes, position) < qint64(geometry.recordBytes))
        qFatal("%s: cannot read $MFT record", "NtfsVolumeScan::parseBootSector");
    parseMftRecord(reinterpret_cast<uint8_t*>(record.data()), mftInfo);
    orphans.reset();
}

quint64 NtfsVolumeScan::clustersOnDevice(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset)
{
    const quint64 deviceBytes = deviceLength > partOffset ? deviceLength - partOffset : 0;
    const quint64 statedBytes = checked::mulSat(geometry.totalSectors, geometry.sectorBytes);
    return (statedBytes ? qMin(statedBytes, deviceBytes) : deviceBytes) >> geometry.clusterShift;
}

quint64 NtfsVolumeScan::statedClusters(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset)
{
    const quint64 statedBytes = checked::mulSat(geometry.totalSectors, geometry.sectorBytes);
    return statedBytes ? statedBytes >> geometry.clusterShift : clustersOnDevice(geometry, deviceLength, partOffset);
}

bool NtfsVolumeScan::canOpen(const DeviceHandle& handle, quint64 partOffset)
{
    uint8_t sector[kBootSectorBytes];
    NtfsGeometry g;
    bool signatureOk = false;
    if (handle.read(sector, kBootSectorBytes, partOffset) != qint64(kBootSectorBytes)
        || !NtfsGeometry::parse(sector, kBootSectorBytes, &g, &signatureOk))
        return false;
    const quint64 clusters = clustersOnDevice(g, handle.length(), partOffset);
    QByteArray record(int(g.recordBytes), '\0');
    const quint64 position = checked::addSat(checked::mulSat(g.mftLcn, g.clusterBytes), partOffset);
    return g.mftLcn < clusters && handle.read(record.data(), g.recordBytes, position) == qint64(g.recordBytes)
        && !mftRecordProblem(reinterpret_cast<uint8_t*>(record.data()), g,
                             statedClusters(g, handle.length(), partOffset));
}

const char* NtfsVolumeScan::mftRecordProblem(uint8_t* record, const NtfsGeometry& geometry, quint64 clusterCount)
{
    MftRecordInfo info;
    if (!MftRecord::parseHeader(record, geometry.recordBytes, &info))
        return "$MFT record has a bad header";
    quint32 remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int data = MftRecord::findAttribute(record, geometry.recordBytes, info.attrOffset, MftRecord::kDataType, &remaining);
    LeReader r(record + qMax(data, 0), data < 0 ? 0 : remaining);
    const quint16 listOffset = r.u16(kRunListOffset);
    r.u64(kRealSizeOffset); // the sizes must lie inside the attribute, as for any file's $DATA
    QList<DataRun*> runs;
    if (r.ok() && r.u8(kNonResidentFlagOffset) != 0 && listOffset < remaining)
        RunList::decode(record + data + listOffset, remaining - listOffset, clusterCount, &runs);
    const bool hasRuns = !runs.isEmpty();
    qDeleteAll(runs);
    if (!hasRuns)
        return "$MFT record has no $DATA runs";
    remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    if (MftRecord::findAttribute(record, geometry.recordBytes, info.attrOffset, MftRecord::kBitmapType, &remaining) < 0)
        return "$MFT record has no $BITMAP";
    return nullptr;
}

void NtfsVolumeScan::parseMftRecord(uint8_t* record, MftRecordInfo& info)
{
    const quint64 mftClusters = statedClusters(geometry, handle.length(), partOffset);
    if (const char* problem = mftRecordProblem(record, geometry, mftClusters))
        qFatal("%s: %s", "NtfsVolumeScan::parseMftRecord", problem);
    // The checks above put the sector ends back already; a second parse finds them in place.
    if (!parseRecordHeader(record, info))
        qFatal("%s: $MFT record has a bad header", "NtfsVolumeScan::parseMftRecord");
    delete info.file;
    info.file = new NtfsFile;
    info.file->mftRecord = info.recordNumber;
    quint32 remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int data = findAttribute(record, info.attrOffset, MftRecord::kDataType, remaining);
    if (data < 0 || !decodeData(record, data, remaining, info, mftClusters) || info.file->resident || info.file->runs.isEmpty())
        qFatal("%s: $MFT record has no $DATA runs", "NtfsVolumeScan::parseMftRecord");
    for (DataRun* run : info.file->runs) {
        run->vcnEnd = checked::mulSat(run->vcnEnd, kMftReachFactor);
        run->length = checked::mulSat(run->length, kMftReachFactor);
        qDebug("vcn:%llX offset:%llX length:%llX", static_cast<unsigned long long>(run->vcnEnd),
               static_cast<unsigned long long>(run->lcn), static_cast<unsigned long long>(run->length));
    }
    remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int bitmap = findAttribute(record, info.attrOffset, MftRecord::kBitmapType, remaining);
    if (bitmap < 0)
        qFatal("%s: $MFT record has no $BITMAP", "NtfsVolumeScan::parseMftRecord");
    readMftBitmap(record, bitmap, remaining);
}

void NtfsVolumeScan::readMftBitmap(const uint8_t* record, int attrOffset, quint32 attrLength)
{
    LeReader r(record + attrOffset, attrLength);
    // One bit per record the volume could hold, and a cluster of slack.
    const quint64 maxBytes = (checked::mulSat(volumeClusters, geometry.clusterBytes) / geometry.recordBytes) / 8
        + geometry.clusterBytes;
    if (r.u8(kNonResidentFlagOffset) == 0) {
        const quint32 length = r.u32(kResidentLengthOffset);
        const uint8_t* value = r.bytes(r.u16(kResidentValueOffset), length);
        mftBitmap = value ? QByteArray(reinterpret_cast<const char*>(value), int(length)) : QByteArray();
        return;
    }
    const quint64 allocated = qMin<quint64>(r.u64(kAllocatedSizeOffset) & 0xFFFFFFFFu, maxBytes);
    const quint64 arrayClusters = ceilDiv(allocated, geometry.clusterBytes);
    mftBitmap = QByteArray(qsizetype(arrayClusters << geometry.clusterShift), '\0');
    QList<DataRun*> runs;
    const quint16 listOffset = r.u16(kRunListOffset);
    if (r.ok() && listOffset < attrLength)
        RunList::decode(record + attrOffset + listOffset, attrLength - listOffset, volumeClusters, &runs);
    quint64 done = 0;
    for (const DataRun* run : runs) {
        const quint64 count = qMin(run->length, arrayClusters - done);
        if (count == 0)
            break;
        if (!run->sparse
            && readBlocks(mftBitmap.data() + (done << geometry.clusterShift), quint32(count), run->lcn,
                          geometry.clusterShift) < 0)
            qFatal("NtfsVolume::open(): cannot read main mft bitmap");
        done += count;
    }
    qDeleteAll(runs);
}

// ---------------------------------------------------------------- record decoding

bool NtfsVolumeScan::parseRecordHeader(uint8_t* record, MftRecordInfo& info) const
{
    return MftRecord::parseHeader(record, geometry.recordBytes, &info);
}

int NtfsVolumeScan::findAttribute(const uint8_t* record, int offset, quint32 type, quint32& remaining) const
{
    return MftRecord::findAttribute(record, geometry.recordBytes, offset, type, &remaining);
}

bool NtfsVolumeScan::decodeData(const uint8_t* record, int attrOffset, quint32 attrLength, MftRecordInfo& info,
                                quint64 clusterCount) const
{
    NtfsFile* file = info.file;
    LeReader r(record + attrOffset, attrLength);
    file->resident = r.u8(kNonResidentFlagOffset) == 0;
    if (file->resident) {
        const quint32 length = r.u32(kResidentLengthOffset);
        const quint16 valueOffset = r.u16(kResidentValueOffset);
        // A value that leaves its attribute is damage, not content.
        const bool fits = r.has(valueOffset, length);
        file->size = fits ? length : 0;
        file->residentOffset = valueOffset;
        return r.ok() && fits;
    }
    const quint64 allocated = r.u64(kAllocatedSizeOffset);
    const quint64 real = r.u64(kRealSizeOffset);
    file->size = real < allocated ? real : allocated;
    const quint16 listOffset = r.u16(kRunListOffset);
    if (!r.ok()) {
        file->size = 0;
        return false;
    }
    if (listOffset < attrLength)
        RunList::decode(record + attrOffset + listOffset, attrLength - listOffset, clusterCount, &file->runs);
    // No content reaches past what the runs describe, nor past the volume: a
    // hole can state any length, and the size is what a preview allocates.
    const quint64 described = file->runs.isEmpty() ? clusterCount : qMin(RunList::clusterTotal(file->runs), clusterCount);
    file->size = qMin(file->size, checked::mulSat(described, geometry.clusterBytes));
    return true;
}

bool NtfsVolumeScan::directoryName(const uint8_t* record, int attrOffset, quint32 attrLength, MftRecordInfo& info) const
{
    FileNameAttribute name;
    if (!FileNameAttribute::decode(record, geometry.recordBytes, attrOffset, attrLength, &name))
        return false;
    info.parentRecord = name.parentRecord;
    info.created = name.created;
    if (!name.name.isEmpty())
        info.path = name.name;
    return true;
}

bool NtfsVolumeScan::parseFileRecord(uint8_t* record, MftRecordInfo& info)
{
    auto* file = new NtfsFile;
    file->mftRecord = info.recordNumber;
    file->recordOffset = info.foundAt;
    info.file = file;
    quint32 remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int data = findAttribute(record, info.attrOffset, MftRecord::kDataType, remaining);
    if (data >= 0 && decodeData(record, data, remaining, info, volumeClusters) && file->resident)
        file->residentOffset = quint16(file->residentOffset + data);
    if (file->size == 0) {
        delete file;
        info.file = nullptr;
        return false;
    }
    remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int name = findAttribute(record, info.attrOffset, MftRecord::kFileNameType, remaining);
    // Content without a usable name counts as a result but has no place in the tree.
    if (name < 0 || fileRecordName(record, name, remaining, info))
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
        const quint64 bytes = e.count << geometry.clusterShift;
        std::memset(out, 0, bytes);
        // Clusters behind the volume's end belong to no one: they stay zero.
        const quint64 inside = e.lcn < volumeClusters ? qMin(e.count, volumeClusters - e.lcn) : 0;
        if (e.sparse) {
            total += qint64(e.count);
        } else if (inside > 0) {
            const qint64 got = readBlocks(out, quint32(inside), e.lcn, geometry.clusterShift);
            if (got < 0)
                return -1;
            total += got;
        }
        out += bytes;
    }
    return total;
}

qint64 NtfsVolumeScan::readRecord(void* buffer, quint32 number)
{
    const NtfsFile* mft = mftInfo.file;
    if (!mft)
        return -1;
    const quint64 streamByte = quint64(number) * geometry.recordBytes;
    const quint64 vcn = streamByte >> geometry.clusterShift;
    if (geometry.recordBytes >= geometry.clusterBytes) {
        const quint32 clusters = geometry.recordBytes >> geometry.clusterShift;
        const qint64 got = readClusters(buffer, clusters, vcn, mft->runs);
        return got < 0 ? -1 : got << geometry.clusterShift;
    }
    const QList<RunList::Extent> where = RunList::extents(mft->runs, vcn, 1);
    if (where.isEmpty() || where.first().sparse || where.first().lcn >= volumeClusters)
        return -1;
    const quint64 within = streamByte & (geometry.clusterBytes - 1);
    return read(buffer, geometry.recordBytes, (where.first().lcn << geometry.clusterShift) + within + partOffset);
}

// ---------------------------------------------------------------- scan pass

qint64 NtfsVolumeScan::recordLimit() const
{
    const quint64 recordCount = mftInfo.file->size / geometry.recordBytes;
    return qint64(qMax(checked::mulSat(recordCount, kMftReachFactor), kMinScanBytes / geometry.recordBytes));
}

quint64 NtfsVolumeScan::progressTotal() const
{
    return quint64(recordLimit());
}

bool NtfsVolumeScan::scanMetadata(ScanTotals& totals)
{
    mountPoint = deviceName.size() == 1 ? DeviceLayer::instance().mountPointOfLetter(deviceName.at(0)) : QString();
    loadClusterBitmap();
    const bool stopped = recordLoop(recordLimit(), mftInfo.file->size / geometry.recordBytes, &totals);
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
    const quint64 bitmapBytes = qMin(quint64(clusterBitmap.size()), checked::mulSat(bitmapClusters, geometry.clusterBytes));
    NtfsCarvingGeometry g;
    g.clusterBytes = geometry.clusterBytes;
    g.bitmap = clusterBitmap.isEmpty() ? nullptr : reinterpret_cast<const quint8*>(clusterBitmap.constData());
    g.bitmapBytes = bitmapBytes;
    g.clusterCount = volumeClusters;
    CarvingPass::runNtfs(c, g);
}

void NtfsVolumeScan::loadClusterBitmap()
{
    clusterBitmap.clear();
    bitmapClusters = 0;
    QByteArray record(int(geometry.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(record.data());
    MftRecordInfo info;
    if (readRecord(bytes, kBitmapRecord) < qint64(geometry.recordBytes) || !parseRecordHeader(bytes, info))
        return;
    quint32 remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int data = findAttribute(bytes, info.attrOffset, MftRecord::kDataType, remaining);
    if (data < 0)
        return;
    NtfsFile bitmapFile;
    info.file = &bitmapFile;
    if (!decodeData(bytes, data, remaining, info, volumeClusters) || bitmapFile.resident || bitmapFile.runs.isEmpty()
        || bitmapFile.runs.first()->sparse)
        return;
    // One bit per cluster of the volume; a longer first run holds nothing more.
    const quint64 needed = ceilDiv(ceilDiv(volumeClusters, 8), geometry.clusterBytes);
    bitmapClusters = qMin(bitmapFile.runs.first()->length, needed);
    clusterBitmap = QByteArray(qsizetype(bitmapClusters << geometry.clusterShift), '\0');
    readClusters(clusterBitmap.data(), quint32(bitmapClusters), 0, bitmapFile.runs);
}

NtfsVolumeScan::BatchPlace NtfsVolumeScan::batchPlace(quint64 vcn, quint32 clusters) const
{
    for (const RunList::Extent& e : RunList::extents(mftInfo.file->runs, vcn, clusters)) {
        if (!e.sparse && e.lcn < volumeClusters)
            return BatchPlace::Inside;
    }
    // Behind the last run the stream only moves further out.
    return vcn >= RunList::clusterTotal(mftInfo.file->runs) ? BatchPlace::PastEnd : BatchPlace::OutsideVolume;
}

bool NtfsVolumeScan::recordLoop(qint64 limit, quint64 recordCount, ScanTotals* totals)
{
    const quint32 batchBytes = qMax(kBatchBytes, geometry.clusterBytes);
    const quint32 batchClusters = batchBytes >> geometry.clusterShift;
    const quint32 batchRecords = batchBytes / geometry.recordBytes;
    QByteArray buffer(int(batchBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(buffer.data());
    quint64 vcn = 0;
    for (qint64 batch = kFirstBatchNumber; batch < limit; batch += batchRecords, vcn += batchClusters) {
        const BatchPlace place = batchPlace(vcn, batchClusters);
        if (place == BatchPlace::PastEnd)
            break;
        // A batch that can't be read is passed over and counted; the records behind it still count.
        if (place == BatchPlace::Inside && readClusters(bytes, batchClusters, vcn, mftInfo.file->runs) <= 0) {
            countReadErrors(1);
        } else if (place == BatchPlace::Inside) {
            for (quint32 i = 0; i < batchRecords; ++i) {
                const quint64 streamByte = (vcn << geometry.clusterShift) + quint64(i) * geometry.recordBytes;
                scanRecord(bytes + i * geometry.recordBytes, totals->position + i, recordCount,
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
    return byte < quint64(mftBitmap.size()) && (quint8(mftBitmap.at(qsizetype(byte))) >> (position % 8)) & 1;
}

quint64 NtfsVolumeScan::volumeOffsetOf(quint64 streamByte) const
{
    const QList<RunList::Extent> where = RunList::extents(mftInfo.file->runs, streamByte >> geometry.clusterShift, 1);
    if (where.isEmpty() || where.first().sparse)
        return 0;
    return (where.first().lcn << geometry.clusterShift) + (streamByte & (geometry.clusterBytes - 1));
}

void NtfsVolumeScan::scanRecord(uint8_t* record, quint64 position, quint64 recordCount, quint64 foundAt, ScanTotals* totals)
{
    MftRecordInfo info;
    info.foundAt = foundAt;
    if (!parseRecordHeader(record, info))
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
    quint32 remaining = MftRecord::attributeBytes(info, geometry.recordBytes);
    const int name = findAttribute(record, info.attrOffset, MftRecord::kFileNameType, remaining);
    if (name < 0 || !directoryName(record, name, remaining, info))
        return;
    // The first record that states a number keeps it.
    if (info.path.isEmpty() || directories.contains(info.recordNumber))
        return;
    directories.insert(info.recordNumber, new DirectoryEntry{info.parentRecord, info.created, info.path});
}

bool NtfsVolumeScan::fileRecordName(const uint8_t* record, int attrOffset, quint32 attrLength, MftRecordInfo& info)
{
    FileNameAttribute name;
    if (!FileNameAttribute::decode(record, geometry.recordBytes, attrOffset, attrLength, &name))
        return false;
    info.parentRecord = name.parentRecord;
    info.created = name.created;
    info.modified = name.modified;
    if (name.name.isEmpty())
        return false;
    NtfsFile* file = info.file;
    file->name = name.name;
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
        const quint64 bytes = checked::mulSat(run->length, geometry.clusterBytes);
        const bool more = run->sparse ? list.addHole(bytes) : list.add(checked::mulSat(run->lcn, geometry.clusterBytes), bytes);
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
    QByteArray record(int(geometry.recordBytes), '\0');
    const qint64 got = file->recordOffset != 0 ? readVolume(record.data(), geometry.recordBytes, file->recordOffset)
                                               : readRecord(record.data(), file->mftRecord);
    MftRecordInfo info;
    if (got < qint64(geometry.recordBytes) || !parseRecordHeader(reinterpret_cast<uint8_t*>(record.data()), info)) {
        countReadErrors(1);
        return {};
    }
    const quint64 start = qMin<quint64>(file->residentOffset, geometry.recordBytes);
    return record.mid(int(start), int(qMin<quint64>(file->size, geometry.recordBytes - start)));
}
