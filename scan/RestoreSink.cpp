#include "scan/RestoreSink.h"
#include "scan/device/TargetDir.h"

bool RestoreSink::write(quint64 fileOffset, const char* data, quint64 bytes)
{
    if (m_failure != RestoreFailure::None)
        return false;
    if (const int error = m_file.write(fileOffset, data, bytes))
        m_failure = RestoreReport::failureOfError(error);
    return m_failure == RestoreFailure::None;
}

void RestoreSink::noteBadReads(const QList<BadRange>& bad, quint64 devicePosition, quint64 fileOffset, quint64 bytes)
{
    for (const BadRange& r : bad) {
        // Clip to the read: a bad sector may reach past the file's last byte.
        const quint64 start = qMax(r.offset, devicePosition);
        const quint64 end = qMin(r.end(), devicePosition + bytes);
        if (start < end)
            addBadRange(&m_bad, {fileOffset + (start - devicePosition), end - start});
    }
}

void RestoreSink::noteDamaged(quint64 fileOffset, quint64 bytes)
{
    addBadRange(&m_bad, {fileOffset, bytes});
}

void RestoreSink::noteOutside(quint64 fileOffset, quint64 bytes)
{
    addBadRange(&m_bad, {fileOffset, bytes});
    m_outside += bytes;
}
