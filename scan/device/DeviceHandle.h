#pragma once
#include "scan/device/ByteSource.h"
#include "scan/device/ReadHealth.h"
#include <limits>
#include <memory>

// A read-only view of a device: a whole disk, or the byte range of one partition
// on it. Positions are relative to the view, and reads stop at its end. Copies
// share the open source, which closes when the last copy goes.
//
// Every read of the program passes here, so this is where failing media are
// handled: a failed read is split and retried down to single sectors, a sector
// that keeps failing is filled with zeros and recorded in the shared
// ReadHealth, and a device that has gone makes every later read fail at once.
class DeviceHandle {
public:
    static constexpr quint64 kToEnd = std::numeric_limits<quint64>::max();
    // The smallest unit a disk fails in.
    static constexpr quint64 kSector = 512;
    // A sector that fails this often is given up: more tries wear a dying disk.
    static constexpr int kSectorTries = 3;

    DeviceHandle() = default;
    explicit DeviceHandle(std::shared_ptr<const ByteSource> source, quint64 base = 0, quint64 length = kToEnd);

    bool isValid() const { return bool(m_source); }
    quint64 length() const { return m_length; }
    quint64 base() const { return m_base; }

    // Returns bytes read (short at the view's end), or -1 with errno set when
    // the device has gone. Unreadable sectors come back as zeros; with bad
    // given, their ranges (view positions) are added to it.
    qint64 read(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad = nullptr) const;

    // Whether the device is a spinning disk, where one reader at a time reads fastest.
    bool rotational() const { return m_source && m_source->rotational(); }

    // A narrower view, clipped to this one.
    DeviceHandle slice(quint64 base, quint64 length) const;

    // What the reads of this device have met; null for an invalid handle.
    const ReadHealth* health() const { return m_health.get(); }

private:
    DeviceHandle(std::shared_ptr<const ByteSource> source, std::shared_ptr<ReadHealth> health, quint64 base, quint64 length);
    bool shrank() const;
    // Reads [pos, pos + len) piece by piece after a failure; false when the
    // device went meanwhile.
    bool recover(char* out, quint64 len, quint64 pos, QList<BadRange>* bad) const;
    void readSector(char* out, quint64 len, quint64 pos, QList<BadRange>* bad) const;

    std::shared_ptr<const ByteSource> m_source;
    std::shared_ptr<ReadHealth> m_health;
    quint64 m_base = 0;
    quint64 m_length = 0;
    quint64 m_sizeAtOpen = 0;
};
