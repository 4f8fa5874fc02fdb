#include "volumes/VolumeOpener.h"
#include "carving/RawVolumeScan.h"
#include "diskscan/DiskScan.h"
#include "exfat/ExfatVolumeScan.h"
#include "fat32/Fat32VolumeScan.h"
#include "ntfs/NtfsGeometry.h"
#include "ntfs/NtfsVolumeScan.h"
#include "scan/device/DeviceLayer.h"
#include "scan/device/PartitionTable.h"

#include <cstring>

namespace {
// Boot sectors are read and told apart as one block of this size, whatever the sector size.
constexpr quint64 kBootSectorBytes = 512;

// Reads the boot sector at offset and hands it to parse.
template <typename Parse>
bool bootSectorParses(const DeviceHandle& handle, quint64 offset, Parse parse)
{
    uchar sector[kBootSectorBytes];
    return handle.read(sector, kBootSectorBytes, offset) == qint64(kBootSectorBytes) && parse(sector);
}

// exFAT comes first: its boot sector is told by its own name and checksum, and
// it may also have a backup boot region where the main one is damaged.
const QList<VolumeOpener::FileSystem> kFileSystems = {
    {"exFAT", false, ExfatVolumeScan::canOpen, ExfatVolumeScan::canOpen,
     [](const QString& name, DeviceHandle handle, quint64 offset) -> VolumeScan* {
         return new ExfatVolumeScan(name, std::move(handle), offset);
     }},
    {"NTFS", true,
     [](const DeviceHandle& handle, quint64 offset) {
         return bootSectorParses(handle, offset, [](const uchar* sector) {
             NtfsGeometry g;
             bool signature = false;
             return NtfsGeometry::parse(sector, kBootSectorBytes, &g, &signature);
         });
     },
     NtfsVolumeScan::canOpen,
     [](const QString& name, DeviceHandle handle, quint64 offset) -> VolumeScan* {
         return new NtfsVolumeScan(name, std::move(handle), offset);
     }},
    // FAT12 and FAT16 too: one scanner reads every FAT width.
    {"FAT32", false, Fat32VolumeScan::canOpen,
     Fat32VolumeScan::canOpen,
     [](const QString& name, DeviceHandle handle, quint64 offset) -> VolumeScan* {
         return new Fat32VolumeScan(name, std::move(handle), offset);
     }},
};

const char kUnrecognised[] = "无法识别的文件系统。";
} // namespace

const QList<VolumeOpener::FileSystem>& VolumeOpener::fileSystems()
{
    return kFileSystems;
}

const VolumeOpener::FileSystem* VolumeOpener::recognise(const DeviceHandle& handle, quint64 offset)
{
    for (const FileSystem& fs : kFileSystems) {
        if (fs.recognises(handle, offset))
            return &fs;
    }
    return nullptr;
}

const VolumeOpener::FileSystem* VolumeOpener::byKind(const QString& kind)
{
    for (const FileSystem& fs : kFileSystems) {
        if (kind == QLatin1String(fs.kind))
            return &fs;
    }
    return nullptr;
}

OpenedSource VolumeOpener::openLetter(QChar letter, bool carveUnreadable)
{
    int error = 0;
    DeviceHandle handle = DeviceLayer::instance().openVolume(letter, &error);
    OpenedSource opened;
    if (!handle.isValid()) {
        // A device that went away or refuses to be read: a message, not an end.
        opened.problem = QStringLiteral("cannot open volume %1: %2").arg(letter).arg(QString::fromLocal8Bit(std::strerror(error)));
        opened.unopenable = true;
        return opened;
    }
    opened.rootName = QString(letter);
    const FileSystem* fs = recognise(handle, 0);
    if (fs) {
        // The FAT row reads every width: the name says which one this is.
        const QString name = PartitionTable::fileSystemName(handle);
        // A one-letter name is how the scanner knows the volume is mounted and may hold live files.
        opened.scanner = fs->make(QString(letter), handle, 0);
        opened.kind = name.isEmpty() ? QLatin1String(fs->kind) : name;
        opened.ntfsTree = fs->ntfsTree;
        if (opened.scanner->openProblem().isEmpty())
            return opened;
        opened.problem = opened.scanner->openProblem();
        opened.unopenable = true;
        delete opened.scanner;
        opened.scanner = nullptr;
    } else {
        opened.problem = QString::fromUtf8(kUnrecognised);
    }
    if (carveUnreadable) {
        // Both boot sectors gone, or none of ours: what carving finds is all there is.
        qWarning("%s; carving the whole volume", qUtf8Printable(opened.problem));
        opened.scanner = new RawVolumeScan(QString(letter), std::move(handle), 0);
        opened.kind = QStringLiteral("raw");
        opened.ntfsTree = false;
        opened.problem.clear();
        opened.unopenable = false;
    }
    return opened;
}

OpenedSource VolumeOpener::openDisk(int disk)
{
    OpenedSource opened;
    opened.scanner = new DiskScan(disk);
    opened.kind = QStringLiteral("disk");
    opened.ntfsTree = true;
    return opened;
}
