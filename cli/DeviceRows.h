#pragma once
#include <QJsonArray>
#include <QList>
#include <QString>

class DeviceLayer;

// The disks and partitions as the device page lists them.
struct DeviceRow {
    bool isDisk = false;
    int disk = -1;
    int partitionNumber = -1;
    QChar letter;          // null: "no name"
    QString name;          // disk: model or friendly name
    QString label;         // partition: volume label, "no label" when none
    double sizeGb = 0;     // disk size in GB
    quint64 sizeBytes = 0; // partition length
    int type = 0;
    QString typeName;      // as the partition table names the type; may be empty
    QString fileSystem;    // from the boot sector ("FAT16", "exFAT"); empty when not one the program reads
};

class DeviceRows {
public:
    static QList<DeviceRow> collect(DeviceLayer& layer);
    static QString sizeText(quint64 bytes); // "%1 GB" or "%1 MB"
    static QString text(const QList<DeviceRow>& rows);
    static QJsonArray json(const QList<DeviceRow>& rows);
};
