#include "scan/device/DeviceHandle.h"
#include <cerrno>

DeviceHandle::DeviceHandle(std::shared_ptr<const ByteSource> source, quint64 base, quint64 length)
    : m_source(std::move(source)), m_base(base)
{
    const quint64 total = m_source ? m_source->size() : 0;
    const quint64 available = base < total ? total - base : 0;
    m_length = qMin(length, available);
}

qint64 DeviceHandle::read(void* buffer, quint64 bytes, quint64 position) const
{
    if (!m_source) {
        errno = EBADF;
        return -1;
    }
    if (position >= m_length)
        return 0;
    const quint64 n = qMin(bytes, m_length - position);
    return m_source->readAt(buffer, n, m_base + position);
}

DeviceHandle DeviceHandle::slice(quint64 base, quint64 length) const
{
    if (!m_source || base >= m_length)
        return DeviceHandle(m_source, m_base + m_length, 0);
    return DeviceHandle(m_source, m_base + base, qMin(length, m_length - base));
}
