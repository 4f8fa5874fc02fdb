#include "imaging/DiskImageBuilder.h"
#include "scan/device/ImageDeviceLayer.h"
#include "wizard/DeviceTreeRows.h"

#include <QTreeWidget>
#include <QtTest>

namespace {
constexpr quint64 kMiB = 1024 * 1024;

// Disks described by hand, for names no image gives.
class HandMadeDisks : public DiskListLayer {
public:
    QList<DiskInfo> disks;

protected:
    QList<DiskInfo> discover() override { return disks; }
};

// Each row as "text 0 | text 1 | file system | partition key | disk number".
QStringList rowsOf(const QTreeWidget& tree)
{
    QStringList rows;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        const QTreeWidgetItem* item = tree.topLevelItem(i);
        rows.append(QStringLiteral("%1|%2|%3|%4|%5")
                        .arg(item->text(0), item->text(1), item->text(2), item->data(0, Qt::UserRole).toString())
                        .arg(item->data(1, Qt::UserRole).toInt()));
    }
    return rows;
}
} // namespace

class TestDeviceRows : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { DeviceLayer::setInstance(nullptr); }
    void mbrDiskAndBareVolume();
    void diskName_data();
    void diskName();
};

void TestDeviceRows::mbrDiskAndBareVolume()
{
    // NTFS by type, a Linux partition, and FAT32 known only by its boot sector.
    DiskImageBuilder disk(8 * kMiB);
    disk.writeMbr({{0x07, 2048, 2048}, {0x83, 4096, 3072}, {0x01, 7168, 1024}});
    disk.put(7168 * 512, DiskImageBuilder::fat32BootSector(1024));
    DiskImageBuilder volume(2 * kMiB);
    volume.put(0, DiskImageBuilder::ntfsBootSector(4096));
    ImageDeviceLayer layer;
    layer.addImageData(QStringLiteral("disk.img"), disk.bytes());
    layer.addImageData(QStringLiteral("volume.img"), volume.bytes());
    DeviceLayer::setInstance(&layer);

    QTreeWidget tree;
    DeviceTreeRows::setupTree(&tree);
    DeviceTreeRows::fill(&tree, DeviceLayer::instance());
    QCOMPARE(rowsOf(tree), QStringList({
                               "disk.img|0.01 GB|||0",
                               "        (C:/) [no label]|1.00 MB|未知|0|C|0",
                               "        (no name:/) [no label]|1.50 MB|未知|1|@|0",
                               "        (D:/) [no label]|0.50 MB|FAT32|2|D|0",
                               "volume.img|0.00 GB|||1",
                               "        (E:/) [no label]|2.00 MB|NTFS|0|E|1",
                           }));
    QVERIFY(!(tree.topLevelItem(0)->flags() & Qt::ItemIsSelectable));
}

void TestDeviceRows::diskName_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<QByteArray>("friendly");
    QTest::addColumn<QString>("name");
    QTest::newRow("model wins") << QByteArray("WDC WD10") << QByteArray("a b c") << "WDC WD10";
    QTest::newRow("two words") << QByteArray() << QByteArray("Stick 8G") << "Stick 8G";
    QTest::newRow("three words") << QByteArray() << QByteArray("Kingston USB Device") << "Kingston ";
    QTest::newRow("empty parts count") << QByteArray() << QByteArray("A  B C") << "A  ";
}

void TestDeviceRows::diskName()
{
    QFETCH(QByteArray, model);
    QFETCH(QByteArray, friendly);
    QFETCH(QString, name);
    HandMadeDisks layer;
    DiskInfo d;
    d.identity.model = model;
    d.friendlyName = friendly;
    layer.disks = {d};
    QCOMPARE(DeviceTreeRows::diskName(layer, 0), name);
}

QTEST_MAIN(TestDeviceRows)
#include "tst_devicerows.moc"
