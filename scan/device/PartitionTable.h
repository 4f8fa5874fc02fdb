#pragma once
#include "scan/device/DeviceHandle.h"
#include "scan/device/DeviceRecords.h"

// Reads the layout of a disk from its own first sectors: an MBR with its chain
// of extended boot records, a GPT, or a bare volume (a boot sector at offset 0,
// which gives one partition over the whole device).
class PartitionTable {
public:
    enum class BootKind { None, Ntfs, Fat32, Fat, Exfat }; // Fat: FAT12 or FAT16

    static DriveLayout read(const DeviceHandle& disk, quint32 sectorSize = 512);

    // What the boot sector at the start of a volume says it is.
    static BootKind bootKind(const DeviceHandle& volume);
    static BootKind bootKindOf(const QByteArray& sector);

    // The file system's name from the boot sector at the start of a volume
    // ("FAT16", "exFAT"); empty when it is none the program reads.
    static QString fileSystemName(const DeviceHandle& volume);
    // Names the file system of every entry of a layout read from disk.
    static void nameFileSystems(const DeviceHandle& disk, DriveLayout* layout);

    // The type byte a partition without one of its own (GPT, bare volume) gets.
    static quint8 typeForBootKind(BootKind kind);

private:
    static void readMbr(const DeviceHandle& disk, const QByteArray& sector0, quint32 sectorSize, DriveLayout* layout);
    static bool readGpt(const DeviceHandle& disk, quint32 sectorSize, DriveLayout* layout);
    static void readExtendedChain(const DeviceHandle& disk, quint64 extendedStartLba, quint32 sectorSize, DriveLayout* layout);
};
