#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "results/TreeModel.h"

#include <QAbstractItemModelTester>
#include <QThread>
#include <QtTest>

#include <memory>

namespace {

// top (invisible) -> C: -> { docs -> { a, b (3 files) }, pics -> { c -> { deep } } }
struct SampleTree {
    SampleTree()
    {
        root = top.addChild(QStringLiteral("C:"), 0, true);
        docs = root->addChild(QStringLiteral("docs"), 0, true);
        a = docs->addChild(QStringLiteral("a"), 0, true);
        b = docs->addChild(QStringLiteral("b"), 0, true);
        for (int i = 0; i < 3; ++i)
            b->addFile(new NtfsFile);
        docs->addFile(new NtfsFile);
        pics = root->addChild(QStringLiteral("pics"), 0, true);
        c = pics->addChild(QStringLiteral("c"), 0, true);
        deep = c->addChild(QStringLiteral("deep"), 0, true);
    }
    FolderNode top;
    FolderNode *root, *docs, *a, *b, *pics, *c, *deep;
};

} // namespace

class TestTreeModel : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void passesModelTester();
    void displayCountsDirectEntries_data();
    void displayCountsDirectEntries();
    void indexesFollowTheTree();
    void filesRoleCarriesTheRecords();
    void expandedSwitchesTheIcon();
    void uncheckingRootClearsEverything();
    void recheckingDeepFolderMarksPathPartly();
    void checkingLastSiblingCompletesParents();
    void checkChangeRepaintsEveryFolderWritten();
    void readsAreSafeWhileAScanAppends();

private:
    QModelIndex indexOf(FolderNode* node) const;
    std::unique_ptr<SampleTree> tree;
    std::unique_ptr<TreeModel> model;
};

void TestTreeModel::init()
{
    tree = std::make_unique<SampleTree>();
    model = std::make_unique<TreeModel>(&tree->top);
}

void TestTreeModel::cleanup()
{
    model.reset();
    tree.reset();
}

QModelIndex TestTreeModel::indexOf(FolderNode* node) const
{
    if (node == &tree->top)
        return {};
    return model->index(int(node->parent->children.indexOf(node)), 0, indexOf(node->parent));
}

void TestTreeModel::passesModelTester()
{
    QAbstractItemModelTester tester(model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    model->setData(indexOf(tree->deep), Qt::Unchecked, Qt::CheckStateRole);
}

void TestTreeModel::displayCountsDirectEntries_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::newRow("visible root: two folders") << "root" << "C: (2)";
    QTest::newRow("two folders and one file") << "docs" << "docs (3)";
    QTest::newRow("files only") << "b" << "b (3)";
    QTest::newRow("empty leaf") << "a" << "a (0)";
    QTest::newRow("nothing below counted") << "pics" << "pics (1)";
}

void TestTreeModel::displayCountsDirectEntries()
{
    QFETCH(QString, path);
    QFETCH(QString, text);
    const QMap<QString, FolderNode*> nodes{{"root", tree->root}, {"docs", tree->docs}, {"a", tree->a},
                                           {"b", tree->b}, {"pics", tree->pics}};
    QCOMPARE(model->data(indexOf(nodes.value(path))).toString(), text);
}

void TestTreeModel::indexesFollowTheTree()
{
    QCOMPARE(model->rowCount(), 1);
    const QModelIndex root = model->index(0, 0);
    QCOMPARE(root.internalPointer(), tree->root);
    QVERIFY(!model->parent(root).isValid());

    const QModelIndex pics = model->index(1, 0, root);
    QCOMPARE(pics.internalPointer(), tree->pics);
    QCOMPARE(model->parent(pics), root);
    const QModelIndex deep = model->index(0, 0, model->index(0, 0, pics));
    QCOMPARE(deep.internalPointer(), tree->deep);
    QCOMPARE(model->parent(model->parent(deep)), pics);

    const QModelIndex b = indexOf(tree->b);
    QCOMPARE(model->rowCount(b), 0); // its files aren't rows
    QVERIFY(!model->hasChildren(b));
    QVERIFY(!model->index(2, 0, root).isValid());
    QVERIFY(!model->index(0, 1, root).isValid());
    QCOMPARE(model->rowCount(root.siblingAtColumn(0)), 2);
}

void TestTreeModel::filesRoleCarriesTheRecords()
{
    const QVariant value = model->data(indexOf(tree->b), TreeModel::FilesRole);
    const FoundFileList files = value.value<FoundFileList>();
    QCOMPARE(files, tree->b->files);
    QVERIFY(model->data(indexOf(tree->a), TreeModel::FilesRole).value<FoundFileList>().isEmpty());
}

void TestTreeModel::expandedSwitchesTheIcon()
{
    const QModelIndex docs = indexOf(tree->docs);
    const qint64 closed = model->data(docs, Qt::DecorationRole).value<QIcon>().cacheKey();
    QSignalSpy changed(model.get(), &QAbstractItemModel::dataChanged);
    QVERIFY(model->setData(docs, true, Qt::DecorationRole));
    QVERIFY(tree->docs->expanded);
    QVERIFY(model->data(docs, Qt::DecorationRole).value<QIcon>().cacheKey() != closed);
    QVERIFY(!model->data(docs, Qt::DecorationRole).value<QIcon>().isNull());
    QCOMPARE(changed.count(), 0);
}

void TestTreeModel::uncheckingRootClearsEverything()
{
    model->setData(indexOf(tree->root), Qt::Unchecked, Qt::CheckStateRole);
    for (FolderNode* node : {tree->root, tree->docs, tree->a, tree->b, tree->pics, tree->c, tree->deep})
        QCOMPARE(model->data(indexOf(node), Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    QCOMPARE(tree->top.checkState, int(Qt::Checked)); // the invisible top never changes
}

void TestTreeModel::recheckingDeepFolderMarksPathPartly()
{
    model->setData(indexOf(tree->root), Qt::Unchecked, Qt::CheckStateRole);
    model->setData(indexOf(tree->deep), Qt::Checked, Qt::CheckStateRole);
    QCOMPARE(tree->deep->checkState, int(Qt::Checked));
    QCOMPARE(tree->c->checkState, int(Qt::Checked)); // its only child is checked
    QCOMPARE(tree->pics->checkState, int(Qt::Checked));
    QCOMPARE(tree->root->checkState, int(Qt::PartiallyChecked));
    QCOMPARE(tree->docs->checkState, int(Qt::Unchecked));

    tree->c->addChild(QStringLiteral("other"), 0, true)->checkState = Qt::Unchecked;
    model->setData(indexOf(tree->deep), Qt::Checked, Qt::CheckStateRole);
    QCOMPARE(tree->c->checkState, int(Qt::PartiallyChecked));
    QCOMPARE(tree->pics->checkState, int(Qt::PartiallyChecked));
    QCOMPARE(tree->root->checkState, int(Qt::PartiallyChecked));
}

void TestTreeModel::checkingLastSiblingCompletesParents()
{
    model->setData(indexOf(tree->a), Qt::Unchecked, Qt::CheckStateRole);
    QCOMPARE(tree->docs->checkState, int(Qt::PartiallyChecked));
    QCOMPARE(tree->root->checkState, int(Qt::PartiallyChecked));
    model->setData(indexOf(tree->a), Qt::Checked, Qt::CheckStateRole);
    QCOMPARE(tree->docs->checkState, int(Qt::Checked));
    QCOMPARE(tree->root->checkState, int(Qt::Checked));
}

void TestTreeModel::checkChangeRepaintsEveryFolderWritten()
{
    QSignalSpy changed(model.get(), &QAbstractItemModel::dataChanged);
    model->setData(indexOf(tree->pics), Qt::Unchecked, Qt::CheckStateRole);
    QSet<void*> repainted;
    for (const QList<QVariant>& args : changed) {
        const QModelIndex at = args.at(0).toModelIndex();
        QVERIFY(at.isValid());
        QCOMPARE(args.at(1).toModelIndex(), at);
        repainted.insert(at.internalPointer());
    }
    // pics, c, deep below; root above.
    QCOMPARE(repainted, (QSet<void*>{tree->pics, tree->c, tree->deep, tree->root}));
}

// A scan thread appending folders and files while the view reads must not
// crash or read a moving list.
void TestTreeModel::readsAreSafeWhileAScanAppends()
{
    constexpr int kAppends = 20000;
    FolderNode* target = tree->a;
    std::unique_ptr<QThread> scan(QThread::create([target] {
        for (int i = 0; i < kAppends; ++i) {
            target->addChild(QString::number(i), 0, true);
            target->addFile(new NtfsFile);
        }
    }));
    scan->start();
    const QModelIndex a = indexOf(target);
    int lastRows = 0;
    while (!scan->isFinished()) {
        const int rows = model->rowCount(a);
        QVERIFY(rows >= lastRows);
        lastRows = rows;
        if (rows > 0)
            QVERIFY(model->index(rows - 1, 0, a).isValid());
        model->data(a).toString();
        model->data(a, TreeModel::FilesRole);
    }
    scan->wait();
    QCOMPARE(model->rowCount(a), kAppends);
    QCOMPARE(model->data(a).toString(), QStringLiteral("a (%1)").arg(2 * kAppends));
}

QTEST_MAIN(TestTreeModel)
#include "tst_treemodel.moc"
