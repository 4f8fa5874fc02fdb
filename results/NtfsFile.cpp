#include "results/NtfsFile.h"

#include <algorithm>

namespace {
// The largest compression unit NTFS describes: 2^4 clusters, with room to spare.
constexpr quint32 kMaxUnitShift = 30;
} // namespace

NtfsFile::NtfsFile() : m_resident(false), m_oneRun(false), m_sparseRun(false), m_unitShift(0)
{
    m_a.value = 0;
}

NtfsFile::~NtfsFile() { freeRuns(); }

void NtfsFile::freeRuns()
{
    if (!m_resident && !m_oneRun && m_b != 0)
        delete[] m_a.block;
    m_a.value = 0;
    m_b = 0;
    m_oneRun = m_sparseRun = false;
}

void NtfsFile::setResident(quint64 recordOffset, quint16 offset)
{
    freeRuns();
    m_resident = true;
    m_a.value = recordOffset;
    m_b = offset;
}

QList<DataRun> NtfsFile::runs() const
{
    if (m_resident || m_b == 0)
        return {};
    if (m_oneRun)
        return {DataRun{m_b, m_b, m_a.value, m_sparseRun}};
    return QList<DataRun>(m_a.block, m_a.block + m_b);
}

void NtfsFile::setRuns(const QList<DataRun>& runs)
{
    freeRuns();
    m_resident = false;
    if (runs.isEmpty())
        return;
    const DataRun& first = runs.first();
    // One run from virtual cluster 0 fits in the record itself.
    if (runs.size() == 1 && first.vcnEnd == first.length && first.length != 0) {
        m_oneRun = true;
        m_sparseRun = first.sparse;
        m_a.value = first.lcn;
        m_b = first.length;
        return;
    }
    m_a.block = new DataRun[size_t(runs.size())];
    std::copy(runs.cbegin(), runs.cend(), m_a.block);
    m_b = quint64(runs.size());
}

void NtfsFile::setCompressionUnitClusters(quint32 clusters)
{
    if (clusters == 0) {
        m_unitShift = 0;
        return;
    }
    // The unit is a power of two clusters; a value between two is taken down.
    quint32 shift = 0;
    while (shift < kMaxUnitShift && (2u << shift) <= clusters)
        ++shift;
    m_unitShift = quint8(std::min<quint32>(shift + 1, 31));
}
