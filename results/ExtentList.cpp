#include "results/ExtentList.h"

bool ExtentList::add(quint64 volumeOffset, quint64 length)
{
    const quint64 wanted = qMin(length, m_size - m_listed);
    const quint64 inside = volumeOffset < m_volumeBytes ? qMin(wanted, m_volumeBytes - volumeOffset) : 0;
    append(volumeOffset, inside, false);
    append(0, wanted - inside, true);
    return !full();
}

bool ExtentList::addHole(quint64 length)
{
    append(0, qMin(length, m_size - m_listed), true);
    return !full();
}

void ExtentList::append(quint64 offset, quint64 length, bool hole)
{
    if (length == 0)
        return;
    m_listed += length;
    if (!m_extents.isEmpty()) {
        Extent& last = m_extents.last();
        if (last.hole == hole && (hole || last.offset + last.length == offset)) {
            last.length += length;
            return;
        }
    }
    m_extents.append(Extent{hole ? 0 : offset, length, hole});
}
