#include "scan/device/DeviceHandle.h"

#include <cerrno>
#include <cstring>
#include <vector>

namespace {
// errno values that mean the device itself is gone, not one bad sector.
bool deviceGoneError(int error)
{
    return error == ENODEV || error == ENXIO || error == EBADF;
}
} // namespace

DeviceHandle::DeviceHandle(std::shared_ptr<const ByteSource> source, quint64 base, quint64 length)
    : DeviceHandle(source, source ? std::make_shared<ReadHealth>() : nullptr, base, length)
{
}

DeviceHandle::DeviceHandle(std::shared_ptr<const ByteSource> source, std::shared_ptr<ReadHealth> health,
                           quint64 base, quint64 length)
    : m_source(std::move(source)), m_health(std::move(health)), m_base(base)
{
    m_sizeAtOpen = m_source ? m_source->size() : 0;
    const quint64 available = base < m_sizeAtOpen ? m_sizeAtOpen - base : 0;
    m_length = qMin(length, available);
}

bool DeviceHandle::shrank() const
{
    return m_source->currentSize() < m_sizeAtOpen;
}

qint64 DeviceHandle::read(void* buffer, quint64 bytes, quint64 position, QList<BadRange>* bad) const
{
    if (!m_source) {
        errno = EBADF;
        return -1;
    }
    if (position >= m_length)
        return 0;
    if (m_health->gone()) {
        errno = EIO;
        return -1;
    }
    const quint64 n = qMin(bytes, m_length - position);
    auto* out = static_cast<char*>(buffer);
    const qint64 got = m_source->readAt(out, n, m_base + position);
    if (got == qint64(n)) {
        m_health->recordGood();
        return got;
    }
    if (got < 0 && deviceGoneError(errno))
        m_health->markGone();
    // Every view ends inside the size seen at open: a short read means the
    // source shrank under us, which is a failure, not the end of the data.
    if (got >= 0 && shrank())
        m_health->markGone();
    const quint64 have = got > 0 ? quint64(got) : 0;
    if (!m_health->gone() && recover(out + have, n - have, m_base + position + have, bad))
        return qint64(n);
    errno = EIO;
    return -1;
}

bool DeviceHandle::recover(char* out, quint64 len, quint64 pos, QList<BadRange>* bad) const
{
    struct Piece {
        char* out;
        quint64 len;
        quint64 pos;
        bool tried; // the piece as a whole has failed already
    };
    // Halves are pushed back to front so the device is read in order.
    std::vector<Piece> work{{out, len, pos, true}};
    while (!work.empty()) {
        const Piece p = work.back();
        work.pop_back();
        if (m_health->gone())
            return false;
        if (p.len <= kSector) {
            readSector(p.out, p.len, p.pos, bad);
            continue;
        }
        if (!p.tried) {
            const qint64 got = m_source->readAt(p.out, p.len, p.pos);
            if (got == qint64(p.len)) {
                m_health->recordGood();
                continue;
            }
        }
        // Split on a sector boundary so the single-sector pieces line up with the disk's.
        quint64 half = ((p.pos + p.len / 2) / kSector) * kSector - p.pos;
        if (half == 0 || half >= p.len)
            half = p.len / 2;
        work.push_back({p.out + half, p.len - half, p.pos + half, false});
        work.push_back({p.out, half, p.pos, false});
    }
    return !m_health->gone();
}

void DeviceHandle::readSector(char* out, quint64 len, quint64 pos, QList<BadRange>* bad) const
{
    if (!m_health->isKnownBad(pos, len)) {
        for (int attempt = 0; attempt < kSectorTries; ++attempt) {
            const qint64 got = m_source->readAt(out, len, pos);
            if (got == qint64(len)) {
                m_health->recordGood();
                return;
            }
            if (got < 0 && deviceGoneError(errno)) {
                m_health->markGone();
                break;
            }
        }
        m_health->recordBad(pos, len);
    }
    std::memset(out, 0, size_t(len));
    if (bad)
        addBadRange(bad, {pos - m_base, len});
}

DeviceHandle DeviceHandle::slice(quint64 base, quint64 length) const
{
    if (!m_source || base >= m_length)
        return DeviceHandle(m_source, m_health, m_base + m_length, 0);
    return DeviceHandle(m_source, m_health, m_base + base, qMin(length, m_length - base));
}
