#pragma once
#include "results/DataRun.h"
#include "results/FoundFile.h"

#include <QList>

// A file found in an MFT record, or carved from free clusters of an NTFS volume.
struct NtfsFile : FoundFile {
    ~NtfsFile() override { qDeleteAll(runs); }
    quint32 mftRecord = 0;      // the number the record states
    // Where the scan read the record, as a byte offset on the volume; resident
    // content is read again from there. A record found in a later MFT fragment
    // or left over from an earlier MFT does not lie where its number says.
    quint64 recordOffset = 0;
    bool resident = false;      // content lies inside the MFT record
    quint16 residentOffset = 0; // from the start of the record
    QList<DataRun*> runs;
    // Bytes behind this read as zeros, whatever the clusters hold.
    quint64 initializedSize = ~quint64(0);
    // LZNT1 compression units of this many clusters; 0 when stored plainly.
    quint32 compressionUnitClusters = 0;
};
