#pragma once
#include "scan/ExtentReader.h"

struct NtfsFile;

// Reads an LZNT1-compressed $DATA unit by unit. A unit whose clusters are all
// stored is plain; one stored in fewer clusters than it spans (the rest a
// sparse run) is compressed; one with no stored cluster is zeros.
class CompressedStream {
public:
    // Streams the file's size in file order to sink, reading clusters of
    // clusterBytes through read; clusters behind volumeBytes read as zeros.
    // Returns the reads that failed or fell short.
    static quint64 stream(const NtfsFile& file, quint32 clusterBytes, quint64 volumeBytes,
                          const ExtentReader::ReadAt& read, const ExtentReader::Sink& sink);
};
