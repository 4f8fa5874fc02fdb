#pragma once
#include "results/FoundFile.h"

// A file found in a FAT32 directory, or carved from its data area. Its
// clusters are worked out from the FAT when its content is read.
struct Fat32File : FoundFile {
    quint32 firstCluster = 0;
    // A carved file's content lies in this many consecutive clusters from the
    // first. 0: the content follows the FAT chain and, where a delete cleared
    // the chain, the free clusters behind its last one.
    quint32 carvedClusters = 0;
};

static_assert(sizeof(Fat32File) <= 48, "a Fat32File record stays within 48 bytes beside its name");
