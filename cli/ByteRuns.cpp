#include "cli/ByteRuns.h"
#include "scan/CheckedMath.h"
#include "scan/VolumeScan.h"

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    QList<Run> runs;
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    // Content kept inside a record (NTFS resident data) has no stored runs.
    if (!volume || !file)
        return runs;
    const quint64 base = checked::addSat(volume->handle.base(), volume->partOffset);
    for (const VolumeScan::StoredRun& r : volume->storedRuns(*file))
        runs.append({r.fileOffset, checked::addSat(base, r.volumeOffset), r.length, r.expandsTo});
    return runs;
}
