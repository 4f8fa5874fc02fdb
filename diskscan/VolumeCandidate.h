#pragma once
#include <QByteArray>
#include <QString>

// A volume a boot sector names: what it is, where it starts on the disk, how
// long it says it is, and whether the sector read was the volume's own first
// sector or one of the copies file systems keep of it.
struct VolumeCandidate {
    enum Kind { None, Ntfs, Fat12, Fat16, Fat32, ExFat };

    Kind kind = None;
    quint64 volumeStart = 0;  // bytes from the start of the disk
    quint64 totalSectors = 0; // as the boot sector states it
    quint32 sectorBytes = 512;
    bool fromBackup = false;
    quint64 bootOffset = 0;   // where the sector that names the volume lies on the disk
    QByteArray bootSector;    // its first 512 bytes: the geometry a scanner opens the volume with

    bool isValid() const { return kind != None; }
    bool isFat() const { return kind == Fat12 || kind == Fat16 || kind == Fat32; }
    // The stated extent; an NTFS volume ends with its backup boot sector,
    // one sector behind the sectors it counts.
    quint64 statedBytes() const;
    static QString kindName(Kind kind);
};
