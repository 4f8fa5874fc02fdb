#include "scan/device/MemorySource.h"
#include <cerrno>
#include <cstring>

qint64 MemorySource::readAt(void* buffer, quint64 bytes, quint64 position) const
{
    if (m_filter && !m_filter(position, bytes)) {
        errno = m_error;
        return -1;
    }
    const quint64 total = size();
    if (position >= total)
        return 0;
    const quint64 n = qMin(bytes, total - position);
    std::memcpy(buffer, m_data.constData() + position, n);
    return qint64(n);
}
