#include "scan/ScannerFactory.h"
#include "diskscan/DiskScan.h"
#include "exfat/ExfatVolumeScan.h"
#include "fat32/Fat32VolumeScan.h"
#include "ntfs/NtfsVolumeScan.h"

#include <QDebug>

QString ScannerFactory::kindForType(int type)
{
    if (type == 12 || type == 11 || type == 0)
        return QStringLiteral("fat32");
    if (type == 7)
        return QStringLiteral("ntfs");
    return {};
}

QString ScannerFactory::kindForVolume(const DeviceHandle& handle, int type)
{
    // The boot sector tells what a volume holds, whatever its partition type says.
    if (ExfatVolumeScan::canOpen(handle, 0))
        return QStringLiteral("exfat");
    if (NtfsVolumeScan::canOpen(handle, 0))
        return QStringLiteral("ntfs");
    if (Fat32VolumeScan::canOpen(handle, 0))
        return QStringLiteral("fat32");
    return kindForType(type);
}

PartScan* ScannerFactory::forVolume(QChar letter)
{
    const QString name(letter);
    QString kind;
    {
        PartScan probe(name);
        const int type = probe.getPartType();
        qDebug() << "partType=" << type;
        kind = kindForVolume(probe.handle, type);
    }
    if (kind == QLatin1String("exfat"))
        return new ExfatVolumeScan(name);
    if (kind == QLatin1String("fat32"))
        return new Fat32VolumeScan(name);
    if (kind == QLatin1String("ntfs"))
        return new NtfsVolumeScan(name);
    return nullptr;
}

PartScan* ScannerFactory::forDisk(int disk)
{
    return new DiskScan(disk);
}
