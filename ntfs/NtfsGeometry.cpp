#include "ntfs/NtfsGeometry.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kSignatureOffset = 3;
constexpr size_t kBytesPerSectorOffset = 0x0B;
constexpr size_t kSectorsPerClusterOffset = 0x0D;
constexpr size_t kTotalSectorsOffset = 0x28;
constexpr size_t kMftLcnOffset = 0x30;
constexpr size_t kMirrorLcnOffset = 0x38;
constexpr size_t kRecordSizeOffset = 0x40;

// Sector sizes that disks have had: 256 (old media) to 4096 (advanced format).
constexpr quint32 kMinSectorBytes = 256;
constexpr quint32 kMaxSectorBytes = 4096;
// Windows formats NTFS with clusters of up to 2 MiB.
constexpr quint64 kMaxClusterBytes = 2 * 1024 * 1024;
// Sectors-per-cluster values above this encode a power of two: 256 - value.
constexpr quint8 kLargestPlainSectorsPerCluster = 0x80;
// File records are 1024 bytes, or 4096 on volumes of 4K-native disks.
constexpr quint32 kSmallRecord = 1024;
constexpr quint32 kLargeRecord = 4096;

quint64 sectorsPerCluster(quint8 v)
{
    if (v <= kLargestPlainSectorsPerCluster)
        return v;
    const int power = 256 - v;
    return power < 32 ? (quint64(1) << power) : 0;
}

int log2Of(quint64 v)
{
    int shift = 0;
    while ((quint64(1) << shift) < v)
        ++shift;
    return shift;
}
} // namespace

bool NtfsGeometry::parse(const uint8_t* sector, size_t size, NtfsGeometry* out, bool* signatureOk)
{
    LeReader r(sector, size);
    *signatureOk = r.matches(kSignatureOffset, "NTFS", 4);
    if (!*signatureOk)
        return false;
    NtfsGeometry g;
    g.sectorBytes = r.u16(kBytesPerSectorOffset);
    const quint64 cluster = checked::mulSat(g.sectorBytes, sectorsPerCluster(r.u8(kSectorsPerClusterOffset)));
    const qint8 recordField = qint8(r.u8(kRecordSizeOffset));
    g.totalSectors = r.u64(kTotalSectorsOffset);
    g.mftLcn = r.u64(kMftLcnOffset);
    g.mirrorLcn = r.u64(kMirrorLcnOffset);
    if (!r.ok() || !checked::isPowerOfTwo(g.sectorBytes) || g.sectorBytes < kMinSectorBytes
        || g.sectorBytes > kMaxSectorBytes || !checked::isPowerOfTwo(cluster) || cluster > kMaxClusterBytes)
        return false;
    g.clusterBytes = quint32(cluster);
    g.clusterShift = log2Of(cluster);
    quint64 record = 0;
    if (recordField > 0)
        record = checked::mulSat(quint64(recordField), cluster);
    else if (recordField > -32)
        record = quint64(1) << -recordField;
    if (record != kSmallRecord && record != kLargeRecord)
        return false;
    g.recordBytes = quint32(record);
    *out = g;
    return true;
}
