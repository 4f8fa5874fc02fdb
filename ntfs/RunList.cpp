#include "ntfs/RunList.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"

namespace {
// Length and offset fields of a run entry are at most 8 bytes each.
constexpr int kMaxFieldBytes = 8;
} // namespace

int RunList::decode(const uint8_t* data, size_t bytes, quint64 clusterCount, QList<DataRun>* runs)
{
    LeReader r(data, bytes);
    size_t pos = 0;
    quint64 vcn = 0;
    qint64 lcn = 0;
    int added = 0;
    while (pos < bytes) {
        const quint8 header = r.u8(pos);
        if (header == 0)
            break;
        const int lengthBytes = header & 0x0F;
        const int offsetBytes = header >> 4;
        const size_t entry = 1 + lengthBytes + offsetBytes;
        // An entry that reaches the very end has no terminator behind it: not decoded.
        if (lengthBytes == 0 || lengthBytes > kMaxFieldBytes || offsetBytes > kMaxFieldBytes || bytes - pos <= entry)
            break;
        const quint64 length = r.uN(pos + 1, lengthBytes);
        const qint64 delta = r.sN(pos + 1 + lengthBytes, offsetBytes);
        uint64_t end = 0;
        if (length == 0 || !checked::add(vcn, length, &end) || __builtin_add_overflow(lcn, delta, &lcn))
            break;
        const bool sparse = offsetBytes == 0;
        if (!sparse && (lcn < 0 || quint64(lcn) >= clusterCount || length > clusterCount - quint64(lcn)))
            break;
        runs->append(DataRun{end, length, quint64(lcn), sparse});
        ++added;
        vcn = end;
        pos += entry;
    }
    return added;
}

QList<RunList::Extent> RunList::extents(const QList<DataRun>& runs, quint64 vcn, quint64 count)
{
    QList<Extent> out;
    quint64 prevEnd = 0;
    for (const DataRun& run : runs) {
        if (count == 0)
            return out;
        if (vcn >= run.vcnEnd) {
            prevEnd = run.vcnEnd;
            continue;
        }
        const quint64 take = qMin(count, run.vcnEnd - vcn);
        out.append({run.lcn + (vcn - prevEnd), take, run.sparse});
        vcn += take;
        count -= take;
        prevEnd = run.vcnEnd;
    }
    if (count > 0 && !runs.isEmpty()) {
        const DataRun& last = runs.last();
        out.append({checked::addSat(last.lcn + last.length, vcn - last.vcnEnd), count, last.sparse});
    }
    return out;
}
