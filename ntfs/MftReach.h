#pragma once
#include "results/DataRun.h"

#include <QList>
#include <QtGlobal>

// Where records of an earlier MFT may remain: after a quick format the new MFT
// starts where the old one did and is shorter, so the old records lie behind
// its runs. This plans the clusters the scan reads there.
class MftReach {
public:
    struct Span {
        quint64 lcn = 0;
        quint64 count = 0;
    };

    // Behind each run the scan reads this many times the run's length.
    static constexpr quint64 kFactor = 15;

    // Behind each run of the live MFT kFactor times its length, behind the
    // last at least as much as makes minClusters in all; within the volume's
    // clusterCount, never the live MFT's own clusters or those in skip
    // ($MFTMirr, whose copies of the first records are no earlier MFT), and
    // no cluster twice. In ascending order of the runs they lie behind.
    static QList<Span> plan(const QList<DataRun>& mftRuns, quint64 clusterCount, const QList<Span>& skip,
                            quint64 minClusters);

    static quint64 clusters(const QList<Span>& spans);

private:
    // The parts of span that none of taken covers.
    static QList<Span> subtract(Span span, const QList<Span>& taken);
};
