#include "scan/ScannerFactory.h"
#include "diskscan/DiskScan.h"
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

PartScan* ScannerFactory::forVolume(QChar letter)
{
    const QString name(letter);
    int type = 0;
    {
        PartScan probe(name);
        type = probe.getPartType();
    }
    qDebug() << "partType=" << type;
    const QString kind = kindForType(type);
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
