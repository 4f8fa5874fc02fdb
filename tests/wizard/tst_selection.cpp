#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "results/TreeModel.h"
#include "scan/RestoreTarget.h"
#include "scan/RestoreWalk.h"
#include "wizard/FileListRows.h"
#include "wizard/SelectionSums.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

// The ticks a user sees, the sums of Step 4 and what the restore walk writes
// come from one selection.
class TestSelection : public QObject {
    Q_OBJECT
private slots:
    void ticksSumsAndRestoreAgree_data();
    void ticksSumsAndRestoreAgree();
};

namespace {
// C: r.txt, A { a1 }, B { b1, b2, S { s1 } } — addressed by name in the steps.
struct Tree {
    Tree()
    {
        root = top.addChild(QStringLiteral("C"), 0, true);
        file(root, "r.txt");
        FolderNode* a = folder(root, "A");
        file(a, "a1");
        FolderNode* b = folder(root, "B");
        file(b, "b1");
        file(b, "b2");
        file(folder(b, "S"), "s1");
    }
    FolderNode* folder(FolderNode* parent, const char* name)
    {
        return folders[QString::fromLatin1(name)] = parent->addChild(QString::fromLatin1(name), 0, true);
    }
    void file(FolderNode* parent, const char* name)
    {
        auto* f = new NtfsFile;
        f->setName(QString::fromLatin1(name));
        f->size = 10;
        parent->addFile(f);
        files[f->name()] = {parent, f};
    }
    FolderNode top;
    FolderNode* root;
    QHash<QString, FolderNode*> folders;
    QHash<QString, QPair<FolderNode*, FoundFile*>> files;
};

QModelIndex indexOf(const TreeModel& model, FolderNode* node)
{
    if (!node->parent || !node->parent->parent)
        return model.index(0, 0);
    return model.index(int(node->parent->children.indexOf(node)), 0, indexOf(model, node->parent));
}
} // namespace

void TestSelection::ticksSumsAndRestoreAgree_data()
{
    // Steps: "-X"/"+X" unticks/ticks folder X (C is the top), "-f"/"+f" a file's own box.
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("written");
    QTest::newRow("everything") << QStringList() << QStringList{"a1", "b1", "b2", "r.txt", "s1"};
    QTest::newRow("untick the top, tick one folder") << QStringList{"-C", "+B"} << QStringList{"b1", "b2", "s1"};
    QTest::newRow("untick the top, tick a deep folder") << QStringList{"-C", "+S"} << QStringList{"s1"};
    QTest::newRow("one file off in a ticked folder") << QStringList{"-C", "+B", "-b1"} << QStringList{"b2", "s1"};
    QTest::newRow("one file on in an unticked tree") << QStringList{"-C", "+r.txt"} << QStringList{"r.txt"};
    QTest::newRow("ticking a partly ticked folder takes all") << QStringList{"-C", "+S", "+B"}
                                                              << QStringList{"b1", "b2", "s1"};
}

void TestSelection::ticksSumsAndRestoreAgree()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, written);
    Tree tree;
    TreeModel model(&tree.top);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (const QString& step : steps) {
        const bool on = step.startsWith(QLatin1Char('+'));
        const QString name = step.mid(1);
        if (tree.files.contains(name)) {
            model.setFileSelected(tree.files[name].first, tree.files[name].second, on);
        } else {
            FolderNode* node = name == QLatin1String("C") ? tree.root : tree.folders.value(name);
            model.setData(indexOf(model, node), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
        }
    }

    QStringList walked;
    QTemporaryDir dir;
    RestoreTarget target;
    int error = 0;
    QVERIFY(target.open(dir.path(), &error));
    RestoreReport report;
    RestoreWalk::run(tree.root, target, false, [&](FoundFile* f, RestoreSink&) {
        walked.append(f->name());
        return RestoreFailure::None;
    }, &report, [](quint64) {});
    QStringList ticked;
    QTreeWidget list;
    for (FolderNode* folder : QList<FolderNode*>{tree.root} + tree.folders.values()) {
        FileListRows::fill(&list, folder, {});
        for (int i = 0; i < list.topLevelItemCount(); ++i) {
            if (list.topLevelItem(i)->checkState(0) == Qt::Checked)
                ticked.append(list.topLevelItem(i)->text(0));
        }
    }
    walked.sort();
    ticked.sort();
    QCOMPARE(walked, written);
    QCOMPARE(ticked, written);
    QCOMPARE(SelectionSums::of(tree.root).count, written.size());
    // A folder shows checked only when all below it is written.
    const bool all = written.size() == tree.files.size();
    QCOMPARE(model.data(model.index(0, 0), Qt::CheckStateRole).toInt(),
             all ? int(Qt::Checked) : written.isEmpty() ? int(Qt::Unchecked) : int(Qt::PartiallyChecked));
}

QTEST_MAIN(TestSelection)
#include "tst_selection.moc"
