#include "ntfs/NtfsVolume.h"
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
    if (!decoder.data(bytes, &info, statedClusters(g, handle.length(), partOffset)) || v.mft->resident
        || v.mft->runs.isEmpty()) {
        v.problem = QLatin1String(kRecordWhere) + QLatin1String("$MFT record has no $DATA runs");
        return v;
    }
    quint32 length = 0;
    const int bitmap = decoder.attribute(bytes, info, MftRecord::kBitmapType, &length);
    if (bitmap < 0) {
        v.problem = QLatin1String(kRecordWhere) + QLatin1String("$MFT record has no $BITMAP");
        return v;
    }
    for (DataRun* run : v.mft->runs) {
        run->vcnEnd = checked::mulSat(run->vcnEnd, kMftReachFactor);
        run->length = checked::mulSat(run->length, kMftReachFactor);
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
    QList<DataRun*> runs;
    const quint16 listOffset = r.u16(MftRecord::kRunListOffset);
    if (r.ok() && listOffset < length)
        RunList::decode(attribute + listOffset, length - listOffset, volumeClusters, &runs);
    quint64 done = 0;
    bool readable = true;
    for (const DataRun* run : runs) {
        const quint64 count = qMin(run->length, arrayClusters - done);
        if (count == 0)
            break;
        const quint64 at = checked::addSat(checked::mulSat(run->lcn, geometry.clusterBytes), partOffset);
        if (!run->sparse && handle.read(mftBitmap.data() + (done << geometry.clusterShift), count << geometry.clusterShift, at) < 0)
            readable = false;
        done += count;
    }
    qDeleteAll(runs);
    return readable;
}
