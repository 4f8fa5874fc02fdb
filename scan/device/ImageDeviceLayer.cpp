#include "scan/device/ImageDeviceLayer.h"
#include "scan/device/FileSource.h"
#include "scan/device/ImageSource.h"
#include "scan/device/MemorySource.h"
#include "scan/device/PartitionTable.h"
#include "scan/device/VolumeLabel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {
void fillCommon(DiskInfo* d, const QString& name, quint64 size, const DeviceHandle& whole)
{
    d->identity.model = name.toUtf8();
    d->friendlyName = name.toUtf8();
    d->sizeBytes = size;
    d->mediaType = DiskGeometry::kFixedMedia;
    d->layout = PartitionTable::read(whole);
    d->mountPoints = QList<QString>(d->layout.entries.size());
    d->labels = QList<QString>(d->layout.entries.size());
}
} // namespace

QString ImageDeviceLayer::defaultFolder()
{
    if (!QCoreApplication::instance())
        return {};
    return QCoreApplication::applicationDirPath() + QStringLiteral("/images");
}

bool ImageDeviceLayer::describeFile(const QString& path, DiskInfo* out, int* error)
{
    std::shared_ptr<ByteSource> source = ImageSource::open(path, error);
    if (!source)
        return false;
    DiskInfo d;
    d.path = QFileInfo(path).canonicalFilePath();
    const DeviceHandle whole(source);
    fillCommon(&d, ImageSource::displayName(path), source->size(), whole);
    // libblkid reads labels from a descriptor: plain image files only.
    const auto* file = dynamic_cast<const FileSource*>(source.get());
    for (int i = 0; file && i < d.layout.entries.size(); ++i) {
        const PartitionEntry& e = d.layout.entries[i];
        d.labels[i] = VolumeLabel::probe(file->fd(), e.startingOffset, e.length);
    }
    d.open = [path](int* err) -> DeviceHandle {
        std::shared_ptr<ByteSource> s = ImageSource::open(path, err);
        return s ? DeviceHandle(s) : DeviceHandle();
    };
    *out = d;
    return true;
}

DiskInfo ImageDeviceLayer::describeSource(const QString& name, std::shared_ptr<ByteSource> source)
{
    DiskInfo d;
    d.path = name;
    fillCommon(&d, name, source->size(), DeviceHandle(source));
    d.open = [source](int*) { return DeviceHandle(source); };
    return d;
}

QList<DiskInfo> ImageDeviceLayer::discoverFolder(const QString& folder)
{
    QList<DiskInfo> disks;
    if (folder.isEmpty())
        return disks;
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo& f : files) {
        if (ImageSource::isContinuation(f.absoluteFilePath()))
            continue;
        DiskInfo d;
        int err = 0;
        if (describeFile(f.absoluteFilePath(), &d, &err))
            disks.append(d);
    }
    return disks;
}

int ImageDeviceLayer::addImageFile(const QString& path, int* error)
{
    const int known = diskOfPath(QFileInfo(path).canonicalFilePath());
    if (known >= 0)
        return known;
    DiskInfo d;
    if (!describeFile(path, &d, error))
        return -1;
    ensureDiscovered();
    const int number = listDisks().size();
    appendDisks({d});
    return number;
}

int ImageDeviceLayer::addImageData(const QString& name, const QByteArray& data)
{
    return addImageSource(name, std::make_shared<MemorySource>(data));
}

int ImageDeviceLayer::addImageSource(const QString& name, std::shared_ptr<ByteSource> source)
{
    ensureDiscovered();
    const int number = listDisks().size();
    appendDisks({describeSource(name, std::move(source))});
    return number;
}
