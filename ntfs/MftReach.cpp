#include "ntfs/MftReach.h"
#include "scan/CheckedMath.h"

QList<MftReach::Span> MftReach::plan(const QList<DataRun>& mftRuns, quint64 clusterCount, const QList<Span>& skip,
                                     quint64 minClusters)
{
    QList<Span> taken = skip;
    QList<DataRun> stored;
    for (const DataRun& run : mftRuns) {
        if (!run.sparse) {
            taken.append({run.lcn, run.length});
            stored.append(run);
        }
    }
    QList<Span> out;
    quint64 planned = 0;
    for (int i = 0; i < stored.size(); ++i) {
        const DataRun& run = stored[i];
        quint64 want = checked::mulSat(run.length, kFactor);
        if (i == stored.size() - 1 && planned < minClusters)
            want = qMax(want, minClusters - planned);
        const quint64 start = checked::addSat(run.lcn, run.length);
        if (start >= clusterCount)
            continue;
        planned = checked::addSat(planned, want);
        for (const Span& s : subtract({start, qMin(want, clusterCount - start)}, taken)) {
            out.append(s);
            taken.append(s);
        }
    }
    return out;
}

quint64 MftReach::clusters(const QList<Span>& spans)
{
    quint64 total = 0;
    for (const Span& s : spans)
        total = checked::addSat(total, s.count);
    return total;
}

QList<MftReach::Span> MftReach::subtract(Span span, const QList<Span>& taken)
{
    QList<Span> parts{span};
    for (const Span& t : taken) {
        const quint64 tEnd = checked::addSat(t.lcn, t.count);
        QList<Span> next;
        for (const Span& p : parts) {
            const quint64 pEnd = p.lcn + p.count;
            if (tEnd <= p.lcn || t.lcn >= pEnd) {
                next.append(p);
                continue;
            }
            if (t.lcn > p.lcn)
                next.append({p.lcn, t.lcn - p.lcn});
            if (tEnd < pEnd)
                next.append({tEnd, pEnd - tEnd});
        }
        parts = next;
    }
    return parts;
}
