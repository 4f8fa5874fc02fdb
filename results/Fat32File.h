#pragma once
#include "results/FoundFile.h"

#include <QList>

// A file found in a FAT32 directory, or carved from its data area.
struct Fat32File : FoundFile {
    QList<uint> clusters; // the content's clusters, in file order
};
