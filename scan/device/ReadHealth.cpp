#include "scan/device/ReadHealth.h"

#include <QDebug>

bool ReadHealth::isKnownBad(quint64 offset, quint64 length) const
{
    QMutexLocker lock(&m_mutex);
    for (const BadRange& r : m_ranges) {
        if (r.offset <= offset && offset + length <= r.end())
            return true;
    }
    return false;
}

bool ReadHealth::recordBad(quint64 offset, quint64 length)
{
    QMutexLocker lock(&m_mutex);
    m_badBytes += length;
    const bool extends = !m_ranges.isEmpty() && m_ranges.last().end() == offset;
    if (m_ranges.size() < kMaxRanges || extends) {
        const qsizetype before = m_ranges.size();
        addBadRange(&m_ranges, {offset, length});
        // One line per range: a run of bad sectors extends the range it began.
        if (m_ranges.size() > before)
            qWarning("unreadable sectors from byte %llu on; filled with zeros", static_cast<unsigned long long>(offset));
    }
    if (++m_consecutive >= kGoneAfter && !m_gone) {
        m_gone = true;
        qWarning("%d sectors in a row unreadable: the device has gone", m_consecutive);
    }
    return m_gone;
}

void ReadHealth::recordGood()
{
    QMutexLocker lock(&m_mutex);
    m_consecutive = 0;
}

void ReadHealth::markGone()
{
    QMutexLocker lock(&m_mutex);
    if (!m_gone)
        qWarning("the device has gone or shrunk");
    m_gone = true;
}

bool ReadHealth::gone() const
{
    QMutexLocker lock(&m_mutex);
    return m_gone;
}

QList<BadRange> ReadHealth::ranges() const
{
    QMutexLocker lock(&m_mutex);
    return m_ranges;
}

quint64 ReadHealth::badByteCount() const
{
    QMutexLocker lock(&m_mutex);
    return m_badBytes;
}
