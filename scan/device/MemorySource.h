#pragma once
#include "scan/device/ByteSource.h"
#include <QByteArray>
#include <cerrno>
#include <functional>

// An in-memory disk or volume, for tests and fuzzers. A failure hook can make
// chosen reads fail, to exercise the paths of a damaged device.
class MemorySource : public ByteSource {
public:
    explicit MemorySource(QByteArray data) : m_data(std::move(data)) {}
    qint64 readAt(void* buffer, quint64 bytes, quint64 position) const override;
    quint64 size() const override { return quint64(m_data.size()); }
    const QByteArray& data() const { return m_data; }

    // Called before each read; returning false makes that read fail with error
    // (EIO: a bad sector; ENODEV: the device has gone).
    void setReadFilter(std::function<bool(quint64 position, quint64 bytes)> filter, int error = EIO)
    {
        m_filter = std::move(filter);
        m_error = error;
    }

private:
    QByteArray m_data;
    std::function<bool(quint64, quint64)> m_filter;
    int m_error = EIO;
};
