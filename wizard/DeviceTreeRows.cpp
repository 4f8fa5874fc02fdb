#include "wizard/DeviceTreeRows.h"
#include "scan/device/ImageDeviceLayer.h"

#include <QHeaderView>
#include <QTreeWidget>
#include <algorithm>

namespace {
constexpr int kNameColumnWidth = 434;
constexpr int kIconSide = 32;
constexpr int kHeaderPixelSize = 10;
constexpr int kPartitionPointSize = 10;
// More entries than a layout read can hold: the read is taken as failed.
constexpr int kMaxLayoutEntries = 28;
constexpr double kPerKi = 0.0009765625;

QString twoPlaces(double value)
{
    return QString::number(value, 'f', 2);
}

void addRow(QTreeWidget* tree, const QString& name, const QString& capacity, const QString& key, int disk,
            const QFont& font, const QString& fileSystem = QString())
{
    auto* row = new QTreeWidgetItem({name, capacity, fileSystem});
    row->setData(0, Qt::UserRole, key);
    row->setData(1, Qt::UserRole, disk);
    row->setFont(0, font);
    row->setFont(1, font);
    row->setFont(2, font);
    tree->addTopLevelItem(row);
}
} // namespace

void DeviceTreeRows::setupTree(QTreeWidget* tree)
{
    tree->setColumnCount(3);
    tree->setHeaderLabels({QObject::tr("设备名"), QObject::tr("容量"), QObject::tr("文件系统")});
    QTreeWidgetItem* header = tree->headerItem();
    QFont font = header->font(0);
    font.setBold(true);
    font.setPixelSize(kHeaderPixelSize);
    for (int column = 0; column < 3; ++column) {
        header->setTextAlignment(column, Qt::AlignCenter);
        header->setFont(column, font);
    }
    tree->setRootIsDecorated(false);
    tree->setSelectionMode(QAbstractItemView::SingleSelection);
    tree->setColumnWidth(0, kNameColumnWidth);
    tree->setIconSize(QSize(kIconSide, kIconSide));
    tree->setStyleSheet(QStringLiteral("border:1px solid #bfbec1"));
}

void DeviceTreeRows::fill(QTreeWidget* tree, DeviceLayer& layer)
{
    QList<int> disks = layer.listDisks();
    std::sort(disks.begin(), disks.end());
    for (int disk : disks)
        addDisk(tree, layer, disk);
}

void DeviceTreeRows::addDisk(QTreeWidget* tree, DeviceLayer& layer, int disk)
{
    const auto geometry = layer.diskGeometry(disk);
    const float gib = geometry ? float(double(geometry->sizeBytes()) / double(1u << 30)) : 0.0f;
    auto* row = new QTreeWidgetItem({diskName(layer, disk), QStringLiteral("%1 GB").arg(twoPlaces(double(gib)))});
    row->setIcon(0, QIcon(QStringLiteral(":./disk.ico")));
    row->setData(1, Qt::UserRole, disk);
    QFont bold = row->font(0);
    bold.setBold(true);
    row->setFont(0, bold);
    row->setFont(1, bold);
    row->setFlags(row->flags() & ~Qt::ItemIsSelectable);
    tree->addTopLevelItem(row);
    addPartitionRows(tree, layer, disk);
}

int DeviceTreeRows::addImage(QTreeWidget* tree, ImageDeviceLayer& layer, const QString& path, int* error)
{
    const int disk = layer.addImageFile(path, error);
    if (disk >= 0)
        addDisk(tree, layer, disk);
    return disk;
}

QString DeviceTreeRows::diskName(DeviceLayer& layer, int disk)
{
    const auto identity = layer.diskIdentity(disk);
    if (identity && !identity->model.isEmpty())
        return QString::fromLocal8Bit(identity->model);
    const QString friendly = QString::fromLocal8Bit(layer.diskFriendlyName(disk));
    const QStringList words = friendly.split(QLatin1Char(' '), Qt::KeepEmptyParts);
    if (words.size() < 3)
        return friendly;
    QString name;
    for (int i = 0; i < words.size() - 2; ++i)
        name += words.at(i) + QLatin1Char(' ');
    return name;
}

QString DeviceTreeRows::capacityText(quint64 bytes)
{
    const double gib = double(bytes / 1024 / 1024) * kPerKi;
    if (gib >= 1.0)
        return QStringLiteral("%1 GB").arg(twoPlaces(gib));
    return QStringLiteral("%1 MB").arg(twoPlaces(double(bytes / 1024) * kPerKi));
}

void DeviceTreeRows::addPartitionRows(QTreeWidget* tree, DeviceLayer& layer, int disk)
{
    const QList<QChar> letters = layer.lettersOfDisk(disk);
    const auto layout = layer.driveLayout(disk);
    if (!layout || layout->entries.size() > kMaxLayoutEntries)
        return;
    QFont font = tree->font();
    font.setPointSize(kPartitionPointSize);
    for (const PartitionEntry& entry : layout->entries) {
        if (entry.mbrType == 0)
            continue;
        QChar letter;
        std::optional<PartitionEntry> lettered;
        for (QChar candidate : letters) {
            lettered = layer.partitionOfLetter(candidate);
            if (lettered && lettered->partitionNumber == entry.partitionNumber) {
                letter = candidate;
                break;
            }
        }
        const int number = int(entry.partitionNumber) - 1;
        QString name = QStringLiteral("no name");
        QString label = QStringLiteral("no label");
        QString keyLetter = QStringLiteral("@");
        quint64 length = entry.length;
        if (!letter.isNull()) {
            name = letter;
            keyLetter = letter;
            const QString volumeLabel = layer.volumeLabel(letter);
            if (!volumeLabel.isEmpty())
                label = volumeLabel;
            length = lettered->length;
        }
        addRow(tree, QStringLiteral("        (%1:/) [%2]").arg(name, label), capacityText(length),
               QStringLiteral("%1|%2").arg(number).arg(keyLetter), disk, font,
               entry.fileSystem.isEmpty() ? QObject::tr("未知") : entry.fileSystem);
    }
}
