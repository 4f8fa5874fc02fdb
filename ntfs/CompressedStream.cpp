#include "ntfs/CompressedStream.h"
#include "ntfs/Lznt1.h"
#include "ntfs/RunList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"

#include <QByteArray>
#include <cstring>

namespace {
struct Unit {
    quint64 offset = 0; // in the file
    quint64 bytes = 0;  // of the file it holds
    QList<RunList::Extent> extents;
    quint64 storedClusters = 0;
};

// The units of the file in order, each with the clusters that hold it; bounded
// by the file's size, which the runs bound.
template <typename Visit>
void forEachUnit(const NtfsFile& file, quint32 clusterBytes, Visit visit)
{
    const quint64 unitClusters = file.compressionUnitClusters();
    const quint64 unitBytes = unitClusters * clusterBytes;
    const QList<DataRun> runs = file.runs();
    const quint64 described = RunList::clusterTotal(runs);
    for (quint64 offset = 0, vcn = 0; offset < file.size; offset += unitBytes, vcn += unitClusters) {
        Unit u{offset, qMin(unitBytes, file.size - offset), {}, 0};
        if (vcn < described)
            u.extents = RunList::extents(runs, vcn, qMin(unitClusters, described - vcn));
        for (const RunList::Extent& e : u.extents)
            u.storedClusters += e.sparse ? 0 : e.count;
        visit(u);
    }
}

// Reads the stored clusters of one unit, in order, into buffer; the number of
// reads that failed, each reported with the unit bytes it held. What lies
// behind the volume or can't be read is zeros.
template <typename Bad>
quint64 readStored(const QList<RunList::Extent>& extents, quint32 clusterBytes, quint64 volumeBytes,
                   const ExtentReader::ReadAt& read, char* buffer, Bad bad)
{
    quint64 failed = 0;
    quint64 inUnit = 0;
    for (const RunList::Extent& e : extents) {
        const quint64 bytes = e.count * clusterBytes;
        if (!e.sparse) {
            const quint64 at = checked::mulSat(e.lcn, clusterBytes);
            const quint64 inside = at < volumeBytes ? qMin(bytes, volumeBytes - at) : 0;
            std::memset(buffer, 0, size_t(bytes));
            if (inside > 0 && read(buffer, inside, at) < qint64(inside))
                ++failed, bad(inUnit, bytes);
            buffer += bytes;
        }
        inUnit += bytes;
    }
    return failed;
}
} // namespace

quint64 CompressedStream::stream(const NtfsFile& file, quint32 clusterBytes, quint64 volumeBytes,
                                 const ExtentReader::ReadAt& read, const ExtentReader::Sink& sink, const Damaged& damaged)
{
    const quint64 unitClusters = file.compressionUnitClusters();
    const quint64 unitBytes = unitClusters * clusterBytes;
    QByteArray stored(qsizetype(unitBytes), '\0');
    QByteArray unit(qsizetype(unitBytes), '\0');
    quint64 failed = 0;
    forEachUnit(file, clusterBytes, [&](const Unit& u) {
        if (u.storedClusters == 0 || u.offset >= file.initializedSize) {
            sink(u.offset, nullptr, u.bytes);
            return;
        }
        const bool compressed = u.storedClusters < unitClusters;
        // Behind the initialized size the file reads as zeros: nothing there is spoilt.
        const quint64 valid = qMin(u.bytes, file.initializedSize - u.offset);
        failed += readStored(u.extents, clusterBytes, volumeBytes, read, stored.data(), [&](quint64 at, quint64 bytes) {
            // One bad byte of compressed data spoils what the whole unit expands to.
            if (damaged && at < valid)
                damaged(u.offset + (compressed ? 0 : at), compressed ? valid : qMin(bytes, valid - at));
        });
        const char* data = stored.constData();
        if (compressed) {
            unit.fill('\0');
            Lznt1::decompressUnit(reinterpret_cast<const uint8_t*>(stored.constData()), u.storedClusters * clusterBytes,
                                  reinterpret_cast<uint8_t*>(unit.data()), size_t(unitBytes));
            data = unit.constData();
        }
        sink(u.offset, data, valid);
        if (valid < u.bytes)
            sink(u.offset + valid, nullptr, u.bytes - valid);
    });
    return failed;
}

QList<CompressedStream::Piece> CompressedStream::pieces(const NtfsFile& file, quint32 clusterBytes, quint64 volumeBytes)
{
    QList<Piece> out;
    forEachUnit(file, clusterBytes, [&](const Unit& u) {
        // Units behind the initialized size read as zeros, whatever is stored.
        if (u.offset >= file.initializedSize)
            return;
        const bool compressed = u.storedClusters < file.compressionUnitClusters();
        const quint64 valid = qMin(u.bytes, file.initializedSize - u.offset);
        quint64 inUnit = 0;
        for (const RunList::Extent& e : u.extents) {
            const quint64 at = checked::mulSat(e.lcn, clusterBytes);
            // A plain unit's clusters are the file's bytes, up to its size.
            quint64 length = compressed ? e.count * clusterBytes : qMin(e.count * clusterBytes, valid - qMin(inUnit, valid));
            length = at < volumeBytes ? qMin(length, volumeBytes - at) : 0;
            if (!e.sparse && length > 0) {
                const bool first = compressed && (out.isEmpty() || out.last().fileOffset != u.offset);
                out.append({u.offset + (compressed ? 0 : inUnit), at, length, first ? u.bytes : 0});
            }
            inUnit += e.count * clusterBytes;
        }
    });
    return out;
}
