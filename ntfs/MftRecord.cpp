#include "ntfs/MftRecord.h"
#include "ntfs/MftRecordInfo.h"
#include "scan/LeReader.h"

#include <cstring>

namespace {
constexpr size_t kSignatureOffset = 0x00;
constexpr size_t kAttrOffsetOffset = 0x14;
constexpr size_t kSequenceOffset = 0x10;
constexpr size_t kFlagsOffset = 0x16;
constexpr size_t kUsedSizeOffset = 0x18;
constexpr size_t kAllocSizeOffset = 0x1C;
constexpr size_t kBaseReferenceOffset = 0x20;
constexpr size_t kRecordNumberOffset = 0x2C;
// The update sequence array of NTFS 3.1 records; its first entry is the
// sequence number itself, the saved sector ends follow it.
constexpr size_t kFixupArrayOffset = 0x30;
// Fix-ups protect the last two bytes of every 512-byte stride, whatever the sector size.
constexpr size_t kFixupStride = 512;

constexpr size_t kAttrTypeOffset = 0;
constexpr size_t kAttrLengthOffset = 4;
constexpr size_t kAttrHeaderBytes = 8;
constexpr size_t kFileNameNamespaceOffset = 0x59;
} // namespace

bool MftRecord::parseHeader(uint8_t* record, quint32 recordBytes, MftRecordInfo* info)
{
    LeReader r(record, recordBytes);
    const quint32 signature = r.u32(kSignatureOffset);
    const quint16 attrOffset = r.u16(kAttrOffsetOffset);
    const quint32 used = r.u32(kUsedSizeOffset);
    const quint32 alloc = r.u32(kAllocSizeOffset);
    if (!r.ok() || signature != kFileSignature || attrOffset >= recordBytes || used > recordBytes || alloc != recordBytes)
        return false;
    info->signature = signature;
    info->attrOffset = attrOffset;
    info->usedSize = used;
    info->allocSize = alloc;
    info->flags = r.u16(kFlagsOffset);
    info->recordNumber = r.u32(kRecordNumberOffset);
    info->sequence = r.u16(kSequenceOffset);
    info->baseReference = r.u64(kBaseReferenceOffset);
    // The sequence number at the array's start is not compared with the
    // sector ends: a torn record is decoded as it stands.
    for (size_t k = 0; (k + 1) * kFixupStride <= recordBytes; ++k) {
        const uint8_t* saved = r.bytes(kFixupArrayOffset + 2 + 2 * k, 2);
        if (saved)
            std::memcpy(record + (k + 1) * kFixupStride - 2, saved, 2);
    }
    return true;
}

quint32 MftRecord::attributeBytes(const MftRecordInfo& info, quint32 recordBytes)
{
    const quint32 end = qMin(info.usedSize, recordBytes);
    return info.attrOffset < end ? end - info.attrOffset : 0;
}

int MftRecord::findAttribute(const uint8_t* record, quint32 recordBytes, int offset, quint32 type, quint32* remaining)
{
    LeReader r(record, recordBytes);
    quint32 left = *remaining;
    while (left >= kAttrHeaderBytes && offset >= 0 && r.has(size_t(offset), kAttrHeaderBytes)) {
        const quint32 found = r.u32(size_t(offset) + kAttrTypeOffset);
        const quint32 length = r.u16(size_t(offset) + kAttrLengthOffset);
        // A zero length would never move on: it ends the list like the end marker.
        if (found == kEndMarker || length == 0 || length > left || !r.has(size_t(offset), length))
            return -1;
        if (found == type) {
            const bool dosName = type == kFileNameType
                && (length <= kFileNameNamespaceOffset
                    || r.u8(size_t(offset) + kFileNameNamespaceOffset) == kDosNamespace);
            if (!dosName) {
                *remaining = length;
                return offset;
            }
        }
        left -= length;
        offset += int(length);
    }
    return -1;
}
