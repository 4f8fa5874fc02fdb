#include "fat32/FatFolderSearch.h"
#include "fat32/Fat32DirEntry.h"
#include "fat32/FatDirectoryCheck.h"
#include "scan/CheckedMath.h"

#include <QDataStream>
#include <QIODevice>

FatFolderSearch::FatFolderSearch(const Geometry& geometry, const QSet<quint32>& known)
    : m_geometry(geometry), m_folderClusters(known), m_buffer(int(geometry.clusterBytes), '\0')
{
}

bool FatFolderSearch::claims(quint32 cluster, const uchar* head, size_t bytes)
{
    if (m_folderClusters.contains(cluster) || named(cluster))
        return true;
    const quint64 count = m_geometry.clusterCount;
    bytes = qMin<size_t>(bytes, m_geometry.clusterBytes);
    if (bytes < m_geometry.clusterBytes)
        return false;
    if (FatDirectoryCheck::isFolderStart(head, bytes, cluster, count)) {
        takeFolder(cluster, head);
        return true;
    }
    if (FatDirectoryCheck::shortEntries(head, bytes, count) >= kMinLoneEntries) {
        m_folderClusters.insert(cluster);
        m_lone.append(cluster);
        noteFiles(head);
        return true;
    }
    return false;
}

bool FatFolderSearch::named(quint32 cluster) const
{
    auto it = m_runs.upper_bound(cluster);
    return it != m_runs.begin() && cluster < std::prev(it)->second;
}

// The folder's later clusters are read now, ahead of the walk, as a deleted
// folder's are: the free clusters behind its first while they hold entries.
void FatFolderSearch::takeFolder(quint32 cluster, const uchar* data)
{
    m_starts.append({cluster, FatDirectoryCheck::parentCluster(data)});
    m_folderClusters.insert(cluster);
    noteFiles(data);
    auto* buffer = reinterpret_cast<uchar*>(m_buffer.data());
    visitFolderTail(m_geometry, cluster, 1, buffer, [&](quint32 at) {
        if (m_folderClusters.contains(at))
            return false;
        m_folderClusters.insert(at);
        noteFiles(buffer);
        return true;
    });
}

void FatFolderSearch::visitFolderTail(const Geometry& geometry, quint32 last, quint64 had, uchar* buffer,
                                      const std::function<bool(quint32 cluster)>& take)
{
    const quint64 limit = qMax<quint64>(1, kMaxFolderBytes / geometry.clusterBytes);
    for (quint64 n = had; n < limit; ++n) {
        last = geometry.nextFree(last);
        if (!last || !geometry.read(last, buffer)
            || !FatDirectoryCheck::isFolderContinuation(buffer, geometry.clusterBytes, geometry.clusterCount) || !take(last))
            return;
    }
}

void FatFolderSearch::noteFiles(const uchar* data)
{
    const quint64 clusterBytes = m_geometry.clusterBytes;
    for (quint64 at = 0; at + Fat32DirEntry::kBytes <= clusterBytes; at += Fat32DirEntry::kBytes) {
        const Fat32DirEntry e = Fat32DirEntry::decode(data + at);
        if (e.isEnd())
            return;
        if (e.isSlot() || e.isDirectory() || e.size == 0 || e.firstCluster < 2 || e.firstCluster >= m_geometry.clusterCount)
            continue;
        const quint64 clusters = (quint64(e.size) + clusterBytes - 1) / clusterBytes;
        const quint64 end = qMin<quint64>(checked::addSat(e.firstCluster, clusters), m_geometry.clusterCount);
        quint32& known = m_runs[e.firstCluster];
        known = qMax(known, quint32(end));
    }
}

QByteArray FatFolderSearch::state() const
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << quint32(m_folderClusters.size());
    for (quint32 c : m_folderClusters)
        out << c;
    out << quint32(m_starts.size());
    for (const FolderStart& s : m_starts)
        out << s.cluster << s.parent;
    out << quint32(m_lone.size());
    for (quint32 c : m_lone)
        out << c;
    out << quint32(m_runs.size());
    for (const auto& [first, end] : m_runs)
        out << first << end;
    return bytes;
}

bool FatFolderSearch::restore(const QByteArray& state)
{
    QDataStream in(state);
    // A count, then that many entries through read. No list holds more
    // entries than the volume has clusters.
    const auto list = [&](const auto& read) {
        quint32 n = 0;
        in >> n;
        if (in.status() != QDataStream::Ok || n > m_geometry.clusterCount)
            return false;
        for (quint32 i = 0; i < n && in.status() == QDataStream::Ok; ++i)
            read();
        return true;
    };
    QSet<quint32> folders;
    QList<FolderStart> starts;
    QList<quint32> lone;
    std::map<quint32, quint32> runs;
    quint32 a = 0, b = 0;
    const bool read = list([&] { in >> a; folders.insert(a); }) && list([&] { in >> a >> b; starts.append({a, b}); })
                      && list([&] { in >> a; lone.append(a); }) && list([&] { in >> a >> b; runs[a] = b; });
    if (!read || in.status() != QDataStream::Ok || !in.atEnd())
        return false;
    m_folderClusters = folders;
    m_starts = starts;
    m_lone = lone;
    m_runs = runs;
    return true;
}
