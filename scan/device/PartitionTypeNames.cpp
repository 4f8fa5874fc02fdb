#include "scan/device/PartitionTypeNames.h"

#include <iterator>

namespace {
constexpr int kGuidBytes = 16;

struct MbrName {
    quint8 type;
    const char* name;
};
const MbrName kMbrNames[] = {
    {0x01, "FAT12"}, {0x04, "FAT16 (<32 MB)"}, {0x05, "extended"}, {0x06, "FAT16"}, {0x07, "NTFS / exFAT"},
    {0x0B, "FAT32"}, {0x0C, "FAT32 (LBA)"}, {0x0E, "FAT16 (LBA)"}, {0x0F, "extended (LBA)"},
    {0x11, "hidden FAT12"}, {0x14, "hidden FAT16"}, {0x16, "hidden FAT16"}, {0x17, "hidden NTFS"},
    {0x1B, "hidden FAT32"}, {0x1C, "hidden FAT32 (LBA)"}, {0x1E, "hidden FAT16 (LBA)"},
    {0x27, "Windows recovery"}, {0x42, "Windows dynamic"}, {0x82, "Linux swap"}, {0x83, "Linux"},
    {0x85, "Linux extended"}, {0x8E, "Linux LVM"}, {0xA5, "FreeBSD"}, {0xAF, "Apple HFS+"},
    {0xEE, "GPT protective"}, {0xEF, "EFI system"}, {0xFD, "Linux RAID"},
};

struct GptName {
    const char* guid;
    const char* name;
};
const GptName kGptNames[] = {
    {"C12A7328-F81F-11D2-BA4B-00A0C93EC93B", "EFI system"},
    {"21686148-6449-6E6F-744E-656564454649", "BIOS boot"},
    {"E3C9E316-0B5C-4DB8-817D-F92DF00215AE", "Microsoft reserved"},
    {"EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", "Microsoft basic data"},
    {"DE94BBA4-06D1-4D40-A16A-BFD50179D6AC", "Windows recovery"},
    {"5808C8AA-7E8F-42E0-85D2-E1E90434CFB3", "Windows LDM metadata"},
    {"AF9B60A0-1431-4F62-BC68-3311714A69AD", "Windows LDM data"},
    {"E75CAF8F-F680-4CEE-AFA3-B001E56EFC2D", "Windows storage spaces"},
    {"0FC63DAF-8483-4772-8E79-3D69D8477DE4", "Linux filesystem"},
    {"0657FD6D-A4AB-43C4-84E5-0933C84B4F4F", "Linux swap"},
    {"E6D6D379-F507-44C2-A23C-238F2A3DF928", "Linux LVM"},
    {"A19D880F-05FC-4D3B-A006-743F0F84911E", "Linux RAID"},
    {"4F68BCE3-E8CD-4DB1-96E7-FBCAF984B709", "Linux root (x86-64)"},
    {"933AC7E1-2EB4-4F13-B844-0E14E2AEF915", "Linux home"},
    {"BC13C2FF-59E6-4262-A352-B275FD6F7172", "Linux extended boot"},
    {"48465300-0000-11AA-AA11-00306543ECAC", "Apple HFS+"},
    {"7C3457EF-0000-11AA-AA11-00306543ECAC", "Apple APFS"},
    {"516E7CB6-6ECF-11D6-8FF8-00022D09712B", "FreeBSD"},
};
} // namespace

QString PartitionTypeNames::mbr(quint8 type)
{
    for (const MbrName& n : kMbrNames) {
        if (n.type == type)
            return QString::fromLatin1(n.name);
    }
    return {};
}

QString PartitionTypeNames::guidText(const QByteArray& guid)
{
    if (guid.size() != kGuidBytes)
        return {};
    // Bytes in text order: fields of 4, 2 and 2 bytes reversed, then 8 as stored.
    static const int order[kGuidBytes] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    QString text;
    for (int i = 0; i < kGuidBytes; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += QLatin1Char('-');
        text += QStringLiteral("%1").arg(quint8(guid[order[i]]), 2, 16, QLatin1Char('0')).toUpper();
    }
    return text;
}

QString PartitionTypeNames::gpt(const QByteArray& guid)
{
    const QString text = guidText(guid);
    for (const GptName& n : kGptNames) {
        if (text == QLatin1String(n.guid))
            return QString::fromLatin1(n.name);
    }
    return {};
}
