#pragma once
#include "exfat/ExfatEntrySet.h"

#include <QList>

// The entries of one exFAT directory, read whole: the file sets, live and
// deleted, that pass their checks, and, in the root, where the allocation
// bitmap lies.
struct ExfatDirectory {
    static constexpr quint8 kBitmap = 0x81;

    QList<ExfatEntrySet> sets;
    int corruptSets = 0;     // sets skipped for a failed check
    quint32 bitmapCluster = 0; // 0: no bitmap entry here
    quint64 bitmapBytes = 0;

    // Decodes the entries in `bytes` of directory content, up to the end mark.
    static ExfatDirectory read(const uchar* data, size_t bytes);
};
