#pragma once
#include <QByteArray>
#include <QtGlobal>

// The allocation bitmap: one bit per cluster of the heap, from cluster 2,
// set while the cluster belongs to a live file. A delete clears the bits and
// leaves the content, so a clear bit marks where lost files and carving go.
class ExfatBitmap {
public:
    ExfatBitmap() = default;
    // bits: the bitmap's bytes as read; clusterCount: clusters of the heap.
    ExfatBitmap(QByteArray bits, quint32 clusterCount) : m_bits(std::move(bits)), m_clusters(clusterCount) {}

    // Clusters that the bitmap doesn't cover (a short read) count as in use:
    // nothing is guessed to be free that the volume didn't say was.
    bool isFree(quint64 cluster) const;
    quint32 clusterCount() const { return m_clusters; }

private:
    QByteArray m_bits;
    quint32 m_clusters = 0;
};
