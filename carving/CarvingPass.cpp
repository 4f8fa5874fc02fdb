#include "carving/CarvingPass.h"
#include "carving/BlockWindow.h"
#include "results/DataRun.h"
#include "results/Fat32File.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"

#include <QDebug>

namespace {
constexpr quint64 kFat32FirstDataCluster = 2; // clusters 0 and 1 have FAT entries but no place on disk
// The walk leaves out the first data clusters, where the root directory begins.
constexpr quint64 kFat32FirstCarvedCluster = 8;
constexpr quint32 kFatEntryBytes = 4;
constexpr quint64 kFat32ClusterLimit = quint64(1) << 28; // FAT32 entries have 28 bits; the top four are reserved
constexpr int kBitsPerByte = 8;

int shiftOf(quint64 powerOfTwo)
{
    int shift = 0;
    while (shift < 63 && (quint64(1) << shift) < powerOfTwo)
        ++shift;
    return shift;
}
} // namespace

CarvingPass::CarvingPass(const CarvingContext& context, quint32 blockBytes, bool ntfs)
    : m_context(context), m_blockBytes(blockBytes), m_blockShift(shiftOf(blockBytes)), m_ntfs(ntfs),
      m_lengths(ntfs ? SignatureTest::ntfsLengths() : SignatureTest::fat32Lengths(blockBytes)),
      m_folders(context.root, context.partIndex, ntfs)
{
}

bool CarvingPass::contextUsable(const CarvingContext& context)
{
    const bool usable = context.root && context.read && context.runningNumber && context.results && context.totalSize;
    if (!usable)
        qCritical("%s: incomplete context, nothing carved", "CarvingPass");
    return usable;
}

bool CarvingPass::blockSizeUsable() const
{
    const bool usable = checked::isPowerOfTwo(m_blockBytes) && m_blockBytes >= kMinBlockBytes && m_blockBytes <= kMaxBlockBytes;
    if (!usable)
        qCritical("%s: cluster size %u refused, nothing carved", "CarvingPass", m_blockBytes);
    return usable;
}

template <typename Geometry>
bool CarvingPass::run(const CarvingContext& context, const Geometry& geometry, bool ntfs,
                      bool (CarvingPass::*walk)(const Geometry&))
{
    qDebug("doextra");
    if (!contextUsable(context))
        return true;
    CarvingPass pass(context, geometry.clusterBytes, ntfs);
    return !pass.blockSizeUsable() || (pass.*walk)(geometry);
}

bool CarvingPass::runNtfs(const CarvingContext& context, const NtfsCarvingGeometry& geometry)
{
    return run(context, geometry, true, &CarvingPass::walkNtfs);
}

bool CarvingPass::runFat32(const CarvingContext& context, const Fat32CarvingGeometry& geometry)
{
    return run(context, geometry, false, &CarvingPass::walkFat32);
}

bool CarvingPass::walkNtfs(const NtfsCarvingGeometry& geometry)
{
    const quint8* bitmap = geometry.bitmap;
    const quint64 wholeBytes = geometry.clusterCount / kBitsPerByte + (geometry.clusterCount % kBitsPerByte ? 1 : 0);
    const quint64 bitmapBytes = bitmap ? geometry.bitmapBytes : wholeBytes;
    const quint64 described = checked::mulSat(bitmapBytes, kBitsPerByte);
    const quint64 clusterEnd = geometry.clusterCount ? qMin(geometry.clusterCount, described) : described;
    // A set bit is a cluster in use, or the first cluster of a file the metadata pass already listed.
    auto wanted = [bitmap, clusterEnd](quint64 c) {
        return c < clusterEnd && !(bitmap && (bitmap[c / kBitsPerByte] >> (c % kBitsPerByte)) & 1);
    };
    BlockWindow window(m_context.read, {m_blockBytes, 0, 0, clusterEnd}, wanted);
    for (quint64 byte = 0; byte < bitmapBytes; ++byte) {
        const quint64 first = byte * kBitsPerByte;
        if (window.pastEnd(first))
            break;
        for (int bit = 0; bit < kBitsPerByte; ++bit) {
            if (!wanted(first + bit))
                continue;
            if (const uchar* b = window.block(first + bit))
                carve(b, first + bit);
        }
        ++*m_context.runningNumber;
        if (checkDue())
            return false;
    }
    return true;
}

bool CarvingPass::walkFat32(const Fat32CarvingGeometry& geometry)
{
    m_clusterEnd = qMin(geometry.fatBytes / kFatEntryBytes, kFat32ClusterLimit);
    BlockWindow window(m_context.read, {m_blockBytes, kFat32FirstDataCluster, geometry.dataOffset, m_clusterEnd}, [](quint64) { return true; });
    for (quint64 cluster = kFat32FirstCarvedCluster; cluster < m_clusterEnd; ++cluster) {
        // Behind the device's end nothing more can be read, however many entries the FAT has.
        if (window.pastEnd(cluster))
            break;
        if (checkDue())
            return false;
        if (m_context.scanOne)
            m_context.scanOne(int(quint32(*m_context.runningNumber)));
        if (const uchar* b = window.block(cluster))
            carve(b, cluster);
        ++*m_context.runningNumber;
    }
    return true;
}

bool CarvingPass::checkDue()
{
    bool stop = false;
    if (m_checkCounter % kCheckEvery == 0) {
        stop = m_context.checkPoint && m_context.checkPoint();
        m_checkCounter = 1;
    }
    ++m_checkCounter;
    return stop;
}

void CarvingPass::carve(const uchar* block, quint64 blockNumber)
{
    const SignatureHit hit = SignatureTest::test(block, m_blockBytes, m_lengths);
    if (!hit.found())
        return;
    FoundFile* record = m_ntfs ? ntfsRecord(blockNumber, hit.size) : fat32Record(blockNumber, hit.size);
    record->name = m_folders.takeName(hit.kind, *m_context.runningNumber);
    record->modifiedMsecs = 0;
    record->size = hit.size;
    m_folders.file(hit.kind, record);
    ++*m_context.results;
    *m_context.totalSize = checked::addSat(*m_context.totalSize, hit.size);
}

FoundFile* CarvingPass::ntfsRecord(quint64 cluster, quint64 size) const
{
    // One cluster more than the size needs when it is a whole number of
    // clusters: the extent the restore has always been given.
    auto* run = new DataRun;
    run->lcn = cluster;
    run->length = (size >> m_blockShift) + 1;
    run->vcnEnd = run->length;
    auto* file = new NtfsFile;
    file->resident = false;
    file->runs.append(run);
    return file;
}

FoundFile* CarvingPass::fat32Record(quint64 cluster, quint64 size) const
{
    // Counted upward from the first cluster without asking the FAT, but never
    // to a cluster the FAT has no entry for.
    const quint64 needed = (size >> m_blockShift) + ((size & (m_blockBytes - 1)) ? 1 : 0);
    auto* file = new Fat32File;
    file->firstCluster = quint32(cluster);
    file->carvedClusters = quint32(qMin(needed, m_clusterEnd - cluster));
    return file;
}
