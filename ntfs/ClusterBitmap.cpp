#include "ntfs/ClusterBitmap.h"
#include "scan/CheckedMath.h"

#include <algorithm>

namespace {
constexpr int kBitsPerByte = 8;
} // namespace

ClusterBitmap::ClusterBitmap(ReadFn read, quint64 clusters, quint64 unitBytes)
    : m_read(std::move(read)), m_clusters(clusters)
{
    const quint64 unit = checked::isPowerOfTwo(unitBytes) ? unitBytes : 1;
    m_windowBytes = qMax(kWindowBytes, unit);
    const quint64 bytes = clusters / kBitsPerByte + (clusters % kBitsPerByte ? 1 : 0);
    m_storedBytes = checked::addSat(bytes, unit - 1) / unit * unit;
}

const ClusterBitmap::Window& ClusterBitmap::windowOf(quint64 byte)
{
    const quint64 start = byte / m_windowBytes * m_windowBytes;
    if (m_last >= 0 && m_windows[m_last].start == start)
        return m_windows[m_last];
    Window* oldest = &m_windows[0];
    for (Window& w : m_windows) {
        if (w.loaded && w.start == start) {
            w.lastUse = ++m_uses;
            m_last = int(&w - m_windows);
            return w;
        }
        if (!w.loaded || w.lastUse < oldest->lastUse)
            oldest = &w;
    }
    // The last window stops where the bitmap's stored bytes end.
    const quint64 bytes = qMin(m_windowBytes, m_storedBytes - start);
    oldest->bytes.assign(size_t(m_windowBytes), 0);
    m_read(reinterpret_cast<char*>(oldest->bytes.data()), start, bytes);
    oldest->start = start;
    oldest->loaded = true;
    oldest->lastUse = ++m_uses;
    m_last = int(oldest - m_windows);
    return *oldest;
}

bool ClusterBitmap::bitSet(quint64 cluster)
{
    const quint64 byte = cluster / kBitsPerByte;
    const Window& w = windowOf(byte);
    return (w.bytes[size_t(byte - w.start)] >> (cluster % kBitsPerByte)) & 1;
}

bool ClusterBitmap::inUse(quint64 cluster)
{
    if (!isValid())
        return false;
    return cluster >= m_clusters || bitSet(cluster) || isClaimed(cluster);
}

void ClusterBitmap::claim(quint64 first, quint64 count)
{
    if (!isValid() || count == 0)
        return;
    m_claims.push_back({first, checked::addSat(first, count)});
    // Sorting only once the unsorted tail is as long as the sorted part keeps
    // both the list and the time spent on it proportional to the claims.
    if (m_claims.size() - m_sorted > qMax<size_t>(m_sorted, 64))
        settle();
}

void ClusterBitmap::settle()
{
    if (m_sorted == m_claims.size())
        return;
    std::sort(m_claims.begin(), m_claims.end(), [](const Range& a, const Range& b) { return a.first < b.first; });
    size_t out = 0;
    for (const Range& r : m_claims) {
        if (out > 0 && r.first <= m_claims[out - 1].end)
            m_claims[out - 1].end = qMax(m_claims[out - 1].end, r.end);
        else
            m_claims[out++] = r;
    }
    m_claims.resize(out);
    m_claims.shrink_to_fit();
    m_sorted = out;
    m_known = Range();
}

bool ClusterBitmap::isClaimed(quint64 cluster)
{
    if (m_claims.empty())
        return false;
    settle();
    // The walk asks in ascending order: the claim or the gap the last answer
    // came from answers most asks without a search.
    if (cluster >= m_known.first && cluster < m_known.end)
        return m_knownClaimed;
    auto it = std::upper_bound(m_claims.begin(), m_claims.end(), cluster, [](quint64 c, const Range& r) { return c < r.first; });
    m_knownClaimed = it != m_claims.begin() && cluster < std::prev(it)->end;
    if (m_knownClaimed)
        m_known = *std::prev(it);
    else
        m_known = {it == m_claims.begin() ? 0 : std::prev(it)->end, it == m_claims.end() ? ~quint64(0) : it->first};
    return m_knownClaimed;
}
