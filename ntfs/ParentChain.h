#pragma once
#include <QMap>
#include <QStringList>
#include <QtGlobal>

struct DirectoryEntry;

// Rebuilds a file's folders from the directories the scan has met, by
// following parent references upward.
class ParentChain {
public:
    static constexpr quint32 kRootRecord = 5;

    struct Result {
        QStringList folders; // from the top down; starts with "." when the root was reached
    };

    // Starts at parentRecord. Stops at an unknown or unnamed directory, at one
    // made later than the file (it can't have been its parent then), at the
    // root, and at a directory met twice (stale records can form loops).
    static Result walk(const QMap<quint32, DirectoryEntry*>& directories, quint32 parentRecord, quint64 fileCreated);
};
