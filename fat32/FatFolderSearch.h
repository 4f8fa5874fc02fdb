#pragma once
#include <QByteArray>
#include <QList>
#include <QSet>
#include <functional>
#include <map>

// Looks at each free cluster as the walk over free space meets it, in
// ascending order, for what is left of folders no directory leads to any
// more: a folder's first cluster (its dot entries), with the free clusters of
// entries behind it, and lone clusters of entries (a folder's later clusters
// among its files' clusters, or the rest of a folder whose start is gone).
// The files these folders name lie from their first cluster on for their
// size; the search keeps those runs, so that the signature carving leaves them
// to the names.
class FatFolderSearch {
public:
    struct Geometry {
        quint32 clusterBytes = 0;
        quint64 clusterCount = 0; // FAT entries: a cluster number at or beyond it is damage
        // Reads one whole cluster into buffer; false when it can't.
        std::function<bool(quint32 cluster, uchar* buffer)> read;
        // The next cluster behind after that no chain holds, 0 for none.
        std::function<quint32(quint32 after)> nextFree;
    };
    struct FolderStart {
        quint32 cluster = 0;
        quint32 parent = 0; // from "..": 0 for the root
    };

    // known: clusters read as directories already; they are not found again.
    FatFolderSearch(const Geometry& geometry, const QSet<quint32>& known);

    // The later clusters of a folder whose chain is gone, behind its cluster
    // last: the free clusters that follow while they hold entries, up to
    // kMaxFolderBytes in all (counting the `had` clusters already read), each
    // handed to take in buffer (one cluster) until take returns false.
    static void visitFolderTail(const Geometry& geometry, quint32 last, quint64 had, uchar* buffer,
                                const std::function<bool(quint32 cluster)>& take);

    // Whether the free cluster, of which head holds bytes from its start on,
    // belongs to a folder or to a file named by one found so far: no carved
    // file starts there.
    bool claims(quint32 cluster, const uchar* head, size_t bytes);
    // Whether a file named by a folder found so far lies in the cluster.
    bool named(quint32 cluster) const;

    const QList<FolderStart>& folderStarts() const { return m_starts; }
    // What the search has found so far, for a saved scan, and back: false
    // (the search unchanged) when the bytes are not such a state of this volume.
    QByteArray state() const;
    bool restore(const QByteArray& state);
    // Clusters of entries found on their own, not behind a folder start, in ascending order.
    const QList<quint32>& loneClusters() const { return m_lone; }

    // The later clusters a folder's clusters may hold: a directory holds at most 65,536 entries.
    static constexpr quint64 kMaxFolderBytes = quint64(65536) * 32;
    // Entries a lone cluster needs: a single one is too easily met in other data.
    static constexpr int kMinLoneEntries = 2;

private:
    void takeFolder(quint32 cluster, const uchar* data);
    void noteFiles(const uchar* data);

    Geometry m_geometry;
    QSet<quint32> m_folderClusters;
    QList<FolderStart> m_starts;
    QList<quint32> m_lone;
    std::map<quint32, quint32> m_runs; // first cluster to one past the last of each named file
    QByteArray m_buffer;
};
