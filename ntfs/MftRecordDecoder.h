#pragma once
#include "ntfs/MftRecordInfo.h"
#include "ntfs/NtfsGeometry.h"

#include <cstdint>

struct NtfsFile;

// Decodes one MFT file record: bytes in, what the record says out. Touches no
// device; every offset and length in the record is checked against it.
class MftRecordDecoder {
public:
    explicit MftRecordDecoder(const NtfsGeometry& geometry) : m_geometry(geometry) {}

    // The frame and header fields; puts the saved sector ends back. False for a bad frame.
    bool header(uint8_t* record, MftRecordInfo* info) const;
    // The offset of the first attribute of a type, its length in *length; -1 when there is none.
    int attribute(const uint8_t* record, const MftRecordInfo& info, quint32 type, quint32* length) const;
    // The record's $DATA into info->file: resident content's place, or the runs
    // (kept within clusterCount clusters) and the size they can hold.
    bool data(const uint8_t* record, MftRecordInfo* info, quint64 clusterCount) const;
    // The parent, times and name of the record's first long $FILE_NAME.
    bool fileName(const uint8_t* record, MftRecordInfo* info, QString* name) const;

private:
    bool dataAttribute(const uint8_t* record, int attrOffset, quint32 attrLength, NtfsFile* file, quint64 clusterCount) const;

    NtfsGeometry m_geometry;
};
