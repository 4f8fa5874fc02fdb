#include "scan/RestoreReport.h"

#include <QJsonArray>
#include <algorithm>
#include <iterator>
#include <cerrno>

void RestoreReport::add(const RestoredFile& file)
{
    WholeSink sink;
    {
        QMutexLocker lock(&m_mutex);
        ++m_counts[file.outcome];
        m_bytesWritten += file.outcome == RestoredFile::NotWritten ? 0 : file.size;
        if (file.outcome != RestoredFile::Whole)
            m_files.append(file);
        else if (m_wholeSink)
            sink = m_wholeSink; // called unlocked: it may take its time writing
    }
    if (sink)
        sink(file);
}

void RestoreReport::append(const RestoreReport& other)
{
    const QList<RestoredFile> theirs = other.files();
    const quint64 counts[3] = {other.written(), other.damaged(), other.failed()};
    const quint64 bytes = other.bytesWritten();
    QMutexLocker lock(&m_mutex);
    for (int i = 0; i < 3; ++i)
        m_counts[i] += counts[i];
    m_bytesWritten += bytes;
    m_files += theirs;
}

void RestoreReport::clear()
{
    QMutexLocker lock(&m_mutex);
    m_files.clear();
    std::fill(std::begin(m_counts), std::end(m_counts), 0);
    m_bytesWritten = 0;
}

void RestoreReport::setWholeSink(WholeSink sink)
{
    QMutexLocker lock(&m_mutex);
    m_wholeSink = std::move(sink);
}

RestoreReport::WholeSink RestoreReport::wholeSink() const
{
    QMutexLocker lock(&m_mutex);
    return m_wholeSink;
}

QList<RestoredFile> RestoreReport::files() const
{
    QMutexLocker lock(&m_mutex);
    return m_files;
}

namespace {
const char* outcomeName(RestoredFile::Outcome outcome)
{
    switch (outcome) {
    case RestoredFile::Whole:
        return "written";
    case RestoredFile::Damaged:
        return "damaged";
    case RestoredFile::NotWritten:
        break;
    }
    return "failed";
}
} // namespace

quint64 RestoreReport::written() const
{
    QMutexLocker lock(&m_mutex);
    return m_counts[RestoredFile::Whole];
}

quint64 RestoreReport::damaged() const
{
    QMutexLocker lock(&m_mutex);
    return m_counts[RestoredFile::Damaged];
}

quint64 RestoreReport::failed() const
{
    QMutexLocker lock(&m_mutex);
    return m_counts[RestoredFile::NotWritten];
}

quint64 RestoreReport::bytesWritten() const
{
    QMutexLocker lock(&m_mutex);
    return m_bytesWritten;
}

QStringList RestoreReport::problemLines() const
{
    QStringList lines;
    for (const RestoredFile& f : files()) {
        if (f.outcome == RestoredFile::NotWritten)
            lines.append(QStringLiteral("not written: %1 (%2)").arg(f.path, failureText(f.failure)));
        else if (f.outcome == RestoredFile::Damaged)
            lines.append(QStringLiteral("damaged: %1 (%2 bytes unreadable, filled with zeros)").arg(f.path).arg(f.badBytes()));
    }
    return lines;
}

QJsonObject RestoreReport::json() const
{
    QJsonArray list;
    for (const RestoredFile& f : files())
        list.append(fileJson(f));
    return {{"written", double(written())},
            {"damaged", double(damaged())},
            {"failed", double(failed())},
            {"files", list}};
}

QJsonObject RestoreReport::fileJson(const RestoredFile& f)
{
    QJsonObject o{{"path", f.path}, {"size", double(f.size)}, {"outcome", outcomeName(f.outcome)}};
    if (f.outcome == RestoredFile::NotWritten)
        o.insert("reason", failureText(f.failure));
    if (f.outcome == RestoredFile::Damaged) {
        QJsonArray ranges;
        for (const BadRange& r : f.badRanges)
            ranges.append(QJsonObject{{"offset", double(r.offset)}, {"length", double(r.length)}});
        o.insert("badBytes", double(f.badBytes()));
        o.insert("badRanges", ranges);
    }
    return o;
}

QString RestoreReport::failureText(RestoreFailure failure)
{
    switch (failure) {
    case RestoreFailure::None:
        return QString();
    case RestoreFailure::NoSpace:
        return QStringLiteral("no space left in the target");
    case RestoreFailure::Permission:
        return QStringLiteral("the target refused the write");
    case RestoreFailure::NameRefused:
        return QStringLiteral("name refused: taken by a folder or a link");
    case RestoreFailure::OutsideDevice:
        return QStringLiteral("its data lies outside the device");
    case RestoreFailure::RecordUnreadable:
        return QStringLiteral("its record is unreadable");
    case RestoreFailure::DeviceFailed:
        return QStringLiteral("设备读取失败");
    case RestoreFailure::NameOnly:
        return QStringLiteral("only its name is left, its content is gone");
    case RestoreFailure::WriteFailed:
        break;
    }
    return QStringLiteral("write error");
}

RestoreFailure RestoreReport::failureOfError(int error)
{
    switch (error) {
    case 0:
        return RestoreFailure::None;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return RestoreFailure::NoSpace;
    case EACCES:
    case EPERM:
    case EROFS:
        return RestoreFailure::Permission;
    case EEXIST:
    case ELOOP:
    case ENOTDIR:
    case EISDIR:
    case ENAMETOOLONG:
    case EINVAL:
        return RestoreFailure::NameRefused;
    default:
        return RestoreFailure::WriteFailed;
    }
}
