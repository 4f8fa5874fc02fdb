#include "fat32/Fat32Table.h"
#include "scan/LeReader.h"

void Fat32Table::fixByteOrder()
{
    for (quint32& e : m_entries) {
        LeReader r(&e, sizeof e);
        e = r.u32(0);
    }
}

QList<uint> Fat32Table::chain(quint32 start) const
{
    QList<uint> clusters;
    quint32 c = start;
    // A chain can't hold more clusters than the table has entries: a longer one loops.
    while (isDataCluster(c) && quint64(clusters.size()) < m_entries.size()) {
        clusters.append(c);
        c = m_entries[c];
        if (c >= kEndOfChain)
            break;
    }
    return clusters;
}

void Fat32Table::continueOverFree(QList<uint>* clusters, quint64 needed) const
{
    if (clusters->isEmpty() || quint64(clusters->size()) >= needed)
        return;
    for (quint64 c = quint64(clusters->last()) + 1; c < m_entries.size(); ++c) {
        if (m_entries[c] != 0 || c == kBadCluster)
            continue;
        clusters->append(uint(c));
        if (quint64(clusters->size()) >= needed)
            return;
    }
}
