#include "cli/ByteRuns.h"
#include "ntfs/NtfsVolumeScan.h"
#include "results/NtfsFile.h"
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

QList<ByteRuns::Run> ntfsRuns(const NtfsVolumeScan& scan, const NtfsFile& file)
{
    QList<ByteRuns::Run> runs;
    if (file.resident)
        return runs; // the record's fix-ups make its raw bytes differ from the content
    const quint64 base = scan.handle.base() + scan.partOffset;
    const quint64 cluster = scan.geometry.clusterBytes;
    for (const DataRun* r : file.runs) {
        if (r->sparse)
            continue;
        const quint64 first = checked::mulSat(r->vcnEnd - qMin(r->length, r->vcnEnd), cluster);
        append(&runs, {first, checked::addSat(base, checked::mulSat(r->lcn, cluster)), checked::mulSat(r->length, cluster)}, file.size);
    }
    return runs;
}

// Over the extents the restore reads, so the listing and the restore agree.
QList<ByteRuns::Run> extentRuns(const VolumeScan& scan, const FoundFile& file)
{
    QList<ByteRuns::Run> runs;
    Extents extents;
    if (!scan.extentsOf(file, &extents))
        return runs;
    const quint64 base = scan.handle.base() + scan.partOffset;
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        if (!e.hole)
            append(&runs, {fileOffset, checked::addSat(base, e.offset), e.length}, file.size);
        fileOffset += e.length;
    }
    return runs;
}
} // namespace

QList<ByteRuns::Run> ByteRuns::of(const PartScan* scanner, const FoundFile* file)
{
    const auto* ntfs = dynamic_cast<const NtfsVolumeScan*>(scanner);
    const auto* ntfsFile = dynamic_cast<const NtfsFile*>(file);
    if (ntfs && ntfsFile)
        return ntfsRuns(*ntfs, *ntfsFile);
    const auto* volume = dynamic_cast<const VolumeScan*>(scanner);
    if (volume && file && !ntfs)
        return extentRuns(*volume, *file);
    return {};
}
