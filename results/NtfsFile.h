#pragma once
#include "results/DataRun.h"
#include "results/FoundFile.h"

#include <QList>

// A file found in an MFT record, or carved from free clusters of an NTFS volume.
struct NtfsFile : FoundFile {
    ~NtfsFile() override { qDeleteAll(runs); }
    quint32 mftRecord = 0;      // locates the record again for resident content
    bool resident = false;      // content lies inside the MFT record
    quint16 residentOffset = 0; // from the start of the record
    QList<DataRun*> runs;
};
