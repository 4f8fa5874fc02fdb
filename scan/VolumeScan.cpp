#include "scan/VolumeScan.h"
#include "carving/CarvingContext.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "results/SavedTree.h"
#include "scan/CheckedMath.h"
#include "scan/RestoreSink.h"

#include "results/TreeLock.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace {
// Units of work between two looks at the pause-and-stop state: often enough
// for a prompt pause, rarely enough that the lock costs nothing.
constexpr int kCheckEvery = 1000;
// Progress calls between two looks at the clock: reading it costs as much as a
// small unit of work, and 64 units of a readable disk pass in well under a millisecond.
constexpr int kClockEvery = 64;
} // namespace

namespace {
// The last device read of a restore on this thread, so the slice handed to the
// sink right after it can be told which of its bytes are zeros standing in for
// unreadable sectors. Thread-local: previews read on other threads meanwhile.
struct SliceRead {
    QList<BadRange> bad;
    quint64 position = 0;
    quint64 bytes = 0;
    qint64 got = 0;
    bool fresh = false;
    bool failed = false;      // a read of stored bytes found the device gone
    QList<BadRange> damaged;  // file ranges the reader reported itself
};
thread_local SliceRead* restoreRead = nullptr;
} // namespace

VolumeScan::VolumeScan(const QString& name, QObject* parent) : PartScan(name, parent) {}

VolumeScan::VolumeScan(const QString& name, DeviceHandle h, quint64 offset, QObject* parent)
    : PartScan(name, std::move(h), offset, parent)
{
}

VolumeScan::~VolumeScan()
{
    stopAndWait();
    freeTree();
}

void VolumeScan::freeTree()
{
    TreeLock::Write lock(ResultTree::lockOf(rootFolder));
    delete rootFolder;
    rootFolder = nullptr;
}

void VolumeScan::setRunning(bool running) { pauseOrResume(running); }
void VolumeScan::stop() { requestStop(); }

void VolumeScan::run()
{
    if (!restoreDir.isEmpty())
        undelete(restoreDir);
    else
        scan();
}

void VolumeScan::scan()
{
    if (rootFolder)
        rootFolder->partIndex = partIndex;
    resumePoint = ResumePoint();
    qCritical("begin");
    {
        QMutexLocker lock(&mutex);
        runState = Running;
    }
    if (!openProblem().isEmpty()) {
        // Nothing behind the boot sector can be read: the scan ends at once, empty.
        emit scanBegin(0);
        scanFinished();
        emit scanDone(0, 0);
        return;
    }
    m_progressScale = checked::addSat(progressTotal(), doExtra ? carvingUnits() : 0);
    emit scanBegin(int(qMin<quint64>(m_progressScale, INT_MAX)));
    m_progressClock.start();
    m_progressShown = 0;
    m_sinceCheck = 0;
    m_sinceClock = 0;
    ScanTotals totals;
    const bool finished = rootFolder && metadataOrResume(totals);
    qCritical("results=%llu,totalsize=%llu", static_cast<unsigned long long>(totals.results),
              static_cast<unsigned long long>(totals.totalSize));
    bool whole = finished;
    if (doExtra && finished && resumeFrom.phase != ResumePoint::Done) {
        carveFreeBlocks(carvingContext(totals));
        // A stop leaves the point the walk last stood at; a carving that can't
        // go on mid-way has recorded none, and a resume begins again.
        whole = !stopRequested();
    }
    if (whole)
        noteResumePoint(pointAt(ResumePoint::Done, 0, 0, totals));
    scanFinished();
    emit scanDone(totals.results, totals.totalSize);
    qCritical("results=%llu,totalsize=%llu", static_cast<unsigned long long>(totals.results),
              static_cast<unsigned long long>(totals.totalSize));
}

bool VolumeScan::metadataOrResume(ScanTotals& totals)
{
    const ResumePoint from = resumeFrom;
    const bool goOn = from.phase == ResumePoint::Done
                      || (from.phase == ResumePoint::Carving && canResumeCarving() && prepareCarvingResume(from.scannerState));
    if (goOn) {
        totals = {from.runningNumber, from.results, from.totalSize};
        return true;
    }
    if (from.phase != ResumePoint::Start) {
        // A saved point this scanner can't go on from: the scan begins again
        // on an empty tree, so nothing is listed twice.
        SavedTree::clear(rootFolder);
        resumeFrom = ResumePoint();
    }
    return scanMetadata(totals);
}

ResumePoint VolumeScan::pointAt(ResumePoint::Phase phase, quint64 position, quint64 end, const ScanTotals& totals)
{
    ResumePoint p;
    p.phase = phase;
    p.position = position;
    p.end = end;
    p.runningNumber = totals.position;
    p.results = totals.results;
    p.totalSize = totals.totalSize;
    return p;
}

bool VolumeScan::stopRequested()
{
    QMutexLocker lock(&mutex);
    return runState == Stopped || deviceFailed();
}

CarvingContext VolumeScan::carvingContext(ScanTotals& totals)
{
    CarvingContext c;
    c.root = rootFolder;
    c.partIndex = partIndex;
    c.read = [this](void* buffer, quint64 bytes, quint64 offset) { return readVolume(buffer, bytes, offset); };
    c.readAhead = [this](void* buffer, quint64 bytes, quint64 offset, QList<BadRange>* bad) -> qint64 {
        uint64_t position = 0;
        return checked::add(partOffset, offset, &position) ? readBeside(buffer, bytes, position, bad) : -1;
    };
    c.countRead = [this](qint64 got, const QList<BadRange>& bad) { countReadErrors(got < 0 || !bad.isEmpty() ? 1 : 0); };
    c.secondReader = secondReader();
    c.checkPoint = [this] { return checkPoint(); };
    // The walk takes the rest of the scale, from where the metadata pass ended.
    const quint64 from = qMin(totals.position, m_progressScale);
    c.scanOne = [this, from](quint64 done, quint64 total) {
        const double share = total ? double(qMin(done, total)) / double(total) : 1.0;
        reportProgress(from + quint64(share * double(m_progressScale - from)));
    };
    c.runningNumber = &totals.position;
    c.results = &totals.results;
    c.totalSize = &totals.totalSize;
    c.listed = listedExtents();
    c.volumeBytes = volumeBytes();
    c.accepts = [this](const QString& name) { return filterAccepts(name); };
    c.resume = resumeFrom.phase == ResumePoint::Carving;
    c.resumeBlock = resumeFrom.position;
    // A FAT file scan walks the free clusters too, for folders only: not a carving pass to go on from.
    if (canResumeCarving() && doExtra)
        c.atCheck = [this, &totals](quint64 block, quint64 end) {
            ResumePoint p = pointAt(ResumePoint::Carving, block, end, totals);
            p.scannerState = carvingState();
            noteResumePoint(p);
        };
    return c;
}

bool VolumeScan::filterAccepts(const QString& name) const
{
    if (fileFilter == QLatin1String("*"))
        return true;
    // An empty filter is one empty ending, which every name has.
    const QStringList endings = fileFilter.split(QLatin1Char(';'), Qt::KeepEmptyParts);
    return std::any_of(endings.begin(), endings.end(), [&](const QString& e) { return name.endsWith(e, Qt::CaseSensitive); });
}

Extents VolumeScan::listedExtents() const
{
    Extents all;
    QList<const FolderNode*> pending{rootFolder};
    while (!pending.isEmpty()) {
        const FolderNode* folder = pending.takeLast();
        for (const FolderNode* child : folder->children)
            pending.append(child);
        for (const FoundFile* file : folder->files) {
            Extents extents;
            if (extentsOf(*file, &extents))
                for (const Extent& e : extents)
                    if (!e.hole && e.length)
                        all.append(e);
        }
    }
    std::sort(all.begin(), all.end(), [](const Extent& a, const Extent& b) { return a.offset < b.offset; });
    Extents merged;
    for (const Extent& e : all) {
        if (!merged.isEmpty() && e.offset <= merged.last().offset + merged.last().length)
            merged.last().length = qMax(merged.last().length, e.offset + e.length - merged.last().offset);
        else
            merged.append(e);
    }
    return merged;
}

bool VolumeScan::step(quint64 position)
{
    if (++m_sinceCheck >= kCheckEvery) {
        m_sinceCheck = 0;
        if (checkPoint())
            return true;
    }
    reportProgress(position);
    return false;
}

void VolumeScan::reportProgress(quint64 position)
{
    if (++m_sinceClock < kClockEvery)
        return;
    m_sinceClock = 0;
    if (!m_progressClock.isValid() || m_progressClock.elapsed() < kProgressMsecs)
        return;
    m_progressClock.restart();
    // Passes that count in their own way meet at their seams: the bar never
    // goes back and never passes the total it announced.
    m_progressShown = qBound(m_progressShown, position, qMax(m_progressShown, m_progressScale));
    emit scanOne(int(qMin<quint64>(m_progressShown, INT_MAX)));
}

qint64 VolumeScan::readVolume(void* buffer, quint64 bytes, quint64 volumeOffset)
{
    uint64_t position = 0;
    if (!checked::add(partOffset, volumeOffset, &position)) {
        ++m_readErrors;
        return -1;
    }
    // Sectors that could not be read come back as zeros; a read that met any
    // counts as a read error, so a scan says how much of the volume it missed.
    QList<BadRange> scanBad;
    QList<BadRange>* bad = restoreRead ? &restoreRead->bad : &scanBad;
    bad->clear();
    const qint64 got = read(buffer, bytes, position, bad);
    if (restoreRead) {
        restoreRead->position = position;
        restoreRead->bytes = bytes;
        restoreRead->got = got;
        restoreRead->fresh = true;
    }
    if (got < 0 || !bad->isEmpty())
        ++m_readErrors;
    return got;
}

qint64 VolumeScan::readStoredBytes(void* buffer, quint64 bytes, quint64 volumeOffset)
{
    uint64_t position = 0;
    QList<BadRange> bad;
    const qint64 got = checked::add(partOffset, volumeOffset, &position) ? read(buffer, bytes, position, &bad) : -1;
    if (got < 0 || !bad.isEmpty())
        ++m_readErrors;
    if (restoreRead && got < 0)
        restoreRead->failed = true;
    return bad.isEmpty() ? got : -1;
}

void VolumeScan::noteDamaged(quint64 fileOffset, quint64 bytes)
{
    if (restoreRead)
        addBadRange(&restoreRead->damaged, {fileOffset, bytes});
}

QList<VolumeScan::StoredRun> VolumeScan::storedRuns(const FoundFile& file) const
{
    QList<StoredRun> runs;
    Extents extents;
    if (!extentsOf(file, &extents))
        return runs;
    quint64 fileOffset = 0;
    for (const Extent& e : extents) {
        if (!e.hole)
            runs.append({fileOffset, e.offset, e.length, 0});
        fileOffset = checked::addSat(fileOffset, e.length);
    }
    return runs;
}

bool VolumeScan::hasContent(const FoundFile& file) const
{
    Extents extents;
    return extentsOf(file, &extents);
}

bool VolumeScan::readContent(const FoundFile& file, const ContentSink& sink)
{
    Extents extents;
    if (!extentsOf(file, &extents))
        return false;
    const auto readAt = [this](void* buffer, quint64 bytes, quint64 offset) { return readVolume(buffer, bytes, offset); };
    m_readErrors += ExtentReader::stream(extents, readAt, sink);
    return true;
}

quint64 VolumeScan::fileContent(char* buffer, FoundFile* record)
{
    if (!record)
        return 0;
    if (!buffer)
        return record->size;
    std::memset(buffer, 0, size_t(record->size));
    const quint64 size = record->size;
    const bool any = readContent(*record, [buffer, size](quint64 at, const char* data, quint64 bytes) {
        if (data && at < size)
            std::memcpy(buffer + at, data, size_t(qMin(bytes, size - at)));
    });
    return any ? record->size : 0;
}

void VolumeScan::undelete(QString targetDir)
{
    restoreTree(targetDir, [this](FoundFile* file, RestoreSink& sink) { return writeContent(*file, sink); });
    finishRestore();
}

RestoreFailure VolumeScan::writeContent(const FoundFile& file, RestoreSink& sink)
{
    if (!hasContent(file))
        return file.size == 0 ? RestoreFailure::None : RestoreFailure::RecordUnreadable;
    SliceRead slice;
    restoreRead = &slice;
    bool gone = false;
    // Holes are left unwritten; the final resize fills them with zeros.
    readContent(file, [&](quint64 offset, const char* data, quint64 bytes) {
        if (slice.fresh) {
            slice.fresh = false;
            gone = gone || slice.got < 0;
            const quint64 kept = slice.got > 0 ? quint64(slice.got) : 0;
            sink.noteBadReads(slice.bad, slice.position, offset, bytes);
            if (kept < qMin(bytes, slice.bytes))
                sink.noteOutside(offset + kept, qMin(bytes, slice.bytes) - kept);
        }
        if (data && !gone)
            sink.write(offset, data, bytes);
    });
    restoreRead = nullptr;
    for (const BadRange& r : slice.damaged)
        sink.noteDamaged(r.offset, r.length);
    return gone || slice.failed ? RestoreFailure::DeviceFailed : RestoreFailure::None;
}
