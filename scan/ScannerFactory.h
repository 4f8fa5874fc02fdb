#pragma once
#include <QString>

class DeviceHandle;
class PartScan;

// Chooses the scanner the way the wizard does: a volume by its partition type
// (12, 11 and 0 FAT32, 7 NTFS), a disk by number.
class ScannerFactory {
public:
    // The class a partition type gets: "ntfs", "fat32", or empty when none.
    static QString kindForType(int partitionType);
    // What the volume on handle holds by its boot sector ("exfat", "ntfs",
    // "fat32"), else what its partition type says.
    static QString kindForVolume(const DeviceHandle& handle, int partitionType);
    // A new scanner for the volume behind a letter, or null for an unrecognised
    // type (the wizard then says "无法识别的文件系统。").
    static PartScan* forVolume(QChar letter);
    static PartScan* forDisk(int disk);
};
