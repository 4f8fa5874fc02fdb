#include "results/ExfatFile.h"

#include <algorithm>

ExfatFile::ExfatFile() : m_oneHole(false) { m_a.offset = 0; }

ExfatFile::~ExfatFile() { freeExtents(); }

void ExfatFile::freeExtents()
{
    if (m_count > 1)
        delete[] m_a.block;
    m_a.offset = 0;
    m_count = 0;
    m_length = 0;
}

Extents ExfatFile::extents() const
{
    if (m_count == 0)
        return {};
    if (m_count == 1)
        return {Extent{m_a.offset, m_length, m_oneHole}};
    return Extents(m_a.block, m_a.block + m_count);
}

void ExfatFile::setExtents(const Extents& extents)
{
    freeExtents();
    m_count = quint32(extents.size());
    if (m_count == 1) {
        m_a.offset = extents.first().offset;
        m_length = extents.first().length;
        m_oneHole = extents.first().hole;
    } else if (m_count > 1) {
        m_a.block = new Extent[m_count];
        std::copy(extents.cbegin(), extents.cend(), m_a.block);
    }
}
