#include "ntfs/FileStreams.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordInfo.h"
#include "ntfs/RunList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

#include <algorithm>

namespace {
// The namespace byte of a $FILE_NAME value, behind the name length.
constexpr quint32 kNameCharsInValue = 0x40;
constexpr quint32 kNamespaceInValue = 0x41;
constexpr quint32 kNameInValue = 0x42;
// A resident attribute's value follows its 0x18-byte header.
constexpr quint16 kFileNameValueOffset = 0x18;
// POSIX, Win32, DOS, Win32 and DOS.
constexpr quint8 kMaxNamespace = 3;
// A file has a few streams; thousands are damage, and each would be a result.
constexpr int kMaxPieces = 4096;
} // namespace

void FileStreams::addRecord(const uint8_t* record, const MftRecordInfo& info, quint64 recordOffset)
{
    int pieces = 0;
    for (const MftAttribute& a : MftAttribute::all(record, m_geometry.recordBytes, info)) {
        if (a.type == MftRecord::kFileNameType && a.resident && !m_hasName && a.valueLength > kNamespaceInValue
            && record[a.valueOffset + kNamespaceInValue] != MftRecord::kDosNamespace) {
            m_hasName = FileNameAttribute::decode(record, m_geometry.recordBytes, a.offset, a.length, &m_name);
        } else if (a.type == MftRecord::kDataType && ++pieces <= kMaxPieces) {
            Piece p{a, {}, recordOffset, info.recordNumber};
            if (!a.resident)
                RunList::decode(record + a.runListOffset, a.runListBytes, m_clusterCount, &p.runs);
            m_streams[a.name].append(p);
        }
    }
}

void FileStreams::addClearedName(const uint8_t* record, const MftRecordInfo& info)
{
    if (m_hasName || info.attrOffset >= m_geometry.recordBytes)
        return;
    LeReader r(record + info.attrOffset, m_geometry.recordBytes - info.attrOffset);
    const quint32 valueLength = r.u32(MftRecord::kResidentLengthOffset);
    const quint16 valueOffset = r.u16(MftRecord::kResidentValueOffset);
    const quint8 chars = r.u8(size_t(valueOffset) + kNameCharsInValue);
    const quint8 space = r.u8(size_t(valueOffset) + kNamespaceInValue);
    // Only what is exactly a long name's value counts: offset, length and namespace agree.
    if (!r.ok() || r.u8(MftRecord::kNonResidentFlagOffset) != 0 || valueOffset != kFileNameValueOffset
        || valueLength != kNameInValue + 2 * quint32(chars) || chars == 0 || space > kMaxNamespace
        || space == MftRecord::kDosNamespace || !r.has(valueOffset, valueLength))
        return;
    m_hasName = FileNameAttribute::decode(record, m_geometry.recordBytes, info.attrOffset, valueOffset + valueLength, &m_name);
}

QList<NtfsFile*> FileStreams::take()
{
    QList<NtfsFile*> out;
    // QMap orders by name: the unnamed stream comes first.
    for (auto it = m_streams.begin(); it != m_streams.end(); ++it) {
        NtfsFile* file = assemble(it.value());
        if (!file)
            continue;
        file->setName(it.key());
        out.append(file);
    }
    return out;
}

NtfsFile* FileStreams::assemble(QList<Piece>& pieces) const
{
    std::stable_sort(pieces.begin(), pieces.end(),
                     [](const Piece& a, const Piece& b) { return a.attribute.startVcn < b.attribute.startVcn; });
    const Piece& first = pieces.first();
    auto* file = new NtfsFile;
    file->mftRecord = first.recordNumber;
    if (first.attribute.resident) {
        file->size = first.attribute.valueLength;
        file->setResident(first.recordOffset, quint16(first.attribute.valueOffset));
        return file;
    }
    if (first.attribute.startVcn != 0) { // the piece with the sizes is gone
        delete file;
        return nullptr;
    }
    QList<DataRun> runs;
    for (const Piece& p : pieces)
        if (!p.attribute.resident)
            appendRuns(&runs, p);
    file->setRuns(runs);
    const MftAttribute& a = first.attribute;
    const quint64 described = runs.isEmpty() ? m_clusterCount : qMin(RunList::clusterTotal(runs), m_clusterCount);
    // No content reaches past what the runs describe, nor past the volume: a
    // hole can state any length, and the size is what a preview allocates.
    file->size = qMin(qMin(a.realSize, a.allocatedSize), checked::mulSat(described, m_geometry.clusterBytes));
    file->initializedSize = qMin(a.initializedSize, file->size);
    file->setCompressionUnitClusters(a.compressed() ? (1u << a.compressionShift) : 0);
    return file;
}

void FileStreams::appendRuns(QList<DataRun>* runs, const Piece& piece) const
{
    const quint64 total = RunList::clusterTotal(*runs);
    const quint64 start = piece.attribute.startVcn;
    // A piece that overlaps what is there already is a stale copy.
    if (start < total || piece.runs.isEmpty())
        return;
    if (start > total) // a piece in between is missing: its clusters read as zeros
        runs->append(DataRun{start, start - total, 0, true});
    for (DataRun run : piece.runs) {
        run.vcnEnd = checked::addSat(run.vcnEnd, start);
        runs->append(run);
    }
}
