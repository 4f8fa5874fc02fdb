#pragma once
#include <QList>
#include <QtGlobal>
#include <vector>

// The first FAT of a volume, in memory for the length of a scan. Every walk
// over it ends at its entry count at the latest, whatever loops the table holds.
class Fat32Table {
public:
    static constexpr quint32 kBadCluster = 0x0FFFFFF7;
    static constexpr quint32 kEndOfChain = 0x0FFFFFF8; // and above, top bits included
    static constexpr quint32 kFirstDataCluster = 2;

    explicit Fat32Table(quint64 entries) : m_entries(size_t(entries), 0) {}

    quint64 entryCount() const { return m_entries.size(); }
    quint64 byteCount() const { return m_entries.size() * sizeof(quint32); }
    // Raw storage to load the table into; little-endian on disk, fixed up by load().
    char* bytes() { return reinterpret_cast<char*>(m_entries.data()); }
    // Turns the loaded bytes into host-order entries.
    void fixByteOrder();

    quint32 entry(quint64 cluster) const { return cluster < m_entries.size() ? m_entries[cluster] : 0; }
    bool isFree(quint64 cluster) const { return cluster < m_entries.size() && m_entries[cluster] == 0; }

    // The clusters of a chain from its first one, in order.
    QList<uint> chain(quint32 start) const;

    // A deleted file whose FAT entries were cleared keeps only its first
    // cluster. Continues the list over the free clusters behind its last one,
    // passing clusters in use, until `needed` clusters are listed or the table ends.
    void continueOverFree(QList<uint>* clusters, quint64 needed) const;

private:
    bool isDataCluster(quint32 c) const
    {
        return c >= kFirstDataCluster && c != kBadCluster && c < m_entries.size();
    }

    std::vector<quint32> m_entries;
};
