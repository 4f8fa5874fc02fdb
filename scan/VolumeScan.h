#pragma once
#include "results/Extent.h"
#include "scan/ExtentReader.h"
#include "scan/PartScan.h"

#include <QElapsedTimer>
#include <atomic>

struct CarvingContext;

// Base of the scanner of one volume of any file system. It owns what every
// volume scanner does the same way: run() as a scan or, with restoreDir set, a
// restore; scanBegin, throttled scanOne, the check points and scanDone; the
// hand-off to the carving pass; reading a found file's content for previews and
// for the restore; and one policy for read errors: what can't be read counts
// as zeros and is counted (readErrors), and the scan or restore goes on.
//
// A file system adds, in a subclass:
//  - opening: the constructor reads what it needs and calls setVolumeBytes();
//  - scanMetadata(): walks its metadata, files deleted files below rootFolder,
//    counts them in the totals and calls step() at each unit of its work;
//  - progressTotal(): the last position step() will be given;
//  - extentsOf(): a found file's content as extents, built with ExtentList
//    (which clamps them to the volume);
//  - carveFreeBlocks(): the carving pass over its free blocks;
//  - optionally readContent() (content that is not in extents) and
//    scanFinished() (drop what only the scan needed).
class VolumeScan : public PartScan {
    Q_OBJECT
public:
    using ContentSink = ExtentReader::Sink;

    explicit VolumeScan(const QString& deviceName, QObject* parent = nullptr);
    VolumeScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    // Stops the thread and frees the tree below rootFolder, which the scanner owns.
    ~VolumeScan() override;

    // With a null buffer the file's size; otherwise fills size bytes of buffer
    // and returns the size, or 0 when the record holds no content.
    quint64 fileContent(char* buffer, FoundFile* record) override;
    // Writes the checked folders' files below targetDir (see RestoreWalk).
    void undelete(QString targetDir) override;
    void setRunning(bool running) override;
    void stop() override;

    // A found file's content as extents in file order, clamped to the volume
    // and to the file's size. False when the record holds nothing to read
    // (then nothing is written for it) or is not of this file system.
    virtual bool extentsOf(const FoundFile& file, Extents* extents) const = 0;
    // Whether extentsOf has content for the file; the restore asks before it
    // makes a file. By default by building the extents.
    virtual bool hasContent(const FoundFile& file) const;
    // Streams a found file's content; false when there is none. By default
    // over extentsOf; a file system overrides it for content kept elsewhere.
    virtual bool readContent(const FoundFile& file, const ContentSink& sink);

    // A stretch of a found file's stored bytes, for forensic listings.
    struct StoredRun {
        quint64 fileOffset = 0;
        quint64 volumeOffset = 0;
        quint64 length = 0;
        // The file bytes that stored bytes expand to (compressed data, given
        // on the first run of each unit); 0 when they are the file's own.
        quint64 expandsTo = 0;
    };
    // Where the file's bytes are stored, in file order, holes left out. By
    // default its extents, each standing for as many file bytes as it holds.
    virtual QList<StoredRun> storedRuns(const FoundFile& file) const;

    // Bytes of the volume that lie on the device: no read goes behind them.
    quint64 volumeBytes() const { return m_volumeBytes; }
    // Reads that failed or fell short, in scans and restores.
    quint64 readErrors() const { return m_readErrors; }

protected:
    struct ScanTotals {
        quint64 position = 0; // the progress figure; the carving pass goes on from it
        quint64 results = 0;
        quint64 totalSize = 0;
    };

    // The metadata pass: files what it finds, counts it in totals and calls
    // step() at each unit of work. False when a check point said stop.
    virtual bool scanMetadata(ScanTotals& totals) = 0;
    // The last position the metadata pass reports, for scanBegin's scale.
    virtual quint64 progressTotal() const = 0;
    // What the carving pass adds to the scale, in the metadata pass's units of
    // reading: 0 where that pass already counts the blocks carving walks (FAT,
    // exFAT), so the walk takes what the metadata pass left of the scale.
    virtual quint64 carvingUnits() const { return 0; }
    // Runs the carving pass (CarvingPass) over the file system's free blocks.
    virtual void carveFreeBlocks(const CarvingContext& context) = 0;
    // After both passes, before scanDone: drops what only the scan needed.
    virtual void scanFinished() {}
    // Whether this file system's carving pass can go on mid-way over a saved
    // tree. When not (the default) its scan saves no carving position, and a
    // resume scans from the beginning.
    virtual bool canResumeCarving() const { return false; }
    // Makes ready for a carving pass that goes on over a saved tree, without
    // the metadata pass: what the pass needs of the file system, from the disk,
    // from the files in the tree and from state (what carvingState gave at
    // that point). False when state does not fit: the scan begins again.
    virtual bool prepareCarvingResume(const QByteArray& state) { return state.isEmpty(); }
    // What the carving pass carries besides the tree, at a check point.
    virtual QByteArray carvingState() const { return {}; }

    // One unit of the metadata pass, at progress figure position: a check
    // point every kCheckEvery units, progress at most every kProgressMsecs.
    // True when the scan is to stop.
    bool step(quint64 position);
    // Emits scanOne when the last one was at least kProgressMsecs ago (the
    // clock is looked at every kClockEvery calls).
    void reportProgress(quint64 position);
    // Reads at a byte offset of the volume; bytes read, possibly short, or -1 (counted).
    qint64 readVolume(void* buffer, quint64 bytes, quint64 volumeOffset);
    // Reads stored bytes that are not the file's byte for byte (compressed
    // data): like readVolume, but a read that met bad sectors returns -1, and
    // the restore in progress takes its damaged file ranges from noteDamaged.
    qint64 readStoredBytes(void* buffer, quint64 bytes, quint64 volumeOffset);
    // During a restore: the file's bytes in this range are wrong (zeros or worse).
    void noteDamaged(quint64 fileOffset, quint64 bytes);
    void setVolumeBytes(quint64 bytes) { m_volumeBytes = bytes; }
    void countReadErrors(quint64 count) { m_readErrors += count; }
    // Whether a file of this name is of a type the user chose.
    bool filterAccepts(const QString& name) const;
    // Where the files listed so far lie, merged, in ascending order.
    Extents listedExtents() const;
    // What the carving pass needs of this scanner, its counters in totals.
    CarvingContext carvingContext(ScanTotals& totals);
    // Frees the tree below rootFolder under the tree's write lock.
    virtual void freeTree();

    void run() override;

private:
    quint64 m_progressScale = 0; // what scanBegin announced
    quint64 m_progressShown = 0; // what the last scanOne said
    void scan();
    // The metadata pass, or the counters of the saved scan it goes on from.
    bool metadataOrResume(ScanTotals& totals);
    static ResumePoint pointAt(ResumePoint::Phase phase, quint64 position, quint64 end, const ScanTotals& totals);
    bool stopRequested();
    // Writes one file's content for the restore, noting the stretches that read as zeros.
    RestoreFailure writeContent(const FoundFile& file, RestoreSink& sink);

    quint64 m_volumeBytes = 0;
    std::atomic<quint64> m_readErrors{0};
    QElapsedTimer m_progressClock;
    int m_sinceCheck = 0;
    int m_sinceClock = 0;
};
