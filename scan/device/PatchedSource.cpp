#include "scan/device/PatchedSource.h"

#include <cstring>
#include <memory>

qint64 PatchedSource::readAt(void* buffer, quint64 bytes, quint64 position) const
{
    const qint64 got = m_device.read(buffer, bytes, position);
    if (got <= 0)
        return got;
    // The part of the read that overlaps the patch comes from the patch.
    const quint64 end = position + quint64(got);
    const quint64 patchEnd = m_position + quint64(m_bytes.size());
    const quint64 from = qMax(position, m_position);
    const quint64 to = qMin(end, patchEnd);
    if (from < to)
        std::memcpy(static_cast<char*>(buffer) + (from - position), m_bytes.constData() + (from - m_position), to - from);
    return got;
}

DeviceHandle PatchedSource::patch(const DeviceHandle& device, quint64 position, const QByteArray& bytes)
{
    return DeviceHandle(std::make_shared<PatchedSource>(device, position, bytes));
}
