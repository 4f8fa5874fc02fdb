#include "app/Resources.h"
#include "filetypes/FileTypeCatalogue.h"

#include <QTreeWidget>
#include <QtTest>

class TestFileTypes : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void freshTreeHasEveryTypeTicked();
    void laterRowWinsInIconMap_data();
    void laterRowWinsInIconMap();
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
    QCOMPARE(rows, 145);
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

QTEST_MAIN(TestFileTypes)
#include "tst_filetypes.moc"
