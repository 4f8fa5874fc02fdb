#include "results/FoundFile.h"
#include "results/NamePool.h"

#include <algorithm>

FoundFile::FoundFile() : m_ownsName(false), selected(true), cut(false), nameOnly(false) {}

FoundFile::~FoundFile()
{
    if (m_ownsName)
        delete[] m_name;
}

void FoundFile::setName(QStringView name, NamePool* pool)
{
    if (m_ownsName)
        delete[] m_name;
    if (pool) {
        m_name = pool->add(name);
        m_nameLength = quint16(std::min(name.size(), NamePool::kMaxNameChars));
        m_ownsName = false;
        return;
    }
    const qsizetype length = std::min(name.size(), NamePool::kMaxNameChars);
    char16_t* copy = length ? new char16_t[size_t(length)] : nullptr;
    std::copy_n(name.utf16(), length, copy);
    m_name = copy;
    m_nameLength = quint16(length);
    m_ownsName = copy != nullptr;
}

void FoundFile::poolName(NamePool& pool)
{
    if (!m_ownsName)
        return;
    const char16_t* own = m_name;
    m_name = pool.add(QStringView(own, m_nameLength));
    m_ownsName = false;
    delete[] own;
}
