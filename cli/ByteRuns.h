#pragma once
#include <QList>
#include <QtGlobal>

class PartScan;
struct FoundFile;

// Where a found file's content lies in the image, for forensic listings: runs
// of bytes at offsets from the start of the disk or image, in file order.
class ByteRuns {
public:
    struct Run {
        quint64 fileOffset = 0;
        quint64 imageOffset = 0;
        quint64 length = 0;
        // Compressed data: the file bytes these stored bytes (with the
        // unit's further runs at the same file offset) expand to; 0 when plain.
        quint64 uncompressedLength = 0;
    };
    // The runs of a file a volume scanner found; holes are left out. Empty
    // where they are not known: content inside an MFT record, and the volumes
    // of a whole-disk search, whose scanners the search keeps to itself.
    static QList<Run> of(const PartScan* scanner, const FoundFile* file);
};
