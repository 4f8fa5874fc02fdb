#include "WizardTestKit.h"
#include "fixtures/DiskImageBuilder.h"
#include "fixtures/Fat32ImageBuilder.h"
#include "scan/device/ImageDeviceLayer.h"
#include "wizard/MainPage.h"
#include "wizard/MainWidget.h"
#include "wizard/Step1Page.h"
#include "wizard/Step2Page.h"
#include "wizard/Step3Page.h"
#include "wizard/Step4Page.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTreeView>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

class TestWizardFlow : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void modeEntrySetsTitleCaptionAndRows_data();
    void modeEntrySetsTitleCaptionAndRows();
    void fileRecoveryWalksAllFourSteps();
    void nextRefusesWithoutAFittingRow_data();
    void nextRefusesWithoutAFittingRow();
    void step3PrevFollowsTheLastMode();
    void modeButtonResetsTheValuesNotThePages();
    void customTypesBuildTheFilter();

private:
    void enterMode(int mode);
    void click(QWidget* button);
    void clickRow(int row);
    QString clickExpectingMessage(QWidget* button);
    QString title() const;
    void waitForScan();

    ImageDeviceLayer layer;
    std::unique_ptr<MessageRecorder> messages;
    std::unique_ptr<MainWidget> window;
};

// Disk 0, "ATA Disk": C: holds a small FAT32 volume, the second partition
// nothing a scanner knows, so it gets no letter.
void TestWizardFlow::initTestCase()
{
    const QByteArray volume = Fat32ImageBuilder().image();
    const quint32 sectors = quint32(volume.size() / 512);
    DiskImageBuilder disk(quint64(2048 + sectors + 1024) * 512);
    disk.writeMbr({{0x0C, 2048, sectors}, {0x83, 2048 + sectors, 1024}});
    disk.put(2048 * 512, volume);
    layer.addImageData(QStringLiteral("ATA Disk"), disk.bytes());
    DeviceLayer::setInstance(&layer);
}

void TestWizardFlow::cleanupTestCase()
{
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
    window.reset();
    messages.reset();
}

void TestWizardFlow::enterMode(int mode)
{
    click(window->mainPage()->modeButtons().at(mode - 1));
}

void TestWizardFlow::click(QWidget* button)
{
    QVERIFY(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
}

// Step 3 leads on, and back, once the scan has ended.
void TestWizardFlow::waitForScan()
{
    QTRY_VERIFY_WITH_TIMEOUT(window->wizardState().scanFinished, 60000);
}

void TestWizardFlow::clickRow(int row)
{
    QTreeWidget* tree = window->step1()->deviceTree;
    const QRect rect = tree->visualItemRect(tree->topLevelItem(row));
    QVERIFY(rect.isValid());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, rect.center());
}

QString TestWizardFlow::clickExpectingMessage(QWidget* button)
{
    messages->texts.clear();
    click(button);
    return messages->texts.value(0, QStringLiteral("<no message>"));
}

QString TestWizardFlow::title() const
{
    return static_cast<QLabel*>(window->titleLabel())->text();
}

void TestWizardFlow::modeEntrySetsTitleCaptionAndRows_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("wholeDisk");
    QTest::newRow("file") << 1 << "Ostrel数据恢复——文件恢复" << "请选择要恢复的文件所在的分区：" << false;
    QTest::newRow("format") << 2 << "Ostrel数据恢复——格式化恢复" << "请选择要恢复的文件所在的分区：" << false;
    QTest::newRow("partition") << 3 << "Ostrel数据恢复——分区恢复" << "请选择一个分区：" << true;
}

void TestWizardFlow::modeEntrySetsTitleCaptionAndRows()
{
    QFETCH(int, mode);
    QFETCH(QString, title);
    QFETCH(QString, caption);
    QFETCH(bool, wholeDisk);
    enterMode(mode);
    QCOMPARE(window->mode(), mode);
    QCOMPARE(this->title(), title);
    QVERIFY(!window->mainPage()->isVisible());
    QVERIFY(window->step1()->isVisible());
    QCOMPARE(window->step1()->caption->text(), caption);
    QCOMPARE(window->wizardState().doExtra, quint64(mode == 2));
    QTreeWidget* tree = window->step1()->deviceTree;
    QCOMPARE(tree->topLevelItem(0)->isHidden(), false);
    QCOMPARE(bool(tree->topLevelItem(0)->flags() & Qt::ItemIsSelectable), wholeDisk);
    QCOMPARE(tree->topLevelItem(1)->isHidden(), wholeDisk);
    QCOMPARE(tree->topLevelItem(2)->isHidden(), wholeDisk);
    QCOMPARE(window->fileIcons().isEmpty(), mode == 1); // modes 2, 3 fill it without Step 2
}

void TestWizardFlow::fileRecoveryWalksAllFourSteps()
{
    enterMode(1);
    Step1Page* step1 = window->step1();
    clickRow(1);
    QCOMPARE(window->wizardState().diskNumber, 0);
    QCOMPARE(window->wizardState().partitionNumber, 0);
    QCOMPARE(window->wizardState().driveLetter, 'C');
    click(step1->nextButton);
    QVERIFY(!step1->isVisible());
    Step2Page* step2 = window->step2();
    QVERIFY(step2 && step2->isVisible());
    QCOMPARE(step2->treeStep2->topLevelItemCount(), 9);
    QVERIFY(window->fileIcons().contains(QStringLiteral(".jpg")));

    click(step2->prevButton);
    QVERIFY(step1->isVisible() && !step2->isVisible());
    click(step1->nextButton);
    QCOMPARE(window->step2(), step2); // kept, not rebuilt
    QCOMPARE(step2->treeStep2->topLevelItemCount(), 9);

    click(step2->nextButton);
    Step3Page* step3 = window->step3();
    QVERIFY(step3 && step3->isVisible() && !step2->isVisible());
    QCOMPARE(window->wizardState().fileFilter, QStringLiteral("*"));
    QCOMPARE(window->wizardState().currentNextButton, step3->nextButton);
    QCOMPARE(window->wizardState().currentFileList, step3->treeStep3ForList);
    QCOMPARE(window->wizardState().currentIconList, step3->listStep3ForIcon);

    waitForScan();
    click(step3->nextButton);
    Step4Page* step4 = window->step4();
    QVERIFY(step4 && step4->isVisible() && !step3->isVisible());
    click(step4->prevButton);
    QVERIFY(step3->isVisible() && !step4->isVisible());
    click(step3->nextButton);
    QCOMPARE(window->step4(), step4);
    click(step4->returnToMainButton);
    QVERIFY(window->mainPage()->isVisible() && !step4->isVisible());
    QCOMPARE(title(), QStringLiteral("Ostrel数据恢复"));
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
    QCOMPARE(title(), QStringLiteral("Ostrel数据恢复"));

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

// A partition chosen in one mode stays the tree's current row, but the
// next mode starts from reset values and wants a fresh click.
void TestWizardFlow::modeButtonResetsTheValuesNotThePages()
{
    enterMode(1);
    clickRow(1);
    Step1Page* step1 = window->step1();
    click(step1->prevButton);
    enterMode(3);
    QCOMPARE(window->step1(), step1);
    QVERIFY(step1->deviceTree->currentItem());
    QCOMPARE(window->wizardState().diskNumber, -1);
    QCOMPARE(window->wizardState().driveLetter, '@');
    QCOMPARE(clickExpectingMessage(step1->nextButton), QStringLiteral("请选择磁盘"));
    click(step1->prevButton);
    enterMode(1);
    QCOMPARE(clickExpectingMessage(step1->nextButton), QStringLiteral("请选择分区"));
}

// The page's own buttons: custom types, select none, then single rows ticked.
void TestWizardFlow::customTypesBuildTheFilter()
{
    enterMode(1);
    clickRow(1);
    click(window->step1()->nextButton);
    Step2Page* page = window->step2();
    page->customTypes->click();
    QVERIFY(page->treeStep2->isEnabled());
    QCOMPARE(window->wizardState().fileFilter, QString());
    page->selectNone->click();
    click(page->nextButton);
    QCOMPARE(window->wizardState().fileFilter, QString()); // nothing ticked: empty, not "*"

    waitForScan();
    QVERIFY(!window->step3()->prevButton->isEnabled());
    window->step3()->prevButton->setEnabled(true);
    click(window->step3()->prevButton);
    QTreeWidget* types = page->treeStep2;
    types->topLevelItem(2)->child(9)->setCheckState(0, Qt::Checked); // Apple 声音文件
    QCOMPARE(types->topLevelItem(2)->checkState(0), Qt::PartiallyChecked);
    types->topLevelItem(0)->child(0)->setCheckState(0, Qt::Checked); // Word 2007
    click(page->nextButton);
    QCOMPARE(window->wizardState().fileFilter, QStringLiteral(".docx;.m4r;.m4a"));
}

QTEST_MAIN(TestWizardFlow)
#include "tst_wizardflow.moc"
