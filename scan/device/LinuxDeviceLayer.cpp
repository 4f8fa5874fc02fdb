#include "scan/device/LinuxDeviceLayer.h"
#include "scan/device/FileSource.h"
#include "scan/device/PartitionTable.h"
#include "scan/device/VolumeLabel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

namespace {
const QString kSysBlock = QStringLiteral("/sys/block");
// sysfs counts start and size in 512-byte units whatever the device's sector size.
constexpr quint64 kSysfsSector = 512;

QString readSys(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll()).trimmed();
}

bool isDiskName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral(
        "^(sd[a-z]+|vd[a-z]+|xvd[a-z]+|nvme\\d+n\\d+|mmcblk\\d+|md\\d+|loop\\d+)$"));
    if (!pattern.match(name).hasMatch())
        return false;
    if (name.startsWith(QLatin1String("loop")))
        return !readSys(kSysBlock + "/" + name + "/loop/backing_file").isEmpty();
    return true;
}

// Device node -> mount point, from /proc/self/mounts (first mount wins).
QHash<QString, QString> mountTable()
{
    QHash<QString, QString> table;
    QFile f(QStringLiteral("/proc/self/mounts"));
    if (!f.open(QIODevice::ReadOnly))
        return table;
    const QList<QByteArray> lines = f.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 2 || !fields[0].startsWith('/'))
            continue;
        const QString device = QFileInfo(QString::fromUtf8(fields[0])).canonicalFilePath();
        QString mount = QString::fromUtf8(fields[1]);
        mount.replace(QLatin1String("\\040"), QLatin1String(" "));
        if (!device.isEmpty() && !table.contains(device))
            table.insert(device, mount);
    }
    return table;
}

QByteArray modelOf(const QString& name)
{
    const QString base = kSysBlock + "/" + name;
    if (name.startsWith(QLatin1String("loop")))
        return QFileInfo(readSys(base + "/loop/backing_file")).fileName().toUtf8();
    const QString vendor = readSys(base + "/device/vendor");
    const QString model = readSys(base + "/device/model");
    QString text = (vendor + " " + model).simplified();
    if (text.isEmpty())
        text = readSys(base + "/device/name");
    return text.toUtf8();
}

quint8 typeOf(const PartitionEntry& sysEntry, const DriveLayout& own, const DeviceHandle& whole)
{
    for (const PartitionEntry& e : own.entries) {
        if (e.startingOffset == sysEntry.startingOffset && own.style == DriveLayout::Mbr)
            return e.mbrType;
    }
    const auto kind = PartitionTable::bootKind(whole.slice(sysEntry.startingOffset, sysEntry.length));
    return PartitionTable::typeForBootKind(kind);
}

bool describe(const QString& name, const QHash<QString, QString>& mounts, DiskInfo* d)
{
    const QString node = "/dev/" + name;
    int err = 0;
    std::shared_ptr<FileSource> source = FileSource::open(node, &err);
    if (!source)
        return false;
    const QString base = kSysBlock + "/" + name;
    d->path = node;
    d->identity.model = modelOf(name);
    d->friendlyName = d->identity.model;
    d->sizeBytes = source->size();
    d->mediaType = readSys(base + "/removable") == "1" ? DiskGeometry::kRemovableMedia : DiskGeometry::kFixedMedia;
    const quint32 sector = readSys(base + "/queue/logical_block_size").toUInt();
    d->bytesPerSector = sector >= 512 ? sector : 512;

    const DeviceHandle whole(source);
    const DriveLayout own = PartitionTable::read(whole, d->bytesPerSector);
    d->layout.style = own.style;
    const QStringList children = QDir(base).entryList({name + "*"}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& child : children) {
        const QString partDir = base + "/" + child;
        bool ok = false;
        const quint32 number = readSys(partDir + "/partition").toUInt(&ok);
        if (!ok)
            continue;
        PartitionEntry e;
        e.partitionNumber = number;
        e.startingOffset = readSys(partDir + "/start").toULongLong() * kSysfsSector;
        e.length = readSys(partDir + "/size").toULongLong() * kSysfsSector;
        e.mbrType = typeOf(e, own, whole);
        for (const PartitionEntry& o : own.entries) {
            if (o.startingOffset == e.startingOffset)
                e.typeName = o.typeName;
        }
        e.fileSystem = PartitionTable::fileSystemName(whole.slice(e.startingOffset, e.length));
        if (e.mbrType == 0)
            continue;
        d->layout.entries.append(e);
        d->mountPoints.append(mounts.value(QFileInfo("/dev/" + child).canonicalFilePath()));
        d->labels.append(VolumeLabel::probe(source->fd(), e.startingOffset, e.length));
    }
    if (d->layout.entries.isEmpty() && own.style == DriveLayout::Raw && !own.entries.isEmpty()) {
        d->layout = own; // a volume straight on the disk, as on many memory cards
        d->mountPoints = {mounts.value(QFileInfo(node).canonicalFilePath())};
        d->labels = {VolumeLabel::probe(source->fd(), 0, d->sizeBytes)};
    }
    d->open = [node](int* error) -> DeviceHandle {
        std::shared_ptr<FileSource> s = FileSource::open(node, error);
        return s ? DeviceHandle(s) : DeviceHandle();
    };
    return true;
}
} // namespace

QList<DiskInfo> LinuxDeviceLayer::discoverDisks()
{
    QList<DiskInfo> disks;
    const QHash<QString, QString> mounts = mountTable();
    const QStringList names = QDir(kSysBlock).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::System, QDir::Name);
    for (const QString& name : names) {
        DiskInfo d;
        if (isDiskName(name) && describe(name, mounts, &d))
            disks.append(d);
    }
    return disks;
}
