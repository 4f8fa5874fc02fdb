#include "fat32/Fat32BootSector.h"
#include "scan/device/PartitionTable.h"
#include "scan/CheckedMath.h"
#include "scan/LeReader.h"
#include "scan/device/PartitionTypeNames.h"

#include <QSet>
#include <algorithm>

namespace {
constexpr int kSectorBytes = 512;
constexpr size_t kSignatureOffset = 0x1FE;
constexpr size_t kMbrTableOffset = 0x1BE;
constexpr size_t kMbrEntrySize = 16;
constexpr int kMbrSlots = 4;
constexpr size_t kMbrTypeOffset = 4;
constexpr size_t kMbrStartOffset = 8;
constexpr size_t kMbrCountOffset = 12;
constexpr quint8 kGptProtective = 0xEE;

// An extended chain longer than this is taken for a loop or garbage.
constexpr int kMaxLogicalPartitions = 128;

constexpr size_t kGptEntriesLbaOffset = 0x48;
constexpr size_t kGptEntryCountOffset = 0x50;
constexpr size_t kGptEntrySizeOffset = 0x54;
// The format reserves 128 entries; a header that claims many more is damaged.
constexpr quint32 kMaxGptEntries = 1024;
constexpr quint32 kMinGptEntrySize = 128;
constexpr quint32 kMaxGptEntrySize = 4096;
constexpr size_t kGptFirstLbaOffset = 32;
constexpr int kGuidBytes = 16; // the type GUID opens each entry
constexpr size_t kGptLastLbaOffset = 40;

bool isExtended(quint8 type) { return type == 0x05 || type == 0x0F || type == 0x85; }

QByteArray readBytes(const DeviceHandle& disk, quint64 position, quint64 bytes)
{
    QByteArray data(int(bytes), '\0');
    const qint64 got = disk.read(data.data(), bytes, position);
    if (got < qint64(bytes))
        return {};
    return data;
}

bool hasBootSignature(const QByteArray& sector)
{
    LeReader r(sector.constData(), size_t(sector.size()));
    return r.u16(kSignatureOffset) == 0xAA55 && r.ok();
}

void addEntry(DriveLayout* layout, const DeviceHandle& disk, quint64 startLba, quint64 countLba,
              quint32 sectorSize, quint32 number, quint8 type, const QString& typeName)
{
    const quint64 start = checked::mulSat(startLba, sectorSize);
    if (type == 0 || countLba == 0 || start >= disk.length())
        return;
    PartitionEntry e;
    e.startingOffset = start;
    e.length = qMin(checked::mulSat(countLba, sectorSize), disk.length() - start);
    e.partitionNumber = number;
    e.mbrType = type;
    e.typeName = typeName;
    layout->entries.append(e);
}
} // namespace

PartitionTable::BootKind PartitionTable::bootKindOf(const QByteArray& sector)
{
    LeReader r(sector.constData(), size_t(sector.size()));
    if (r.matches(3, "NTFS", 4))
        return BootKind::Ntfs;
    if (r.matches(0x52, "FAT32", 5))
        return BootKind::Fat32;
    if (r.matches(3, "EXFAT   ", 8))
        return BootKind::Exfat;
    Fat32BootSector fat;
    if (Fat32BootSector::parseAny(sector.constData(), size_t(sector.size()), &fat) && fat.fatBits != 32)
        return BootKind::Fat;
    return BootKind::None;
}

QString PartitionTable::fileSystemName(const DeviceHandle& volume)
{
    const QByteArray sector = readBytes(volume, 0, kSectorBytes);
    Fat32BootSector fat;
    switch (bootKindOf(sector)) {
    case BootKind::Ntfs: return QStringLiteral("NTFS");
    case BootKind::Exfat: return QStringLiteral("exFAT");
    case BootKind::Fat32:
    case BootKind::Fat:
        // The width follows from the cluster count, not from the type text.
        if (Fat32BootSector::parseAny(sector.constData(), size_t(sector.size()), &fat))
            return QLatin1String(fat.typeName());
        return QStringLiteral("FAT32");
    case BootKind::None: break;
    }
    return QString();
}

void PartitionTable::nameFileSystems(const DeviceHandle& disk, DriveLayout* layout)
{
    for (PartitionEntry& e : layout->entries)
        e.fileSystem = fileSystemName(disk.slice(e.startingOffset, e.length));
}

PartitionTable::BootKind PartitionTable::bootKind(const DeviceHandle& volume)
{
    return bootKindOf(readBytes(volume, 0, kSectorBytes));
}

quint8 PartitionTable::typeForBootKind(BootKind kind)
{
    switch (kind) {
    case BootKind::Ntfs: return PartitionType::Ntfs;
    case BootKind::Fat32: return PartitionType::Fat32Lba;
    case BootKind::Fat: return PartitionType::Fat16;
    case BootKind::Exfat: return PartitionType::Ntfs; // exFAT shares NTFS's type code
    case BootKind::None: break;
    }
    return PartitionType::Other;
}

DriveLayout PartitionTable::read(const DeviceHandle& disk, quint32 sectorSize)
{
    DriveLayout layout;
    if (sectorSize < kSectorBytes || !checked::isPowerOfTwo(sectorSize))
        sectorSize = kSectorBytes;
    const QByteArray sector0 = readBytes(disk, 0, kSectorBytes);
    if (sector0.isEmpty())
        return layout;
    const BootKind kind = bootKindOf(sector0);
    if (kind != BootKind::None) {
        layout.style = DriveLayout::Raw;
        PartitionEntry e;
        e.length = disk.length();
        e.partitionNumber = 1;
        e.mbrType = typeForBootKind(kind);
        e.typeName = PartitionTypeNames::mbr(e.mbrType);
        layout.entries.append(e);
        nameFileSystems(disk, &layout);
        return layout;
    }
    if (!hasBootSignature(sector0)) {
        // Neither a table nor a boot sector: a card or stick whose first
        // sectors are wiped. It stays choosable as one volume, so a format
        // recovery can still carve it.
        layout.style = DriveLayout::Raw;
        PartitionEntry e;
        e.length = disk.length();
        e.partitionNumber = 1;
        e.mbrType = PartitionType::Other;
        layout.entries.append(e);
        return layout;
    }
    readMbr(disk, sector0, sectorSize, &layout);
    nameFileSystems(disk, &layout);
    return layout;
}

void PartitionTable::readMbr(const DeviceHandle& disk, const QByteArray& sector0, quint32 sectorSize, DriveLayout* layout)
{
    layout->style = DriveLayout::Mbr;
    LeReader r(sector0.constData(), size_t(sector0.size()));
    for (int slot = 0; slot < kMbrSlots; ++slot) {
        const size_t at = kMbrTableOffset + size_t(slot) * kMbrEntrySize;
        if (r.u8(at + kMbrTypeOffset) == kGptProtective && readGpt(disk, sectorSize, layout))
            return;
    }
    for (int slot = 0; slot < kMbrSlots; ++slot) {
        const size_t at = kMbrTableOffset + size_t(slot) * kMbrEntrySize;
        const quint8 type = r.u8(at + kMbrTypeOffset);
        const quint64 start = r.u32(at + kMbrStartOffset);
        const quint64 count = r.u32(at + kMbrCountOffset);
        if (isExtended(type))
            readExtendedChain(disk, start, sectorSize, layout);
        else
            addEntry(layout, disk, start, count, sectorSize, quint32(slot + 1), type, PartitionTypeNames::mbr(type));
    }
    std::sort(layout->entries.begin(), layout->entries.end(),
              [](const PartitionEntry& a, const PartitionEntry& b) { return a.partitionNumber < b.partitionNumber; });
}

void PartitionTable::readExtendedChain(const DeviceHandle& disk, quint64 extendedStartLba, quint32 sectorSize, DriveLayout* layout)
{
    QSet<quint64> visited;
    quint64 ebrLba = extendedStartLba;
    quint32 number = 5;
    // Every entry of a record is taken by its type, in whichever slot it sits:
    // an extended type links the next record, any other names a logical partition.
    for (int i = 0; i < kMaxLogicalPartitions && !visited.contains(ebrLba); ++i) {
        visited.insert(ebrLba);
        const QByteArray ebr = readBytes(disk, checked::mulSat(ebrLba, sectorSize), kSectorBytes);
        if (ebr.isEmpty() || !hasBootSignature(ebr))
            return;
        LeReader r(ebr.constData(), size_t(ebr.size()));
        quint64 next = 0;
        for (int slot = 0; slot < kMbrSlots; ++slot) {
            const size_t at = kMbrTableOffset + size_t(slot) * kMbrEntrySize;
            const quint8 type = r.u8(at + kMbrTypeOffset);
            const quint64 relative = r.u32(at + kMbrStartOffset);
            if (isExtended(type)) {
                if (next == 0 && relative != 0)
                    next = checked::addSat(extendedStartLba, relative);
            } else if (type != 0 && number < quint32(kMbrSlots + 1 + kMaxLogicalPartitions)) {
                addEntry(layout, disk, checked::addSat(ebrLba, relative), r.u32(at + kMbrCountOffset), sectorSize,
                         number++, type, PartitionTypeNames::mbr(type));
            }
        }
        if (next == 0)
            return;
        ebrLba = next;
    }
}

bool PartitionTable::readGpt(const DeviceHandle& disk, quint32 sectorSize, DriveLayout* layout)
{
    const QByteArray header = readBytes(disk, sectorSize, kSectorBytes);
    if (header.isEmpty() || !header.startsWith("EFI PART"))
        return false;
    LeReader h(header.constData(), size_t(header.size()));
    const quint64 entriesLba = h.u64(kGptEntriesLbaOffset);
    const quint32 count = qMin(h.u32(kGptEntryCountOffset), kMaxGptEntries);
    const quint32 entrySize = h.u32(kGptEntrySizeOffset);
    if (!h.ok() || entrySize < kMinGptEntrySize || entrySize > kMaxGptEntrySize || entrySize % 8 != 0)
        return false;
    const QByteArray table = readBytes(disk, checked::mulSat(entriesLba, sectorSize), quint64(count) * entrySize);
    if (table.isEmpty())
        return false;
    layout->style = DriveLayout::Gpt;
    layout->entries.clear();
    LeReader t(table.constData(), size_t(table.size()));
    static const char zeroGuid[16] = {};
    for (quint32 i = 0; i < count; ++i) {
        const size_t at = size_t(i) * entrySize;
        if (t.matches(at, zeroGuid, sizeof zeroGuid))
            continue;
        const quint64 first = t.u64(at + kGptFirstLbaOffset);
        const quint64 last = t.u64(at + kGptLastLbaOffset);
        if (last < first)
            continue;
        const quint64 start = checked::mulSat(first, sectorSize);
        const quint8 type = typeForBootKind(bootKind(disk.slice(start, kSectorBytes)));
        const QByteArray guid(reinterpret_cast<const char*>(t.bytes(at, kGuidBytes)), kGuidBytes);
        addEntry(layout, disk, first, last - first + 1, sectorSize, i + 1, type, PartitionTypeNames::gpt(guid));
    }
    return true;
}
