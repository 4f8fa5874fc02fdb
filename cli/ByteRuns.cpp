#include "cli/ByteRuns.h"
#include "results/FoundFile.h"
#include "scan/CheckedMath.h"
#include "scan/VolumeScan.h"

namespace {
// Appends a run, joining it to the last one when it continues it on the image.
void append(QList<ByteRuns::Run>* runs, ByteRuns::Run run, quint64 fileSize)
{
    if (run.fileOffset >= fileSize)
        return;
    run.length = qMin(run.length, fileSize - run.fileOffset);
    if (!runs->isEmpty()) {
        ByteRuns::Run& last = runs->last();
        if (last.fileOffset + last.length == run.fileOffset && last.imageOffset + last.length == run.imageOffset) {
            last.length += run.length;
            return;
        }
    }
    runs->append(run);
}

} // namespace

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    QList<Run> runs;
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    Extents extents;
    // Content kept outside extents (an NTFS record's resident data) has no runs on the image.
    if (!volume || !file || !volume->extentsOf(*file, &extents))
        return runs;
    const quint64 base = volume->handle.base() + volume->partOffset;
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        if (!e.hole)
            append(&runs, {fileOffset, checked::addSat(base, e.offset), e.length}, file->size);
        fileOffset += e.length;
    }
    return runs;
}
