#pragma once
#include <QString>
#include <QtGlobal>
#include <cstdint>

// The fields of a $FILE_NAME attribute that the scan uses.
struct FileNameAttribute {
    quint32 parentRecord = 0; // low 32 bits of the parent's file reference
    quint16 parentSequence = 0; // its high 16 bits: the parent record's sequence number
    quint64 created = 0;      // FILETIME
    quint64 modified = 0;     // FILETIME
    QString name;             // empty when the stored length is 0

    // Decodes the attribute at attrOffset of length attrLength in the record.
    // False when its name does not fit inside the attribute.
    static bool decode(const uint8_t* record, quint32 recordBytes, int attrOffset, quint32 attrLength,
                       FileNameAttribute* out);

    // A FILETIME as whole seconds since 1970, in milliseconds; 0 for times before 1970.
    static quint64 toMsecs(quint64 filetime);
};
