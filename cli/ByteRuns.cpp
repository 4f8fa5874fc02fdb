#include "cli/ByteRuns.h"
#include "scan/CheckedMath.h"
#include "scan/VolumeScan.h"

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    Extents extents;
    // Resident NTFS content has no extents: the record's fix-ups make its raw bytes differ from the content.
    if (!volume || !file || !volume->extentsOf(*file, &extents))
        return {};
    const quint64 base = checked::addSat(volume->handle.base(), volume->partOffset);
    QList<Run> runs;
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        // Extents are already joined where they follow on, and clamped to the file and its volume.
        if (!e.hole)
            runs.append({fileOffset, checked::addSat(base, e.offset), e.length});
        fileOffset += e.length;
    }
    return runs;
}
