#include "scan/device/SourceGuard.h"
#include "scan/device/DeviceLayer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {
// Nested folders deeper than this are not walked up when a target is missing.
constexpr int kMaxMissingLevels = 256;
// /proc/self/mountinfo: field 3 is "major:minor"; the mount source follows " - fstype ".
constexpr int kDeviceField = 2;

QString readLine(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()).trimmed() : QString();
}

bool parseDevice(const QString& text, quint64* out)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    bool okMajor = false;
    bool okMinor = false;
    if (parts.size() != 2)
        return false;
    const uint major = parts[0].toUInt(&okMajor);
    const uint minor = parts[1].toUInt(&okMinor);
    *out = makedev(major, minor);
    return okMajor && okMinor;
}

// The kernel name of a device node: /dev/disk/by-id/... and /dev/sda both give "sda".
QString kernelName(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return QFileInfo(canonical.isEmpty() ? path : canonical).fileName();
}

bool statPath(const QString& path, struct stat* st)
{
    return ::stat(QFile::encodeName(path).constData(), st) == 0;
}
} // namespace

QSet<quint64> SourceGuard::blockDevicesNamed(const QString& name) const
{
    QSet<quint64> devices;
    quint64 dev = 0;
    if (parseDevice(readLine(m_tables.sysfs + "/class/block/" + name + "/dev"), &dev))
        devices.insert(dev);
    // A disk: every partition on it as well.
    const QString disk = m_tables.sysfs + "/block/" + name;
    const QStringList parts = QDir(disk).entryList({name + "*"}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& part : parts) {
        if (parseDevice(readLine(disk + "/" + part + "/dev"), &dev))
            devices.insert(dev);
    }
    return devices;
}

QSet<quint64> SourceGuard::loopDevicesOf(const QString& imagePath) const
{
    QSet<quint64> devices;
    const QString image = QFileInfo(imagePath).canonicalFilePath();
    const QStringList loops = QDir(m_tables.sysfs + "/block").entryList({"loop*"}, QDir::Dirs | QDir::NoDotAndDotDot | QDir::System);
    for (const QString& loop : loops) {
        if (!image.isEmpty() && readLine(m_tables.sysfs + "/block/" + loop + "/loop/backing_file") == image)
            devices.unite(blockDevicesNamed(loop));
    }
    return devices;
}

QSet<quint64> SourceGuard::sourceDevices(const QString& sourcePath) const
{
    struct stat st {};
    const bool found = statPath(sourcePath, &st);
    if (found && S_ISREG(st.st_mode))
        return loopDevicesOf(sourcePath);
    QSet<quint64> devices = blockDevicesNamed(kernelName(sourcePath));
    if (found && S_ISBLK(st.st_mode))
        devices.insert(quint64(st.st_rdev));
    return devices;
}

QSet<quint64> SourceGuard::targetDevices(const QString& dir) const
{
    QSet<quint64> devices;
    QString at = QDir(dir).absolutePath();
    struct stat st {};
    for (int up = 0; !statPath(at, &st) && up < kMaxMissingLevels; ++up)
        at = QFileInfo(at).path();
    if (!statPath(at, &st))
        return devices;
    devices.insert(quint64(st.st_dev));
    // A file system whose numbers are its own (btrfs, overlay): the mount
    // table names the block device below it.
    QFile f(m_tables.mountInfo);
    if (!f.open(QIODevice::ReadOnly))
        return devices;
    const QList<QByteArray> lines = f.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QString text = QString::fromUtf8(line);
        const QStringList fields = text.split(QLatin1Char(' '));
        quint64 dev = 0;
        const int dash = fields.indexOf(QStringLiteral("-"));
        if (fields.size() <= kDeviceField || dash < 0 || dash + 2 >= fields.size()
            || !parseDevice(fields[kDeviceField], &dev) || dev != quint64(st.st_dev))
            continue;
        const QString source = fields[dash + 2];
        struct stat node {};
        if (statPath(source, &node) && S_ISBLK(node.st_mode))
            devices.insert(quint64(node.st_rdev));
        devices.unite(blockDevicesNamed(kernelName(source)));
    }
    return devices;
}

QString SourceGuard::refusal(const QString& dir, const QString& sourcePath) const
{
    const QSet<quint64> source = sourceDevices(sourcePath);
    if (!source.intersects(targetDevices(dir)))
        return QString();
    return QStringLiteral("%1 lies on the device being recovered (%2): restoring there would overwrite lost files")
        .arg(dir, sourcePath);
}

QString SourceGuard::refusalForDisk(const QString& dir, int disk)
{
    const QString path = DeviceLayer::instance().devicePath(disk);
    return path.isEmpty() ? QString() : SourceGuard().refusal(dir, path);
}
