#include "WizardTestKit.h"
#include "results/FolderNode.h"
#include "results/NtfsFile.h"
#include "scan/PartScan.h"
#include "wizard/FileListRows.h"
#include "wizard/FilePreview.h"
#include "wizard/IconListRows.h"
#include "wizard/RowRef.h"
#include "wizard/SelectionSums.h"

#include <QDateTime>
#include <QListWidget>
#include <QTreeWidget>
#include <QtTest>

namespace {
// A scanner that serves file content from memory, as an NTFS one sizes it.
class MemoryScan : public PartScan {
public:
    MemoryScan() : PartScan(QString()) {}
    QHash<FoundFile*, QByteArray> content;
    QList<int> partIndexSeen;

    quint64 fileContent(char* buffer, FoundFile* record) override
    {
        partIndexSeen.append(partIndex);
        if (buffer) {
            const QByteArray bytes = content.value(record);
            memcpy(buffer, bytes.constData(), size_t(bytes.size()));
            return record->size;
        }
        return record->size + 4096;
    }
};

FoundFile* addFile(FolderNode* folder, const QString& name, quint64 size, quint64 msecs = 0)
{
    auto* f = new NtfsFile;
    f->setName(name);
    f->size = size;
    f->modifiedMsecs = msecs;
    folder->files.append(f);
    return f;
}

FolderNode* addFolder(FolderNode* parent, const QString& name, int checkState)
{
    auto* f = new FolderNode;
    f->name = name;
    f->parent = parent;
    f->checkState = checkState;
    parent->children.append(f);
    return f;
}

QStringList column(const QTreeWidget& list, int c)
{
    QStringList texts;
    for (int i = 0; i < list.topLevelItemCount(); ++i)
        texts.append(list.topLevelItem(i)->text(c));
    return texts;
}

const qint64 kMarch2015 = QDateTime(QDate(2015, 3, 1), QTime(8, 30, 5)).toMSecsSinceEpoch();
const qint64 kJune2014 = QDateTime(QDate(2014, 6, 2), QTime(23, 0, 0)).toMSecsSinceEpoch();
} // namespace

class TestResultLists : public QObject {
    Q_OBJECT
private slots:
    void fileListRowsAndSorting();
    void thumbnailsAndFallbacks();
    void longLoadRule();
    void previewRefusesAbove300MiB();
    void selectionSums();
};

// Texts of the rows, what a row leads back to, and the order after each sort:
// times unknown sort last, sizes sort by number through their leading blanks.
void TestResultLists::fileListRowsAndSorting()
{
    FolderNode folder;
    folder.checkState = Qt::PartiallyChecked;
    folder.partIndex = 3;
    FoundFile* c = addFile(&folder, QStringLiteral("c.doc"), 20480, quint64(kJune2014));
    addFile(&folder, QStringLiteral("a.jpg"), quint64(10) << 30, quint64(kMarch2015));
    addFile(&folder, QStringLiteral("B.txt"), 1536, 0);
    addFile(&folder, QStringLiteral("d.bin"), 0, 0);
    QTreeWidget list;
    list.setColumnCount(FileListRows::ColumnCount);
    FileListRows::fill(&list, &folder, {});
    // Filled in name order, whatever the case.
    QCOMPARE(column(list, 1), QStringList({QStringLiteral("2015-03-01 08:30:05"), QStringLiteral("未知时间"),
                                           QStringLiteral("2014-06-02 23:00:00"), QStringLiteral("未知时间")}));
    QCOMPARE(column(list, 2), QStringList({"10.0 GB", "1.5 KB", "20.0 KB", "0 B"}));
    QCOMPARE(column(list, FileListRows::StatusColumn), QStringList(4, QStringLiteral("已删除")));
    QCOMPARE(list.topLevelItem(2)->checkState(0), Qt::Checked);
    const RowRef ref = RowRef::of(list.topLevelItem(2));
    QVERIFY(ref.file == c && ref.folder == &folder && ref.partIndex == 3);

    const QStringList orders[] = {{"a.jpg", "B.txt", "c.doc", "d.bin"}, {"c.doc", "a.jpg"}, {"d.bin", "B.txt", "c.doc", "a.jpg"}};
    for (int sortColumn = 0; sortColumn < 3; ++sortColumn) {
        list.sortItems(sortColumn, Qt::AscendingOrder);
        // Two unknown times keep no defined order between them.
        QCOMPARE(column(list, 0).mid(0, orders[sortColumn].size()), orders[sortColumn]);
    }

    // Icons by the extension in any case, null.ico without an entry.
    const QMap<QString, QString> icons{{".jpg", ":./icons/28.ico"}, {".gz", ":./icons/81.ico"}};
    QCOMPARE(FileListRows::iconPath(QStringLiteral("a.tar.gz"), icons), QStringLiteral(":./icons/81.ico"));
    QCOMPARE(FileListRows::iconPath(QStringLiteral("X.JPG"), icons), QStringLiteral(":./icons/28.ico"));
    QCOMPARE(FileListRows::iconPath(QStringLiteral("README"), icons), QStringLiteral(":./null.ico"));
}

void TestResultLists::thumbnailsAndFallbacks()
{
    FolderNode folder;
    folder.partIndex = 2;
    MemoryScan scan;
    const QByteArray picture = pngBytes(40, 30);
    FoundFile* good = addFile(&folder, QStringLiteral("PHOTO.PNG"), quint64(picture.size()));
    scan.content[good] = picture;
    scan.content[addFile(&folder, QStringLiteral("broken.png"), 50)] = QByteArray(50, 'x');
    scan.content[addFile(&folder, QStringLiteral("picture.png.txt"), quint64(picture.size()))] = picture;
    // The buffer would be exactly 100 MiB: not read.
    addFile(&folder, QStringLiteral("big.png"), 104857600 - 4096);

    QListWidget list;
    int messages = 0;
    IconListRows::fill(&list, &folder, &scan, [&](const QString&) { ++messages; });
    QCOMPARE(list.count(), 4);
    QCOMPARE(messages, 0);
    const QSize side(40, 40);
    QCOMPARE(list.item(0)->icon().pixmap(side).size(), QSize(40, 30));
    for (int i = 1; i < 4; ++i)
        QVERIFY(IconListRows::thumbnail(&scan, &folder, folder.files[i]).isNull());
    QCOMPARE(RowRef::of(list.item(1)).file, folder.files[1]);
    for (int seen : scan.partIndexSeen)
        QCOMPARE(seen, 2);
}

// A long load: 20 or more files, all but at most 4 ending in ".jpg" (lower case).
void TestResultLists::longLoadRule()
{
    struct Case {
        int files, jpegs;
        const char* jpegName;
        bool message;
    };
    for (const Case c : {Case{20, 15, "p.jpg", false}, Case{20, 16, "p.jpg", true}, Case{19, 19, "p.jpg", false},
                         Case{30, 30, "P.JPG", false}}) {
        FolderNode folder;
        for (int i = 0; i < c.files; ++i)
            addFile(&folder, QLatin1String(i < c.jpegs ? c.jpegName : "x.doc"), 10);
        QCOMPARE(IconListRows::isLongLoad(folder.files), c.message);
    }
}

void TestResultLists::previewRefusesAbove300MiB()
{
    FolderNode folder;
    MemoryScan scan;
    FoundFile* file = addFile(&folder, QStringLiteral("movie.avi"), 314572800 - 4095);
    QString said;
    const bool shown = FilePreview::open(nullptr, &scan, {file, &folder, 0}, file->name(),
                                         [&](const QString& text) { said = text; });
    QVERIFY(!shown);
    QCOMPARE(said, QStringLiteral("预览内容超过300M!"));
}

// The files' own ticks count, whatever their folders show; sizes above 4 GiB too.
void TestResultLists::selectionSums()
{
    FolderNode top;
    FolderNode* root = addFolder(&top, QStringLiteral("C"), Qt::PartiallyChecked);
    addFile(root, QStringLiteral("r"), 1);
    FolderNode* a = addFolder(root, QStringLiteral("a"), Qt::PartiallyChecked);
    addFile(a, QStringLiteral("a1"), 10);
    addFile(a, QStringLiteral("a2"), 20);
    addFile(a, QStringLiteral("x"), 1000)->selected = false;
    addFile(addFolder(a, QStringLiteral("a11"), Qt::Checked), QStringLiteral("y"), quint64(5) << 30);
    addFile(addFolder(root, QStringLiteral("b"), Qt::Unchecked), QStringLiteral("z"), 100)->selected = false;

    const SelectionSums sums = SelectionSums::of(root);
    QCOMPARE(sums.count, 4);
    QCOMPARE(sums.size, 1 + 10 + 20 + (quint64(5) << 30));
    QCOMPARE(SelectionSums::of(nullptr).count, 0);
}

QTEST_MAIN(TestResultLists)
#include "tst_resultlists.moc"
