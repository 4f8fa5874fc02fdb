#include "exfat/ExfatBitmap.h"
#include "exfat/ExfatBootSector.h"

bool ExfatBitmap::isFree(quint64 cluster) const
{
    if (cluster < ExfatBootSector::kFirstDataCluster)
        return false;
    const quint64 index = cluster - ExfatBootSector::kFirstDataCluster;
    if (index >= m_clusters || index / 8 >= quint64(m_bits.size()))
        return false;
    return !(quint8(m_bits.at(qsizetype(index / 8))) & (1u << (index % 8)));
}
