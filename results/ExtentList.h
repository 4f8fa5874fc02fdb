#pragma once
#include "results/Extent.h"

// Builds a file's extents and clamps them once, as they are added: nothing is
// listed behind the file's size, and bytes behind the volume's end become a
// hole, so no read of a found file ever reaches what follows its volume on the
// disk (the next partition during a disk search). Neighbouring pieces merge.
class ExtentList {
public:
    ExtentList(quint64 volumeBytes, quint64 fileSize) : m_volumeBytes(volumeBytes), m_size(fileSize) {}

    // Both return false once the file's size is covered: nothing more is wanted.
    bool add(quint64 volumeOffset, quint64 length);
    bool addHole(quint64 length);
    bool full() const { return m_listed >= m_size; }

    Extents take() { return std::move(m_extents); }

private:
    void append(quint64 offset, quint64 length, bool hole);

    quint64 m_volumeBytes;
    quint64 m_size;
    quint64 m_listed = 0;
    Extents m_extents;
};
