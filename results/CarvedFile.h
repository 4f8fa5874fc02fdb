#pragma once
#include "results/FoundFile.h"

// A file carved where no file system could be read: one contiguous run of the
// volume, from its first byte for its size.
struct CarvedFile : FoundFile {
    quint64 volumeOffset = 0;
};
