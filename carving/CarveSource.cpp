#include "carving/CarveSource.h"
#include "carving/CarveKinds.h"
#include "scan/CheckedMath.h"

#include <algorithm>
#include <cstring>

CarveSource::CarveSource(ReadFn read, const Origin& origin, quint64 limit)
    : m_read(std::move(read)), m_origin(origin), m_limit(limit)
{
}

bool CarveSource::load(quint64 pos, size_t n)
{
    const quint64 want = std::min<quint64>(std::max(n, kChunkBytes), m_limit - pos);
    m_cache.resize(want);
    uint64_t offset = 0;
    if (!checked::add(m_origin.volumeOffset, pos, &offset))
        return false;
    const qint64 got = m_read(m_cache.data(), want, offset);
    m_cacheStart = pos;
    m_cacheBytes = got > 0 ? size_t(got) : 0;
    return m_cacheBytes >= n;
}

const uchar* CarveSource::at(quint64 pos, size_t n)
{
    if (n > kMaxSpan || pos > m_limit || n > m_limit - pos) {
        m_ok = false;
        return nullptr;
    }
    if (m_origin.head && pos + n <= m_origin.headBytes)
        return m_origin.head + pos;
    if (pos >= m_cacheStart && pos + n <= m_cacheStart + m_cacheBytes)
        return m_cache.data() + (pos - m_cacheStart);
    if (!load(pos, n)) {
        m_ok = false;
        return nullptr;
    }
    return m_cache.data();
}

const uchar* CarveSource::window(quint64 pos, size_t* available)
{
    *available = 0;
    if (pos >= m_limit)
        return nullptr;
    if (m_origin.head && pos < m_origin.headBytes) {
        *available = size_t(std::min<quint64>(m_origin.headBytes - pos, m_limit - pos));
        return m_origin.head + pos;
    }
    if (!(pos >= m_cacheStart && pos < m_cacheStart + m_cacheBytes) && !load(pos, 1))
        return nullptr;
    *available = size_t(m_cacheStart + m_cacheBytes - pos);
    return m_cache.data() + (pos - m_cacheStart);
}

quint64 CarveSource::value(quint64 pos, int width, bool bigEndian)
{
    const uchar* p = at(pos, size_t(width));
    if (!p)
        return 0;
    quint64 v = 0;
    for (int i = 0; i < width; ++i)
        v |= quint64(p[bigEndian ? width - 1 - i : i]) << (8 * i);
    return v;
}

bool CarveSource::matches(quint64 pos, const char* text, size_t n)
{
    const uchar* p = at(pos, n);
    return p && std::memcmp(p, text, n) == 0;
}

bool CarveSource::otherFileAt(quint64 pos)
{
    if (!atBlockStart(pos) || !m_origin.kinds)
        return false;
    const bool wasOk = m_ok;
    size_t available = 0;
    const uchar* p = window(pos, &available);
    m_ok = wasOk;
    return p && m_origin.kinds->headerAt(p, available);
}

quint64 CarveSource::otherFileBetween(quint64 from, quint64 to)
{
    const quint64 block = m_origin.blockBytes;
    for (quint64 b = (from / block + 1) * block; b < to && b < m_limit; b += block)
        if (otherFileAt(b))
            return b;
    return 0;
}

bool CarveSource::zeroBlockAt(quint64 pos)
{
    const bool wasOk = m_ok;
    const uchar* p = at(pos, m_origin.blockBytes);
    m_ok = wasOk;
    return p && std::all_of(p, p + m_origin.blockBytes, [](uchar c) { return c == 0; });
}
