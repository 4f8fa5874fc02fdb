#pragma once
#include <QString>
#include <QtGlobal>

struct NtfsFile;

// What the scan knows of the MFT record at hand.
struct MftRecordInfo {
    quint32 signature = 0;
    quint16 attrOffset = 0;
    quint16 flags = 0;
    quint32 usedSize = 0;
    quint32 allocSize = 0;
    quint32 recordNumber = 0;
    quint16 sequence = 0;      // raised each time the record is freed
    quint64 baseReference = 0; // non-zero in an extension record: its base record
    quint32 parentRecord = 0; // from the chosen $FILE_NAME
    quint16 parentSequence = 0; // the parent record's sequence number when the name was made
    quint64 modified = 0;     // FILETIME
    quint64 created = 0;      // FILETIME
    QString path;
    NtfsFile* file = nullptr;
    bool filed = false; // the file went into the result tree, which owns it now
    quint64 foundAt = 0; // byte offset on the volume where the scan read this record; 0 unknown
};
