#pragma once
#include "results/FoundFile.h"

// A file carved where no file system could be read: one contiguous run of the
// volume, from its first byte for its size.
struct CarvedFile : FoundFile {
    quint64 volumeOffset = 0;
};

static_assert(sizeof(CarvedFile) <= 48, "a CarvedFile record stays within 48 bytes beside its name");
