#pragma once
#include "scan/device/BadRange.h"

#include <QJsonObject>
#include <QList>
#include <QMutex>
#include <QString>
#include <functional>

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

// The account of a restore: counts of every outcome, and an entry for each
// file that needs a second look, so the caller can say "已恢复 N 个，M 个失败"
// and list those files. A file written whole is only counted: a million
// entries with their paths would outweigh the result tree; a listing that
// wants them all takes them through a sink as they come. Filled on the scan
// thread; read once the restore has finished.
class RestoreReport {
public:
    void add(const RestoredFile& file);
    void append(const RestoreReport& other);
    void clear(); // the entries and counts; the sink stays

    // With a sink, each file written whole goes to it (on the scan thread)
    // as well as into the counts.
    using WholeSink = std::function<void(const RestoredFile& file)>;
    void setWholeSink(WholeSink sink);
    WholeSink wholeSink() const;

    // The entries kept: every damaged or unwritten file.
    QList<RestoredFile> files() const;
    quint64 written() const;  // whole
    quint64 damaged() const;  // written, with zero-filled ranges
    quint64 failed() const;   // not written
    quint64 bytesWritten() const;

    // One line per damaged or unwritten file, for a terminal or a message box.
    QStringList problemLines() const;
    QJsonObject json() const;
    static QJsonObject fileJson(const RestoredFile& file);

    static QString failureText(RestoreFailure failure);
    // The failure an errno value of the target stands for.
    static RestoreFailure failureOfError(int error);

private:
    mutable QMutex m_mutex;
    QList<RestoredFile> m_files;
    quint64 m_counts[3] = {0, 0, 0}; // by RestoredFile::Outcome
    quint64 m_bytesWritten = 0;
    WholeSink m_wholeSink;
};
