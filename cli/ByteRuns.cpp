#include "cli/ByteRuns.h"
#include "scan/CheckedMath.h"
#include "scan/VolumeScan.h"

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    QList<Run> runs;
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    Extents extents;
    // Content kept inside a record (NTFS resident data) has no extents.
    if (!volume || !file || !volume->extentsOf(*file, &extents))
        return runs;
    const quint64 base = checked::addSat(volume->handle.base(), volume->partOffset);
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        if (!e.hole)
            runs.append({fileOffset, checked::addSat(base, e.offset), e.length});
        fileOffset = checked::addSat(fileOffset, e.length);
    }
    return runs;
}
