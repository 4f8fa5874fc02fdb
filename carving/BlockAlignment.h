#pragma once
#include <QtGlobal>
#include <functional>

// The block size and offset a volume's files are laid out in, told from the
// data where no file system says it: file systems start files at cluster
// boundaries, so the headers of carved kinds line up on them.
struct BlockAlignment {
    quint32 blockBytes = 512; // a power of two
    quint32 offset = 0;       // volume byte offset of the first block boundary, below blockBytes

    using Read = std::function<qint64(void* buffer, quint64 bytes, quint64 volumeOffset)>;
    // Samples windows spread over the volume, notes every 512-byte sector that
    // starts with a carved kind's header, and takes the largest block size
    // most of them agree on. Falls back to sectors when too few are found.
    static BlockAlignment guess(const Read& read, quint64 volumeBytes);
    // The same over header offsets already found.
    static BlockAlignment fromHeaders(const QList<quint64>& offsets);
};
