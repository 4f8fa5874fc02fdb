#include "ntfs/FileNameAttribute.h"
#include "scan/LeReader.h"

namespace {
// The value of a $FILE_NAME stands behind the 0x18-byte resident header.
constexpr size_t kParentOffset = 0x18;
constexpr size_t kParentSequenceOffset = 0x1E;
constexpr size_t kCreatedOffset = 0x20;
constexpr size_t kModifiedOffset = 0x28;
constexpr size_t kNameLengthOffset = 0x58;
constexpr size_t kNameOffset = 0x5A;

// 100 ns ticks from 1601-01-01 to 1970-01-01.
constexpr quint64 kUnixEpochTicks = 116444736000000000ULL;
constexpr quint64 kTicksPerSecond = 10000000ULL;
} // namespace

bool FileNameAttribute::decode(const uint8_t* record, quint32 recordBytes, int attrOffset, quint32 attrLength,
                               FileNameAttribute* out)
{
    if (attrOffset < 0 || size_t(attrOffset) >= recordBytes)
        return false;
    LeReader r(record + attrOffset, qMin<size_t>(attrLength, recordBytes - size_t(attrOffset)));
    FileNameAttribute a;
    a.parentRecord = r.u32(kParentOffset);
    a.parentSequence = r.u16(kParentSequenceOffset);
    a.created = r.u64(kCreatedOffset);
    a.modified = r.u64(kModifiedOffset);
    const quint8 chars = r.u8(kNameLengthOffset);
    const uint8_t* name = r.bytes(kNameOffset, size_t(chars) * 2);
    if (!r.ok())
        return false;
    QString text(chars, Qt::Uninitialized);
    for (int i = 0; i < chars; ++i)
        text[i] = QChar(ushort(name[2 * i] | (name[2 * i + 1] << 8)));
    a.name = text;
    *out = a;
    return true;
}

quint64 FileNameAttribute::toMsecs(quint64 filetime)
{
    if (filetime < kUnixEpochTicks)
        return 0;
    return (filetime - kUnixEpochTicks) / kTicksPerSecond * 1000;
}
