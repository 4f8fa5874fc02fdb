#pragma once
#include <QtGlobal>
#include <functional>
#include <vector>

// The cluster allocation bitmap of an NTFS volume ($Bitmap), read a window at
// a time instead of whole: a 2 TiB volume of 4 KiB clusters has a 64 MiB
// bitmap, and the carving walk, which goes through it in order, needs little
// of it at once. Beside it, the clusters the scan found deleted files in are
// kept as merged ranges; they count as in use.
class ClusterBitmap {
public:
    // Fills bytes bytes of the bitmap from byteOffset on (both multiples of the
    // unit given to the constructor); what can't be read comes back as zeros.
    using ReadFn = std::function<void(char* out, quint64 byteOffset, quint64 bytes)>;
    // 8 Mi clusters a window: 32 GiB of 4 KiB clusters.
    static constexpr quint64 kWindowBytes = quint64(1) << 20;
    // The walk's own position, and where a found file's end is looked for ahead of it.
    static constexpr int kWindows = 2;

    // No bitmap: every cluster counts as free, none is claimed.
    ClusterBitmap() = default;
    // clusters: how many clusters the bitmap describes. unitBytes: the bitmap
    // is read in multiples of this (a cluster), a power of two.
    ClusterBitmap(ReadFn read, quint64 clusters, quint64 unitBytes);

    bool isValid() const { return bool(m_read); }
    quint64 clusters() const { return m_clusters; }
    // Set in the bitmap, or claimed. Clusters behind those described are in use.
    bool inUse(quint64 cluster);

    // Takes count clusters from first for a found file. Nothing is claimed without a bitmap.
    void claim(quint64 first, quint64 count);

private:
    struct Range {
        quint64 first = 0;
        quint64 end = 0; // one past the last cluster
    };
    struct Window {
        std::vector<uchar> bytes;
        quint64 start = 0; // bitmap byte offset
        quint64 lastUse = 0;
        bool loaded = false;
    };
    bool bitSet(quint64 cluster);
    const Window& windowOf(quint64 byte);
    bool isClaimed(quint64 cluster);
    void settle();

    ReadFn m_read;
    quint64 m_clusters = 0;
    quint64 m_windowBytes = kWindowBytes;
    quint64 m_storedBytes = 0; // bytes read from the bitmap, a whole number of units
    Window m_windows[kWindows];
    int m_last = -1; // the window the last ask was answered from
    quint64 m_uses = 0;
    std::vector<Range> m_claims;
    size_t m_sorted = 0; // m_claims[0, m_sorted) is sorted and merged; the rest came since
    Range m_known;       // clusters that are all claimed, or all not, as m_knownClaimed says
    bool m_knownClaimed = false;
};
