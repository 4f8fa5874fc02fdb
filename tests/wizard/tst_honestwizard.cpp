#include "WizardTestKit.h"
#include "imaging/SmallVolumes.h"
#include "imaging/DiskImageBuilder.h"
#include "imaging/Fat32ImageBuilder.h"
#include "scan/device/ImageDeviceLayer.h"
#include "scan/PartScan.h"
#include "scan/device/MemorySource.h"
#include "wizard/MainPage.h"
#include "wizard/MainWidget.h"
#include "wizard/Step1Page.h"
#include "wizard/Step2Page.h"
#include "wizard/Step3Page.h"
#include "wizard/Step4Page.h"
#include "wizard/FilterBar.h"

#include <QDirIterator>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTreeView>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

// What the wizard says is so: restores that fail say so, each run starts
// clean, images that aren't are refused, and the pages grow with the window.
class TestHonestWizard : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void restoreCountsWhatArrived_data();
    void restoreCountsWhatArrived();
    void eachRunStartsClean();
    void imageThatIsNotOneIsRefused_data();
    void imageThatIsNotOneIsRefused();
    void pagesGrowWithTheWindow();
    void screenshots();
    void timeLeftFollowsAPacedScan();

private:
    void click(QWidget* button);
    void clickRow(int row);
    void scanToStep4(int mode);
    QString lastMessage();

    ImageDeviceLayer layer;
    std::unique_ptr<MessageRecorder> messages;
    std::unique_ptr<MainWidget> window;
};

namespace {
// A device read at a steady pace: a virtual clock moves with every byte read,
// and the scan can be held at a chosen point to read its estimate. Each read
// also takes a little real time, so that the scan reports progress on its way
// and not only at its end.
struct Pace {
    static constexpr quint64 kBytesPerMsec = 32;          // virtual: 32 MiB take about 17 minutes
    static constexpr unsigned long kRealUsecsPerMiB = 16000;
    std::atomic<quint64> bytes{0};
    std::atomic<quint64> holdFrom{~quint64(0)};
    std::atomic<quint64> heldAt{0};
    QSemaphore gate;

    void read(quint64 n)
    {
        bytes.fetch_add(n);
        if (QThread::currentThread() != qApp->thread())
            QThread::usleep((unsigned long)((n * kRealUsecsPerMiB) >> 20));
    }
    qint64 msecs() const { return qint64(bytes.load() / kBytesPerMsec); }
    // On the scan's thread as it reports progress: waits there once past holdFrom.
    void progressed()
    {
        const quint64 now = bytes.load();
        if (now < holdFrom.load() || heldAt.load() != 0)
            return;
        heldAt.store(now);
        gate.acquire();
    }
    // Lets a held scan go on whatever the test concluded.
    ~Pace() { release(); }
    void release()
    {
        if (heldAt.load() != 0 && gate.available() == 0)
            gate.release();
    }
};

qint64 durationMsecs(const QString& hhmmss)
{
    const QStringList parts = hhmmss.split(QLatin1Char(':'));
    if (parts.size() != 3)
        return -1;
    return ((parts[0].toLongLong() * 60 + parts[1].toLongLong()) * 60 + parts[2].toLongLong()) * 1000;
}
} // namespace

// Disk 0: C: holds a small FAT32 volume with deleted files.
void TestHonestWizard::initTestCase()
{
    const QByteArray volume = Fat32ImageBuilder().image();
    const quint32 sectors = quint32(volume.size() / 512);
    DiskImageBuilder disk(quint64(2048 + sectors) * 512);
    disk.writeMbr({{0x0C, 2048, sectors}});
    disk.put(2048 * 512, volume);
    layer.addImageData(QStringLiteral("ATA Disk"), disk.bytes());
    DeviceLayer::setInstance(&layer);
}

void TestHonestWizard::cleanupTestCase()
{
    DeviceLayer::setInstance(nullptr);
}

void TestHonestWizard::init()
{
    messages = std::make_unique<MessageRecorder>();
    window = std::make_unique<MainWidget>();
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void TestHonestWizard::cleanup()
{
    window.reset();
    messages.reset();
}

void TestHonestWizard::click(QWidget* button) { clickButton(button); }

void TestHonestWizard::clickRow(int row) { clickTreeRow(window->step1()->deviceTree, row); }

QString TestHonestWizard::lastMessage()
{
    return messages->texts.value(messages->texts.size() - 1);
}

// Format recovery of C:, through the end of the scan to Step 4.
void TestHonestWizard::scanToStep4(int mode)
{
    click(window->mainPage()->modeButtons().at(mode - 1));
    clickRow(1);
    click(window->step1()->nextButton);
    if (mode == 1)
        click(window->step2()->nextButton);
    QTRY_VERIFY_WITH_TIMEOUT(window->wizardState().scanFinished, 60000);
    click(window->step3()->nextButton);
    QVERIFY(window->step4()->isVisible());
}

void TestHonestWizard::restoreCountsWhatArrived_data()
{
    // blocked: every file's name is taken by a folder in the target, so the
    // check passes, the user agrees to overwrite, and no file can be written.
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("blocked");
    QTest::addColumn<QString>("said");
    QTest::newRow("pseudo file system") << "/proc" << false << "无法写入恢复文件夹";
    QTest::newRow("no such folder") << "/nonexistent/ostrel" << false << "恢复文件夹不存在";
    QTest::newRow("fine") << QString() << false << "恢复完成！";
}

void TestHonestWizard::restoreCountsWhatArrived()
{
    QFETCH(QString, target);
    QFETCH(bool, blocked);
    QFETCH(QString, said);
    scanToStep4(2);
    Step4Page* step4 = window->step4();
    QTemporaryDir dir;
    if (target.isEmpty())
        target = dir.path();
    if (blocked) {
        QTemporaryDir first;
        step4->restoreDirEdit->setText(first.path());
        click(step4->restoreButton);
        QTRY_VERIFY_WITH_TIMEOUT(lastMessage().startsWith(QStringLiteral("恢复完成！")), 60000);
        QDirIterator it(first.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            QDir().mkpath(target + it.next().mid(first.path().size()));
    }
    messages->texts.clear();
    step4->restoreDirEdit->setText(target);
    click(step4->restoreButton);
    QTRY_VERIFY_WITH_TIMEOUT(!messages->texts.isEmpty() && lastMessage().startsWith(said), 60000);
    if (blocked)
        QVERIFY2(lastMessage().endsWith(QStringLiteral("个失败")), qPrintable(lastMessage()));
}

// A second run in another mode shows nothing of the first.
void TestHonestWizard::eachRunStartsClean()
{
    scanToStep4(2);
    Step4Page* step4 = window->step4();
    QTemporaryDir dir;
    step4->restoreDirEdit->setText(dir.path());
    click(step4->restoreButton);
    QTRY_VERIFY_WITH_TIMEOUT(step4->restoreProgressBar->value() == 100, 60000);
    click(step4->returnToMainButton);

    click(window->mainPage()->modeButtons().at(0));
    QCOMPARE(window->step1()->deviceTree->currentItem(), nullptr);
    QVERIFY(window->step1()->deviceTree->selectedItems().isEmpty());
    QVERIFY(step4->restoreDirEdit->text().isEmpty());
    QCOMPARE(step4->restoreProgressBar->value(), 0);
    QVERIFY(step4->restoredCount->text().contains(QStringLiteral(">0<")));
    QVERIFY(step4->warning->text().contains(QStringLiteral(">@<")));
}

void TestHonestWizard::imageThatIsNotOneIsRefused_data()
{
    QTest::addColumn<QByteArray>("content"); // empty: no file at all
    QTest::addColumn<QString>("said");
    QTest::addColumn<int>("rowsAdded");
    QTest::newRow("a text file") << QByteArray("root:x:0:0:root:/root:/bin/bash\n") << "不是磁盘映像" << 0;
    QTest::newRow("a missing file") << QByteArray() << "找不到文件" << 0;
    QByteArray disk(64 * 1024, '\0');
    disk[510] = char(0x55);
    disk[511] = char(0xAA);
    disk[0x1C2] = char(0x07); // one NTFS partition entry
    disk[0x1C6] = 1;
    disk[0x1CA] = 64;
    QTest::newRow("a disk with a partition table") << disk << QString() << 2;
}

void TestHonestWizard::imageThatIsNotOneIsRefused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, said);
    QFETCH(int, rowsAdded);
    click(window->mainPage()->modeButtons().at(0));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("image.img"));
    if (!content.isEmpty()) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(content) == content.size());
    }
    QTreeWidget* tree = window->step1()->deviceTree;
    const int before = tree->topLevelItemCount();
    QVERIFY(QMetaObject::invokeMethod(window.get(), "addDiskImage", Q_ARG(QString, path)));
    QCOMPARE(tree->topLevelItemCount(), before + rowsAdded);
    if (!said.isEmpty()) {
        QVERIFY2(lastMessage().contains(said), qPrintable(lastMessage()));
        return;
    }
    // The image's rows go again with "移除映像".
    clickRow(before);
    QVERIFY(window->step1()->removeImageButton->isEnabled());
    click(window->step1()->removeImageButton);
    QCOMPARE(tree->topLevelItemCount(), before);
}

// At one and a half times the window's size, every widget of each step page
// lies inside it, and the lists got the room.
void TestHonestWizard::pagesGrowWithTheWindow()
{
    scanToStep4(1);
    const QSize normal = window->size();
    QList<StepPage*> pages{window->step1(), window->step2(), window->step3(), window->step4()};
    const int listWidth = window->step3()->treeStep3ForList->width();
    window->resize(normal * 3 / 2);
    for (StepPage* page : pages) {
        for (QWidget* w : window->findChildren<StepPage*>())
            w->setVisible(w == page);
        QCoreApplication::processEvents();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        for (QWidget* child : page->findChildren<QWidget*>()) {
            if (!child->isVisible() || child->isWindow())
                continue;
            const QRect inPage(child->mapTo(page, QPoint(0, 0)), child->size());
            QVERIFY2(page->rect().contains(inPage), qPrintable(QStringLiteral("%1 %2 at %3,%4 %5x%6")
                                                               .arg(QString::fromLatin1(page->metaObject()->className()),
                                                                    child->objectName())
                                                               .arg(inPage.x()).arg(inPage.y())
                                                               .arg(inPage.width()).arg(inPage.height())));
        }
    }
    QVERIFY(window->step3()->treeStep3ForList->width() > listWidth);
    QVERIFY(window->step1()->width() > normal.width());
}

// The README's pictures: OSTREL_SCREENSHOTS=docs/screenshots build/tests/tst_honestwizard screenshots
void TestHonestWizard::screenshots()
{
    const QString dir = qEnvironmentVariable("OSTREL_SCREENSHOTS");
    if (dir.isEmpty())
        QSKIP("OSTREL_SCREENSHOTS not set");
    auto save = [&](const char* name) {
        QCoreApplication::processEvents();
        QVERIFY(window->grab().save(dir + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".png")));
    };
    // A card with deleted files beside the test disk: rows 2 and 3.
    layer.addImageData(QStringLiteral("Camera card"), SmallVolumes::disk());
    click(window->mainPage()->modeButtons().at(0));
    clickRow(3);
    save("step1");
    click(window->step1()->nextButton);
    save("step2");
    click(window->step2()->nextButton);
    QTRY_VERIFY_WITH_TIMEOUT(window->wizardState().scanFinished, 60000);
    Step3Page* page = window->step3();
    page->treeStep3->expandAll();
    save("step3");
    QTreeWidget* list = page->treeStep3ForList;
    if (list->topLevelItemCount() > 0)
        list->setCurrentItem(list->topLevelItem(0));
    save("preview");
    page->filterBar->kindButtons[FileKind::Document]->click();
    page->filterBar->minSize->setText(QStringLiteral("1K"));
    save("filters");
    page->filterBar->clear();
    page->filterBar->filterChanged();
    click(page->nextButton);
    window->step4()->restoreDirEdit->setText(QStringLiteral("/home/user/recovered"));
    save("step4");
}

// A format scan of a 32 MiB card read at a steady pace: half way through, the
// time left it shows is within a quarter of the time the rest really takes.
void TestHonestWizard::timeLeftFollowsAPacedScan()
{
    Fat32ImageBuilder::Geometry g;
    g.clusters = 8192;
    g.sectorsPerCluster = 8;
    const QByteArray volume = Fat32ImageBuilder(g).image();
    const quint32 sectors = quint32(volume.size() / 512);
    DiskImageBuilder disk(quint64(2048 + sectors) * 512);
    disk.writeMbr({{0x0C, 2048, sectors}});
    disk.put(2048 * 512, volume);
    auto source = std::make_shared<MemorySource>(disk.bytes());
    auto pace = std::make_shared<Pace>();
    source->setReadFilter([pace](quint64, quint64 bytes) {
        pace->read(bytes);
        return true;
    });
    layer.addImageSource(QStringLiteral("Paced card"), source);
    window->setScanClock([pace] { return pace->msecs(); });

    quint64 whole = 0; // what one scan reads, end to end
    for (int round = 0; round < 2; ++round) {
        click(window->mainPage()->modeButtons().at(1));
        clickRow(window->step1()->deviceTree->topLevelItemCount() - 1);
        pace->bytes.store(0);
        if (round == 1)
            pace->holdFrom.store(whole / 2);
        click(window->step1()->nextButton);
        QVERIFY(window->scan());
        connect(window->scan(), &PartScan::scanOne, window->scan(), [pace] { pace->progressed(); }, Qt::DirectConnection);
        if (round == 1) {
            QTRY_VERIFY_WITH_TIMEOUT(pace->heldAt.load() != 0 || window->wizardState().scanFinished, 60000);
            QVERIFY2(pace->heldAt.load() != 0, "no progress was reported past half way");
            QCoreApplication::processEvents(); // the progress reported up to the hold
            QVERIFY(QMetaObject::invokeMethod(window.get(), "timerTimeout"));
            const qint64 shown = durationMsecs(window->step3()->remainingLabel->text());
            const qint64 truth = qint64((whole - pace->heldAt.load()) / Pace::kBytesPerMsec);
            QVERIFY2(qAbs(shown - truth) <= truth / 4, qPrintable(QStringLiteral("shown %1 ms, takes %2 ms").arg(shown).arg(truth)));
            pace->release();
        }
        QTRY_VERIFY_WITH_TIMEOUT(window->wizardState().scanFinished, 60000);
        whole = pace->bytes.load();
        click(window->step3()->nextButton);
        click(window->step4()->returnToMainButton);
    }
}

QTEST_MAIN(TestHonestWizard)
#include "tst_honestwizard.moc"

