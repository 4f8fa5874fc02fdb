#include "exfat/ExfatVolume.h"
#include "exfat/ExfatDirectory.h"
#include "fat32/Fat32Table.h"
#include "scan/CheckedMath.h"

namespace {
// A directory holds at most 256 MiB of entries, the format's own limit.
constexpr quint64 kMaxDirectoryBytes = 256ull << 20;
// No bitmap is larger than one bit for each of 2^32 clusters.
constexpr quint64 kMaxBitmapBytes = 512ull << 20;
// Folders are nested no deeper than the 32,767 units of a path allow.
constexpr int kMaxDepth = 2048;
constexpr quint64 kFatEntryBytes = 4;
} // namespace

ExfatVolume::ExfatVolume(const ExfatBootSector& boot, ReadAt read) : m_boot(boot), m_read(std::move(read)) {}
ExfatVolume::~ExfatVolume() = default;

void ExfatVolume::load()
{
    const quint64 entries = quint64(m_boot.clusterCount) + ExfatBootSector::kFirstDataCluster;
    m_fat = std::make_unique<Fat32Table>(entries);
    // What a short or failed read leaves stays 0: free, ending every chain.
    m_read(m_fat->bytes(), entries * kFatEntryBytes, m_boot.fatOffset);
    m_fat->fixByteOrder();
    const QByteArray bytes = readContent(rootSet(), false);
    loadBitmap(bytes, quint64(bytes.size()));
}

// The root has no entry set; its size is its FAT chain, up to a directory's limit.
ExfatEntrySet ExfatVolume::rootSet() const
{
    ExfatEntrySet root;
    root.directory = true;
    root.firstCluster = m_boot.rootCluster;
    root.dataLength = root.validLength = kMaxDirectoryBytes;
    return root;
}

void ExfatVolume::loadBitmap(const QByteArray& root, quint64 rootBytes)
{
    const ExfatDirectory dir = ExfatDirectory::read(reinterpret_cast<const uchar*>(root.constData()), size_t(rootBytes));
    ExfatEntrySet bitmap;
    bitmap.firstCluster = dir.bitmapCluster;
    bitmap.dataLength = bitmap.validLength = qMin<quint64>(dir.bitmapBytes, (quint64(m_boot.clusterCount) + 7) / 8);
    // Without a bitmap every cluster counts as in use: nothing is carved.
    m_bitmap = ExfatBitmap(dir.bitmapCluster ? readContent(bitmap, true) : QByteArray(), m_boot.clusterCount);
}

QList<ExfatClusterRun> ExfatVolume::clusterRuns(const ExfatEntrySet& set, bool extendShortChain) const
{
    QList<ExfatClusterRun> runs;
    if (!m_boot.isCluster(set.firstCluster) || set.dataLength == 0)
        return runs;
    const quint64 wanted = ((set.dataLength - 1) >> m_boot.clusterShift) + 1;
    const quint64 heapEnd = quint64(m_boot.clusterCount) + ExfatBootSector::kFirstDataCluster;
    quint64 listed = 0;
    quint64 next = set.firstCluster;
    if (!set.noFatChain && m_fat) {
        const QList<uint> chain = m_fat->chain(set.firstCluster);
        for (int i = 0; i < chain.size() && listed < wanted; ++i, ++listed) {
            if (!runs.isEmpty() && runs.last().first + runs.last().count == chain[i])
                ++runs.last().count;
            else
                runs.append({chain[i], 1});
        }
        next = runs.isEmpty() ? set.firstCluster : quint64(runs.last().first) + runs.last().count;
        if (!extendShortChain)
            return runs;
    }
    const quint64 rest = qMin(wanted - listed, next < heapEnd ? heapEnd - next : 0);
    if (rest == 0)
        return runs;
    if (!runs.isEmpty() && runs.last().first + runs.last().count == next)
        runs.last().count += quint32(rest);
    else
        runs.append({quint32(next), quint32(rest)});
    return runs;
}

QByteArray ExfatVolume::readContent(const ExfatEntrySet& set, bool extendShortChain) const
{
    const quint64 limit = set.directory ? kMaxDirectoryBytes : kMaxBitmapBytes;
    const quint64 bytes = qMin(set.validLength, limit);
    QByteArray out;
    for (const ExfatClusterRun& run : clusterRuns(set, extendShortChain)) {
        const quint64 want = qMin(quint64(run.count) << m_boot.clusterShift, bytes - quint64(out.size()));
        const qsizetype at = out.size();
        out.resize(at + qsizetype(want));
        const qint64 got = m_read(out.data() + at, want, m_boot.clusterOffset(run.first));
        if (got < qint64(want))
            std::fill(out.begin() + at + qMax<qint64>(got, 0), out.end(), '\0');
        if (quint64(out.size()) >= bytes)
            break;
    }
    return out;
}

bool ExfatVolume::walk(const FileVisitor& visit, const Progress& progress)
{
    QList<Directory> queue{Directory{{}, rootSet(), false, true}};
    for (int i = 0; i < queue.size(); ++i) {
        // A copy: the visit appends to the queue, which may move its items.
        const Directory current = queue.at(i);
        if (!visitDirectory(current, &queue, visit, progress))
            return false;
    }
    return true;
}

bool ExfatVolume::visitDirectory(const Directory& dir, QList<Directory>* queue, const FileVisitor& visit, const Progress& progress)
{
    if (m_directoriesRead.contains(dir.set.firstCluster))
        return true;
    m_directoriesRead.insert(dir.set.firstCluster);
    const QByteArray bytes = readContent(dir.set, !dir.root);
    const ExfatDirectory entries = ExfatDirectory::read(reinterpret_cast<const uchar*>(bytes.constData()), size_t(bytes.size()));
    m_corruptSets += entries.corruptSets;
    for (const ExfatEntrySet& set : entries.sets) {
        const bool gone = set.deleted || dir.deleted;
        if (set.directory) {
            if (dir.path.size() < kMaxDepth && m_boot.isCluster(set.firstCluster))
                queue->append(Directory{dir.path + QStringList{set.name}, set, gone, false});
        } else if (gone && !visit(dir.path, set)) {
            return false;
        }
        if (!progress(++m_setsRead))
            return false;
    }
    return true;
}
