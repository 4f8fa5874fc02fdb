#include "ntfs/AttributeList.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kTypeOffset = 0x00;
constexpr size_t kLengthOffset = 0x04;
constexpr size_t kReferenceOffset = 0x10;
// Type, length, name, starting VCN, reference and id: an entry is never shorter.
constexpr size_t kMinEntryBytes = 0x1A;
constexpr int kSequenceShift = 48;
} // namespace

QList<AttributeList::Entry> AttributeList::decode(const uint8_t* value, size_t bytes)
{
    QList<Entry> out;
    LeReader r(value, bytes);
    size_t pos = 0;
    // Each entry takes at least kMinEntryBytes, so the walk ends.
    while (r.has(pos, kMinEntryBytes)) {
        const quint16 length = r.u16(pos + kLengthOffset);
        if (length < kMinEntryBytes || !r.has(pos, length))
            break;
        const quint64 reference = r.u64(pos + kReferenceOffset);
        out.append(Entry{r.u32(pos + kTypeOffset), quint32(reference), quint16(reference >> kSequenceShift)});
        pos += length;
    }
    return out;
}
