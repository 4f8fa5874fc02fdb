#pragma once
#include "results/DataRun.h"
#include "results/FoundFile.h"

#include <QList>

// A file found in an MFT record, or carved from free clusters of an NTFS volume.
// Kept small (a million of them stand in memory on a large volume): a run of
// its own for the common file of one run, one block for a file of more.
struct NtfsFile : FoundFile {
    NtfsFile();
    ~NtfsFile() override;

    // Content lies inside the MFT record, the value at offset in the record,
    // which the scan read at recordOffset, a byte offset on the volume
    // (0: where its number says). A record found in a later MFT fragment or
    // left over from an earlier MFT does not lie where its number says.
    bool resident() const { return m_resident; }
    void setResident(quint64 recordOffset, quint16 offset);
    quint64 recordOffset() const { return m_resident ? m_a.value : 0; }
    quint16 residentOffset() const { return m_resident ? quint16(m_b) : 0; }

    // The runs of non-resident content, in stream order.
    QList<DataRun> runs() const;
    void setRuns(const QList<DataRun>& runs);
    bool hasRuns() const { return !m_resident && m_b != 0; }
    int runCount() const { return m_resident || m_b == 0 ? 0 : m_oneRun ? 1 : int(m_b); }

    // LZNT1 compression units of this many clusters (a power of
    // two); 0 when stored plainly.
    quint32 compressionUnitClusters() const { return m_unitShift ? 1u << (m_unitShift - 1) : 0; }
    void setCompressionUnitClusters(quint32 clusters);

private:
    void freeRuns();

    bool m_resident : 1;
    bool m_oneRun : 1;      // the one run lies in m_a/m_b
    bool m_sparseRun : 1;   // that one run has no clusters
    quint8 m_unitShift : 5; // log2 of the compression unit + 1; 0 when plain

public:
    quint32 mftRecord = 0; // the number the record states

private:

    union {
        quint64 value; // resident: recordOffset; one run: its lcn
        DataRun* block; // more runs: all of them
    } m_a;
    quint64 m_b = 0; // resident: the value's offset; one run: its length; more: their count

public:
    // Bytes behind this read as zeros, whatever the clusters hold.
    quint64 initializedSize = ~quint64(0);
};

static_assert(sizeof(NtfsFile) <= 64, "an NTFS record stays within 64 bytes beside its name");
