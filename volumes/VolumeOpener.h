#pragma once
#include "scan/device/DeviceHandle.h"

#include <QList>
#include <QString>

class PartScan;
class VolumeScan;

// What opening a source gave: a scanner the caller owns, with the name and
// kind of the visible root folder its results hang from; or no scanner and
// the reason.
struct OpenedSource {
    PartScan* scanner = nullptr;
    QString kind;       // "NTFS", "FAT12", "FAT16", "FAT32", "exFAT", "raw" (carving only), or "disk" for a whole-disk search
    QString rootName;   // of the visible root folder
    bool ntfsTree = true; // FolderNode::ntfs of the root folder
    QString problem;    // why there is no scanner
    bool unopenable = false; // the file system was recognised, but its structures can't be read
};

// The one place a source is opened. A volume's file system is told from its
// boot sector, not from the partition type byte, which often lies (FAT32 typed
// 0x07, exFAT typed 0x83). The file systems are a table: one more is one more row.
class VolumeOpener {
public:
    struct FileSystem {
        const char* kind;  // "exFAT", "NTFS", "FAT32": shown in folder names and messages
        bool ntfsTree;     // FolderNode::ntfs of its folders
        // The boot sector at offset is this file system's: signature and geometry.
        bool (*recognises)(const DeviceHandle& handle, quint64 offset);
        // A scanner opens on it (the structures behind the boot sector are
        // readable too): a stray or damaged boot sector gets no scanner.
        bool (*canOpen)(const DeviceHandle& handle, quint64 offset);
        VolumeScan* (*make)(const QString& name, DeviceHandle handle, quint64 offset);
    };

    // Every file system the program reads, in the order they are tried.
    static const QList<FileSystem>& fileSystems();
    // The file system whose boot sector lies at offset, or null.
    static const FileSystem* recognise(const DeviceHandle& handle, quint64 offset);
    static const FileSystem* byKind(const QString& kind);

    // The volume behind a drive letter, with the scanner of the file system
    // its boot sector names. With carveUnreadable (format recovery), a volume
    // no file system can be read from still gets a carving-only scanner.
    static OpenedSource openLetter(QChar letter, bool carveUnreadable = false);
    // A search of a whole disk for lost volumes.
    static OpenedSource openDisk(int disk);
};
