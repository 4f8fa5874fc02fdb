#pragma once
#include "scan/device/ByteSource.h"
#include <limits>
#include <memory>

// A read-only view of a device: a whole disk, or the byte range of one partition
// on it. Positions are relative to the view, and reads stop at its end. Copies
// share the open source, which closes when the last copy goes.
class DeviceHandle {
public:
    static constexpr quint64 kToEnd = std::numeric_limits<quint64>::max();

    DeviceHandle() = default;
    explicit DeviceHandle(std::shared_ptr<const ByteSource> source, quint64 base = 0, quint64 length = kToEnd);

    bool isValid() const { return bool(m_source); }
    quint64 length() const { return m_length; }
    quint64 base() const { return m_base; }

    // Returns bytes read (short at the view's end), or -1 with errno set.
    qint64 read(void* buffer, quint64 bytes, quint64 position) const;

    // A narrower view, clipped to this one.
    DeviceHandle slice(quint64 base, quint64 length) const;

private:
    std::shared_ptr<const ByteSource> m_source;
    quint64 m_base = 0;
    quint64 m_length = 0;
};
