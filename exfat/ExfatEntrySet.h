#pragma once
#include <QString>
#include <QtGlobal>

// One file's directory entry set: the file entry, its stream extension and
// its name entries. A delete clears the in-use bit of every entry and leaves
// the rest of the bytes, checksum included, as they were.
struct ExfatEntrySet {
    static constexpr int kEntryBytes = 32;
    static constexpr quint8 kInUse = 0x80;
    static constexpr quint8 kFile = 0x85;
    static constexpr quint8 kStream = 0xC0;
    static constexpr quint8 kName = 0xC1;
    static constexpr quint8 kEndOfDirectory = 0x00;

    enum class Outcome { Good, Corrupt };

    bool deleted = false;
    bool directory = false;
    QString name;              // UTF-16 as stored, nothing folded or replaced
    quint32 firstCluster = 0;
    quint64 validLength = 0;   // bytes written; the rest up to dataLength reads as zeros
    quint64 dataLength = 0;
    bool noFatChain = false;   // the content is one run of clusters from the first
    quint64 modifiedMsecs = 0; // ms since 1970-01-01 UTC
    int entryCount = 0;        // entries the set occupies

    // Whether the entry type byte starts a set, live or deleted.
    static bool isFileEntry(quint8 type) { return (type | kInUse) == kFile; }

    // Decodes the set that starts at `entries` (a file entry), of which
    // `available` entries lie in the buffer. Corrupt when the set is cut off,
    // mixes live and deleted entries, lacks its stream or name entries, or
    // fails its checksum.
    static Outcome decode(const uchar* entries, size_t available, ExfatEntrySet* out);

    // The set's checksum over its entries, with every in-use bit taken as set,
    // as it was when the set was written.
    static quint16 checksum(const uchar* entries, int count);
};
