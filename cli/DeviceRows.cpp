#include "cli/DeviceRows.h"
#include "scan/device/DeviceLayer.h"

#include <QJsonObject>

namespace {
constexpr double kGiB = 1024.0 * 1024.0 * 1024.0;
constexpr double kMiB = 1024.0 * 1024.0;
} // namespace

QList<DeviceRow> DeviceRows::collect(DeviceLayer& layer)
{
    QList<DeviceRow> rows;
    for (int disk : layer.listDisks()) {
        DeviceRow d;
        d.isDisk = true;
        d.disk = disk;
        const auto identity = layer.diskIdentity(disk);
        d.name = identity && !identity->model.isEmpty() ? QString::fromUtf8(identity->model)
                                                        : QString::fromUtf8(layer.diskFriendlyName(disk));
        const auto geometry = layer.diskGeometry(disk);
        d.sizeBytes = geometry ? geometry->sizeBytes() : 0;
        d.sizeGb = double(d.sizeBytes) / kGiB;
        rows.append(d);
        const QList<QChar> letters = layer.lettersOfDisk(disk);
        const auto layout = layer.driveLayout(disk);
        if (!layout)
            continue;
        for (const PartitionEntry& e : layout->entries) {
            DeviceRow p;
            p.disk = disk;
            p.partitionNumber = int(e.partitionNumber);
            p.sizeBytes = e.length;
            p.type = e.mbrType;
            p.typeName = e.typeName;
            p.fileSystem = e.fileSystem;
            for (QChar c : letters) {
                const auto at = layer.partitionOfLetter(c);
                if (at && at->startingOffset == e.startingOffset && at->partitionNumber == e.partitionNumber)
                    p.letter = c;
            }
            p.label = p.letter.isNull() ? QString() : layer.volumeLabel(p.letter);
            rows.append(p);
        }
    }
    return rows;
}

QString DeviceRows::sizeText(quint64 bytes)
{
    const double gb = double(bytes) / kGiB;
    if (gb >= 1.0)
        return QStringLiteral("%1 GB").arg(gb, 0, 'f', 2);
    return QStringLiteral("%1 MB").arg(double(bytes) / kMiB, 0, 'f', 2);
}

QString DeviceRows::text(const QList<DeviceRow>& rows)
{
    QString out;
    for (const DeviceRow& r : rows) {
        if (r.isDisk) {
            out += QStringLiteral("disk:%1  %2  %3 GB\n").arg(r.disk).arg(r.name).arg(r.sizeGb, 0, 'f', 2);
        } else {
            const QString letter = r.letter.isNull() ? QStringLiteral("no name") : QStringLiteral("(%1:/)").arg(r.letter);
            const QString label = r.label.isEmpty() ? QStringLiteral("no label") : r.label;
            const QString typeName = r.typeName.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(r.typeName);
            const QString fileSystem = r.fileSystem.isEmpty() ? QStringLiteral("unknown file system") : r.fileSystem;
            out += QStringLiteral("        %1 [%2]  partition %3  type 0x%4%5  %6  %7\n")
                       .arg(letter, label)
                       .arg(r.partitionNumber)
                       .arg(r.type, 2, 16, QChar('0'))
                       .arg(typeName, fileSystem, sizeText(r.sizeBytes));
        }
    }
    return out;
}

QJsonArray DeviceRows::json(const QList<DeviceRow>& rows)
{
    QJsonArray disks;
    QJsonObject current;
    QJsonArray parts;
    auto flush = [&] {
        if (!current.isEmpty()) {
            current.insert("partitions", parts);
            disks.append(current);
        }
        current = {};
        parts = {};
    };
    for (const DeviceRow& r : rows) {
        if (r.isDisk) {
            flush();
            current = {{"disk", r.disk}, {"name", r.name}, {"sizeBytes", double(r.sizeBytes)}, {"sizeGB", r.sizeGb}};
        } else {
            parts.append(QJsonObject{{"partition", r.partitionNumber},
                                     {"letter", r.letter.isNull() ? QJsonValue() : QJsonValue(QString(r.letter))},
                                     {"label", r.label},
                                     {"type", r.type},
                                     {"typeName", r.typeName},
                                     {"fileSystem", r.fileSystem},
                                     {"sizeBytes", double(r.sizeBytes)}});
        }
    }
    flush();
    return disks;
}
