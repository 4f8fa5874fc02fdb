#include "wizard/ImageCheck.h"
#include "scan/device/DiskListLayer.h"
#include "scan/device/ImageDeviceLayer.h"

#include <QFileInfo>
#include <QObject>
#include <cstring>

namespace {
// A volume the program reads, told by its boot sector.
bool recognised(const PartitionEntry& e)
{
    return !e.fileSystem.isEmpty();
}
} // namespace

QString ImageCheck::problem(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QObject::tr("找不到文件：%1").arg(path);
    if (!info.isFile())
        return QObject::tr("%1 不是磁盘映像文件。").arg(info.fileName());
    DiskInfo disk;
    int error = 0;
    if (!ImageDeviceLayer::describeFile(path, &disk, &error))
        return QObject::tr("无法打开磁盘映像：%1").arg(QString::fromLocal8Bit(strerror(error)));
    if (disk.layout.style != DriveLayout::Raw)
        return QString();
    for (const PartitionEntry& e : disk.layout.entries) {
        if (recognised(e))
            return QString();
    }
    return QObject::tr("%1 不是磁盘映像：其中既没有分区表，也没有可识别的 NTFS、FAT 或 exFAT 分区。").arg(info.fileName());
}
