#pragma once
#include "results/DataRun.h"

#include <QList>
#include <cstddef>
#include <cstdint>

// The run list of a non-resident attribute: decoding it, and finding the
// clusters of a range of virtual clusters through it.
class RunList {
public:
    // A stretch of clusters on the volume, in stream order.
    struct Extent {
        quint64 lcn = 0;
        quint64 count = 0;
        bool sparse = false; // no clusters on disk: reads as zeros
    };

    // Appends the runs of the list at data to *runs. A run that would leave
    // the volume's clusterCount, or an entry that reaches the end of the
    // bytes, ends the list. Returns the number of runs appended.
    static int decode(const uint8_t* data, size_t bytes, quint64 clusterCount, QList<DataRun>* runs);

    // The clusters behind count virtual clusters from vcn. Behind the last run
    // the stream is taken to run on, cluster after cluster.
    static QList<Extent> extents(const QList<DataRun>& runs, quint64 vcn, quint64 count);

    // The virtual clusters the runs cover.
    static quint64 clusterTotal(const QList<DataRun>& runs) { return runs.isEmpty() ? 0 : runs.last().vcnEnd; }
};
