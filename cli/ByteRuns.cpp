#include "cli/ByteRuns.h"
#include "scan/CheckedMath.h"
#include "scan/VolumeScan.h"

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    Extents extents;
    if (!volume || !file || !volume->extentsOf(*file, &extents))
        return {};
    // Extents count from the volume's start; the listing from the image's.
    const quint64 volumeStart = checked::addSat(volume->handle.base(), volume->partOffset);
    QList<Run> runs;
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        if (!e.hole)
            runs.append({fileOffset, checked::addSat(volumeStart, e.offset), e.length});
        fileOffset = checked::addSat(fileOffset, e.length);
    }
    return runs;
}
