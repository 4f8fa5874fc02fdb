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
    f->name = name;
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
    void longLoadRule_data();
    void longLoadRule();
    void previewRefusesAbove300MiB();
    void selectionSums();
    void sizeText_data();
    void sizeText();
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
    list.setColumnCount(3);
    FileListRows::fill(&list, &folder, {});
    QCOMPARE(column(list, 1), QStringList({QStringLiteral("2014-06-02 23:00:00"), QStringLiteral("2015-03-01 08:30:05"),
                                           QStringLiteral("未知时间"), QStringLiteral("未知时间")}));
    QCOMPARE(column(list, 2), QStringList({"      20.0 KB", "10485760.0 KB", "       1.5 KB", "       0.0 KB"}));
    QCOMPARE(list.topLevelItem(0)->checkState(0), Qt::Checked);
    const RowRef ref = RowRef::of(list.topLevelItem(0));
    QVERIFY(ref.file == c && ref.folder == &folder && ref.partIndex == 3);

    const QStringList orders[] = {{"B.txt", "a.jpg", "c.doc", "d.bin"}, {"c.doc", "a.jpg"}, {"d.bin", "B.txt", "c.doc", "a.jpg"}};
    for (int sortColumn = 0; sortColumn < 3; ++sortColumn) {
        list.sortItems(sortColumn, Qt::AscendingOrder);
        // Two unknown times keep no defined order between them.
        QCOMPARE(column(list, 0).mid(0, orders[sortColumn].size()), orders[sortColumn]);
    }

    // Icons by the extension in the name's case, null.ico without an entry.
    const QMap<QString, QString> icons{{".jpg", ":./icons/28.ico"}, {".gz", ":./icons/81.ico"}};
    QCOMPARE(FileListRows::iconPath(QStringLiteral("a.tar.gz"), icons), QStringLiteral(":./icons/81.ico"));
    QCOMPARE(FileListRows::iconPath(QStringLiteral("X.JPG"), icons), QStringLiteral(":./null.ico"));
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

void TestResultLists::longLoadRule_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<int>("jpegs");
    QTest::addColumn<QString>("jpegName");
    QTest::addColumn<bool>("message");
    QTest::newRow("20 with 15") << 20 << 15 << "p.jpg" << false;
    QTest::newRow("20 with 16") << 20 << 16 << "p.jpg" << true;
    QTest::newRow("19 all") << 19 << 19 << "p.jpg" << false;
    QTest::newRow("upper case not counted") << 30 << 30 << "P.JPG" << false;
}

void TestResultLists::longLoadRule()
{
    QFETCH(int, files);
    QFETCH(int, jpegs);
    QFETCH(QString, jpegName);
    QFETCH(bool, message);
    FolderNode folder;
    for (int i = 0; i < files; ++i)
        addFile(&folder, i < jpegs ? jpegName : QStringLiteral("x.doc"), 10);
    QCOMPARE(IconListRows::isLongLoad(folder.files), message);
}

void TestResultLists::previewRefusesAbove300MiB()
{
    FolderNode folder;
    MemoryScan scan;
    FoundFile* file = addFile(&folder, QStringLiteral("movie.avi"), 314572800 - 4095);
    QString said;
    const bool shown = FilePreview::open(nullptr, &scan, {file, &folder, 0}, file->name,
                                         [&](const QString& text) { said = text; });
    QVERIFY(!shown);
    QCOMPARE(said, QStringLiteral("预览内容超过300M!"));
}

// root(partly) ── a(checked: 2 files) ── a1(unchecked: 1 file) ── a11(checked: 1 file)
//              └─ b(unchecked: 1 file)
void TestResultLists::selectionSums()
{
    FolderNode top;
    FolderNode* root = addFolder(&top, QStringLiteral("C"), Qt::PartiallyChecked);
    addFile(root, QStringLiteral("r"), 1);
    FolderNode* a = addFolder(root, QStringLiteral("a"), Qt::Checked);
    addFile(a, QStringLiteral("a1"), 10);
    addFile(a, QStringLiteral("a2"), 20);
    FolderNode* a1 = addFolder(a, QStringLiteral("a1"), Qt::Unchecked);
    addFile(a1, QStringLiteral("x"), 1000);
    addFile(addFolder(a1, QStringLiteral("a11"), Qt::Checked), QStringLiteral("y"), quint64(5) << 30);
    addFile(addFolder(root, QStringLiteral("b"), Qt::Unchecked), QStringLiteral("z"), 100);

    const SelectionSums sums = SelectionSums::of(root);
    QCOMPARE(sums.count, 4);
    QCOMPARE(sums.size, 1 + 10 + 20 + (quint64(5) << 30));
    QCOMPARE(SelectionSums::of(nullptr).count, 0);
}

void TestResultLists::sizeText_data()
{
    QTest::addColumn<quint64>("bytes");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("unit");
    QTest::newRow("zero") << quint64(0) << "0.00" << "KB";
    QTest::newRow("1024 KB stays") << quint64(1024 * 1024) << "1024.00" << "KB";
    QTest::newRow("one byte more") << quint64(1024 * 1024 + 1) << "1.00" << "MB";
    QTest::newRow("above 4 GiB") << (quint64(9) << 29) << "4.50" << "GB";
}

void TestResultLists::sizeText()
{
    QFETCH(quint64, bytes);
    QFETCH(QString, value);
    QFETCH(QString, unit);
    QCOMPARE(SelectionSums::sizeValue(bytes), value);
    QCOMPARE(SelectionSums::sizeUnit(bytes), unit);
}

QTEST_MAIN(TestResultLists)
#include "tst_resultlists.moc"
