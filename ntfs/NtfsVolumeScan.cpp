#include "ntfs/NtfsVolumeScan.h"
#include "carving/CarvingPass.h"
#include "diskscan/BackupBootLocator.h"
#include "ntfs/AttributeList.h"
#include "ntfs/CompressedStream.h"
#include "ntfs/FileStreams.h"
#include "ntfs/MftAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/ParentChain.h"
#include "ntfs/RunList.h"
#include "results/ExtentList.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"
#include "scan/device/DeviceLayer.h"

#include <QDebug>
#include <QFile>
#include <algorithm>
#include <cstring>

namespace {
// Behind a small MFT the scan still reads this far for records of an earlier one.
constexpr quint64 kMinScanBytes = 128ull * 1024 * 1024;
// Records are read in batches of this size: few reads, little memory.
constexpr quint64 kBatchBytes = 1024 * 1024;
// Record 6 of every NTFS volume is $Bitmap, the cluster allocation bitmap.
constexpr quint32 kBitmapRecord = 6;
// $MFTMirr copies the first four records.
constexpr quint64 kMirrorRecords = 4;
// A file's attribute list names at most this many extension records: more is damage.
constexpr int kMaxExtensionRecords = 1024;
constexpr int kSequenceShift = 48;
constexpr quint32 kIndexRootType = 0x90;
constexpr quint32 kIndexAllocationType = 0xA0;
// A folder's file-name index is the attribute stream "$I30".
const QLatin1String kFileNameIndex("$I30");
// Folders whose index slack is read: each costs its index's attributes until the pass.
constexpr int kMaxIndexedFolders = 256 * 1024;
// Blocks of one folder's index that are read: 4 MiB of 4 KiB blocks, some forty thousand names.
constexpr quint64 kMaxIndexBlocks = 1024;
// Names taken from one folder's slack; more is a folder of stale copies.
constexpr int kMaxSlackNames = 4096;

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
    for (Pending& p : pending)
        qDeleteAll(p.take());
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

// ---------------------------------------------------------------- reads over runs

qint64 NtfsVolumeScan::readVolumeClusters(char* out, quint64 lcn, quint64 count)
{
    std::memset(out, 0, size_t(count << volume.geometry.clusterShift));
    // Clusters behind the volume's end belong to no one: they stay zero.
    const quint64 inside = lcn < volume.volumeClusters ? qMin(count, volume.volumeClusters - lcn) : 0;
    if (inside == 0)
        return 0;
    QList<BadRange> bad;
    const qint64 got = readBlocks(out, quint32(inside), lcn, volume.geometry.clusterShift, &bad);
    // Unreadable sectors came back as zeros: the records in them are passed over.
    countReadErrors(bad.isEmpty() ? 0 : 1);
    return got;
}

qint64 NtfsVolumeScan::readClusters(void* buffer, quint32 count, quint64 vcn, const QList<DataRun>& runs)
{
    char* out = static_cast<char*>(buffer);
    qint64 total = 0;
    for (const RunList::Extent& e : RunList::extents(runs, vcn, count)) {
        if (e.sparse) {
            std::memset(out, 0, size_t(e.count << volume.geometry.clusterShift));
            total += qint64(e.count);
        } else {
            const qint64 got = readVolumeClusters(out, e.lcn, e.count);
            if (got < 0)
                return -1;
            total += got;
        }
        out += e.count << volume.geometry.clusterShift;
    }
    return total;
}

qint64 NtfsVolumeScan::readRecord(void* buffer, quint32 number)
{
    const NtfsFile* mft = volume.mft.get();
    if (!mft || number >= recordCount())
        return -1;
    const quint64 streamByte = quint64(number) * volume.geometry.recordBytes;
    const quint64 vcn = streamByte >> volume.geometry.clusterShift;
    if (volume.geometry.recordBytes >= volume.geometry.clusterBytes) {
        const quint32 clusters = volume.geometry.recordBytes >> volume.geometry.clusterShift;
        const qint64 got = readClusters(buffer, clusters, vcn, mft->runs());
        return got < 0 ? -1 : got << volume.geometry.clusterShift;
    }
    const quint64 at = volumeOffsetOf(streamByte);
    if (at == 0)
        return -1;
    QList<BadRange> bad;
    const qint64 got = read(buffer, volume.geometry.recordBytes, at + partOffset, &bad);
    countReadErrors(bad.isEmpty() ? 0 : 1);
    return got;
}

quint64 NtfsVolumeScan::volumeOffsetOf(quint64 streamByte) const
{
    const quint64 vcn = streamByte >> volume.geometry.clusterShift;
    if (vcn >= RunList::clusterTotal(volume.mft->runs()))
        return 0;
    const QList<RunList::Extent> where = RunList::extents(volume.mft->runs(), vcn, 1);
    if (where.isEmpty() || where.first().sparse || where.first().lcn >= volume.volumeClusters)
        return 0;
    return (where.first().lcn << volume.geometry.clusterShift) + (streamByte & (volume.geometry.clusterBytes - 1));
}

// ---------------------------------------------------------------- scan pass

quint64 NtfsVolumeScan::recordCount() const
{
    return volume.mft ? volume.mft->size / volume.geometry.recordBytes : 0;
}

QList<MftReach::Span> NtfsVolumeScan::reachPlan() const
{
    const NtfsGeometry& g = volume.geometry;
    const quint64 mirrorClusters = ceilDiv(kMirrorRecords * g.recordBytes, g.clusterBytes);
    const quint64 mftClusters = RunList::clusterTotal(volume.mft->runs());
    const quint64 minClusters = kMinScanBytes / g.clusterBytes;
    return MftReach::plan(volume.mft->runs(), volume.volumeClusters, {{g.mirrorLcn, mirrorClusters}},
                          minClusters > mftClusters ? minClusters - mftClusters : 0);
}

quint64 NtfsVolumeScan::progressTotal() const
{
    const quint64 clusters = RunList::clusterTotal(volume.mft->runs()) + MftReach::clusters(reachPlan());
    return checked::mulSat(clusters, volume.geometry.clusterBytes) / volume.geometry.recordBytes;
}

quint64 NtfsVolumeScan::carvingUnits() const
{
    // The record pass counts records; the walk reads the volume, a record's size at a time.
    return volumeBytes() / qMax<quint32>(volume.geometry.recordBytes, 1);
}

bool NtfsVolumeScan::scanMetadata(ScanTotals& totals)
{
    mountPoint = deviceName.size() == 1 ? DeviceLayer::instance().mountPointOfLetter(deviceName.at(0)) : QString();
    loadClusterBitmap();
    liveSequence = QVector<quint16>(int(qMin<quint64>(recordCount(), quint64(INT_MAX))), 0);
    directories.clear();
    reachSeen.clear();
    folderIndexes.clear();
    // Files are filed when a pass is over: a folder's record may stand behind
    // its files'. Names from index slack come last: a record found for the same file wins.
    bool stopped = liveMftPass(&totals);
    fileAllPending(&totals);
    if (!stopped)
        stopped = reachPass(reachPlan(), &totals);
    fileAllPending(&totals);
    if (!stopped)
        stopped = indexSlackPass(&totals);
    folderIndexes.clear();
    directories.clear();
    liveSequence.clear();
    reachSeen.clear();
    return !stopped;
}

void NtfsVolumeScan::scanFinished()
{
    clusterBitmap = ClusterBitmap();
    pendingNames.clear();
}

bool NtfsVolumeScan::prepareCarvingResume(const QByteArray& state)
{
    loadClusterBitmap();
    QList<const FolderNode*> pending{rootFolder};
    while (!pending.isEmpty()) {
        const FolderNode* folder = pending.takeLast();
        pending.append(QList<const FolderNode*>(folder->children.begin(), folder->children.end()));
        for (const FoundFile* file : folder->files)
            if (const auto* ntfs = dynamic_cast<const NtfsFile*>(file))
                markClusters(ntfs);
    }
    return state.isEmpty();
}

void NtfsVolumeScan::carveFreeBlocks(const CarvingContext& c)
{
    // Without $Bitmap every cluster counts as free.
    NtfsCarvingGeometry g;
    g.clusterBytes = volume.geometry.clusterBytes;
    if (clusterBitmap.isValid())
        g.clusterFree = [this](quint64 c) { return !clusterBitmap.inUse(c); };
    g.bitmapClusters = clusterBitmap.clusters();
    g.clusterCount = volume.volumeClusters;
    CarvingPass::runNtfs(c, g);
}

void NtfsVolumeScan::loadClusterBitmap()
{
    clusterBitmap = ClusterBitmap();
    QByteArray record(int(volume.geometry.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(record.data());
    MftRecordInfo info;
    if (readRecord(bytes, kBitmapRecord) < qint64(volume.geometry.recordBytes) || !decoder().header(bytes, &info))
        return;
    NtfsFile bitmapFile;
    info.file = &bitmapFile;
    if (!decoder().data(bytes, &info, volume.volumeClusters) || bitmapFile.resident() || bitmapFile.runCount() == 0
        || bitmapFile.runs().first().sparse)
        return;
    // One bit per cluster of the volume; longer runs hold nothing more.
    const NtfsGeometry& g = volume.geometry;
    const QList<DataRun> runs = bitmapFile.runs();
    const quint64 needed = ceilDiv(ceilDiv(volume.volumeClusters, 8), g.clusterBytes);
    const quint64 stored = qMin(RunList::clusterTotal(runs), needed);
    const quint64 described = qMin(checked::mulSat(checked::mulSat(stored, g.clusterBytes), 8), volume.volumeClusters);
    const auto read = [this, runs](char* out, quint64 offset, quint64 bytes) {
        readClusters(out, quint32(bytes >> volume.geometry.clusterShift), offset >> volume.geometry.clusterShift, runs);
    };
    clusterBitmap = ClusterBitmap(read, described, g.clusterBytes);
}

bool NtfsVolumeScan::liveMftPass(ScanTotals* totals)
{
    const NtfsGeometry& g = volume.geometry;
    const quint64 batchClusters = qMax<quint64>(qMax<quint64>(kBatchBytes, g.recordBytes) >> g.clusterShift, 1);
    const quint64 streamClusters = RunList::clusterTotal(volume.mft->runs());
    QByteArray buffer(qsizetype(batchClusters << g.clusterShift), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(buffer.data());
    for (quint64 vcn = 0; vcn < streamClusters; vcn += batchClusters) {
        const quint64 count = qMin(batchClusters, streamClusters - vcn);
        const quint64 records = (count << g.clusterShift) / g.recordBytes;
        // A batch that can't be read is passed over and counted; the records behind it still count.
        const bool readable = readClusters(bytes, quint32(count), vcn, volume.mft->runs()) > 0;
        if (!readable)
            countReadErrors(1);
        const quint64 firstSlot = (vcn << g.clusterShift) / g.recordBytes;
        // Where each record of the batch lies on the volume, from one mapping of the batch.
        const QList<RunList::Extent> where = RunList::extents(volume.mft->runs(), vcn, count);
        int extent = 0;
        quint64 extentStart = 0; // cluster of the batch where `extent` begins
        for (quint64 i = 0; i < records; ++i) {
            const quint64 byte = i * g.recordBytes;
            while (extent < where.size() && (byte >> g.clusterShift) >= extentStart + where.at(extent).count)
                extentStart += where.at(extent++).count;
            if (readable)
                scanRecord(bytes + byte, qint64(firstSlot + i), batchOffset(where, extent, extentStart, byte));
            if (step(++totals->position))
                return true;
        }
    }
    return false;
}

quint64 NtfsVolumeScan::batchOffset(const QList<RunList::Extent>& where, int extent, quint64 extentStart, quint64 byte) const
{
    if (extent >= where.size() || where.at(extent).sparse)
        return 0;
    const quint64 lcn = where.at(extent).lcn + (byte >> volume.geometry.clusterShift) - extentStart;
    if (lcn >= volume.volumeClusters)
        return 0;
    return (lcn << volume.geometry.clusterShift) + (byte & (volume.geometry.clusterBytes - 1));
}

bool NtfsVolumeScan::reachPass(const QList<MftReach::Span>& spans, ScanTotals* totals)
{
    const NtfsGeometry& g = volume.geometry;
    const quint64 batchClusters = qMax<quint64>(qMax<quint64>(kBatchBytes, g.recordBytes) >> g.clusterShift, 1);
    QByteArray buffer(qsizetype(batchClusters << g.clusterShift), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(buffer.data());
    for (const MftReach::Span& span : spans) {
        for (quint64 done = 0; done < span.count; done += batchClusters) {
            const quint64 count = qMin(batchClusters, span.count - done);
            const quint64 records = (count << g.clusterShift) / g.recordBytes;
            const bool readable = readVolumeClusters(buffer.data(), span.lcn + done, count) > 0;
            for (quint64 i = 0; i < records; ++i) {
                if (readable)
                    scanRecord(bytes + i * g.recordBytes, -1, ((span.lcn + done) << g.clusterShift) + i * g.recordBytes);
                if (step(++totals->position))
                    return true;
            }
        }
    }
    return false;
}

bool NtfsVolumeScan::recordInUse(quint64 number) const
{
    const quint64 byte = number / 8;
    return byte < quint64(volume.mftBitmap.size()) && (quint8(volume.mftBitmap.at(qsizetype(byte))) >> (number % 8)) & 1;
}

bool NtfsVolumeScan::isLiveRecord(quint32 number, quint16 sequence) const
{
    return number < quint64(liveSequence.size()) && recordInUse(number) && liveSequence.at(int(number)) == sequence;
}

void NtfsVolumeScan::scanRecord(uint8_t* record, qint64 slot, quint64 foundAt)
{
    MftRecordInfo info;
    info.foundAt = foundAt;
    if (!decoder().header(record, &info))
        return;
    const bool inLiveMft = slot >= 0 && quint64(slot) < quint64(liveSequence.size());
    // In the live MFT a record is its slot, whatever it says; behind it, what it says.
    const quint32 number = inLiveMft ? quint32(slot) : info.recordNumber;
    if (inLiveMft && recordInUse(number))
        liveSequence[int(number)] = info.sequence;
    const bool live = isLiveRecord(number, info.sequence);
    // The MFT bitmap decides, not the record's in-use flag. Behind the live
    // MFT a record the live MFT holds in use under the same sequence number
    // is a copy of it; a deleted record met twice is one file.
    if (slot < 0 && live)
        return;
    const quint64 key = (quint64(number) << 16) | info.sequence;
    if (!live && reachSeen.contains(key))
        return;
    if (!live)
        reachSeen.insert(key);
    // Extension records are read through their base record's attribute list.
    if (info.baseReference != 0)
        return;
    if (info.flags & MftRecord::kDirectoryFlag)
        recordDirectory(record, info, number, live);
    else if (!live && number >= kFirstUserRecord)
        collectFile(record, info, number);
}

void NtfsVolumeScan::recordDirectory(const uint8_t* record, MftRecordInfo& info, quint32 number, bool live)
{
    QString name;
    if (!decoder().fileName(record, &info, &name) || name.isEmpty())
        return;
    for (auto it = directories.constFind(number); it != directories.cend() && it.key() == number; ++it)
        if (it.value().sequence == info.sequence)
            return; // the first record of a number and sequence stays
    directories.insert(number, DirectoryEntry{info.parentRecord, info.parentSequence, info.sequence, live, name});
    if (live)
        noteFolderIndex(record, info, number);
}

void NtfsVolumeScan::noteFolderIndex(const uint8_t* record, const MftRecordInfo& info, quint32 number)
{
    if (folderIndexes.size() >= kMaxIndexedFolders)
        return;
    FolderIndex f{number, info.sequence, {}, {}, {}, 0};
    const auto bytes = [record](int offset, quint32 length) { return QByteArray(reinterpret_cast<const char*>(record + offset), int(length)); };
    for (const MftAttribute& a : MftAttribute::all(record, volume.geometry.recordBytes, info)) {
        if (a.name != kFileNameIndex)
            continue;
        if (a.type == kIndexRootType && a.resident)
            f.root = bytes(a.valueOffset, a.valueLength);
        else if (a.type == kIndexAllocationType && !a.resident && a.startVcn == 0)
            f.runList = bytes(a.runListOffset, a.runListBytes), f.bytes = a.realSize;
        else if (a.type == MftRecord::kBitmapType && a.resident)
            f.bitmap = bytes(a.valueOffset, a.valueLength);
    }
    if (!f.root.isEmpty() && !f.runList.isEmpty())
        folderIndexes.append(f);
}

bool NtfsVolumeScan::indexSlackPass(ScanTotals* totals)
{
    for (const FolderIndex& f : folderIndexes) {
        if (step(totals->position))
            return true;
        fileSlackNames(f, totals);
    }
    return false;
}

void NtfsVolumeScan::fileSlackNames(const FolderIndex& f, ScanTotals* totals)
{
    QSet<QString> live;
    for (const IndexSlack::Name& s : slackOf(f, &live)) {
        // A name the index lists now is a live file's, whatever stale copies say.
        if (live.contains(s.name.toLower()) || !slackRecordGone(s, f.record))
            continue;
        live.insert(s.name.toLower());
        auto* file = new NtfsFile;
        file->nameOnly = true;
        file->size = s.size;
        file->mftRecord = s.record;
        FileNameAttribute name;
        name.parentRecord = f.record;
        name.parentSequence = f.sequence;
        name.created = s.created;
        name.modified = s.modified;
        name.name = s.name;
        Pending p = pendingOf(true, name);
        p.add(file);
        filePending(p, totals);
    }
}

QList<IndexSlack::Name> NtfsVolumeScan::slackOf(const FolderIndex& f, QSet<QString>* live)
{
    const NtfsGeometry& g = volume.geometry;
    const auto* root = reinterpret_cast<const uint8_t*>(f.root.constData());
    const quint32 blockBytes = IndexSlack::blockBytes(root, size_t(f.root.size()));
    QList<DataRun> runs;
    RunList::decode(reinterpret_cast<const uint8_t*>(f.runList.constData()), size_t(f.runList.size()), volume.volumeClusters, &runs);
    const quint64 bytes = qMin(qMin(f.bytes, checked::mulSat(RunList::clusterTotal(runs), g.clusterBytes)), kMaxIndexBlocks * blockBytes);
    const quint64 clusters = ceilDiv(bytes, g.clusterBytes);
    QByteArray stream(qsizetype(clusters << g.clusterShift), '\0');
    const bool readable = blockBytes != 0 && clusters > 0 && readClusters(stream.data(), quint32(clusters), 0, runs) > 0;
    QList<IndexSlack::Name> found;
    if (!readable)
        return found;
    IndexSlack::liveNames(root, size_t(f.root.size()), true, live);
    for (quint64 n = 0; (n + 1) * blockBytes <= bytes; ++n) {
        auto* block = reinterpret_cast<uint8_t*>(stream.data()) + n * blockBytes;
        const bool inUse = n / 8 >= quint64(f.bitmap.size()) || (quint8(f.bitmap.at(qsizetype(n / 8))) >> (n % 8)) & 1;
        if (!IndexSlack::fixup(block, blockBytes))
            continue;
        if (inUse)
            IndexSlack::liveNames(block, blockBytes, false, live);
        found += IndexSlack::slackNames(block, blockBytes, inUse, f.record, f.sequence, kMaxSlackNames - int(found.size()));
    }
    return found;
}

bool NtfsVolumeScan::slackRecordGone(const IndexSlack::Name& entry, quint32 folder)
{
    if (!entry.referenceKnown)
        return true;
    // A reference behind the MFT's end is damage, not a file.
    if (entry.record < kFirstUserRecord || entry.record >= recordCount() || isLiveRecord(entry.record, entry.sequence))
        return false;
    QByteArray record(int(volume.geometry.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(record.data());
    MftRecordInfo info;
    QString name;
    if (readRecord(bytes, entry.record) < qint64(volume.geometry.recordBytes) || !decoder().header(bytes, &info)
        || recordInUse(entry.record))
        return true;
    // A deleted record that still holds this file was listed by the record passes.
    return !(ParentChain::sequenceMatches(info.sequence, false, entry.sequence) && decoder().fileName(bytes, &info, &name)
             && name.compare(entry.name, Qt::CaseInsensitive) == 0 && info.parentRecord == folder);
}

void NtfsVolumeScan::collectFile(const uint8_t* record, MftRecordInfo& info, quint32 number)
{
    FileStreams streams(volume.geometry, volume.volumeClusters);
    streams.addRecord(record, info, info.foundAt);
    addExtensionRecords(record, info, number, &streams);
    Pending p = pendingOf(streams.hasName(), streams.fileName());
    for (NtfsFile* file : streams.take()) {
        // Empty streams are no results.
        if (file->size == 0)
            delete file;
        else
            p.add(file);
    }
    if (p.first)
        pending.push_back(std::move(p));
}

QByteArray NtfsVolumeScan::attributeListValue(const uint8_t* record, const MftRecordInfo& info)
{
    for (const MftAttribute& a : MftAttribute::all(record, volume.geometry.recordBytes, info)) {
        if (a.type != MftAttribute::kAttributeListType)
            continue;
        if (a.resident)
            return QByteArray(reinterpret_cast<const char*>(record + a.valueOffset), int(a.valueLength));
        QList<DataRun> runs;
        RunList::decode(record + a.runListOffset, a.runListBytes, volume.volumeClusters, &runs);
        // Read to the allocated end: deleting a file may shorten its list
        // first, and entries behind the real size still name extension
        // records, each of which must name this record back to count.
        const quint64 bytes = qMin<quint64>(qMin(a.allocatedSize, checked::mulSat(RunList::clusterTotal(runs), volume.geometry.clusterBytes)),
                                            AttributeList::kMaxBytes);
        const quint64 clusters = ceilDiv(bytes, volume.geometry.clusterBytes);
        QByteArray value(qsizetype(clusters << volume.geometry.clusterShift), '\0');
        const bool readable = clusters > 0 && readClusters(value.data(), quint32(clusters), 0, runs) > 0;
        return readable ? value.left(qsizetype(bytes)) : QByteArray();
    }
    return {};
}

void NtfsVolumeScan::addExtensionRecords(const uint8_t* record, const MftRecordInfo& info, quint32 number, FileStreams* streams)
{
    const QByteArray list = attributeListValue(record, info);
    if (list.isEmpty())
        return;
    QSet<quint32> read{number};
    QByteArray extension(int(volume.geometry.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(extension.data());
    for (const AttributeList::Entry& e : AttributeList::decode(reinterpret_cast<const uint8_t*>(list.constData()), size_t(list.size()))) {
        if ((e.type != MftRecord::kFileNameType && e.type != MftRecord::kDataType) || read.contains(e.record)
            || read.size() > kMaxExtensionRecords)
            continue;
        read.insert(e.record);
        MftRecordInfo ext;
        if (readRecord(bytes, e.record) < qint64(volume.geometry.recordBytes) || !decoder().header(bytes, &ext))
            continue;
        // An extension whose base reference no longer names this record was reused.
        if (quint32(ext.baseReference) != number
            || !ParentChain::sequenceMatches(info.sequence, false, quint16(ext.baseReference >> kSequenceShift)))
            continue;
        ext.recordNumber = e.record;
        streams->addRecord(bytes, ext, volumeOffsetOf(quint64(e.record) * volume.geometry.recordBytes));
        if (e.type == MftRecord::kFileNameType)
            streams->addClearedName(bytes, ext);
    }
}

NtfsVolumeScan::Pending NtfsVolumeScan::pendingOf(bool hasName, const FileNameAttribute& name)
{
    Pending p;
    p.hasName = hasName;
    p.name = pendingNames.add(name.name);
    p.nameLength = quint16(qMin(name.name.size(), NamePool::kMaxNameChars));
    p.parentRecord = name.parentRecord;
    p.parentSequence = name.parentSequence;
    p.modified = name.modified;
    return p;
}

void NtfsVolumeScan::fileAllPending(ScanTotals* totals)
{
    for (Pending& p : pending)
        filePending(p, totals);
    pending.clear();
    pendingNames.clear();
    // The next pass may meet directories that lengthen a chain.
    rootFolders.clear();
}

void NtfsVolumeScan::filePending(Pending& p, ScanTotals* totals)
{
    const QList<NtfsFile*> streams = p.take();
    FileNameAttribute fileName;
    fileName.parentRecord = p.parentRecord;
    fileName.parentSequence = p.parentSequence;
    fileName.modified = p.modified;
    fileName.name = QStringView(p.name, p.nameLength).toString();
    const QString& name = fileName.name;
    // Content without a long name counts as a result but has no place in the tree.
    if (!p.hasName) {
        for (const NtfsFile* file : streams)
            ++totals->results, totals->totalSize += file->size;
    }
    if (!p.hasName || name.isEmpty() || !filterAccepts(name)) {
        qDeleteAll(streams);
        return;
    }
    FolderNode* folder = folderOf(fileName, name);
    if (!folder) {
        qDeleteAll(streams);
        return;
    }
    // A name from index slack yields to a record of the same file found in its folder.
    if (!streams.isEmpty() && streams.first()->nameOnly && std::any_of(folder->files.cbegin(), folder->files.cend(), [&](const FoundFile* f) {
            return f->nameView().compare(name, Qt::CaseInsensitive) == 0;
        })) {
        qDeleteAll(streams);
        return;
    }
    for (NtfsFile* file : streams) {
        // A named stream is listed beside its file as "file:stream".
        const QString listed = file->nameView().isEmpty() ? name : name + QLatin1Char(':') + file->name();
        file->modifiedMsecs = FileNameAttribute::toMsecs(p.modified);
        ++totals->results;
        totals->totalSize += file->size; // as the tree counts it, a name-only file by its former size
        folder->addFile(file, listed);
        markClusters(file);
    }
}

FolderNode* NtfsVolumeScan::folderOf(const FileNameAttribute& fileName, const QString& name)
{
    // Siblings share their parent's folder: a folder reached from the root is
    // looked up once per parent reference, not walked again for every file.
    const quint64 key = (quint64(fileName.parentRecord) << 16) | fileName.parentSequence;
    if (mountPoint.isEmpty()) {
        if (FolderNode* known = rootFolders.value(key))
            return known;
    }
    QStringList folders = ParentChain::walk(directories, fileName.parentRecord, fileName.parentSequence).folders;
    if (folders.isEmpty() || folders.first() != QLatin1String(".")) {
        FolderNode* folder = currentOrphanFolder();
        for (const QString& part : folders)
            folder = folder->obtainChild(part, partIndex, true);
        return folder;
    }
    folders.removeFirst();
    if (isLive(folders, name))
        return nullptr;
    FolderNode* folder = rootFolder;
    for (const QString& part : folders)
        folder = folder->obtainChild(part, partIndex, true);
    rootFolders.insert(key, folder);
    return folder;
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
    if (file->resident())
        return;
    // Only the first cluster of a run: the carving pass tests where runs begin.
    for (const DataRun& run : file->runs()) {
        if (run.length != 0 && !run.sparse && run.lcn < clusterBitmap.clusters())
            clusterBitmap.claim(run.lcn, 1);
    }
}

// ---------------------------------------------------------------- extraction

bool NtfsVolumeScan::hasContent(const FoundFile& found) const
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    return file && (file->resident() || file->hasRuns());
}

bool NtfsVolumeScan::extentsOf(const FoundFile& found, Extents* extents) const
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    if (!file || file->resident() || !file->hasRuns())
        return false;
    ExtentList list(volumeBytes(), file->size);
    quint64 at = 0;
    for (const DataRun& run : file->runs()) {
        const quint64 bytes = checked::mulSat(run.length, volume.geometry.clusterBytes);
        // Bytes behind the initialized size read as zeros, whatever the clusters hold.
        const quint64 written = run.sparse || at >= file->initializedSize ? 0 : qMin(bytes, file->initializedSize - at);
        bool more = list.add(checked::mulSat(run.lcn, volume.geometry.clusterBytes), written);
        if (more && written < bytes)
            more = list.addHole(bytes - written);
        at = checked::addSat(at, bytes);
        if (run.length == 0 || !more)
            break;
    }
    *extents = list.take();
    return true;
}

QList<VolumeScan::StoredRun> NtfsVolumeScan::storedRuns(const FoundFile& found) const
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    if (!file || !file->compressionUnitClusters() || file->resident())
        return VolumeScan::storedRuns(found);
    QList<StoredRun> runs;
    for (const CompressedStream::Piece& p : CompressedStream::pieces(*file, volume.geometry.clusterBytes, volumeBytes()))
        runs.append({p.fileOffset, p.volumeOffset, p.length, p.expandsTo});
    return runs;
}

bool NtfsVolumeScan::readContent(const FoundFile& found, const ContentSink& sink)
{
    const auto* file = dynamic_cast<const NtfsFile*>(&found);
    if (file && file->compressionUnitClusters() && !file->resident()) {
        const auto readAt = [this](void* buffer, quint64 bytes, quint64 offset) { return readStoredBytes(buffer, bytes, offset); };
        const auto damaged = [this](quint64 offset, quint64 bytes) { noteDamaged(offset, bytes); };
        CompressedStream::stream(*file, volume.geometry.clusterBytes, volumeBytes(), readAt, sink, damaged);
        return true;
    }
    if (!file || !file->resident())
        return VolumeScan::readContent(found, sink);
    const QByteArray content = residentContent(file);
    sink(0, content.constData(), quint64(content.size()));
    return true;
}

QByteArray NtfsVolumeScan::residentContent(const NtfsFile* file)
{
    QByteArray record(int(volume.geometry.recordBytes), '\0');
    const qint64 got = file->recordOffset() != 0 ? readVolume(record.data(), volume.geometry.recordBytes, file->recordOffset())
                                               : readRecord(record.data(), file->mftRecord);
    MftRecordInfo info;
    if (got < qint64(volume.geometry.recordBytes) || !decoder().header(reinterpret_cast<uint8_t*>(record.data()), &info)) {
        countReadErrors(1);
        return {};
    }
    const quint64 start = qMin<quint64>(file->residentOffset(), volume.geometry.recordBytes);
    return record.mid(int(start), int(qMin<quint64>(file->size, volume.geometry.recordBytes - start)));
}
