#pragma once
#include "results/Extent.h"
#include "results/FoundFile.h"

// A file found in an exFAT directory. Its content is worked out during the
// scan, while the FAT is at hand: the clusters clamped to the volume, and a
// hole for the bytes behind the valid data length, which read as zeros.
struct ExfatFile : FoundFile {
    Extents extents;
};
