#include "fixtures/DiskImageBuilder.h"
#include "scan/device/ImageDeviceLayer.h"
#include "wizard/DeviceTreeRows.h"

#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

namespace {
constexpr quint64 kMiB = 1024 * 1024;

// Disks described by hand, for names and layouts no image gives.
class HandMadeDisks : public DiskListLayer {
public:
    QList<DiskInfo> disks;

protected:
    QList<DiskInfo> discover() override { return disks; }
};

struct Row {
    QString name;
    QString capacity;
    QString key; // column 0 under Qt::UserRole
    int disk;
};

QList<Row> rowsOf(const QTreeWidget& tree)
{
    QList<Row> rows;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        const QTreeWidgetItem* item = tree.topLevelItem(i);
        rows.append({item->text(0), item->text(1), item->data(0, Qt::UserRole).toString(),
                     item->data(1, Qt::UserRole).toInt()});
    }
    return rows;
}

void compareRows(const QList<Row>& got, const QList<Row>& want)
{
    QCOMPARE(got.size(), want.size());
    for (int i = 0; i < got.size(); ++i) {
        QCOMPARE(got[i].name, want[i].name);
        QCOMPARE(got[i].capacity, want[i].capacity);
        QCOMPARE(got[i].key, want[i].key);
        QCOMPARE(got[i].disk, want[i].disk);
    }
}

// NTFS by type, a Linux partition, and FAT32 known only by its boot sector.
QByteArray mbrDisk()
{
    DiskImageBuilder b(8 * kMiB);
    b.writeMbr({{0x07, 2048, 2048}, {0x83, 4096, 3072}, {0x01, 7168, 1024}});
    b.put(7168 * 512, DiskImageBuilder::fat32BootSector(1024));
    return b.bytes();
}

QByteArray bareNtfs()
{
    DiskImageBuilder b(2 * kMiB);
    b.put(0, DiskImageBuilder::ntfsBootSector(4096));
    return b.bytes();
}
} // namespace

class TestDeviceRows : public QObject {
    Q_OBJECT
private slots:
    void init() { tree = std::make_unique<QTreeWidget>(); DeviceTreeRows::setupTree(tree.get()); }
    void cleanup() { DeviceLayer::setInstance(nullptr); }

    void mbrDiskAndBareVolume();
    void diskRowLook();
    void imageAddedAtRunTime();
    void unreadableImageAddsNothing();
    void capacityText_data();
    void capacityText();
    void diskName_data();
    void diskName();
    void oversizedLayoutGivesDiskRowAlone();

private:
    std::unique_ptr<QTreeWidget> tree;
};

void TestDeviceRows::mbrDiskAndBareVolume()
{
    ImageDeviceLayer layer;
    layer.addImageData(QStringLiteral("disk.img"), mbrDisk());
    layer.addImageData(QStringLiteral("volume.img"), bareNtfs());
    DeviceLayer::setInstance(&layer);
    DeviceTreeRows::fill(tree.get(), DeviceLayer::instance());

    compareRows(rowsOf(*tree), {
        {"disk.img", "0.01 GB", "", 0},
        {"        (C:/) [no label]", "1.00 MB", "0|C", 0},
        {"        (no name:/) [no label]", "1.50 MB", "1|@", 0},
        {"        (D:/) [no label]", "0.50 MB", "2|D", 0},
        {"volume.img", "0.00 GB", "", 1},
        {"        (E:/) [no label]", "2.00 MB", "0|E", 1},
    });
}

void TestDeviceRows::diskRowLook()
{
    ImageDeviceLayer layer;
    layer.addImageData(QStringLiteral("disk.img"), mbrDisk());
    DeviceTreeRows::fill(tree.get(), layer);
    const QTreeWidgetItem* disk = tree->topLevelItem(0);
    const QTreeWidgetItem* partition = tree->topLevelItem(1);
    QVERIFY(!(disk->flags() & Qt::ItemIsSelectable));
    QVERIFY(disk->font(0).bold() && disk->font(1).bold());
    QVERIFY(partition->flags() & Qt::ItemIsSelectable);
    QCOMPARE(partition->font(1).pointSize(), 10);
    QVERIFY(partition->icon(0).isNull());
    QCOMPARE(tree->columnCount(), 2);
    QCOMPARE(tree->headerItem()->text(0), QStringLiteral("设备名"));
}

void TestDeviceRows::imageAddedAtRunTime()
{
    ImageDeviceLayer layer;
    layer.addImageData(QStringLiteral("first.img"), bareNtfs());
    DeviceTreeRows::fill(tree.get(), layer);
    QTemporaryDir dir;
    DiskImageBuilder b(8 * kMiB);
    b.bytes() = mbrDisk();
    const QString path = dir.filePath(QStringLiteral("added.img"));
    QVERIFY(b.save(path));

    int error = 0;
    QCOMPARE(DeviceTreeRows::addImage(tree.get(), layer, path, &error), 1);
    const QList<Row> rows = rowsOf(*tree);
    QCOMPARE(rows.size(), 2 + 4);
    compareRows(rows.mid(2), {
        {"added.img", "0.01 GB", "", 1},
        {"        (D:/) [no label]", "1.00 MB", "0|D", 1},
        {"        (no name:/) [no label]", "1.50 MB", "1|@", 1},
        {"        (E:/) [no label]", "0.50 MB", "2|E", 1},
    });
}

void TestDeviceRows::unreadableImageAddsNothing()
{
    ImageDeviceLayer layer;
    int error = 0;
    QCOMPARE(DeviceTreeRows::addImage(tree.get(), layer, QStringLiteral("/nonexistent/x.img"), &error), -1);
    QVERIFY(error != 0);
    QCOMPARE(tree->topLevelItemCount(), 0);
}

void TestDeviceRows::capacityText_data()
{
    QTest::addColumn<quint64>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("one GiB") << (quint64(1) << 30) << QStringLiteral("1.00 GB");
    QTest::newRow("one byte less") << (quint64(1) << 30) - 1 << QStringLiteral("1024.00 MB");
    QTest::newRow("whole MiB only") << (quint64(3) << 30) + 1023 * 1024 << QStringLiteral("3.00 GB");
    QTest::newRow("1.5 MiB") << quint64(1536 * 1024) << QStringLiteral("1.50 MB");
    QTest::newRow("empty") << quint64(0) << QStringLiteral("0.00 MB");
}

void TestDeviceRows::capacityText()
{
    QFETCH(quint64, bytes);
    QFETCH(QString, text);
    QCOMPARE(DeviceTreeRows::capacityText(bytes), text);
}

void TestDeviceRows::diskName_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<QByteArray>("friendly");
    QTest::addColumn<QString>("name");
    QTest::newRow("model wins") << QByteArray("WDC WD10") << QByteArray("a b c") << QStringLiteral("WDC WD10");
    QTest::newRow("one word") << QByteArray() << QByteArray("Stick") << QStringLiteral("Stick");
    QTest::newRow("two words") << QByteArray() << QByteArray("Stick 8G") << QStringLiteral("Stick 8G");
    QTest::newRow("three words") << QByteArray() << QByteArray("Kingston USB Device") << QStringLiteral("Kingston ");
    QTest::newRow("empty parts count") << QByteArray() << QByteArray("A  B C") << QStringLiteral("A  ");
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

void TestDeviceRows::oversizedLayoutGivesDiskRowAlone()
{
    HandMadeDisks layer;
    DiskInfo d;
    d.identity.model = "big";
    d.layout.style = DriveLayout::Mbr;
    for (quint32 i = 1; i <= 29; ++i)
        d.layout.entries.append({quint64(i) * kMiB, kMiB, i, 0x83});
    d.labels = QList<QString>(29);
    d.mountPoints = QList<QString>(29);
    layer.disks = {d};
    DeviceTreeRows::fill(tree.get(), layer);
    QCOMPARE(tree->topLevelItemCount(), 1);
}

QTEST_MAIN(TestDeviceRows)
#include "tst_devicerows.moc"
