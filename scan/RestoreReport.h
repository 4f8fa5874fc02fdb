#pragma once
#include "scan/device/BadRange.h"

#include <QJsonObject>
#include <QList>
#include <QMutex>
#include <QString>

// Why a found file was not written.
enum class RestoreFailure {
    None,
    NoSpace,          // the target is full
    Permission,       // the target refused the write
    NameRefused,      // no usable name: taken by a folder or link, or no free number left
    OutsideDevice,    // its data lies beyond the end of the device
    RecordUnreadable, // its record or its cluster list could not be read
    DeviceFailed,     // the device stopped answering
    NameOnly,         // only its name is left: there is no content to write
    WriteFailed,      // any other error of the target
};

// What became of one found file in a restore.
struct RestoredFile {
    enum Outcome { Whole, Damaged, NotWritten };
    QString path; // below the target folder, as written or as it would have been
    quint64 size = 0;
    Outcome outcome = Whole;
    RestoreFailure failure = RestoreFailure::None;
    QList<BadRange> badRanges; // file offsets filled with zeros (Damaged)

    quint64 badBytes() const { return ::badBytes(badRanges); }
};

// The account of a restore: one entry per file it tried, so the caller can say
// "已恢复 N 个，M 个失败" and list the files that need a second look. Filled on the
// scan thread; read once the restore has finished.
class RestoreReport {
public:
    void add(const RestoredFile& file);
    void append(const RestoreReport& other);
    void clear();

    QList<RestoredFile> files() const;
    quint64 written() const;  // whole
    quint64 damaged() const;  // written, with zero-filled ranges
    quint64 failed() const;   // not written
    quint64 bytesWritten() const;

    // One line per damaged or unwritten file, for a terminal or a message box.
    QStringList problemLines() const;
    QJsonObject json() const;

    static QString failureText(RestoreFailure failure);
    // The failure an errno value of the target stands for.
    static RestoreFailure failureOfError(int error);

private:
    mutable QMutex m_mutex;
    QList<RestoredFile> m_files;
};
