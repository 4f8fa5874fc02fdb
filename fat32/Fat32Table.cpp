#include "fat32/Fat32Table.h"
#include "scan/LeReader.h"

namespace {
constexpr quint32 kEntryMask = 0x0FFFFFFF;
constexpr int kWordBits = 64;
} // namespace

Fat32Table::Fat32Table(quint64 entries, Loader loader, quint64 blockEntries, int cachedBlocks)
    : m_count(entries), m_loader(std::move(loader)), m_blockEntries(qMax<quint64>(blockEntries, 1)),
      m_blocks(size_t(qMax(cachedBlocks, 1)))
{
    loadFreeBitmap();
}

void Fat32Table::fixByteOrder()
{
    for (quint32& e : m_entries) {
        LeReader r(&e, sizeof e);
        e = r.u32(0);
    }
}

void Fat32Table::loadFreeBitmap()
{
    m_free.assign(size_t((m_count + kWordBits - 1) / kWordBits), 0);
    std::vector<quint32> buffer(static_cast<size_t>(m_blockEntries));
    for (quint64 first = 0; first < m_count; first += m_blockEntries) {
        const quint64 count = qMin(m_blockEntries, m_count - first);
        std::fill(buffer.begin(), buffer.end(), 0);
        m_loader(first, buffer.data(), count);
        for (quint64 i = 0; i < count; ++i) {
            const quint64 c = first + i;
            if (isDataCluster(c) && (buffer[size_t(i)] & kEntryMask) == 0)
                m_free[size_t(c / kWordBits)] |= quint64(1) << (c % kWordBits);
        }
    }
}

const Fat32Table::Block& Fat32Table::block(quint64 index) const
{
    // A chain mostly stays within one block: the last one is looked at first.
    Block& last = m_blocks[m_lastBlock];
    if (last.index == index) {
        last.lastUse = ++m_uses;
        return last;
    }
    Block* oldest = &m_blocks.front();
    for (Block& b : m_blocks) {
        if (b.index == index) {
            b.lastUse = ++m_uses;
            m_lastBlock = size_t(&b - m_blocks.data());
            return b;
        }
        if (b.lastUse < oldest->lastUse)
            oldest = &b;
    }
    const quint64 first = index * m_blockEntries;
    oldest->index = index;
    oldest->lastUse = ++m_uses;
    oldest->entries.assign(size_t(m_blockEntries), 0);
    m_loader(first, oldest->entries.data(), qMin(m_blockEntries, m_count - first));
    m_lastBlock = size_t(oldest - m_blocks.data());
    return *oldest;
}

quint32 Fat32Table::entry(quint64 c) const
{
    if (c >= m_count)
        return 0;
    if (!cached())
        return m_entries[size_t(c)];
    QMutexLocker lock(&m_cacheLock);
    return block(c / m_blockEntries).entries[size_t(c % m_blockEntries)];
}

bool Fat32Table::isFree(quint64 c) const
{
    if (!isDataCluster(c))
        return false;
    if (cached())
        return (m_free[size_t(c / kWordBits)] >> (c % kWordBits)) & 1;
    return (m_entries[size_t(c)] & kEntryMask) == 0;
}

QList<uint> Fat32Table::chain(quint32 start) const
{
    QList<uint> clusters;
    visitFileClusters(start, m_count, [&clusters, this](quint32 c) {
        clusters.append(c);
        // Past the chain's end the walk would go on over free clusters.
        const quint32 next = entry(c);
        return next < kEndOfChain && isDataCluster(next);
    });
    return clusters;
}

void Fat32Table::visitFileClusters(quint32 first, quint64 needed, const std::function<bool(quint32)>& visit) const
{
    quint64 count = 0;
    quint32 last = 0;
    // A chain can't hold more clusters than the table has entries: a longer one loops.
    for (quint32 c = first; isDataCluster(c) && count < needed && count < m_count; c = entry(c)) {
        ++count;
        last = c;
        if (!visit(c))
            return;
        if (entry(c) >= kEndOfChain)
            break;
    }
    if (count == 0)
        return;
    for (quint64 c = quint64(last) + 1; c < m_count && count < needed; ++c) {
        if (entry(c) != 0 || c == kBadCluster)
            continue;
        ++count;
        if (!visit(quint32(c)))
            return;
    }
}

quint32 Fat32Table::nextFree(quint32 after) const
{
    if (!cached()) {
        for (quint64 c = quint64(after) + 1; c < m_count; ++c)
            if (isFree(c))
                return quint32(c);
        return 0;
    }
    // Whole words of the bitmap at a time: a full volume has long stretches in use.
    for (quint64 c = quint64(after) + 1; c < m_count;) {
        const quint64 word = m_free[size_t(c / kWordBits)] >> (c % kWordBits);
        if (word)
            return quint32(c + quint64(__builtin_ctzll(word)));
        c = (c / kWordBits + 1) * kWordBits;
    }
    return 0;
}
