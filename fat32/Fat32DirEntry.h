#pragma once
#include <QString>
#include <QtGlobal>
#include <array>

// One 32-byte entry of a FAT directory: a short entry or a long-name slot.
struct Fat32DirEntry {
    static constexpr int kBytes = 32;
    static constexpr quint8 kEndMark = 0x00;
    static constexpr quint8 kDeletedMark = 0xE5;
    static constexpr quint8 kLongNameSlot = 0x0F; // the whole attribute byte
    static constexpr quint8 kDirectoryBit = 0x10;
    // Bits of byte 0x0C Windows sets for an all-lowercase short name that
    // needs no long name ("readme.txt"): the name part, the extension.
    static constexpr quint8 kLowerBase = 0x08;
    static constexpr quint8 kLowerExtension = 0x10;

    quint8 firstByte = 0;
    quint8 attributes = 0;
    quint8 caseFlags = 0;
    quint32 firstCluster = 0;
    quint16 time = 0;
    quint16 date = 0;
    quint32 size = 0;
    std::array<uchar, 11> name{}; // the short name as it stands: eight bytes and three of extension, blank-padded

    // Decodes the entry at `entry`, which holds at least kBytes bytes.
    static Fat32DirEntry decode(const uchar* entry);

    bool isEnd() const { return firstByte == kEndMark; }
    bool isSlot() const { return attributes == kLongNameSlot; }
    bool isDeleted() const { return firstByte == kDeletedMark; }
    bool isDirectory() const { return attributes & kDirectoryBit; }
    bool isDotEntry() const;
    // "NAME.EXT" or "NAME", blanks dropped, bytes as they stand except that
    // a part the case flags mark is shown in lowercase; made only when
    // asked, as most entries of a folder carry a long name.
    QString shortName() const;

    // The write stamp in ms since 1970 UTC. The stamp has no zone; it is taken
    // as the wall clock at UTC+8, as the volumes this tool meets were written.
    static quint64 stampMsecs(quint16 date, quint16 time);

    // A directory's first cluster starts with its "." and ".." entries; a
    // deleted directory whose cluster went to other data doesn't.
    static bool startsWithDotEntries(const uchar* cluster, size_t size);
};
