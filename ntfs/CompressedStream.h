#pragma once
#include "scan/ExtentReader.h"

#include <QList>
#include <functional>

struct NtfsFile;

// Reads an LZNT1-compressed $DATA unit by unit. A unit whose clusters are all
// stored is plain; one stored in fewer clusters than it spans (the rest a
// sparse run) is compressed; one with no stored cluster is zeros.
class CompressedStream {
public:
    // A stretch of the file's bytes that a failed read left wrong: all of a
    // compressed unit with a bad stored cluster, the clusters' own range in a
    // plain unit.
    using Damaged = std::function<void(quint64 fileOffset, quint64 bytes)>;

    // Streams the file's size in file order to sink, reading clusters of
    // clusterBytes through read; clusters behind volumeBytes read as zeros.
    // Returns the reads that failed or fell short.
    static quint64 stream(const NtfsFile& file, quint32 clusterBytes, quint64 volumeBytes,
                          const ExtentReader::ReadAt& read, const ExtentReader::Sink& sink, const Damaged& damaged = {});

    // Where the stored bytes of each unit lie, in file order. The stored
    // bytes of a compressed unit are not the file's: each of its pieces
    // carries the unit's file offset, and the first the unit's length in the file.
    struct Piece {
        quint64 fileOffset = 0;
        quint64 volumeOffset = 0;
        quint64 length = 0;
        quint64 expandsTo = 0; // 0: the bytes are the file's own
    };
    static QList<Piece> pieces(const NtfsFile& file, quint32 clusterBytes, quint64 volumeBytes);
};
