#include "ntfs/CompressedStream.h"
#include "ntfs/Lznt1.h"
#include "ntfs/RunList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"

#include <QByteArray>
#include <cstring>

namespace {
// Reads the stored clusters of one unit, in order, into buffer; the number of
// reads that failed. What lies behind the volume or can't be read is zeros.
quint64 readStored(const QList<RunList::Extent>& extents, quint32 clusterBytes, quint64 volumeBytes,
                   const ExtentReader::ReadAt& read, char* buffer)
{
    quint64 failed = 0;
    for (const RunList::Extent& e : extents) {
        if (e.sparse)
            continue;
        const quint64 bytes = e.count * clusterBytes;
        const quint64 at = checked::mulSat(e.lcn, clusterBytes);
        const quint64 inside = at < volumeBytes ? qMin(bytes, volumeBytes - at) : 0;
        std::memset(buffer, 0, size_t(bytes));
        if (inside > 0 && read(buffer, inside, at) < qint64(inside))
            ++failed;
        buffer += bytes;
    }
    return failed;
}
} // namespace

quint64 CompressedStream::stream(const NtfsFile& file, quint32 clusterBytes, quint64 volumeBytes,
                                 const ExtentReader::ReadAt& read, const ExtentReader::Sink& sink)
{
    const quint64 unitClusters = file.compressionUnitClusters;
    const quint64 unitBytes = unitClusters * clusterBytes;
    const quint64 described = RunList::clusterTotal(file.runs);
    QByteArray stored(qsizetype(unitBytes), '\0');
    QByteArray unit(qsizetype(unitBytes), '\0');
    quint64 failed = 0;
    // The size is bounded by what the runs describe, so the loop is too.
    for (quint64 offset = 0, vcn = 0; offset < file.size; offset += unitBytes, vcn += unitClusters) {
        const quint64 bytes = qMin(unitBytes, file.size - offset);
        const QList<RunList::Extent> extents = vcn < described ? RunList::extents(file.runs, vcn, qMin(unitClusters, described - vcn))
                                                               : QList<RunList::Extent>();
        quint64 storedClusters = 0;
        for (const RunList::Extent& e : extents)
            storedClusters += e.sparse ? 0 : e.count;
        if (storedClusters == 0 || offset >= file.initializedSize) {
            sink(offset, nullptr, bytes);
            continue;
        }
        failed += readStored(extents, clusterBytes, volumeBytes, read, stored.data());
        const char* data = stored.constData();
        if (storedClusters < unitClusters) {
            unit.fill('\0');
            Lznt1::decompressUnit(reinterpret_cast<const uint8_t*>(stored.constData()), storedClusters * clusterBytes,
                                  reinterpret_cast<uint8_t*>(unit.data()), size_t(unitBytes));
            data = unit.constData();
        }
        const quint64 valid = qMin(bytes, file.initializedSize - offset);
        sink(offset, data, valid);
        if (valid < bytes)
            sink(offset + valid, nullptr, bytes - valid);
    }
    return failed;
}
