#pragma once
#include <QByteArray>
#include <QList>
#include <QString>

// What the device layer tells about disks and partitions.

struct DiskIdentity {
    QByteArray serial;
    QByteArray firmware;
    QByteArray model; // the only one the device page shows
};

struct DiskGeometry {
    static constexpr quint32 kRemovableMedia = 11;
    static constexpr quint32 kFixedMedia = 12;

    quint64 cylinders = 0;
    quint32 mediaType = kFixedMedia;
    quint32 tracksPerCylinder = 0;
    quint32 sectorsPerTrack = 0;
    quint32 bytesPerSector = 0;

    quint64 sizeBytes() const
    {
        return cylinders * tracksPerCylinder * sectorsPerTrack * bytesPerSector;
    }
};

struct PartitionEntry {
    quint64 startingOffset = 0; // bytes from the start of the disk
    quint64 length = 0;         // bytes
    quint32 partitionNumber = 0; // 1-based
    quint8 mbrType = 0;          // 0: unused slot
    QString typeName;            // what the table calls the type ("Microsoft basic data"); empty when unknown
    QString fileSystem;          // what its boot sector says: "NTFS", "FAT12", "FAT16", "FAT32", "exFAT"; empty for none of these
};

struct DriveLayout {
    enum Style { Mbr = 0, Gpt = 1, Raw = 2 };
    Style style = Raw;
    QList<PartitionEntry> entries;
};

// MBR partition type codes that the scanners are chosen by.
namespace PartitionType {
constexpr quint8 Unknown = 0;
constexpr quint8 Fat16 = 0x06;
constexpr quint8 Ntfs = 0x07;
constexpr quint8 Fat32 = 0x0B;
constexpr quint8 Fat32Lba = 0x0C;
constexpr quint8 Other = 0x83; // a GPT partition that holds neither NTFS nor FAT32
} // namespace PartitionType
