#include "cli/ByteRuns.h"
#include "results/FoundFile.h"
#include "scan/CheckedMath.h"
#include "scan/VolumeScan.h"

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    QList<Run> runs;
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    Extents extents;
    if (!volume || !file || !volume->extentsOf(*file, &extents))
        return runs; // content inside an MFT record has no run of its own
    const quint64 base = checked::addSat(volume->handle.base(), volume->partOffset);
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        // Holes read as zeros and lie nowhere on the image.
        if (!e.hole) {
            const Run run{fileOffset, checked::addSat(base, e.offset), e.length};
            if (!runs.isEmpty() && runs.last().fileOffset + runs.last().length == run.fileOffset
                && runs.last().imageOffset + runs.last().length == run.imageOffset)
                runs.last().length += run.length;
            else
                runs.append(run);
        }
        fileOffset = checked::addSat(fileOffset, e.length);
    }
    return runs;
}
