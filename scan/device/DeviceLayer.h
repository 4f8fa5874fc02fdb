#pragma once
#include "scan/device/DeviceHandle.h"
#include "scan/device/DeviceRecords.h"

#include <QChar>
#include <QList>
#include <optional>

// Everything the program needs of the platform to find and read disks and
// volumes. Disks are known by number, volumes by drive letter; the letters are
// handed out by the layer, "C" upward, to partitions that hold NTFS or FAT32.
class DeviceLayer {
public:
    virtual ~DeviceLayer() = default;

    virtual QList<int> listDisks() = 0;
    virtual std::optional<DiskGeometry> diskGeometry(int disk) = 0;
    virtual std::optional<DiskIdentity> diskIdentity(int disk) = 0;
    virtual QByteArray diskFriendlyName(int disk) = 0;
    virtual std::optional<DriveLayout> driveLayout(int disk) = 0;

    virtual QList<QChar> lettersOfDisk(int disk) = 0;
    // The disk number a letter lies on, or -1.
    virtual int deviceNumberOfLetter(QChar letter) = 0;
    virtual std::optional<PartitionEntry> partitionOfLetter(QChar letter) = 0;
    virtual QString volumeLabel(QChar letter) = 0;
    // Where the volume is mounted, or empty: used to ask whether a found file is alive.
    virtual QString mountPointOfLetter(QChar letter) = 0;

    // Raw access. An invalid handle comes back with *error set to an errno value.
    virtual DeviceHandle openVolume(QChar letter, int* error) = 0;
    virtual DeviceHandle openDisk(int disk, int* error) = 0;
    // MBR type byte of the partition behind a letter, 0 when unknown.
    virtual int partitionTypeOfLetter(QChar letter) = 0;
    // The device node or image file behind a disk, empty when unknown.
    virtual QString devicePath(int disk) { Q_UNUSED(disk); return QString(); }

    // The layer the program uses. Tests put one of their own in place.
    static DeviceLayer& instance();
    static void setInstance(DeviceLayer* layer); // not owned; null restores the default
};
