#pragma once
#include "scan/device/ByteSource.h"
#include "scan/device/DeviceHandle.h"

#include <QByteArray>

// A device seen with a few of its bytes replaced, in memory only: a volume
// whose first sector is broken is opened with its backup boot sector put in
// that sector's place. The device itself is never written.
class PatchedSource : public ByteSource {
public:
    PatchedSource(DeviceHandle device, quint64 position, QByteArray bytes)
        : m_device(std::move(device)), m_position(position), m_bytes(std::move(bytes)) {}
    qint64 readAt(void* buffer, quint64 bytes, quint64 position) const override;
    quint64 size() const override { return m_device.length(); }
    bool rotational() const override { return m_device.rotational(); }

    // A handle on device that reads bytes at position.
    static DeviceHandle patch(const DeviceHandle& device, quint64 position, const QByteArray& bytes);

private:
    DeviceHandle m_device;
    quint64 m_position;
    QByteArray m_bytes;
};
