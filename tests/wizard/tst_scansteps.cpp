#include "WizardTestKit.h"
#include "fixtures/DiskImageBuilder.h"
#include "fixtures/Fat32ImageBuilder.h"
#include "fixtures/NtfsImageBuilder.h"
#include "scan/PartScan.h"
#include "scan/device/ImageDeviceLayer.h"
#include "wizard/MainPage.h"
#include "wizard/MainWidget.h"
#include "wizard/Step1Page.h"
#include "wizard/Step2Page.h"
#include "wizard/Step3Page.h"
#include "wizard/Step4Page.h"

#include "app/MyButton.h"
#include <QAbstractItemModelTester>
#include <QButtonGroup>
#include <QListWidget>
#include <QDesktopServices>
#include <QDirIterator>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeView>
#include <QTreeWidget>
#include <QtTest>

namespace {
constexpr int kScanTimeout = 120000; // an upper bound only; nothing waits for time to pass
const QString kScanDone = QStringLiteral("扫描完成！\n如果您对扫描结果不满意，可以尝试使用另外两种恢复模式。");
const QString kRestoreDone = QStringLiteral("恢复完成！\n请点击\"浏览已恢复的文件\"查看。");

QByteArray pattern(int size, int seed) { return DiskImageBuilder::pattern(size, seed); }

// The demo disk: an NTFS and a FAT32 partition, each with deleted files. The
// file names map to the bytes a restore must give back.
struct SmallDisk {
    QByteArray bytes;
    QMap<QString, QByteArray> ntfsFiles;
    QMap<QString, QByteArray> fatFiles;

    SmallDisk()
    {
        NtfsImageBuilder ntfs;
        const quint32 docs = ntfs.addDirectory(QStringLiteral("docs"));
        ntfsFiles[QStringLiteral("notes.txt")] = pattern(5000, 1);
        ntfsFiles[QStringLiteral("photo.png")] = pngBytes(64, 48);
        ntfs.addFile(QStringLiteral("notes.txt"), ntfsFiles[QStringLiteral("notes.txt")], docs);
        ntfs.addFile(QStringLiteral("photo.png"), ntfsFiles[QStringLiteral("photo.png")]);
        ntfs.addFile(QStringLiteral("alive.txt"), pattern(300, 2), NtfsImageBuilder::kRoot, false);
        const QByteArray ntfsVolume = ntfs.build();

        Fat32ImageBuilder fat;
        fatFiles[QStringLiteral("report.txt")] = pattern(1500, 3);
        Fat32ImageBuilder::Entry e;
        e.shortName = "REPORT.TXT";
        e.longName = QStringLiteral("report.txt");
        e.deleted = true;
        e.size = 1500;
        fat.addFile(Fat32ImageBuilder::kRoot, e, fatFiles[QStringLiteral("report.txt")]);
        fat.bootSector().replace(3, 8, "MSDOS5.0"); // what the partition search looks for
        const QByteArray fatVolume = fat.image();

        const quint32 ntfsStart = 2048;
        const quint32 ntfsCount = quint32(ntfsVolume.size() / 512);
        const quint32 fatStart = ntfsStart + ntfsCount;
        const quint32 fatCount = quint32((fatVolume.size() + 511) / 512);
        DiskImageBuilder disk(quint64(fatStart + fatCount + 2048) * 512);
        disk.writeMbr({{0x07, ntfsStart, ntfsCount}, {0x0C, fatStart, fatCount}});
        disk.put(quint64(ntfsStart) * 512, ntfsVolume);
        disk.put(quint64(fatStart) * 512, fatVolume);
        bytes = disk.bytes();
    }
};

// A disk whose only partition is typed NTFS but holds no boot sector of any file system.
QByteArray unknownTypeDisk()
{
    DiskImageBuilder disk(4 * 1024 * 1024);
    disk.writeMbr({{0x07, 2048, 4096}});
    return disk.bytes();
}

QMap<QString, QByteArray> filesBelow(const QString& dir)
{
    QMap<QString, QByteArray> found;
    QDirIterator it(dir, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile f(it.next());
        if (f.open(QIODevice::ReadOnly))
            found.insert(it.fileName(), f.readAll());
    }
    return found;
}
} // namespace

class TestScanSteps : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void imageOpenedAtRunTime();
    void unrecognisedTypeStartsNothing();
    void pauseResumeAndStop();
    void scanToRestore_data();
    void scanToRestore();

public slots:
    void openedUrl(const QUrl& url) { opened.append(url); }

private:
    void clickMode(int mode);
    QTreeWidgetItem* deviceRow(const QString& name);
    void chooseRow(const QString& name);
    void waitForMessage(const QString& text);
    void grab(const QString& name);
    void browseTheRoot(Step3Page* page);
    void next(QWidget* page) { static_cast<StepPage*>(page)->nextButton->click(); }

    ImageDeviceLayer layer;
    SmallDisk demo;
    std::unique_ptr<MainWidget> window;
    std::unique_ptr<MessageRecorder> messages;
    QList<QUrl> opened;
};

void TestScanSteps::initTestCase()
{
    layer.addImageData(QStringLiteral("demo.img"), demo.bytes);          // disk 0: C (NTFS), D (FAT32)
    layer.addImageData(QStringLiteral("other.img"), unknownTypeDisk());  // disk 1: E, typed NTFS, blank
    DeviceLayer::setInstance(&layer);
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openedUrl");
}

void TestScanSteps::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    DeviceLayer::setInstance(nullptr);
}

void TestScanSteps::init()
{
    messages = std::make_unique<MessageRecorder>();
    window = std::make_unique<MainWidget>();
    window->show();
}

void TestScanSteps::cleanup()
{
    if (window->scan())
        window->scan()->wait();
    window.reset();
    messages.reset();
}

void TestScanSteps::clickMode(int mode)
{
    const char* const names[] = {"pushButtonFileRecovery", "pushButtonFormatRecovery", "pushButtonPartitionRecovery"};
    auto* button = window->findChild<QPushButton*>(QLatin1String(names[mode - 1]));
    QVERIFY(button);
    button->click();
}

QTreeWidgetItem* TestScanSteps::deviceRow(const QString& name)
{
    QTreeWidget* tree = window->step1()->deviceTree;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        if (tree->topLevelItem(i)->text(0).trimmed() == name)
            return tree->topLevelItem(i);
    }
    return nullptr;
}

void TestScanSteps::chooseRow(const QString& name)
{
    QTreeWidgetItem* row = deviceRow(name);
    QVERIFY2(row, qPrintable(name));
    QTreeWidget* tree = window->step1()->deviceTree;
    tree->setCurrentItem(row);
    emit tree->itemClicked(row, 0);
}

// OSTREL_SCREENSHOTS=folder keeps a picture of each step of the NTFS run.
void TestScanSteps::grab(const QString& name)
{
    const QString dir = qEnvironmentVariable("OSTREL_SCREENSHOTS");
    if (!dir.isEmpty() && QTest::currentDataTag() == QLatin1String("file recovery, NTFS"))
        QVERIFY(window->grab().save(dir + QLatin1Char('/') + name));
}

void TestScanSteps::waitForMessage(const QString& text)
{
    QTRY_VERIFY_WITH_TIMEOUT(messages->texts.contains(text), kScanTimeout);
}

void TestScanSteps::imageOpenedAtRunTime()
{
    QTemporaryDir dir;
    DiskImageBuilder b(2 * 1024 * 1024);
    b.writeMbr({{0x83, 2048, 2048}});
    const QString path = dir.filePath(QStringLiteral("late.img"));
    QVERIFY(b.save(path));
    clickMode(1);
    // The file dialog is modal: pick the file once it is up.
    QTimer picker;
    connect(&picker, &QTimer::timeout, [&] {
        if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            dialog->selectFile(path);
            QMetaObject::invokeMethod(dialog, "accept");
        }
    });
    picker.start(5);
    window->step1()->openImageButton->click();
    QVERIFY(deviceRow(QStringLiteral("late.img")));
    // Its partition holds no file system: no letter, and Next refuses it.
    chooseRow(QStringLiteral("(no name:/) [no label]"));
    next(window->step1());
    QCOMPARE(messages->texts, QStringList({QStringLiteral("请选择分区")}));
}

void TestScanSteps::unrecognisedTypeStartsNothing()
{
    clickMode(2);
    chooseRow(QStringLiteral("(E:/) [no label]"));
    next(window->step1());
    QCOMPARE(messages->texts, QStringList({QStringLiteral("无法识别的文件系统。")}));
    QVERIFY(!window->step3()->nextButton->isEnabled());
    // A way back: Prev leads to Step 1 again.
    QVERIFY(window->step3()->prevButton->isEnabled());
    window->step3()->prevButton->click();
    QVERIFY(window->step1()->isVisible());
}

// The buttons reach the scanner once its run has begun (it resets the state
// word at its start); whether the scan is still going then doesn't matter.
void TestScanSteps::pauseResumeAndStop()
{
    clickMode(2);
    chooseRow(QStringLiteral("(C:/) [no label]"));
    next(window->step1());
    Step3Page* page = window->step3();
    QSignalSpy progress(window->scan(), &PartScan::scanOne);
    QTRY_VERIFY_WITH_TIMEOUT(progress.count() > 0 || window->wizardState().scanFinished, kScanTimeout);

    QTest::mousePress(page->pauseButton, Qt::LeftButton);
    QVERIFY(!window->wizardState().scanRunning && !page->pauseButton->toggleFlag);
    QCOMPARE(window->scan()->runState, int(PartScan::Paused));
    const QString elapsed = page->elapsedLabel->text();
    QMetaObject::invokeMethod(window.get(), "timerTimeout");
    QCOMPARE(page->elapsedLabel->text(), elapsed);

    QTest::mousePress(page->pauseButton, Qt::LeftButton);
    QCOMPARE(window->scan()->runState, int(PartScan::Running));
    QTest::mousePress(page->stopButton, Qt::LeftButton);
    QCOMPARE(window->scan()->runState, int(PartScan::Stopped));
    waitForMessage(kScanDone);
    QCOMPARE(messages->texts.count(kScanDone), 1);
    QVERIFY(page->nextButton->isEnabled());
    QVERIFY(!page->prevButton->isEnabled()); // Step 3 is left by Next once a scan ran
    QCOMPARE(page->scanProgressBar->value(), 100);
    QCOMPARE(page->remainingLabel->text(), QStringLiteral("00:00:00"));
}

// The NTFS root holds photo.png: listed, shown as a thumbnail, previewed.
void TestScanSteps::browseTheRoot(Step3Page* page)
{
    const QList<QTreeWidgetItem*> rows = page->treeStep3ForList->findItems(QStringLiteral("photo.png"), Qt::MatchExactly);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows[0]->text(2), QStringLiteral("%1 KB").arg(QString::number(demo.ntfsFiles["photo.png"].size() / 1024.0, 'f', 1), 10));
    QString pictureSize;
    QTimer closer;
    connect(&closer, &QTimer::timeout, [&] {
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            pictureSize = dialog->findChild<QLabel*>(QStringLiteral("labelPicSize"))->text();
            dialog->close();
        }
    });
    closer.start(5);
    emit page->treeStep3ForList->itemDoubleClicked(rows[0], 0);
    QCOMPARE(pictureSize, QStringLiteral("原始尺寸：64 x 48"));

    page->displayGroup->button(2)->click();
    QVERIFY(page->listStep3ForIcon->isVisible() && !page->fileNameButton->isVisible());
    const QList<QListWidgetItem*> icons = page->listStep3ForIcon->findItems(QStringLiteral("photo.png"), Qt::MatchExactly);
    QCOMPARE(icons.size(), 1);
    QCOMPARE(icons[0]->icon().pixmap(QSize(64, 64)).size(), QSize(64, 48));
    page->displayGroup->button(1)->click();
    QVERIFY(page->treeStep3ForList->isVisible());
}

void TestScanSteps::scanToRestore_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("row");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("file recovery, NTFS") << 1 << "(C:/) [no label]" << QStringList({"notes.txt", "photo.png"});
    QTest::newRow("format recovery, FAT32") << 2 << "(D:/) [no label]" << QStringList({"report.txt"});
    // The partition search passes over NTFS volumes this small.
    QTest::newRow("partition recovery") << 3 << "demo.img" << QStringList({"report.txt"});
}

void TestScanSteps::scanToRestore()
{
    QFETCH(int, mode);
    QFETCH(QString, row);
    QFETCH(QStringList, names);
    clickMode(mode);
    chooseRow(row);
    grab(QStringLiteral("step1.png"));
    next(window->step1());
    if (mode == 1) {
        grab(QStringLiteral("step2.png"));
        next(window->step2());
    }
    QCOMPARE(bool(window->step2()), mode == 1); // the other modes have no options page
    Step3Page* page = window->step3();
    QVERIFY(page->isVisible());
    waitForMessage(kScanDone);
    QAbstractItemModelTester tester(page->treeStep3->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(page->nextButton->isEnabled());
    QCOMPARE(page->scanProgressBar->value(), 100);

    // The root lists its files; the list view shows the ones of a clicked folder.
    const QModelIndex root = page->treeStep3->model()->index(0, 0);
    QVERIFY(root.isValid());
    QMetaObject::invokeMethod(window.get(), "treeStep3_clicked", Q_ARG(QModelIndex, root));
    if (mode == 1) {
        page->treeStep3->expandAll();
        browseTheRoot(page);
        grab(QStringLiteral("step3.png"));
    }

    next(page);
    Step4Page* restore = window->step4();
    QVERIFY(restore->isVisible());
    QTemporaryDir target;
    restore->restoreDirEdit->setText(target.path());
    restore->restoreButton->click();
    restore->restoreButton->click(); // a second click while it runs starts nothing more
    waitForMessage(kRestoreDone);
    QCOMPARE(messages->texts.count(kRestoreDone), 1);
    QCOMPARE(restore->restoreProgressBar->value(), 100);
    grab(QStringLiteral("step4.png"));

    const QMap<QString, QByteArray> written = filesBelow(target.path());
    QMap<QString, QByteArray> want = demo.ntfsFiles;
    want.insert(demo.fatFiles);
    for (const QString& name : names) {
        QVERIFY2(written.contains(name), qPrintable(name));
        QVERIFY2(written.value(name) == want.value(name), qPrintable(name));
    }
    restore->browseButton->click();
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.takeFirst(), QUrl::fromLocalFile(target.path()));
}

QTEST_MAIN(TestScanSteps)
#include "tst_scansteps.moc"
