#pragma once
#include <QList>
#include <QMutex>
#include <QtGlobal>
#include <functional>
#include <vector>

// The first FAT of a volume. A small one is held whole; a large one (4 bytes
// a cluster: 128 MiB for a 1 TiB volume) is read through a bounded cache of
// blocks of entries, beside a bitmap of its free clusters (one bit a cluster)
// made by one pass over it. Every walk over it ends at its entry count at the
// latest, whatever loops the table holds. Safe to read from several threads.
class Fat32Table {
public:
    static constexpr quint32 kBadCluster = 0x0FFFFFF7;
    static constexpr quint32 kEndOfChain = 0x0FFFFFF8; // and above, top bits included
    static constexpr quint32 kFirstDataCluster = 2;
    // Entries of one cached block: 64 KiB of the table.
    static constexpr quint64 kBlockEntries = 16384;
    // Blocks held at once: 4 MiB, whatever the volume's size.
    static constexpr int kCachedBlocks = 64;

    // Fills count host-order entries from firstEntry; what it can't read stays 0.
    using Loader = std::function<void(quint64 firstEntry, quint32* out, quint64 count)>;

    // Held whole, filled through bytes().
    explicit Fat32Table(quint64 entries) : m_count(entries), m_entries(size_t(entries), 0) {}
    // Read through loader, blockEntries at a time, at most cachedBlocks blocks held.
    Fat32Table(quint64 entries, Loader loader, quint64 blockEntries = kBlockEntries, int cachedBlocks = kCachedBlocks);

    quint64 entryCount() const { return m_count; }
    quint64 byteCount() const { return m_count * sizeof(quint32); }
    // Raw storage of a whole table to load it into; little-endian on disk, fixed up by fixByteOrder().
    char* bytes() { return reinterpret_cast<char*>(m_entries.data()); }
    // Turns the loaded bytes into host-order entries.
    void fixByteOrder();

    quint32 entry(quint64 c) const;
    bool isDataCluster(quint64 c) const { return c >= kFirstDataCluster && c != kBadCluster && c < m_count; }
    // A data cluster that no chain holds (the top four bits of an entry are reserved).
    bool isFree(quint64 c) const;

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
    struct Block {
        quint64 index = ~quint64(0);
        quint64 lastUse = 0;
        std::vector<quint32> entries;
    };
    bool cached() const { return bool(m_loader); }
    void loadFreeBitmap();
    const Block& block(quint64 index) const;

    quint64 m_count = 0;
    std::vector<quint32> m_entries; // a whole table
    Loader m_loader;
    quint64 m_blockEntries = kBlockEntries;
    std::vector<quint64> m_free; // bit c: cluster c is free, for a cached table
    mutable QMutex m_cacheLock;
    mutable std::vector<Block> m_blocks;
    mutable quint64 m_uses = 0;
    mutable size_t m_lastBlock = 0; // the block the last look-up found
};
