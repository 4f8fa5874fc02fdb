#pragma once
#include "results/Extent.h"
#include "results/FoundFile.h"

// A file found in an exFAT directory. Its content is worked out during the
// scan, while the FAT is at hand: the clusters clamped to the volume, and a
// hole for the bytes behind the valid data length, which read as zeros.
// The common file of one stretch keeps it in the record; one of more, in one block.
struct ExfatFile : FoundFile {
    ExfatFile();
    ~ExfatFile() override;

    Extents extents() const;
    void setExtents(const Extents& extents);

private:
    void freeExtents();

    bool m_oneHole : 1; // the one extent is a hole
    quint32 m_count = 0; // of extents
    union {
        quint64 offset; // one extent: where it lies
        Extent* block;  // more: all of them
    } m_a;
    quint64 m_length = 0; // one extent: its length
};

static_assert(sizeof(ExfatFile) <= 64, "an exFAT record stays within 64 bytes beside its name");
