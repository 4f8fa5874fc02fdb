#pragma once
#include "results/Extent.h"

#include <functional>

// Reads a found file's content over its extents in slices of bounded size, so
// memory does not follow a file's length. What can't be read comes out as
// zeros and is counted; the read goes on behind it.
class ExtentReader {
public:
    // Reads at a byte offset of the volume: bytes read, possibly short, or -1.
    using ReadAt = std::function<qint64(void* buffer, quint64 bytes, quint64 volumeOffset)>;
    // Receives the content in file order; null data is a run of zeros.
    using Sink = std::function<void(quint64 fileOffset, const char* data, quint64 bytes)>;

    // Large enough for few calls on big files, small enough to hold in memory twice.
    static constexpr quint64 kSliceBytes = 4ull * 1024 * 1024;

    // Returns the number of reads that failed or fell short.
    static quint64 stream(const Extents& extents, const ReadAt& read, const Sink& sink);
};
