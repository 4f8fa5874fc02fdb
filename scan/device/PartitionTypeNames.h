#pragma once
#include <QByteArray>
#include <QString>

// What a partition table says a partition is, in words: the name of an MBR
// type byte or of a GPT partition type GUID. Empty for types it doesn't know.
class PartitionTypeNames {
public:
    static QString mbr(quint8 type);
    // guid: the 16 bytes as a GPT entry stores them.
    static QString gpt(const QByteArray& guid);
    // The usual text form, upper case: the first three fields are stored
    // little-endian, the last two as they are.
    static QString guidText(const QByteArray& guid);
};
