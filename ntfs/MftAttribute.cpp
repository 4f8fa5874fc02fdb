#include "ntfs/MftAttribute.h"
#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordInfo.h"
#include "scan/LeReader.h"

namespace {
constexpr size_t kTypeOffset = 0x00;
constexpr size_t kLengthOffset = 0x04;
constexpr size_t kNameLengthOffset = 0x09;
constexpr size_t kNameOffsetOffset = 0x0A;
constexpr size_t kFlagsOffset = 0x0C;
constexpr size_t kStartVcnOffset = 0x10;
constexpr size_t kCompressionUnitOffset = 0x22;
constexpr size_t kInitializedSizeOffset = 0x38;
// The smallest attribute header: type, length, form, name, flags and id.
constexpr quint32 kMinHeaderBytes = 0x10;
// Compression units are 16 clusters on every volume Windows writes; larger
// shifts are damage (and would make units of gigabytes).
constexpr quint8 kMaxCompressionShift = 4;
} // namespace

QList<MftAttribute> MftAttribute::all(const uint8_t* record, quint32 recordBytes, const MftRecordInfo& info)
{
    QList<MftAttribute> out;
    LeReader r(record, recordBytes);
    quint32 left = MftRecord::attributeBytes(info, recordBytes);
    int offset = info.attrOffset;
    // Each attribute takes at least its header, so the walk ends within the record.
    while (left >= kMinHeaderBytes && r.has(size_t(offset), kMinHeaderBytes)) {
        const quint32 type = r.u32(size_t(offset) + kTypeOffset);
        const quint32 length = r.u16(size_t(offset) + kLengthOffset);
        if (type == MftRecord::kEndMarker || length < kMinHeaderBytes || length > left || !r.has(size_t(offset), length))
            break;
        MftAttribute a;
        if (decode(record, offset, length, &a))
            out.append(a);
        left -= length;
        offset += int(length);
    }
    return out;
}

bool MftAttribute::decode(const uint8_t* record, int offset, quint32 length, MftAttribute* out)
{
    LeReader r(record + offset, length);
    MftAttribute a;
    a.type = r.u32(kTypeOffset);
    a.offset = offset;
    a.length = length;
    a.flags = r.u16(kFlagsOffset);
    a.resident = r.u8(MftRecord::kNonResidentFlagOffset) == 0;
    const quint8 nameChars = r.u8(kNameLengthOffset);
    const uint8_t* name = r.bytes(r.u16(kNameOffsetOffset), size_t(nameChars) * 2);
    if (!r.ok())
        return false;
    for (int i = 0; i < nameChars; ++i)
        a.name.append(QChar(ushort(name[2 * i] | (name[2 * i + 1] << 8))));
    if (a.resident) {
        a.valueLength = r.u32(MftRecord::kResidentLengthOffset);
        const quint16 valueOffset = r.u16(MftRecord::kResidentValueOffset);
        if (!r.ok() || !r.has(valueOffset, a.valueLength))
            return false;
        a.valueOffset = offset + valueOffset;
    } else {
        a.startVcn = r.u64(kStartVcnOffset);
        const quint16 listOffset = r.u16(MftRecord::kRunListOffset);
        a.compressionShift = r.u8(kCompressionUnitOffset);
        a.allocatedSize = r.u64(MftRecord::kAllocatedSizeOffset);
        a.realSize = r.u64(MftRecord::kRealSizeOffset);
        a.initializedSize = r.u64(kInitializedSizeOffset);
        if (!r.ok() || listOffset >= length || a.compressionShift > kMaxCompressionShift)
            return false;
        a.runListOffset = offset + listOffset;
        a.runListBytes = length - listOffset;
    }
    *out = a;
    return true;
}
