#include "carving/RawVolumeScan.h"
#include "carving/CarvingContext.h"
#include "carving/CarvingPass.h"
#include "results/CarvedFile.h"
#include "results/ExtentList.h"

#include <climits>

namespace {
constexpr int kSectorShift = 9; // progress counts 512-byte sectors, whatever the block size found
} // namespace

RawVolumeScan::RawVolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent)
    : VolumeScan(deviceName, std::move(handle), partOffset, parent)
{
    setVolumeBytes(handle.length() > partOffset ? handle.length() - partOffset : 0);
}

RawVolumeScan::~RawVolumeScan()
{
    stopAndWait();
}

bool RawVolumeScan::scanMetadata(ScanTotals&)
{
    // Done on the scan's thread: the sample reads up to a few dozen MiB.
    m_alignment = BlockAlignment::guess([this](void* b, quint64 n, quint64 at) { return readVolume(b, n, at); }, volumeBytes());
    qDebug("carving in blocks of %u bytes from byte %u", m_alignment.blockBytes, m_alignment.offset);
    return true;
}

bool RawVolumeScan::prepareCarvingResume(const QByteArray& state)
{
    ScanTotals none;
    scanMetadata(none);
    return state.isEmpty();
}

quint64 RawVolumeScan::progressTotal() const
{
    return volumeBytes() >> kSectorShift;
}

void RawVolumeScan::carveFreeBlocks(const CarvingContext& context)
{
    const BlockAlignment a = m_alignment;
    const CarvingContext& c = context;
    CarvingRegion region;
    region.blockBytes = a.blockBytes;
    region.firstOffset = a.offset;
    region.endBlock = volumeBytes() > a.offset ? (volumeBytes() - a.offset) / a.blockBytes : 0;
    CarvingPass::run(c, region, false, [a](const CarvingPass::Found& found) {
        auto* file = new CarvedFile;
        file->volumeOffset = a.offset + found.firstBlock * a.blockBytes;
        return file;
    });
}

bool RawVolumeScan::extentsOf(const FoundFile& found, Extents* extents) const
{
    const auto* file = dynamic_cast<const CarvedFile*>(&found);
    if (!file)
        return false;
    ExtentList list(volumeBytes(), file->size);
    list.add(file->volumeOffset, file->size);
    *extents = list.take();
    return true;
}
