#include "scan/device/LibyalSource.h"

#include <cerrno>

namespace {
// One library call reads at most this much, as FileSource caps one pread.
constexpr quint64 kMaxSingleRead = quint64(1) << 30;
} // namespace

LibyalSource::LibyalSource(const LibyalCalls& calls) : m_calls(calls)
{
    if (m_calls.initialize(&m_handle, nullptr) != 1)
        m_handle = nullptr;
}

LibyalSource::~LibyalSource()
{
    if (m_open)
        m_calls.close(m_handle, nullptr);
    if (m_handle)
        m_calls.free(&m_handle, nullptr);
}

bool LibyalSource::start(const std::function<int(intptr_t*)>& open, int* error)
{
    if (!m_handle) {
        if (error)
            *error = ENOMEM;
        return false;
    }
    m_open = open(m_handle) == 1;
    uint64_t size = 0;
    if (m_open && m_calls.mediaSize(m_handle, &size, nullptr) == 1) {
        m_size = size;
        return true;
    }
    // The signature named a container that the library cannot read.
    if (error)
        *error = EINVAL;
    return false;
}

qint64 LibyalSource::readAt(void* buffer, quint64 bytes, quint64 position) const
{
    if (position >= m_size)
        return 0;
    const quint64 want = qMin(bytes, m_size - position);
    auto* out = static_cast<char*>(buffer);
    QMutexLocker lock(&m_mutex);
    quint64 done = 0;
    while (done < want) { // every turn reads at least one byte or leaves
        const size_t chunk = size_t(qMin(want - done, kMaxSingleRead));
        const ssize_t r = m_calls.read(m_handle, out + done, chunk, off64_t(position + done), nullptr);
        if (r < 0) {
            if (done > 0)
                break;
            errno = EIO;
            return -1;
        }
        if (r == 0)
            break;
        done += quint64(r);
    }
    return qint64(done);
}
