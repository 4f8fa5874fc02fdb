#pragma once
#include <QList>
#include <QtGlobal>
#include <functional>
#include <vector>

// The first FAT of a volume, in memory from the start of a scan on. Every walk
// over it ends at its entry count at the latest, whatever loops the table holds.
class Fat32Table {
public:
    static constexpr quint32 kBadCluster = 0x0FFFFFF7;
    static constexpr quint32 kEndOfChain = 0x0FFFFFF8; // and above, top bits included
    static constexpr quint32 kFirstDataCluster = 2;

    explicit Fat32Table(quint64 entries) : m_entries(size_t(entries), 0) {}

    quint64 entryCount() const { return m_entries.size(); }
    quint64 byteCount() const { return m_entries.size() * sizeof(quint32); }
    // Raw storage to load the table into; little-endian on disk, fixed up by fixByteOrder().
    char* bytes() { return reinterpret_cast<char*>(m_entries.data()); }
    // Turns the loaded bytes into host-order entries.
    void fixByteOrder();

    bool isDataCluster(quint64 c) const { return c >= kFirstDataCluster && c != kBadCluster && c < m_entries.size(); }
    // A data cluster that no chain holds (the top four bits of an entry are reserved).
    bool isFree(quint64 c) const { return isDataCluster(c) && (m_entries[c] & 0x0FFFFFFF) == 0; }

    // The first cluster behind after that no chain holds, or 0 when none is left.
    quint32 nextFree(quint32 after) const;

    // The clusters of a chain from its first one, in order.
    QList<uint> chain(quint32 start) const;

    // The clusters of a deleted file, in order, until visit returns false or
    // `needed` are visited: its chain, and where the chain ends early (a delete
    // clears it and keeps only the first cluster) the free clusters behind its
    // last one, passing clusters in use, up to the table's end.
    void visitFileClusters(quint32 first, quint64 needed, const std::function<bool(quint32)>& visit) const;

private:
    std::vector<quint32> m_entries;
};
