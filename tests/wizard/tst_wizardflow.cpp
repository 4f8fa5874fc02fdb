// The wizard as a user clicks through it, over disk images in memory: mode
// entry, the refusals of Step 1, real scans with pause and stop, restores, and
// the ways back between the pages.
#include "WizardTestKit.h"
#include "imaging/DiskImageBuilder.h"
#include "imaging/Fat32ImageBuilder.h"
#include "imaging/NtfsImageBuilder.h"
#include "scan/PartScan.h"
#include "scan/device/ImageDeviceLayer.h"
#include "app/MyButton.h"
#include "wizard/MainPage.h"
#include "wizard/FileListRows.h"
#include "wizard/MainWidget.h"
#include "wizard/Step1Page.h"
#include "wizard/Step2Page.h"
#include "wizard/Step3Page.h"
#include "wizard/Step4Page.h"
#include "wizard/WizardSaves.h"

#include <QAbstractItemModelTester>
#include <QButtonGroup>
#include <QCheckBox>
#include <QRadioButton>
#include <QDesktopServices>
#include <QDirIterator>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QTreeView>
#include <QStandardPaths>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

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

class TestWizardFlow : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void modeEntrySetsRows_data();
    void modeEntrySetsRows();
    void nextRefusesWithoutAFittingRow_data();
    void nextRefusesWithoutAFittingRow();
    void modeButtonResetsTheValuesNotThePages();
    void imageOpenedAtRunTime();
    void unrecognisedTypeStartsNothing();
    void unrecognisedVolumeIsCarvedInFormatRecovery();
    void pauseResumeAndStop();
    void scanToRestore_data();
    void scanToRestore();
    void step3PrevFollowsTheLastMode();
    void customTypesBuildTheFilter();
    void savedScanIsOfferedForTheSameSource();

public slots:
    void openedUrl(const QUrl& url) { opened.append(url); }

private:
    void enterMode(int mode) { click(window->mainPage()->modeButtons().at(mode - 1)); }
    void click(QWidget* button);
    void clickRow(int row);
    void chooseRow(const QString& name);
    QString clickExpectingMessage(QWidget* button);
    void waitForMessage(const QString& text);
    void waitForScan();
    void browseTheRoot(Step3Page* page);
    void next(QWidget* page) { click(static_cast<StepPage*>(page)->nextButton); }

    ImageDeviceLayer layer;
    SmallDisk demo;
    std::unique_ptr<MainWidget> window;
    std::unique_ptr<MessageRecorder> messages;
    QList<QUrl> opened;
};

// Rows of Step 1: 0 demo.img, 1 C (NTFS), 2 D (FAT32), 3 other.img, 4 E (type 0x01).
void TestWizardFlow::initTestCase()
{
    layer.addImageData(QStringLiteral("demo.img"), demo.bytes);
    layer.addImageData(QStringLiteral("other.img"), unknownTypeDisk());
    DeviceLayer::setInstance(&layer);
    QStandardPaths::setTestModeEnabled(true); // scans save themselves in the data folder
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openedUrl");
}

void TestWizardFlow::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    DeviceLayer::setInstance(nullptr);
}

void TestWizardFlow::init()
{
    messages = std::make_unique<MessageRecorder>();
    window = std::make_unique<MainWidget>();
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void TestWizardFlow::cleanup()
{
    if (window->scan())
        window->scan()->wait();
    window.reset();
    messages.reset();
}

void TestWizardFlow::click(QWidget* button) { clickButton(button); }

void TestWizardFlow::clickRow(int row) { clickTreeRow(window->step1()->deviceTree, row); }

void TestWizardFlow::chooseRow(const QString& name)
{
    QTreeWidget* tree = window->step1()->deviceTree;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        if (tree->topLevelItem(i)->text(0).trimmed() == name)
            return clickRow(i);
    }
    QFAIL(qPrintable(name));
}

QString TestWizardFlow::clickExpectingMessage(QWidget* button)
{
    messages->texts.clear();
    click(button);
    return messages->texts.value(0, QStringLiteral("<no message>"));
}

void TestWizardFlow::waitForMessage(const QString& text)
{
    QTRY_VERIFY_WITH_TIMEOUT(messages->texts.contains(text), kScanTimeout);
}

// Step 3 leads on, and back, once the scan has ended.
void TestWizardFlow::waitForScan()
{
    QTRY_VERIFY_WITH_TIMEOUT(window->wizardState().scanFinished, kScanTimeout);
}

void TestWizardFlow::modeEntrySetsRows_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("wholeDisk");
    QTest::newRow("file") << 1 << false;
    QTest::newRow("format") << 2 << false;
    QTest::newRow("partition") << 3 << true;
}

void TestWizardFlow::modeEntrySetsRows()
{
    QFETCH(int, mode);
    QFETCH(bool, wholeDisk);
    enterMode(mode);
    QCOMPARE(window->mode(), mode);
    QVERIFY(!window->mainPage()->isVisible());
    QVERIFY(window->step1()->isVisible());
    QCOMPARE(window->wizardState().doExtra, quint64(mode == 2));
    QTreeWidget* tree = window->step1()->deviceTree;
    QCOMPARE(tree->topLevelItem(0)->isHidden(), false);
    QCOMPARE(bool(tree->topLevelItem(0)->flags() & Qt::ItemIsSelectable), wholeDisk);
    QCOMPARE(tree->topLevelItem(1)->isHidden(), wholeDisk);
    QCOMPARE(tree->topLevelItem(2)->isHidden(), wholeDisk);
    QCOMPARE(window->fileIcons().isEmpty(), mode == 1); // modes 2, 3 fill it without Step 2
}

void TestWizardFlow::nextRefusesWithoutAFittingRow_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("row"); // -1: no click
    QTest::addColumn<QString>("message");
    QTest::newRow("file, nothing chosen") << 1 << -1 << "请选择分区";
    QTest::newRow("file, disk row") << 1 << 0 << "请选择分区";
    QTest::newRow("format, disk row") << 2 << 0 << "请选择分区";
    QTest::newRow("partition, nothing chosen") << 3 << -1 << "请选择磁盘";
}

void TestWizardFlow::nextRefusesWithoutAFittingRow()
{
    QFETCH(int, mode);
    QFETCH(int, row);
    QFETCH(QString, message);
    enterMode(mode);
    if (row >= 0)
        clickRow(row);
    QCOMPARE(clickExpectingMessage(window->step1()->nextButton), message);
    QVERIFY(window->step1()->isVisible());
    QVERIFY(!window->step2() && !window->step3());
    QCOMPARE(window->wizardState().partitionNumber, -1);
}

// Prev of Step 3 is rewired on every entry: exactly one way back, the mode's.
// Once a scan ran the button stays disabled; only its wiring is looked at here.
void TestWizardFlow::step3PrevFollowsTheLastMode()
{
    enterMode(1);
    clickRow(1);
    click(window->step1()->nextButton);
    click(window->step2()->nextButton);
    waitForScan();
    QVERIFY(!window->step3()->prevButton->isEnabled());
    window->step3()->prevButton->setEnabled(true);
    click(window->step3()->prevButton);
    QVERIFY(window->step2()->isVisible());
    click(window->step2()->prevButton);
    click(window->step1()->prevButton);
    QVERIFY(window->mainPage()->isVisible());

    enterMode(2);
    clickRow(1);
    click(window->step1()->nextButton);
    waitForScan();
    QVERIFY(!window->step3()->prevButton->isEnabled());
    window->step3()->prevButton->setEnabled(true);
    click(window->step3()->prevButton);
    QVERIFY(window->step1()->isVisible());
    QVERIFY(!window->step2()->isVisible());
    QVERIFY(!window->step3()->isVisible());
}

// The next mode starts from reset values with nothing chosen on Step 1 and
// wants a fresh click.
void TestWizardFlow::modeButtonResetsTheValuesNotThePages()
{
    enterMode(1);
    clickRow(1);
    Step1Page* step1 = window->step1();
    click(step1->prevButton);
    enterMode(3);
    QCOMPARE(window->step1(), step1);
    QVERIFY(!step1->deviceTree->currentItem());
    QCOMPARE(window->wizardState().diskNumber, -1);
    QCOMPARE(window->wizardState().driveLetter, '@');
    QCOMPARE(clickExpectingMessage(step1->nextButton), QStringLiteral("请选择磁盘"));
    click(step1->prevButton);
    enterMode(1);
    QCOMPARE(clickExpectingMessage(step1->nextButton), QStringLiteral("请选择分区"));
}

// Custom types with nothing ticked scan for nothing: the filter is empty, not "*".
void TestWizardFlow::customTypesBuildTheFilter()
{
    enterMode(1);
    clickRow(1);
    click(window->step1()->nextButton);
    Step2Page* page = window->step2();
    page->customTypes->click();
    QVERIFY(page->treeStep2->isEnabled());
    page->selectNone->click();
    click(page->nextButton);
    QCOMPARE(window->wizardState().fileFilter, QString());
}

void TestWizardFlow::imageOpenedAtRunTime()
{
    QTemporaryDir dir;
    DiskImageBuilder b(2 * 1024 * 1024);
    b.writeMbr({{0x83, 2048, 2048}});
    const QString path = dir.filePath(QStringLiteral("late.img"));
    QVERIFY(b.save(path));
    enterMode(1);
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
    // Its partition holds no file system: no letter, and Next refuses it.
    chooseRow(QStringLiteral("(no name:/) [no label]"));
    next(window->step1());
    QCOMPARE(messages->texts, QStringList({QStringLiteral("请选择分区")}));
}

void TestWizardFlow::unrecognisedTypeStartsNothing()
{
    // File recovery: with no file system there is nothing to read.
    enterMode(1);
    chooseRow(QStringLiteral("(E:/) [no label]"));
    next(window->step1());
    next(window->step2());
    QCOMPARE(messages->texts, QStringList({QStringLiteral("无法识别的文件系统。")}));
    QVERIFY(!window->step3()->nextButton->isEnabled());
    // A way back: Prev leaves Step 3.
    QVERIFY(window->step3()->prevButton->isEnabled());
    window->step3()->prevButton->click();
    QVERIFY(!window->step3()->isVisible());
}

// Format recovery carves what no file system describes: the scan runs.
void TestWizardFlow::unrecognisedVolumeIsCarvedInFormatRecovery()
{
    enterMode(2);
    chooseRow(QStringLiteral("(E:/) [no label]"));
    next(window->step1());
    waitForScan();
    QVERIFY(!messages->texts.contains(QStringLiteral("无法识别的文件系统。")));
    QVERIFY(!messages->texts.isEmpty() && messages->texts.last().startsWith(QStringLiteral("扫描完成")));
}

// The buttons reach the scanner once its run has begun (it resets the state
// word at its start); whether the scan is still going then doesn't matter.
void TestWizardFlow::pauseResumeAndStop()
{
    enterMode(2);
    chooseRow(QStringLiteral("(C:/) [no label]"));
    next(window->step1());
    Step3Page* page = window->step3();
    QSignalSpy progress(window->scan(), &PartScan::scanOne);
    QTRY_VERIFY_WITH_TIMEOUT(progress.count() > 0 || window->wizardState().scanFinished, kScanTimeout);
    if (window->wizardState().scanFinished) {
        // Over already: nothing left to pause or stop.
        QVERIFY(!page->pauseButton->isEnabled() && !page->stopButton->isEnabled());
        return;
    }

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
    waitForMessage(QStringLiteral("已停止"));
    QCOMPARE(messages->texts.count(kScanDone), 0); // a stopped scan isn't a finished one
    QVERIFY(page->nextButton->isEnabled());
    QVERIFY(!page->prevButton->isEnabled()); // Step 3 is left by Next once a scan ran
    QVERIFY(page->scanProgressBar->value() < 100);
    QCOMPARE(page->remainingLabel->text(), QStringLiteral("已停止"));
    QVERIFY(!page->pauseButton->isEnabled() && !page->stopButton->isEnabled());
}

// The NTFS root holds photo.png: listed, shown as a thumbnail, previewed.
void TestWizardFlow::browseTheRoot(Step3Page* page)
{
    const QList<QTreeWidgetItem*> rows = page->treeStep3ForList->findItems(QStringLiteral("photo.png"), Qt::MatchExactly);
    QCOMPARE(rows.size(), 1);
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
    QVERIFY(page->listStep3ForIcon->isVisible() && !page->treeStep3ForList->isVisible());
    const QList<QListWidgetItem*> icons = page->listStep3ForIcon->findItems(QStringLiteral("photo.png"), Qt::MatchExactly);
    QCOMPARE(icons.size(), 1);
    QCOMPARE(icons[0]->icon().pixmap(QSize(64, 64)).size(), QSize(64, 48));
    page->displayGroup->button(1)->click();
    QVERIFY(page->treeStep3ForList->isVisible());
}

void TestWizardFlow::scanToRestore_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("row");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("file recovery, NTFS") << 1 << "(C:/) [no label]" << QStringList({"notes.txt", "photo.png"});
    QTest::newRow("format recovery, FAT32") << 2 << "(D:/) [no label]" << QStringList({"report.txt"});
    // The partition search passes over NTFS volumes this small.
    QTest::newRow("partition recovery") << 3 << "demo.img" << QStringList({"report.txt"});
}

void TestWizardFlow::scanToRestore()
{
    QFETCH(int, mode);
    QFETCH(QString, row);
    QFETCH(QStringList, names);
    enterMode(mode);
    chooseRow(row);
    next(window->step1());
    if (mode == 1) {
        Step2Page* options = window->step2();
        options->prevButton->click();
        next(window->step1());
        QCOMPARE(window->step2(), options); // kept, not rebuilt
        next(options);
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
    page->treeStep3->setCurrentIndex(root);
    if (mode == 1) {
        page->treeStep3->expandAll();
        browseTheRoot(page);
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

    restore->prevButton->click();
    QVERIFY(page->isVisible());
    next(page);
    QCOMPARE(window->step4(), restore); // kept, not rebuilt
    restore->returnToMainButton->click();
    QVERIFY(window->mainPage()->isVisible() && !restore->isVisible());
}

QTEST_MAIN(TestWizardFlow)
// A scan saves itself in the data folder; choosing the same partition again
// offers "继续上次的扫描", which goes straight on to Step 3 with its results.
void TestWizardFlow::savedScanIsOfferedForTheSameSource()
{
    QDir(WizardSaves::folder()).removeRecursively();
    enterMode(2);
    clickRow(1);
    QVERIFY(!window->step1()->resumeButton->isVisible());
    next(window->step1());
    waitForScan();
    const quint64 results = window->wizardState().resultCount;
    QVERIFY(results > 0);
    window->step3()->prevButton->setEnabled(true);
    click(window->step3()->prevButton);
    clickRow(2);
    QVERIFY(!window->step1()->resumeButton->isVisible()); // the other partition has none
    clickRow(1);
    click(window->step1()->resumeButton);
    QVERIFY(window->step3()->isVisible());
    waitForScan();
    QCOMPARE(window->wizardState().resultCount, results);
    QDir(WizardSaves::folder()).removeRecursively();
}

#include "tst_wizardflow.moc"
