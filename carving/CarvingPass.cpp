#include "carving/CarvingPass.h"
#include "carving/BlockWindow.h"
#include "carving/CarveKinds.h"
#include "carving/CarveSource.h"
#include "results/DataRun.h"
#include "results/Fat32File.h"
#include "results/NtfsFile.h"
#include "scan/CheckedMath.h"

#include <QDebug>
#include <algorithm>

namespace {
constexpr quint64 kFat32FirstDataCluster = 2; // clusters 0 and 1 have FAT entries but no place on disk
constexpr quint32 kFatEntryBytes = 4;
constexpr quint64 kFat32ClusterLimit = quint64(1) << 28; // FAT32 entries have 28 bits; the top four are reserved
} // namespace

CarvingPass::CarvingPass(const CarvingContext& context, const CarvingRegion& region, bool ntfs, const RecordFn& record)
    : m_context(context), m_region(region), m_kinds(CarveKinds::all()), m_record(record)
{
    if (region.carve)
        m_folders.emplace(context.root, context.partIndex, ntfs, context.resume);
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
    const quint32 bytes = m_region.blockBytes;
    const bool usable = checked::isPowerOfTwo(bytes) && bytes >= kMinBlockBytes && bytes <= kMaxBlockBytes;
    if (!usable)
        qCritical("%s: cluster size %u refused, nothing carved", "CarvingPass", bytes);
    return usable;
}

bool CarvingPass::run(const CarvingContext& context, const CarvingRegion& region, bool ntfsFolders, const RecordFn& record)
{
    qDebug("doextra");
    if (!contextUsable(context))
        return true;
    CarvingRegion bounded = region;
    // A file system that claims more blocks than the device holds is walked to the device's end only.
    if (context.volumeBytes > region.firstOffset && region.blockBytes)
        bounded.endBlock = qMin(region.endBlock, region.firstBlock + (context.volumeBytes - region.firstOffset) / region.blockBytes);
    CarvingPass pass(context, bounded, ntfsFolders, record);
    return !pass.blockSizeUsable() || pass.walk();
}

bool CarvingPass::runNtfs(const CarvingContext& context, const NtfsCarvingGeometry& geometry)
{
    const quint64 described = geometry.clusterFree ? geometry.bitmapClusters : geometry.clusterCount;
    CarvingRegion region;
    region.blockBytes = geometry.clusterBytes;
    region.endBlock = geometry.clusterCount ? qMin(geometry.clusterCount, described) : described;
    region.free = geometry.clusterFree;
    return run(context, region, true, [](const Found& found) {
        auto* file = new NtfsFile;
        file->setRuns({DataRun{found.blocks, found.blocks, found.firstBlock, false}});
        return file;
    });
}

bool CarvingPass::runFat32(const CarvingContext& context, const Fat32CarvingGeometry& geometry,
                           const CarvingRegion::ClaimFn& claims, bool carve)
{
    CarvingRegion region;
    region.blockBytes = geometry.clusterBytes;
    region.firstBlock = kFat32FirstDataCluster;
    region.firstOffset = geometry.dataOffset;
    region.endBlock = qMin(geometry.fatBytes / kFatEntryBytes, kFat32ClusterLimit);
    region.free = geometry.clusterFree;
    region.claims = claims;
    region.carve = carve;
    return run(context, region, false, [](const Found& found) {
        auto* file = new Fat32File;
        file->firstCluster = quint32(found.firstBlock);
        file->carvedClusters = quint32(found.blocks);
        return file;
    });
}

bool CarvingPass::walk()
{
    const quint64 end = m_region.endBlock;
    BlockWindow window(m_context.read, {m_region.blockBytes, m_region.firstBlock, m_region.firstOffset, end},
                       [this](quint64 b) { return isFree(b); },
                       {m_context.readAhead, m_context.countRead, m_context.secondReader});
    const quint64 first = m_context.resume ? qMax(m_region.firstBlock, m_context.resumeBlock) : m_region.firstBlock;
    if (m_context.atCheck)
        m_context.atCheck(first, end);
    for (quint64 b = first; b < end; ++b) {
        // Behind the device's end nothing more can be read, whatever the file system says.
        if (window.pastEnd(b))
            break;
        if (checkDue(b))
            return false;
        if (m_context.scanOne)
            m_context.scanOne(b - m_region.firstBlock + window.readAhead(b), end - m_region.firstBlock);
        ++*m_context.runningNumber;
        size_t bytes = 0;
        const uchar* head = isFree(b) ? window.block(b, &bytes) : nullptr;
        if (head && m_region.claims && m_region.claims(b, head, bytes))
            continue;
        const quint64 covered = head && m_region.carve ? carve(head, bytes, b) : 0;
        if (covered > 1) {
            // The blocks of the found file are not looked at again.
            b += covered - 1;
            *m_context.runningNumber += covered - 1;
        }
    }
    return true;
}

bool CarvingPass::checkDue(quint64 block)
{
    bool stop = false;
    if (m_checkCounter % kCheckEvery == 0) {
        if (m_context.atCheck)
            m_context.atCheck(block, m_region.endBlock);
        stop = m_context.checkPoint && m_context.checkPoint();
        m_checkCounter = 1;
    }
    ++m_checkCounter;
    return stop;
}

bool CarvingPass::isListed(quint64 block) const
{
    const Extents& listed = m_context.listed;
    if (listed.isEmpty() || block < m_region.firstBlock)
        return false;
    const quint64 offset = m_region.firstOffset + (block - m_region.firstBlock) * m_region.blockBytes;
    // The last extent that starts before the block's end.
    auto it = std::upper_bound(listed.begin(), listed.end(), offset + m_region.blockBytes - 1,
                               [](quint64 at, const Extent& e) { return at < e.offset; });
    return it != listed.begin() && std::prev(it)->offset + std::prev(it)->length > offset;
}

quint64 CarvingPass::freeBlocksFrom(quint64 block, quint64 blocks) const
{
    quint64 n = 0;
    while (n < blocks && isFree(block + n))
        ++n;
    return n;
}

quint64 CarvingPass::carve(const uchar* head, size_t headBytes, quint64 block)
{
    const CarveKind* kind = m_kinds.match(head, headBytes);
    if (!kind)
        return 0;
    const quint64 blockBytes = m_region.blockBytes;
    const quint64 offset = m_region.firstOffset + (block - m_region.firstBlock) * blockBytes;
    const quint64 limit = qMin(kind->maxBytes(), checked::mulSat(m_region.endBlock - block, blockBytes));
    CarveSource source(m_context.read, {offset, m_region.blockBytes, head, headBytes, &m_kinds}, limit);
    CarveEnd end = kind->findEnd(source);
    if (end.length > limit) {
        end.length = limit;
        end.cut = true;
    }
    if (end.length == 0)
        return 0;
    // A file lies in free blocks only: a block in use ends what can be of it.
    const quint64 wanted = (end.length + blockBytes - 1) / blockBytes;
    const quint64 blocks = freeBlocksFrom(block, wanted);
    if (blocks < wanted) {
        end.length = blocks * blockBytes;
        end.cut = true;
    }
    file(end, block, blocks, kind->extension());
    return blocks;
}

void CarvingPass::file(const CarveEnd& end, quint64 block, quint64 blocks, const QString& fallbackExtension)
{
    const QString extension = end.extension.isEmpty() ? fallbackExtension : end.extension;
    // A type the user left out is passed over like any found file, but not listed.
    if (m_context.accepts && !m_context.accepts(QLatin1Char('.') + extension))
        return;
    FoundFile* record = m_record({block, blocks});
    record->setName(m_folders->takeName(extension, end.stem, *m_context.runningNumber));
    record->modifiedMsecs = end.modifiedMsecs;
    record->size = end.length;
    record->cut = end.cut;
    m_folders->file(extension, record);
    ++*m_context.results;
    *m_context.totalSize = checked::addSat(*m_context.totalSize, end.length);
}
