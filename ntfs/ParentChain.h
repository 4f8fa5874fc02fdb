#pragma once
#include "ntfs/DirectoryEntry.h"

#include <QStringList>
#include <QtGlobal>

// Rebuilds a file's folders from the directories the scan has met, by
// following parent references upward.
class ParentChain {
public:
    static constexpr quint32 kRootRecord = 5;

    struct Result {
        QStringList folders; // from the top down; starts with "." when the root was reached
    };

    // Starts at the reference (parentRecord, parentSequence). Stops at an
    // unknown or unnamed directory, at the root, at a directory met twice
    // (stale records can form loops), and where the reference's sequence
    // number is not the directory's: that record was reused by another
    // directory, which was never this file's folder.
    static Result walk(const DirectoryMap& directories, quint32 parentRecord, quint16 parentSequence);

    // Whether a reference made with this sequence number names a record that
    // now has recordSequence. Freeing a record raises its sequence number, so
    // a deleted record is also named by the number before its own.
    static bool sequenceMatches(quint16 recordSequence, bool recordLive, quint16 referenceSequence);
};
