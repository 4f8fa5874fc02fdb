#include "ntfs/NtfsVolume.h"
#include "ntfs/AttributeList.h"
#include "ntfs/FileStreams.h"
#include "ntfs/MftAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordDecoder.h"
#include "ntfs/RunList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
// The boot sector is read as one 512-byte block, whatever the sector size.
constexpr quint32 kBootSectorBytes = 512;
// The MFT bitmap's allocated size is taken in its low 32 bits: no volume has more records.
constexpr quint64 kBitmapSizeMask = 0xFFFFFFFFu;

constexpr quint64 ceilDiv(quint64 a, quint64 b) { return a / b + (a % b ? 1 : 0); }

const char kOpenWhere[] = "NtfsVolumeScan::parseBootSector: ";
const char kRecordWhere[] = "NtfsVolumeScan::parseMftRecord: ";
// $MFT itself spills into a few extension records on a badly fragmented volume; more is damage.
constexpr int kMaxMftExtensions = 64;
} // namespace

quint64 NtfsVolume::clustersOnDevice(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset)
{
    const quint64 deviceBytes = deviceLength > partOffset ? deviceLength - partOffset : 0;
    const quint64 statedBytes = checked::mulSat(geometry.totalSectors, geometry.sectorBytes);
    return (statedBytes ? qMin(statedBytes, deviceBytes) : deviceBytes) >> geometry.clusterShift;
}

quint64 NtfsVolume::statedClusters(const NtfsGeometry& geometry, quint64 deviceLength, quint64 partOffset)
{
    const quint64 statedBytes = checked::mulSat(geometry.totalSectors, geometry.sectorBytes);
    return statedBytes ? statedBytes >> geometry.clusterShift : clustersOnDevice(geometry, deviceLength, partOffset);
}

NtfsVolume NtfsVolume::open(const DeviceHandle& handle, quint64 partOffset)
{
    NtfsVolume v;
    uint8_t sector[kBootSectorBytes];
    bool signatureOk = false;
    if (handle.read(sector, kBootSectorBytes, partOffset) < qint64(kBootSectorBytes)) {
        v.problem = QLatin1String(kOpenWhere) + QLatin1String("cannot read boot sector");
        return v;
    }
    if (!NtfsGeometry::parse(sector, kBootSectorBytes, &v.geometry, &signatureOk)) {
        v.problem = QStringLiteral("NtfsVolumeScan::openVolume(): it's not a valid ntfs volume");
        return v;
    }
    const NtfsGeometry& g = v.geometry;
    v.volumeClusters = clustersOnDevice(g, handle.length(), partOffset);
    QByteArray record(int(g.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(record.data());
    const quint64 position = checked::addSat(checked::mulSat(g.mftLcn, g.clusterBytes), partOffset);
    if (g.mftLcn >= v.volumeClusters || handle.read(bytes, g.recordBytes, position) < qint64(g.recordBytes)) {
        v.problem = QLatin1String(kOpenWhere) + QLatin1String("cannot read $MFT record");
        return v;
    }
    MftRecordDecoder decoder(g);
    MftRecordInfo info;
    if (!decoder.header(bytes, &info)) {
        v.problem = QLatin1String(kRecordWhere) + QLatin1String("$MFT record has a bad header");
        return v;
    }
    v.mft = std::make_shared<NtfsFile>();
    info.file = v.mft.get();
    if (!decoder.data(bytes, &info, statedClusters(g, handle.length(), partOffset)) || v.mft->resident()
        || !v.mft->hasRuns()) {
        v.problem = QLatin1String(kRecordWhere) + QLatin1String("$MFT record has no $DATA runs");
        return v;
    }
    v.followAttributeList(handle, partOffset, bytes, info, statedClusters(g, handle.length(), partOffset));
    quint32 length = 0;
    const int bitmap = decoder.attribute(bytes, info, MftRecord::kBitmapType, &length);
    if (bitmap < 0) {
        v.problem = QLatin1String(kRecordWhere) + QLatin1String("$MFT record has no $BITMAP");
        return v;
    }
    if (!v.readMftBitmap(handle, partOffset, bytes + bitmap, length))
        v.problem = QStringLiteral("NtfsVolume::open(): cannot read main mft bitmap");
    return v;
}

bool NtfsVolume::readMftBitmap(const DeviceHandle& handle, quint64 partOffset, const uint8_t* attribute, quint32 length)
{
    LeReader r(attribute, length);
    // One bit per record the volume could hold, and a cluster of slack.
    const quint64 maxBytes = (checked::mulSat(volumeClusters, geometry.clusterBytes) / geometry.recordBytes) / 8
        + geometry.clusterBytes;
    if (r.u8(MftRecord::kNonResidentFlagOffset) == 0) {
        const quint32 valueLength = r.u32(MftRecord::kResidentLengthOffset);
        const uint8_t* value = r.bytes(r.u16(MftRecord::kResidentValueOffset), valueLength);
        mftBitmap = value ? QByteArray(reinterpret_cast<const char*>(value), int(valueLength)) : QByteArray();
        return true;
    }
    const quint64 allocated = qMin<quint64>(r.u64(MftRecord::kAllocatedSizeOffset) & kBitmapSizeMask, maxBytes);
    const quint64 arrayClusters = ceilDiv(allocated, geometry.clusterBytes);
    mftBitmap = QByteArray(qsizetype(arrayClusters << geometry.clusterShift), '\0');
    QList<DataRun> runs;
    const quint16 listOffset = r.u16(MftRecord::kRunListOffset);
    if (r.ok() && listOffset < length)
        RunList::decode(attribute + listOffset, length - listOffset, volumeClusters, &runs);
    quint64 done = 0;
    bool readable = true;
    for (const DataRun& run : runs) {
        const quint64 count = qMin(run.length, arrayClusters - done);
        if (count == 0)
            break;
        const quint64 at = checked::addSat(checked::mulSat(run.lcn, geometry.clusterBytes), partOffset);
        if (!run.sparse && handle.read(mftBitmap.data() + (done << geometry.clusterShift), count << geometry.clusterShift, at) < 0)
            readable = false;
        done += count;
    }
    return readable;
}

QByteArray NtfsVolume::attributeList(const DeviceHandle& handle, quint64 partOffset, const uint8_t* record0,
                                     const MftRecordInfo& info, quint64 clusterCount) const
{
    for (const MftAttribute& a : MftAttribute::all(record0, geometry.recordBytes, info)) {
        if (a.type != MftAttribute::kAttributeListType)
            continue;
        if (a.resident)
            return QByteArray(reinterpret_cast<const char*>(record0 + a.valueOffset), int(a.valueLength));
        // On a badly fragmented volume the list itself moves out to clusters.
        QList<DataRun> runs;
        RunList::decode(record0 + a.runListOffset, a.runListBytes, clusterCount, &runs);
        const quint64 bytes = qMin<quint64>(qMin(a.realSize, checked::mulSat(RunList::clusterTotal(runs), geometry.clusterBytes)),
                                            AttributeList::kMaxBytes);
        QByteArray value(qsizetype(bytes), '\0');
        quint64 done = 0;
        for (const DataRun& run : runs) {
            const quint64 n = qMin(checked::mulSat(run.length, geometry.clusterBytes), bytes - done);
            const quint64 at = checked::addSat(checked::mulSat(run.lcn, geometry.clusterBytes), partOffset);
            if (n > 0 && !run.sparse && handle.read(value.data() + done, n, at) < qint64(n))
                value.clear();
            done += n;
            if (value.isEmpty() || done >= bytes)
                break;
        }
        return value;
    }
    return {};
}

bool NtfsVolume::readExtension(const DeviceHandle& handle, quint64 partOffset, quint32 number, Extension* out) const
{
    // Only records in the part of $MFT mapped so far can be read.
    const quint64 byte = quint64(number) * geometry.recordBytes;
    if (byte >= checked::mulSat(RunList::clusterTotal(mft->runs()), geometry.clusterBytes))
        return false;
    const QList<RunList::Extent> where = RunList::extents(mft->runs(), byte >> geometry.clusterShift, 1);
    if (where.isEmpty() || where.first().sparse)
        return false;
    const quint64 at = (where.first().lcn << geometry.clusterShift) + (byte & (geometry.clusterBytes - 1));
    out->record = QByteArray(int(geometry.recordBytes), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(out->record.data());
    // An extension of $MFT names record 0 as its base.
    return handle.read(bytes, geometry.recordBytes, checked::addSat(at, partOffset)) == qint64(geometry.recordBytes)
        && MftRecord::parseHeader(bytes, geometry.recordBytes, &out->info) && quint32(out->info.baseReference) == 0;
}

void NtfsVolume::followAttributeList(const DeviceHandle& handle, quint64 partOffset, const uint8_t* record0,
                                     const MftRecordInfo& info, quint64 clusterCount)
{
    const QByteArray list = attributeList(handle, partOffset, record0, info, clusterCount);
    QList<quint32> wanted;
    for (const AttributeList::Entry& e : AttributeList::decode(reinterpret_cast<const uint8_t*>(list.constData()), size_t(list.size())))
        if (e.type == MftRecord::kDataType && e.record != 0 && !wanted.contains(e.record) && wanted.size() < kMaxMftExtensions)
            wanted.append(e.record);
    QList<Extension> found;
    // An extension record may lie in a fragment that only another one maps:
    // rounds go on while one adds a record, at most one round per record.
    for (bool added = true; added && !wanted.isEmpty();) {
        added = false;
        for (int i = 0; i < wanted.size();) {
            Extension ext;
            if (!readExtension(handle, partOffset, wanted.at(i), &ext)) {
                ++i;
                continue;
            }
            found.append(ext);
            wanted.removeAt(i);
            added = true;
        }
        if (added)
            assembleMft(record0, info, found, clusterCount);
    }
}

void NtfsVolume::assembleMft(const uint8_t* record0, const MftRecordInfo& info, const QList<Extension>& extensions,
                             quint64 clusterCount)
{
    FileStreams streams(geometry, clusterCount);
    streams.addRecord(record0, info, 0);
    for (const Extension& e : extensions)
        streams.addRecord(reinterpret_cast<const uint8_t*>(e.record.constData()), e.info, 0);
    for (NtfsFile* file : streams.take()) {
        if (file->nameView().isEmpty() && !file->resident() && RunList::clusterTotal(file->runs()) > RunList::clusterTotal(mft->runs()))
            mft.reset(file);
        else
            delete file;
    }
}
