#include "results/NamePool.h"

#include <algorithm>

void NamePool::clear()
{
    m_chunks.clear();
    m_used = kChunkChars;
}

const char16_t* NamePool::add(QStringView name)
{
    const qsizetype length = std::min(name.size(), kMaxNameChars);
    if (length == 0)
        return nullptr;
    // A name never spans two chunks: one that does not fit starts the next.
    if (kChunkChars - m_used < length) {
        m_chunks.push_back(std::make_unique<char16_t[]>(size_t(kChunkChars)));
        m_used = 0;
    }
    char16_t* at = m_chunks.back().get() + m_used;
    std::copy_n(name.utf16(), length, at);
    m_used += length;
    return at;
}
