#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "results/ResultTree.h"
#include "results/TreeModel.h"

#include <QAbstractItemModelTester>
#include <QThread>
#include <QtTest>

#include <memory>

namespace {
// top (invisible) -> C: -> { docs -> { a, b (3 files) } + 1 file, pics -> { c -> { deep } } }
struct SampleTree {
    SampleTree() : results(QStringLiteral("C:"), true), top(results.top()), root(results.root())
    {
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
    ~SampleTree() { delete root; } // a scanner's part: the tree frees its top node only
    ResultTree results;
    FolderNode* top;
    FolderNode *root, *docs, *a, *b, *pics, *c, *deep;
    QList<FolderNode*> all() const { return {root, docs, a, b, pics, c, deep}; }
};
} // namespace

class TestTreeModel : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void displayCountsDirectEntries();
    void checksCarryDownAndSettleUp_data();
    void checksCarryDownAndSettleUp();
    void readsAreSafeWhileAScanAppends();

private:
    QModelIndex indexOf(FolderNode* node) const;
    std::unique_ptr<SampleTree> tree;
    std::unique_ptr<TreeModel> model;
};

void TestTreeModel::init()
{
    tree = std::make_unique<SampleTree>();
    model = std::make_unique<TreeModel>(tree->top);
}

void TestTreeModel::cleanup()
{
    model.reset();
    tree.reset();
}

QModelIndex TestTreeModel::indexOf(FolderNode* node) const
{
    if (node == tree->top)
        return {};
    return model->index(int(node->parent->children.indexOf(node)), 0, indexOf(node->parent));
}

// Folders are rows, files are not: a folder's text counts what lies directly below.
void TestTreeModel::displayCountsDirectEntries()
{
    QCOMPARE(model->rowCount(indexOf(tree->b)), 0);
    const QStringList texts{"C: (2)", "docs (3)", "a (0)", "b (3)", "pics (1)", "c (1)", "deep (0)"};
    for (int i = 0; i < texts.size(); ++i)
        QCOMPARE(model->data(indexOf(tree->all()[i])).toString(), texts[i]);
    QCOMPARE(model->data(indexOf(tree->b), TreeModel::FilesRole).value<FoundFileList>(), tree->b->files);
}

// Each row: clicks (folder index in all() * 10 + new state), then every
// folder's state in all() order (U unchecked, P partly, C checked) and the
// folders the last click repainted, by index.
void TestTreeModel::checksCarryDownAndSettleUp_data()
{
    QTest::addColumn<QList<int>>("clicks");
    QTest::addColumn<QString>("states");
    QTest::addColumn<QList<int>>("repainted");
    QTest::newRow("root off clears all") << QList<int>{0} << "UUUUUUU" << QList<int>{0, 1, 2, 3, 4, 5, 6};
    QTest::newRow("deep back on marks its path") << QList<int>{0, 62} << "PUUUCCC" << QList<int>{0, 4, 5, 6};
    QTest::newRow("sibling off, parent partly") << QList<int>{20} << "PPUCCCC" << QList<int>{0, 1, 2};
    QTest::newRow("last sibling back completes") << QList<int>{20, 22} << "CCCCCCC" << QList<int>{0, 1, 2};
    QTest::newRow("a subtree off: below and above") << QList<int>{40} << "PCCCUUU" << QList<int>{0, 4, 5, 6};
}

void TestTreeModel::checksCarryDownAndSettleUp()
{
    QFETCH(QList<int>, clicks);
    QFETCH(QString, states);
    QFETCH(QList<int>, repainted);
    QAbstractItemModelTester tester(model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy changed(model.get(), &QAbstractItemModel::dataChanged);
    for (int click : clicks) {
        changed.clear();
        QVERIFY(model->setData(indexOf(tree->all()[click / 10]), click % 10, Qt::CheckStateRole));
    }
    QString got;
    for (FolderNode* node : tree->all())
        got += QStringLiteral("UPC").at(model->data(indexOf(node), Qt::CheckStateRole).toInt());
    QCOMPARE(got, states);
    QSet<void*> want, seen;
    for (int i : repainted)
        want.insert(tree->all()[i]);
    for (const QList<QVariant>& args : changed)
        seen.insert(args.at(0).toModelIndex().internalPointer());
    QCOMPARE(seen, want);
    QCOMPARE(tree->top->checkState, int(Qt::Checked)); // the invisible top never changes
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
