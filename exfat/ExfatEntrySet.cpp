#include "exfat/ExfatEntrySet.h"
#include "exfat/ExfatTimestamp.h"
#include "scan/LeReader.h"

namespace {
// File entry.
constexpr size_t kSecondaryCount = 0x01;
constexpr size_t kSetChecksum = 0x02;
constexpr size_t kAttributes = 0x04;
constexpr size_t kModified = 0x0C;
constexpr size_t kModifiedTenMs = 0x15;
constexpr size_t kModifiedUtcOffset = 0x17;
constexpr quint16 kDirectoryAttribute = 0x10;
// Stream extension.
constexpr size_t kFlags = 0x01;
constexpr quint8 kNoFatChainFlag = 0x02;
constexpr size_t kNameLength = 0x03;
constexpr size_t kValidLength = 0x08;
constexpr size_t kFirstCluster = 0x14;
constexpr size_t kDataLength = 0x18;
// Name entry.
constexpr size_t kNameUnits = 0x02;
constexpr int kUnitsPerNameEntry = 15;
// A set is the file entry and 2 to 18 secondaries: a stream and up to 17 name entries.
constexpr int kMinSecondaries = 2;
constexpr int kMaxSecondaries = 18;

bool typeIs(quint8 type, quint8 expected, bool deleted)
{
    return type == (deleted ? quint8(expected & ~ExfatEntrySet::kInUse) : expected);
}
} // namespace

quint16 ExfatEntrySet::checksum(const uchar* entries, int count)
{
    quint16 sum = 0;
    const size_t bytes = size_t(count) * kEntryBytes;
    for (size_t i = 0; i < bytes; ++i) {
        if (i == kSetChecksum || i == kSetChecksum + 1)
            continue;
        const quint8 byte = (i % kEntryBytes == 0) ? quint8(entries[i] | kInUse) : entries[i];
        sum = quint16(((sum & 1) ? 0x8000 : 0) + (sum >> 1) + byte);
    }
    return sum;
}

ExfatEntrySet::Outcome ExfatEntrySet::decode(const uchar* entries, size_t available, ExfatEntrySet* out)
{
    LeReader file(entries, available >= 1 ? kEntryBytes : 0);
    const quint8 type = file.u8(0);
    const int secondaries = file.u8(kSecondaryCount);
    if (!file.ok() || !isFileEntry(type) || secondaries < kMinSecondaries || secondaries > kMaxSecondaries
        || size_t(secondaries) + 1 > available)
        return Outcome::Corrupt;
    ExfatEntrySet s;
    s.deleted = !(type & kInUse);
    s.entryCount = secondaries + 1;
    if (file.u16(kSetChecksum) != checksum(entries, s.entryCount))
        return Outcome::Corrupt;
    LeReader stream(entries + kEntryBytes, kEntryBytes);
    const int nameLength = stream.u8(kNameLength);
    const int nameEntries = (nameLength + kUnitsPerNameEntry - 1) / kUnitsPerNameEntry;
    if (!typeIs(stream.u8(0), kStream, s.deleted) || nameLength == 0 || nameEntries > secondaries - 1)
        return Outcome::Corrupt;
    for (int e = 0; e < nameEntries; ++e) {
        LeReader name(entries + size_t(e + 2) * kEntryBytes, kEntryBytes);
        if (!typeIs(name.u8(0), kName, s.deleted))
            return Outcome::Corrupt;
        for (int u = 0; u < kUnitsPerNameEntry && s.name.size() < nameLength; ++u)
            s.name.append(QChar(char16_t(name.u16(kNameUnits + size_t(u) * 2))));
    }
    s.directory = file.u16(kAttributes) & kDirectoryAttribute;
    s.modifiedMsecs = ExfatTimestamp::toMsecs(file.u32(kModified), file.u8(kModifiedTenMs), file.u8(kModifiedUtcOffset));
    s.noFatChain = stream.u8(kFlags) & kNoFatChainFlag;
    s.firstCluster = stream.u32(kFirstCluster);
    s.dataLength = stream.u64(kDataLength);
    s.validLength = qMin(stream.u64(kValidLength), s.dataLength);
    *out = s;
    return Outcome::Good;
}
