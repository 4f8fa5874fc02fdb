#include "app/Resources.h"
#include "filetypes/FileTypeCatalogue.h"

#include <QImageReader>
#include <QPixmap>
#include <QTreeWidget>
#include <QtTest>

class TestFileTypes : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void freshTreeHasEveryTypeTicked();
    void laterRowWinsInIconMap_data();
    void laterRowWinsInIconMap();
    void iconMapIsExactAndStable();
    void everyTypeIconIsInTheResources();
    void windowPicturesHaveTheirSizes_data();
    void windowPicturesHaveTheirSizes();
};

void TestFileTypes::initTestCase()
{
    Resources::load();
}

void TestFileTypes::freshTreeHasEveryTypeTicked()
{
    QTreeWidget tree;
    tree.setColumnCount(3);
    FileTypeCatalogue::addToTree(&tree);
    QCOMPARE(tree.topLevelItemCount(), 9);
    int rows = 0;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        const QTreeWidgetItem* category = tree.topLevelItem(i);
        QCOMPARE(category->checkState(0), Qt::Checked);
        QVERIFY(category->font(0).bold());
        QVERIFY(category->icon(0).isNull());
        QVERIFY(category->text(1).isEmpty());
        for (int j = 0; j < category->childCount(); ++j) {
            const QTreeWidgetItem* row = category->child(j);
            QCOMPARE(row->checkState(0), Qt::Checked);
            QVERIFY(!row->icon(0).isNull());
            QVERIFY(row->text(1).startsWith(QLatin1Char('.')));
            ++rows;
        }
    }
    QCOMPARE(rows, 141);
    QCOMPARE(tree.topLevelItem(0)->text(0), QStringLiteral("文档类"));
    const QTreeWidgetItem* apple = tree.topLevelItem(2)->child(9);
    QCOMPARE(apple->text(0), QStringLiteral("Apple 声音文件"));
    QCOMPARE(apple->text(1), QStringLiteral(".m4r;.m4a"));
    QCOMPARE(tree.topLevelItem(8)->child(25)->text(0), QStringLiteral("QQ 聊天记录文件"));
}

void TestFileTypes::laterRowWinsInIconMap_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("icon");
    QTest::newRow(".dat: IE cache after VCD") << ".dat" << 46;
    QTest::newRow(".max: 3D Studio after PaperPort") << ".max" << 57;
    QTest::newRow(".gz: extra key of the RAR row") << ".gz" << 81;
    QTest::newRow(".tgz") << ".tgz" << 81;
    QTest::newRow(".xz") << ".xz" << 81;
    QTest::newRow(".bz2") << ".bz2" << 81;
    QTest::newRow("second of two extensions") << ".m4a" << 32;
    QTest::newRow("first of two extensions") << ".rmvb" << 34;
    QTest::newRow("shared video icon") << ".avi" << 361;
}

void TestFileTypes::laterRowWinsInIconMap()
{
    QFETCH(QString, key);
    QFETCH(int, icon);
    QMap<QString, QString> map;
    FileTypeCatalogue::fillIconMap(map);
    QCOMPARE(map.value(key), QStringLiteral(":./icons/%1.ico").arg(icon));
}

void TestFileTypes::iconMapIsExactAndStable()
{
    QMap<QString, QString> map;
    FileTypeCatalogue::fillIconMap(map);
    QVERIFY(!map.contains(QStringLiteral(".JPG")));
    QVERIFY(!map.contains(QStringLiteral(".")));
    QVERIFY(!map.contains(QStringLiteral(".jpg;")));
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        QVERIFY2(it.key().startsWith(QLatin1Char('.')) && !it.key().contains(QLatin1Char(';')), qPrintable(it.key()));
    const QMap<QString, QString> first = map;
    FileTypeCatalogue::fillIconMap(map);
    QCOMPARE(map, first);
}

// Each numbered file loads, at 16 pixels; number 42 carries six sizes.
void TestFileTypes::everyTypeIconIsInTheResources()
{
    QList<int> numbers;
    for (int n = 1; n <= 114; ++n) {
        if (n != 36)
            numbers.append(n);
    }
    numbers.append(361);
    for (int n : numbers) {
        QImageReader reader(FileTypeCatalogue::iconPath(n));
        const QImage image = reader.read();
        QVERIFY2(!image.isNull(), qPrintable(reader.fileName() + ": " + reader.errorString()));
        QCOMPARE(reader.imageCount(), n == 42 ? 6 : 1);
        QCOMPARE(image.size(), n == 42 ? QSize(48, 48) : QSize(16, 16));
    }
    QVERIFY(!QFile::exists(QStringLiteral(":./icons/36.ico")));
}

void TestFileTypes::windowPicturesHaveTheirSizes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("images");
    QTest::newRow("window icon") << "32方形.ico" << QSize(32, 32) << 1;
    QTest::newRow("title icon") << "main.png" << QSize(55, 40) << 1;
    QTest::newRow("product") << "ostrel-big.png" << QSize(177, 128) << 1;
    QTest::newRow("disk rows") << "disk.ico" << QSize(48, 48) << 6;
    QTest::newRow("unknown file") << "null.ico" << QSize(48, 48) << 9;
    QTest::newRow("border") << "border.png" << QSize(459, 116) << 1;
    QTest::newRow("stop") << "stop1.png" << QSize(24, 24) << 1;
    QTest::newRow("partly checked") << "checked1.ico" << QSize(16, 16) << 1;
    QTest::newRow("thumbnail") << "defaultPic.png" << QSize(248, 198) << 1;
}

// Both ways of addressing a picture reach the same file.
void TestFileTypes::windowPicturesHaveTheirSizes()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QFETCH(int, images);
    for (const QString& prefix : {QStringLiteral(":./"), QStringLiteral(":/")}) {
        QImageReader reader(prefix + name);
        QCOMPARE(reader.read().size(), size);
        QCOMPARE(qMax(1, reader.imageCount()), images);
    }
}

QTEST_MAIN(TestFileTypes)
#include "tst_filetypes.moc"
