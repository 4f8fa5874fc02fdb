#pragma once
#include <QList>
#include <QSet>
#include <QString>
#include <QtGlobal>
#include <cstddef>
#include <cstdint>

// What a folder's $I30 index says of its files, beyond the records: the names
// its nodes list now, and the names left behind the used part of its INDX
// blocks. Removing an entry moves the ones after it up (the end marker moves
// onto the removed entry's header), so the tail of a block keeps copies of
// entries that were there before, among them those of deleted files. Decodes
// bytes only; touches no device.
class IndexSlack {
public:
    // A $FILE_NAME key found behind the used part of a block.
    struct Name {
        QString name;
        quint32 record = 0;          // the entry's file reference, when known
        quint16 sequence = 0;
        bool referenceKnown = false; // false: the end marker overwrote the entry's header
        quint64 created = 0;         // FILETIME
        quint64 modified = 0;        // FILETIME
        quint64 size = 0;            // as the entry states it
    };

    // Index blocks are 4 KiB on every volume Windows writes; the header may
    // state 512 bytes to 64 KiB.
    static constexpr quint32 kMinBlockBytes = 512;
    static constexpr quint32 kMaxBlockBytes = 64 * 1024;

    // The block size an $INDEX_ROOT value states; 0 when it is none of the sizes above.
    static quint32 blockBytes(const uint8_t* root, size_t bytes);
    // Puts the saved sector ends of an INDX block back; false when its frame is bad.
    static bool fixup(uint8_t* block, quint32 bytes);
    // Adds the names the node lists (its used part) to *names, in lower case:
    // of an $INDEX_ROOT value (root true) or of an INDX block.
    static void liveNames(const uint8_t* node, size_t bytes, bool root, QSet<QString>* names);
    // The keys behind the used part of a fixed-up INDX block (the whole block
    // when inUse is false) that pass every check and name the folder
    // (record, sequence) as their parent; at most maxNames.
    static QList<Name> slackNames(const uint8_t* block, quint32 bytes, bool inUse, quint32 folder, quint16 folderSequence,
                                  int maxNames);

private:
    static bool plausibleKey(const uint8_t* key, size_t room, quint32 folder, quint16 folderSequence, Name* out);
    static bool readReference(const uint8_t* header, quint16 keyBytes, Name* name);
};
