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
    visitFileClusters(start, m_entries.size(), [&clusters, this](quint32 c) {
        clusters.append(c);
        // Past the chain's end the walk would go on over free clusters.
        return m_entries[c] < kEndOfChain && isDataCluster(m_entries[c]);
    });
    return clusters;
}

void Fat32Table::visitFileClusters(quint32 first, quint64 needed, const std::function<bool(quint32)>& visit) const
{
    quint64 count = 0;
    quint32 last = 0;
    // A chain can't hold more clusters than the table has entries: a longer one loops.
    for (quint32 c = first; isDataCluster(c) && count < needed && count < m_entries.size(); c = m_entries[c]) {
        ++count;
        last = c;
        if (!visit(c))
            return;
        if (m_entries[c] >= kEndOfChain)
            break;
    }
    if (count == 0)
        return;
    for (quint64 c = quint64(last) + 1; c < m_entries.size() && count < needed; ++c) {
        if (m_entries[c] != 0 || c == kBadCluster)
            continue;
        ++count;
        if (!visit(quint32(c)))
            return;
    }
}

quint32 Fat32Table::nextFree(quint32 after) const
{
    for (quint64 c = quint64(after) + 1; c < m_entries.size(); ++c)
        if (isFree(c))
            return quint32(c);
    return 0;
}
