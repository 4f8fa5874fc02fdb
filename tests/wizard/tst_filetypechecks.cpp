#include "wizard/FileTypeChecks.h"

#include <QTreeWidget>
#include <QtTest>

// A small catalogue in the options tree's shape: categories with their types,
// column 1 holding the extensions, one row with several.
class TestFileTypeChecks : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { delete tree; }

    void typeClicksSettleTheCategory();
    void categoryClickCarriesDown();
    void fileFilter_data();
    void fileFilter();

private:
    QTreeWidgetItem* category(int i) { return tree->topLevelItem(i); }
    QTreeWidgetItem* type(int c, int i) { return tree->topLevelItem(c)->child(i); }
    QTreeWidget* tree = nullptr;
};

void TestFileTypeChecks::init()
{
    tree = new QTreeWidget;
    tree->setColumnCount(3);
    const QList<QPair<QString, QStringList>> catalogue = {
        {QStringLiteral("文档类"), {QStringLiteral(".docx"), QStringLiteral(".pdf")}},
        {QStringLiteral("照片类"), {QStringLiteral(".jpg"), QStringLiteral(".tif"), QStringLiteral(".cr2")}},
        {QStringLiteral("音频类"), {QStringLiteral(".m4r;.m4a")}},
    };
    for (const auto& [name, extensions] : catalogue) {
        auto* c = new QTreeWidgetItem(tree, {name});
        c->setCheckState(0, Qt::Checked);
        for (const QString& extension : extensions)
            (new QTreeWidgetItem(c, {QString(), extension}))->setCheckState(0, Qt::Checked);
    }
    // Connected after filling, as the page does.
    connect(tree, &QTreeWidget::itemChanged, tree, &FileTypeChecks::treeStep2_itemChanged);
}

void TestFileTypeChecks::typeClicksSettleTheCategory()
{
    QTreeWidgetItem* photos = category(1);
    type(1, 0)->setCheckState(0, Qt::Unchecked);
    QCOMPARE(photos->checkState(0), Qt::PartiallyChecked);
    type(1, 1)->setCheckState(0, Qt::Unchecked);
    QCOMPARE(photos->checkState(0), Qt::PartiallyChecked);
    type(1, 2)->setCheckState(0, Qt::Unchecked);
    QCOMPARE(photos->checkState(0), Qt::Unchecked);
    type(1, 1)->setCheckState(0, Qt::Checked);
    QCOMPARE(photos->checkState(0), Qt::PartiallyChecked);
    type(1, 0)->setCheckState(0, Qt::Checked);
    type(1, 2)->setCheckState(0, Qt::Checked);
    QCOMPARE(photos->checkState(0), Qt::Checked);
    // Neighbours untouched.
    QCOMPARE(category(0)->checkState(0), Qt::Checked);
    QCOMPARE(type(0, 1)->checkState(0), Qt::Checked);
}

void TestFileTypeChecks::categoryClickCarriesDown()
{
    for (const Qt::CheckState to : {Qt::Checked, Qt::Unchecked}) {
        type(1, 0)->setCheckState(0, Qt::Unchecked); // leaves the category partly checked
        QCOMPARE(category(1)->checkState(0), Qt::PartiallyChecked);
        category(1)->setCheckState(0, to);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(type(1, i)->checkState(0), to);
    }
}

void TestFileTypeChecks::fileFilter_data()
{
    QTest::addColumn<QList<int>>("keep"); // category * 10 + type of the ticked rows
    QTest::addColumn<QString>("filter");
    QTest::newRow("all") << QList<int>{0, 1, 10, 11, 12, 20} << QStringLiteral(".docx;.pdf;.jpg;.tif;.cr2;.m4r;.m4a");
    QTest::newRow("one row") << QList<int>{11} << QStringLiteral(".tif");
    QTest::newRow("multi-extension row") << QList<int>{20} << QStringLiteral(".m4r;.m4a");
    QTest::newRow("two categories") << QList<int>{1, 12} << QStringLiteral(".pdf;.cr2");
    QTest::newRow("nothing") << QList<int>{} << QString();
}

void TestFileTypeChecks::fileFilter()
{
    QFETCH(QList<int>, keep);
    QFETCH(QString, filter);
    FileTypeChecks::checkWholeTree(tree, Qt::Unchecked);
    for (int code : keep)
        type(code / 10, code % 10)->setCheckState(0, Qt::Checked);
    QCOMPARE(FileTypeChecks::fileFilter(tree), filter);
}

QTEST_MAIN(TestFileTypeChecks)
#include "tst_filetypechecks.moc"
