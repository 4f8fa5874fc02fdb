#pragma once
#include "wizard/ScanClock.h"
#include "wizard/WizardState.h"
#include "scan/SavedScan.h"

#include <QMap>
#include <QSet>
#include <QPoint>
#include <QWidget>
#include <memory>
#include <optional>

class Footer;
class MainPage;
class PartScan;
class QLabel;
class RestorePlan;
class ResultBrowser;
class ResultTree;
class ScanSaver;
class TreeModel;
struct RowRef;
class QListWidgetItem;
class QTimer;
class QToolButton;
class QTreeWidgetItem;
class QVBoxLayout;
class Step1Page;
class Step2Page;
class Step3Page;
class Step4Page;
class StepPage;
class TitleBar;

// The program's one window and the whole recovery wizard: a frameless shell
// with its own title bar, the main page with the three recovery modes, and the
// four step pages, each built the first time it is needed and kept.
class MainWidget : public QWidget {
    Q_OBJECT
public:
    // How a widget answers the pointer coming and going (see eventFilter).
    enum class Hover { TitleButton, CloseButton, StepButton, Hand };

    explicit MainWidget(QWidget* parent = nullptr);
    ~MainWidget() override;

    // The modal information box of the wizard; returns when the user closed it.
    void showMessage(const QString& text);

    // Installs the window as the widget's event filter for the given look.
    void watchHover(QWidget* widget, Hover kind);

    // Adds the catalogue to `tree` and fills iconMap.
    void loadFileTypes(QTreeWidget* tree);

    int mode() const { return recoveryMode; }
    const WizardState& wizardState() const { return state; }
    const QMap<QString, QString>& fileIcons() const { return iconMap; }
    MainPage* mainPage() const { return content; }
    Step1Page* step1() const { return step1Page; }
    Step2Page* step2() const { return step2Page; }
    Step3Page* step3() const { return step3Page; }
    Step4Page* step4() const { return step4Page; }
    PartScan* scan() const { return scanThread; }
    QWidget* titleLabel() const;
    // The scan figures' time source: a test sets one that a paced source advances.
    void setScanClock(ScanClock::Now now) { clock = ScanClock(std::move(now)); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void minbtn_clicked();
    void maxbtn_clicked();
    void closebtn_clicked();
    void on_pushButtonAbout_clicked();
    void on_pushButtonQQ_clicked();
    void on_pushButtonContactUs_clicked();
    void on_pushButtonFileRecovery_clicked();
    void on_pushButtonFormatRecovery_clicked();
    void on_pushButtonPartitionRecovery_clicked();

    void prevbtnStep1_clicked();
    void nextbtnStep1_clicked();
    void partitionClicked(QTreeWidgetItem* item, int column);
    void openImageButton_clicked();
    void removeImageButton_clicked();
    // Goes on with the saved scan of the chosen source, straight on Step 3.
    void resumeButton_clicked();
    // Adds an image file's rows to Step 1, or says why it isn't a disk image.
    void addDiskImage(const QString& path);

    void scanModeClicked(int id);
    void fileTypeClicked(int id);
    void fileTypeToggled(bool checked);
    void selectAllBtn_clicked(bool checked);
    void selectNoneBtn_clicked(bool checked);
    void treeStep2_itemChanged(QTreeWidgetItem* item, int column);
    void treeStep2_itemClicked(QTreeWidgetItem* item, int column);
    void treeStep2_itemDoubleClicked(QTreeWidgetItem* item, int column);
    void treeItem_checkAllChild(QTreeWidgetItem* item, bool checked);
    void treeItem_checkAllChild_recursion(QTreeWidgetItem* item, bool checked);
    void checkSibling(QTreeWidgetItem* item);
    void treeItem_CheckChildChanged(QTreeWidgetItem* item);
    void prevbtnStep2_clicked();
    void nextbtnStep2_clicked();

    void prevbtnStep3_clicked();
    void prevbtnStep3Type2_clicked();
    void nextbtnStep3_clicked();
    void treeStep3_itemExpanded(const QModelIndex& index);
    void treeStep3_itemCollapsed(const QModelIndex& index);
    void treeStep3ForList_doubleClicked(QTreeWidgetItem* item, int column);
    void listStep3ForIcon_doubleClicked(QListWidgetItem* item);
    void displayModeChanged(int id);
    void pauseButton_clicked();
    void stopButton_clicked();
    void timerTimeout();
    void scanBegin(int total);
    void scanOne(int done);
    void scanDone(quint64 results, quint64 totalSize);
    void diskScanBegin(int total, const QString& name);
    void diskScanEnd();

    void prevbtnStep4_clicked();
    void returnToMainButtonClicked();
    void browseButtonClicked();
    void chooseDir_clicked();
    void restoreButtonClicked();
    void undeleteProgress(quint64 files, quint64 bytes);
    void undeleteDone();

private:
    void setupTitleButtons();
    void placeTitleButtons();
    void applyLook();
    void fadeIn();
    void enterMode(int newMode);
    void showDeviceRowsForMode();
    void showMainPage();
    void showPage(QWidget* page);
    void showStep(QWidget* page, void (MainWidget::*build)());
    void insertStepPage(StepPage* page, Hover buttons);
    void enterStep3(void (MainWidget::*prevSlot)());
    bool hoverEvent(QWidget* widget, Hover kind, bool entering);
    void setTitle(const QString& title);

    void resetWizardState();
    void startScan();
    void releaseScan();
    // Offers "继续上次的扫描" when the chosen source has a saved scan of this mode.
    void offerResume();
    QString modeName() const;
    void refreshTree();
    void showScanFigures();
    void preview(const RowRef& row, const QString& name);
    void showSize(QLabel* value, QLabel* unit, quint64 bytes);
    bool planRestore(const QString& dir);
    void buildStep1Page();
    void buildStep2Page();
    void buildStep3Page();
    void buildStep4Page();

    QVBoxLayout* mainLayout;
    TitleBar* titleBar;
    MainPage* content;
    Footer* footer;
    QToolButton* minButton = nullptr;
    QToolButton* maxButton = nullptr;
    QToolButton* closeButton = nullptr;
    QPoint dragOffset;
    bool dragging = false;

    Step1Page* step1Page = nullptr;
    Step2Page* step2Page = nullptr;
    Step3Page* step3Page = nullptr;
    Step4Page* step4Page = nullptr;

    WizardState state;
    quint8 recoveryMode = 0; // 1 file, 2 format, 3 partition recovery
    PartScan* scanThread = nullptr;
    std::unique_ptr<ResultTree> scanRoot; // the nodes above scanThread's tree
    TreeModel* treeModel = nullptr;
    ResultBrowser* browser = nullptr; // Step 3's result half, with the page
    QTimer* scanTimer = nullptr;
    ScanClock clock; // elapsed and remaining time of the scan
    bool restoring = false; // from "恢复" to undeleteDone
    bool restoredOnce = false; // a restore of this scan ran: Step 4 keeps its figures
    int restoredCount = 0;
    std::unique_ptr<RestorePlan> restorePlan; // of the restore under way or last run
    quint64 restoredBytes = 0;
    QMap<QString, QString> iconMap; // extension with its dot -> icon path
    QSet<int> openedImages; // disks added by "打开磁盘映像…"
    std::optional<SavedScan> savedScan; // of the source chosen on Step 1
    bool resumeChosen = false;          // the next scan goes on from savedScan
    ScanSaver* scanSaver = nullptr;     // keeps scanThread saved; goes with it
};
