#pragma once
#include "results/ResultFilter.h"
#include "scan/RestoreReport.h"
#include "scan/RestoreWalk.h"
#include "scan/ResumePoint.h"
#include "scan/device/DeviceHandle.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QString>
#include <QThread>
#include <QWaitCondition>
#include <atomic>
#include <functional>

struct FolderNode;
struct FoundFile;

// Base of every thread that reads a volume or a disk: holds the device, the
// options of a scan, the pause-and-stop state and the signals a scan reports
// through. One object serves two runs: the scan, and later the restore (a run
// with restoreDir set).
class PartScan : public QThread {
    Q_OBJECT
public:
    enum RunState { Running = 0, Paused = 1, Stopped = 2 };
    // Progress signals come at most this often (about 20 a second): a bar
    // moves no finer, and more would only queue up in the window's loop.
    static constexpr qint64 kProgressMsecs = 50;

    // A one-character name is a drive letter and opens that volume at once.
    explicit PartScan(const QString& deviceName, QObject* parent = nullptr);
    // Works on a handle that a disk search opened, at a byte offset on it.
    PartScan(const QString& deviceName, DeviceHandle handle, quint64 partOffset, QObject* parent = nullptr);
    ~PartScan() override;

    // With a null buffer: the size the buffer must have. Otherwise fills it with
    // the file's content and returns the file's size.
    virtual quint64 fileContent(char* buffer, FoundFile* record);
    virtual void undelete(QString targetDir);
    virtual void setRunning(bool running);
    virtual void stop();
    virtual void parseBootSector();

    void openVolume();
    // MBR partition type of the open volume, 0 when unknown.
    int getPartType();
    // At an absolute byte position of the device (partOffset not added).
    // Returns bytes read, possibly short at the device's end, or -1 once the
    // device has gone. Unreadable sectors read as zeros; with bad given, their
    // ranges are added to it.
    qint64 read(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad = nullptr);
    // read() for a thread that reads ahead of the scan's own reads. Where a
    // second reader helps (secondReader()) it does not wait for handleLock:
    // every source takes reads from several threads at once.
    qint64 readBeside(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad);
    // Whether a second thread reading ahead speeds the device up: not on a spinning disk.
    bool secondReader() const { return handle.isValid() && !handle.rotational(); }
    // In blocks of 2^shift bytes relative to the volume; whole blocks read, or -1.
    qint64 readBlocks(void* buffer, quint32 count, quint64 position, int shift, QList<BadRange>* bad = nullptr);
    // True once the device stopped answering: the scan ends with what it has
    // and the caller says "设备读取失败".
    bool deviceFailed() const;
    // Why the volume's structures can't carry a scan (its boot sector or
    // metadata are unreadable); empty when they can. Such a scan ends at once
    // with nothing found, and the caller shows this text.
    QString openProblem() const { return m_openProblem; }
    // The sectors found unreadable so far (device positions).
    QList<BadRange> badRanges() const;
    void setRestoreDir(const QString& dir) { restoreDir = dir; }

    FolderNode* rootFolder = nullptr;
    QString fileFilter;
    bool doExtra = false;
    int partIndex = 0;
    quint64 partOffset = 0;
    QString restoreDir;
    // What a restore leaves out besides the unticked files.
    ResultFilter filter;
    // A restore keeps a file already in the target and writes the found one as
    // "name (2).ext"; off, the found file takes its place (the wizard's way).
    bool keepBoth = false;
    QMutex mutex; // guards runState changes and, by default, every read on handle
    // The lock read() takes. A disk search points its partition scanners at one
    // lock of its own, so the search, the scanners and previews share the disk.
    QMutex* handleLock = &mutex;
    QWaitCondition pauseCond;
    int runState = Running;
    QString deviceName;
    DeviceHandle handle;
    // Bytes read from the device so far, for throughput figures. A disk search
    // points its partition scanners' counter at its own.
    std::atomic<quint64> bytesRead{0};
    std::atomic<quint64>* bytesCounter = &bytesRead;
    // What the last restore did with each file.
    RestoreReport restoreReport;
    // Set before start: the point an earlier run of this scan saved, its tree
    // already below rootFolder. Start: scan from the beginning.
    ResumePoint resumeFrom;
    // Where this run stands; written on the scan's thread at its check points,
    // read by others once the thread has ended or from onResumePoint.
    ResumePoint resumePoint;
    // Called on the scan's thread each time resumePoint moves, with the tree
    // consistent with it: where a saved scan is written.
    std::function<void()> onResumePoint;

signals:
    void scanBegin(int total);
    void scanOne(int done);
    void scanDone(quint64 results, quint64 totalSize);
    // Files and bytes written since the last report of this restore, at most
    // ~20 times a second and once more before undeleteDone.
    void undeleteProgress(quint64 files, quint64 bytes);
    // After a restore: the files written whole, written with zero-filled
    // stretches, and not written (restoreReport says which and why).
    void undeleteDone(quint64 written, quint64 damaged, quint64 failed);
    void diskScanBegin(int partition, QString kind);
    void diskScanEnd();

protected:
    void setOpenProblem(const QString& why) { m_openProblem = why; }
    // Records where the scan stands and tells onResumePoint.
    void noteResumePoint(const ResumePoint& point);
    // The check point every scan loop calls at its own cadence: waits while
    // paused; returns true when the scan is to stop.
    bool checkPoint();
    // Pause/resume and stop as the volume scanners do them.
    void pauseOrResume(bool running);
    void requestStop();
    // For destructors: stop the thread and wait until it has left run().
    void stopAndWait();
    // The restore of the checked folders below rootFolder into targetDir, each
    // file's content written by content; fills restoreReport and emits
    // undeleteProgress as it goes (not undeleteDone).
    void restoreTree(const QString& targetDir, const RestoreWalk::Content& content);
    // Emits undeleteDone with restoreReport's counts.
    void finishRestore();

private:
    QString m_openProblem;
};
