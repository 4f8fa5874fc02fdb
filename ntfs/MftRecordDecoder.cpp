#include "ntfs/MftRecordDecoder.h"
#include "ntfs/FileNameAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/RunList.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

bool MftRecordDecoder::header(uint8_t* record, MftRecordInfo* info) const
{
    return MftRecord::parseHeader(record, m_geometry.recordBytes, info);
}

int MftRecordDecoder::attribute(const uint8_t* record, const MftRecordInfo& info, quint32 type, quint32* length) const
{
    *length = MftRecord::attributeBytes(info, m_geometry.recordBytes);
    return MftRecord::findAttribute(record, m_geometry.recordBytes, info.attrOffset, type, length);
}

bool MftRecordDecoder::data(const uint8_t* record, MftRecordInfo* info, quint64 clusterCount) const
{
    quint32 length = 0;
    const int at = attribute(record, *info, MftRecord::kDataType, &length);
    if (at < 0 || !dataAttribute(record, at, length, info->file, clusterCount))
        return false;
    if (info->file->resident())
        info->file->setResident(info->file->recordOffset(), quint16(info->file->residentOffset() + at));
    return true;
}

bool MftRecordDecoder::dataAttribute(const uint8_t* record, int attrOffset, quint32 attrLength, NtfsFile* file,
                                     quint64 clusterCount) const
{
    LeReader r(record + attrOffset, attrLength);
    if (r.u8(MftRecord::kNonResidentFlagOffset) == 0) {
        const quint32 length = r.u32(MftRecord::kResidentLengthOffset);
        const quint16 valueOffset = r.u16(MftRecord::kResidentValueOffset);
        // A value that leaves its attribute is damage, not content.
        const bool fits = r.has(valueOffset, length);
        file->size = fits ? length : 0;
        file->setResident(file->recordOffset(), valueOffset);
        return r.ok() && fits;
    }
    file->setRuns({});
    const quint64 allocated = r.u64(MftRecord::kAllocatedSizeOffset);
    const quint64 real = r.u64(MftRecord::kRealSizeOffset);
    file->size = real < allocated ? real : allocated;
    const quint16 listOffset = r.u16(MftRecord::kRunListOffset);
    if (!r.ok()) {
        file->size = 0;
        return false;
    }
    QList<DataRun> runs;
    if (listOffset < attrLength)
        RunList::decode(record + attrOffset + listOffset, attrLength - listOffset, clusterCount, &runs);
    file->setRuns(runs);
    // No content reaches past what the runs describe, nor past the volume: a
    // hole can state any length, and the size is what a preview allocates.
    const quint64 described = runs.isEmpty() ? clusterCount : qMin(RunList::clusterTotal(runs), clusterCount);
    file->size = qMin(file->size, checked::mulSat(described, m_geometry.clusterBytes));
    return true;
}

bool MftRecordDecoder::fileName(const uint8_t* record, MftRecordInfo* info, QString* name) const
{
    quint32 length = 0;
    const int at = attribute(record, *info, MftRecord::kFileNameType, &length);
    FileNameAttribute attr;
    if (at < 0 || !FileNameAttribute::decode(record, m_geometry.recordBytes, at, length, &attr))
        return false;
    info->parentRecord = attr.parentRecord;
    info->parentSequence = attr.parentSequence;
    info->created = attr.created;
    info->modified = attr.modified;
    *name = attr.name;
    return true;
}
