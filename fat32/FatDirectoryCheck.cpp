#include "fat32/FatDirectoryCheck.h"
#include "fat32/Fat32DirEntry.h"
#include "scan/LeReader.h"

#include <cstring>

namespace {
constexpr size_t kNameBytes = 11;        // name and extension, blank-padded
constexpr size_t kAttributes = 0x0B;
constexpr size_t kSlotType = 0x0C;       // 0 in every long-name slot
constexpr size_t kCreateTime = 0x0E;
constexpr size_t kCreateDate = 0x10;
constexpr size_t kAccessDate = 0x12;
constexpr size_t kClusterHigh = 0x14;
constexpr size_t kWriteTime = 0x16;
constexpr size_t kWriteDate = 0x18;
constexpr size_t kClusterLow = 0x1A;
constexpr quint8 kReservedAttributes = 0xC0;
constexpr quint8 kSlotNumberMask = 0x1F;
constexpr quint8 kSlotLastFlag = 0x40;
constexpr int kMaxSlotNumber = 20;       // 20 slots hold the longest name, 260 units
constexpr quint8 kKanjiE5 = 0x05;        // a live name whose first byte is 0xE5
constexpr char kForbidden[] = "\"*+,./:;<=>?[\\]|";

bool validDate(quint16 date)
{
    const int month = (date >> 5) & 15;
    const int day = date & 31;
    return date == 0 || (month >= 1 && month <= 12 && day >= 1);
}

bool validTime(quint16 time)
{
    return (time >> 11) < 24 && ((time >> 5) & 63) < 60 && (time & 31) < 30;
}

bool isDotName(const uchar* name)
{
    return std::memcmp(name, ".          ", kNameBytes) == 0 || std::memcmp(name, "..         ", kNameBytes) == 0;
}

bool validNameByte(uchar c, size_t at)
{
    if (at == 0 && (c == Fat32DirEntry::kDeletedMark || c == kKanjiE5))
        return true;
    if (c < 0x20 || (c >= 'a' && c <= 'z') || (at == 0 && c == ' '))
        return false;
    return c >= 0x80 || !std::strchr(kForbidden, c);
}

bool plausibleSlot(const uchar* entry)
{
    LeReader r(entry, Fat32DirEntry::kBytes);
    const quint8 order = r.u8(0);
    const int number = order & kSlotNumberMask;
    const bool orderOk = order == Fat32DirEntry::kDeletedMark
        || ((order & ~(kSlotNumberMask | kSlotLastFlag)) == 0 && number >= 1 && number <= kMaxSlotNumber);
    return orderOk && r.u8(kSlotType) == 0 && r.u16(kClusterLow) == 0;
}
} // namespace

bool FatDirectoryCheck::plausibleEntry(const uchar* entry, quint64 clusterCount)
{
    LeReader r(entry, Fat32DirEntry::kBytes);
    const quint8 attributes = r.u8(kAttributes);
    if (attributes == Fat32DirEntry::kLongNameSlot)
        return plausibleSlot(entry);
    if (attributes & kReservedAttributes)
        return false;
    if (!isDotName(entry))
        for (size_t i = 0; i < kNameBytes; ++i)
            if (!validNameByte(entry[i], i))
                return false;
    const quint32 cluster = (quint32(r.u16(kClusterHigh)) << 16) | r.u16(kClusterLow);
    return cluster < clusterCount && validTime(r.u16(kWriteTime)) && validTime(r.u16(kCreateTime))
        && validDate(r.u16(kWriteDate)) && validDate(r.u16(kCreateDate)) && validDate(r.u16(kAccessDate));
}

int FatDirectoryCheck::shortEntries(const uchar* data, size_t bytes, quint64 clusterCount)
{
    int shorts = 0;
    for (size_t at = 0; at + Fat32DirEntry::kBytes <= bytes; at += Fat32DirEntry::kBytes) {
        const uchar* entry = data + at;
        if (entry[0] == Fat32DirEntry::kEndMark)
            break;
        if (!plausibleEntry(entry, clusterCount))
            return -1;
        if (entry[kAttributes] != Fat32DirEntry::kLongNameSlot)
            ++shorts;
    }
    return shorts;
}

bool FatDirectoryCheck::isFolderStart(const uchar* data, size_t bytes, quint32 cluster, quint64 clusterCount)
{
    if (!Fat32DirEntry::startsWithDotEntries(data, bytes) || bytes < 2 * size_t(Fat32DirEntry::kBytes))
        return false;
    const Fat32DirEntry dot = Fat32DirEntry::decode(data);
    return dot.isDirectory() && dot.firstCluster == cluster && shortEntries(data, bytes, clusterCount) >= 2;
}

bool FatDirectoryCheck::isFolderContinuation(const uchar* data, size_t bytes, quint64 clusterCount)
{
    return !Fat32DirEntry::startsWithDotEntries(data, bytes) && shortEntries(data, bytes, clusterCount) > 0;
}

quint32 FatDirectoryCheck::parentCluster(const uchar* folderStart)
{
    return Fat32DirEntry::decode(folderStart + Fat32DirEntry::kBytes).firstCluster;
}
