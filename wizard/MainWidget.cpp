#include "wizard/MainWidget.h"
#include "app/HoverStyle.h"
#include "app/MyButton.h"
#include "app/Resources.h"
#include "dialogs/DialogAbout.h"
#include "dialogs/DialogContactUs.h"
#include "dialogs/QqScript.h"
#include "filetypes/FileTypeCatalogue.h"
#include "results/FolderNode.h"
#include "results/TreeModel.h"
#include "scan/PartScan.h"
#include "volumes/VolumeOpener.h"
#include "scan/device/ImageDeviceLayer.h"
#include "wizard/Footer.h"
#include "wizard/MainPage.h"
#include "wizard/Step1Page.h"
#include "wizard/Step2Page.h"
#include "wizard/Step3Page.h"
#include "wizard/Step4Page.h"
#include "wizard/TitleBar.h"
#include "wizard/DeviceTreeRows.h"
#include "wizard/FilePreview.h"
#include "wizard/FileListRows.h"
#include "wizard/FileTypeChecks.h"
#include "wizard/IconListRows.h"
#include "wizard/RowRef.h"
#include "wizard/ScanClock.h"
#include "wizard/ScanSummary.h"
#include "wizard/ImageCheck.h"
#include "results/ResultTree.h"
#include "wizard/SelectionSums.h"
#include "wizard/ResultBrowser.h"
#include "wizard/RestorePlan.h"
#include "wizard/WizardSaves.h"
#include "scan/ScanSaver.h"
#include "wizard/RestoreTargetCheck.h"
#include "wizard/WizardMessages.h"
#include "app/AppFont.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QRadioButton>
#include <QUrl>
#include <cstring>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
constexpr int kWidth = 884;
constexpr int kHeight = 667;
constexpr int kTitleButtonWidth = 30;
constexpr int kTitleButtonHeight = 33;
constexpr int kFadeMsecs = 1000;
constexpr int kStepPageIndex = 1;
constexpr int kTimerMsecs = 1000;
const char* const kHoverProperty = "ostrelHover";
const QColor kWindowColour(234, 240, 254);
const QColor kTitleButtonHover(66, 138, 221);
const QColor kCloseHover(216, 70, 71);
const QColor kStepButtonHover(166, 244, 255);

const QString kMainTitle = QStringLiteral("Ostrel数据恢复");

// Title and Step 1 caption of each recovery mode, by mode number less one.
struct ModeTexts {
    const char* title;
    const char* caption;
};
// Why a file was not written, as the closing message of a restore says it.
QString whyNotWritten(RestoreFailure failure)
{
    switch (failure) {
    case RestoreFailure::NoSpace: return QObject::tr("目标磁盘空间不足");
    case RestoreFailure::Permission: return QObject::tr("目标文件夹拒绝写入");
    case RestoreFailure::NameRefused: return QObject::tr("文件名已被文件夹或链接占用");
    case RestoreFailure::OutsideDevice: return QObject::tr("数据位于设备范围之外");
    case RestoreFailure::RecordUnreadable: return QObject::tr("文件记录无法读取");
    case RestoreFailure::DeviceFailed: return QObject::tr("设备读取失败");
    case RestoreFailure::NameOnly: return QObject::tr("仅存文件名，内容已无法恢复");
    case RestoreFailure::None:
    case RestoreFailure::WriteFailed: break;
    }
    return QObject::tr("写入错误");
}

const ModeTexts kModeTexts[] = {
    {"Ostrel数据恢复——文件恢复", "请选择要恢复的文件所在的分区："},
    {"Ostrel数据恢复——格式化恢复", "请选择要恢复的文件所在的分区："},
    {"Ostrel数据恢复——分区恢复", "请选择一个分区："},
};

const char* const kStyleSheet =
    "QLabel{border:none;}"
    "QToolButton{background-color:transparent;border:none;}"
    "QScrollBar:vertical{background:#f1f1f1;width:14px;margin:14px 0 14px 0;border:none;}"
    "QScrollBar:horizontal{background:#f1f1f1;height:14px;margin:0 14px 0 14px;border:none;}"
    "QScrollBar::handle{background:#bcbcbc;border-radius:3px;}"
    "QScrollBar::handle:vertical{min-height:24px;margin:0 3px;}"
    "QScrollBar::handle:horizontal{min-width:24px;margin:3px 0;}"
    "QScrollBar::add-page,QScrollBar::sub-page{background:none;}"
    "QScrollBar::add-line,QScrollBar::sub-line{background:#f1f1f1;border:none;subcontrol-origin:margin;}"
    "QScrollBar::add-line:vertical{height:14px;subcontrol-position:bottom;}"
    "QScrollBar::sub-line:vertical{height:14px;subcontrol-position:top;}"
    "QScrollBar::add-line:horizontal{width:14px;subcontrol-position:right;}"
    "QScrollBar::sub-line:horizontal{width:14px;subcontrol-position:left;}"
    "QScrollBar::up-arrow{image:url(:/up.png);}"
    "QScrollBar::down-arrow{image:url(:/down.png);}"
    "QScrollBar::left-arrow{image:url(:/left.png);}"
    "QScrollBar::right-arrow{image:url(:/right.png);}"
    "QProgressBar{border:1px solid #c5c5c7;background:#ffffff;}"
    "QProgressBar::chunk{background-color:#3d71bc;}"
    "QHeaderView::section{background-color:#f3f4f6;border:1px solid #e5e6e7;height:24px;}"
    "QTreeView::item{height:24px;border-bottom:1px solid #d9d9d9;}"
    "QTreeView::item:selected,QListView::item:selected{background:#b5d9ff;color:#000000;}"
    "QTreeView::item:hover,QListView::item:hover{background:qlineargradient(x1:0,y1:0,x2:0,y2:1,"
    "stop:0 #e7effd,stop:1 #cbdaf1);}"
    "QWidget#box{border:1px solid #797979;}"
    "QTreeView#treeStep3::branch{border-image:none;image:none;}"
    "QTreeView#treeStep3::branch:has-children:closed{image:url(:/right.png);}"
    "QTreeView#treeStep3::branch:has-children:open{image:url(:/down.png);}"
    "QTreeView::indicator:unchecked{image:url(:/unchecked.ico);}"
    "QTreeView::indicator:checked{image:url(:/checked.ico);}"
    "QTreeView::indicator:indeterminate{image:url(:/checked1.ico);}";
} // namespace

MainWidget::MainWidget(QWidget* parent) : QWidget(parent)
{
    Resources::load();
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint);
    resize(kWidth, kHeight);
    setMinimumSize(kWidth, kHeight);
    setWindowTitle(kMainTitle);
    setWindowIcon(QIcon(QStringLiteral(":./32方形.ico")));
    HoverStyle::paintBackground(this, kWindowColour);

    titleBar = new TitleBar(this);
    content = new MainPage(this);
    footer = new Footer(this);
    mainLayout = new QVBoxLayout(this);
    mainLayout->setContentsMargins(0, 0, 0, 0);
    mainLayout->setSpacing(0);
    mainLayout->addWidget(titleBar);
    mainLayout->addWidget(content, 1);
    mainLayout->addWidget(footer);

    titleBar->labelTitle->installEventFilter(this);
    for (QPushButton* button : content->modeButtons())
        watchHover(button, Hover::Hand);
    for (QPushButton* button : {footer->pushButtonQQ, footer->pushButtonAbout, footer->pushButtonContactUs})
        watchHover(button, Hover::Hand);
    setupTitleButtons();
    setStyleSheet(QLatin1String(kStyleSheet));
    QMetaObject::connectSlotsByName(this);
    fadeIn();
}

// A running scan isn't stopped: it ends with the process.
MainWidget::~MainWidget()
{
    delete treeModel;
}

QWidget* MainWidget::titleLabel() const
{
    return titleBar->labelTitle;
}

void MainWidget::setupTitleButtons()
{
    const QStyle::StandardPixmap pixmaps[] = {QStyle::SP_TitleBarMinButton, QStyle::SP_TitleBarMaxButton,
                                              QStyle::SP_TitleBarCloseButton};
    const QString tips[] = {tr("最小化"), tr("最大化"), tr("关闭")};
    QToolButton* buttons[3];
    for (int i = 0; i < 3; ++i) {
        buttons[i] = new QToolButton(this);
        buttons[i]->setIcon(style()->standardPixmap(pixmaps[i]));
        buttons[i]->setToolTip(tips[i]);
        buttons[i]->setGeometry(width() - kTitleButtonWidth * (3 - i), 0, kTitleButtonWidth, kTitleButtonHeight);
    }
    minButton = buttons[0];
    maxButton = buttons[1];
    closeButton = buttons[2];
    connect(minButton, &QToolButton::clicked, this, &MainWidget::minbtn_clicked);
    connect(maxButton, &QToolButton::clicked, this, &MainWidget::maxbtn_clicked);
    connect(closeButton, &QToolButton::clicked, this, &MainWidget::closebtn_clicked);
    watchHover(minButton, Hover::TitleButton);
    watchHover(maxButton, Hover::TitleButton);
    watchHover(closeButton, Hover::CloseButton);
}

void MainWidget::fadeIn()
{
    auto* animation = new QPropertyAnimation(this, "windowOpacity", this);
    animation->setDuration(kFadeMsecs);
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    animation->setEasingCurve(QEasingCurve::OutCurve);
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void MainWidget::showMessage(const QString& text)
{
    WizardMessages::inform(this, text);
}

// ---- The frameless shell ----

void MainWidget::watchHover(QWidget* widget, Hover kind)
{
    // Kept on the widget itself, so it goes with the widget.
    widget->setProperty(kHoverProperty, int(kind));
    widget->installEventFilter(this);
}

bool MainWidget::eventFilter(QObject* watched, QEvent* event)
{
    // A double click on the title would otherwise reach the label.
    if (watched == titleBar->labelTitle && event->type() == QEvent::MouseButtonDblClick)
        return true;
    const bool entering = event->type() == QEvent::Enter;
    if (entering || event->type() == QEvent::Leave) {
        const QVariant kind = watched->property(kHoverProperty);
        if (kind.isValid() && watched->isWidgetType())
            return hoverEvent(static_cast<QWidget*>(watched), Hover(kind.toInt()), entering);
    }
    return QWidget::eventFilter(watched, event);
}

bool MainWidget::hoverEvent(QWidget* widget, Hover kind, bool entering)
{
    switch (kind) {
    case Hover::TitleButton:
    case Hover::CloseButton:
        if (entering)
            HoverStyle::fill(widget, kind == Hover::CloseButton ? kCloseHover : kTitleButtonHover);
        else
            HoverStyle::plainToolButton(widget);
        break;
    case Hover::StepButton:
        if (entering)
            HoverStyle::fill(widget, kStepButtonHover);
        else
            HoverStyle::plainPushButton(widget);
        [[fallthrough]];
    case Hover::Hand:
        setCursor(entering ? Qt::PointingHandCursor : Qt::ArrowCursor);
        break;
    }
    return true;
}

// Any spot that no child takes the press for moves the window.
void MainWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    dragging = true;
    dragOffset = event->globalPosition().toPoint() - pos();
    event->accept();
}

void MainWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (dragging && event->buttons() != Qt::NoButton) {
        move(event->globalPosition().toPoint() - dragOffset);
        event->accept();
    }
}

void MainWidget::mouseReleaseEvent(QMouseEvent*)
{
    dragging = false;
}

void MainWidget::minbtn_clicked()
{
    showMinimized();
}

// The window has one size.
void MainWidget::maxbtn_clicked()
{
    if (isMaximized())
        showNormal();
    else
        showMaximized();
}

void MainWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeTitleButtons();
}

void MainWidget::placeTitleButtons()
{
    if (!closeButton)
        return;
    QToolButton* buttons[] = {minButton, maxButton, closeButton};
    for (int i = 0; i < 3; ++i)
        buttons[i]->setGeometry(width() - kTitleButtonWidth * (3 - i), 0, kTitleButtonWidth, kTitleButtonHeight);
}

// A scan or a restore under way ends with the window: the user says so first.
void MainWidget::closeEvent(QCloseEvent* event)
{
    const bool busy = restoring || (scanThread && scanThread->isRunning());
    if (busy && WizardMessages::ask(this, tr("扫描或恢复正在进行，确定要退出吗？"), {tr("退出"), tr("取消")}) != 0) {
        event->ignore();
        return;
    }
    event->accept();
}

void MainWidget::closebtn_clicked()
{
    close();
}

// ---- Main page and footer ----

void MainWidget::on_pushButtonAbout_clicked()
{
    DialogAbout dialog(this);
    dialog.exec();
}

void MainWidget::on_pushButtonQQ_clicked()
{
    QqScript::run();
}

void MainWidget::on_pushButtonContactUs_clicked()
{
    DialogContactUs dialog(this);
    dialog.exec();
}

void MainWidget::on_pushButtonFileRecovery_clicked()
{
    enterMode(1);
}

void MainWidget::on_pushButtonFormatRecovery_clicked()
{
    enterMode(2);
}

void MainWidget::on_pushButtonPartitionRecovery_clicked()
{
    enterMode(3);
}

void MainWidget::resetWizardState()
{
    state.reset();
}

void MainWidget::enterMode(int newMode)
{
    recoveryMode = quint8(newMode);
    resetWizardState();
    state.doExtra = newMode == 2 ? 1 : 0;
    setTitle(QString::fromUtf8(kModeTexts[newMode - 1].title));
    content->hide();
    // Step 3's file lists need the icons even where the options page never shows.
    if (newMode != 1)
        FileTypeCatalogue::fillIconMap(iconMap);
    showStep(step1Page, &MainWidget::buildStep1Page);
    step1Page->caption->setText(QString::fromUtf8(kModeTexts[newMode - 1].caption));
    showDeviceRowsForMode();
    // Each run starts clean: nothing chosen on Step 1, nothing of the last run on Step 4.
    step1Page->deviceTree->clearSelection();
    step1Page->deviceTree->setCurrentItem(nullptr);
    step1Page->removeImageButton->setEnabled(false);
    step1Page->resumeButton->hide();
    savedScan.reset();
    if (step4Page) {
        step4Page->startRun(state.driveLetter);
        step4Page->restoreDirEdit->clear();
    }
}

// Partition recovery picks a whole disk; the other modes pick a partition.
void MainWidget::showDeviceRowsForMode()
{
    const bool wholeDisk = recoveryMode == 3;
    QTreeWidget* tree = step1Page->deviceTree;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = tree->topLevelItem(i);
        const bool diskRow = row->data(0, Qt::UserRole).toString().isEmpty();
        if (diskRow) {
            row->setHidden(false);
            row->setFlags(wholeDisk ? row->flags() | Qt::ItemIsSelectable : row->flags() & ~Qt::ItemIsSelectable);
        } else {
            row->setHidden(wholeDisk);
        }
    }
}

void MainWidget::setTitle(const QString& title)
{
    titleBar->labelTitle->setText(title);
}

void MainWidget::loadFileTypes(QTreeWidget* tree)
{
    FileTypeCatalogue::addToTree(tree);
    FileTypeCatalogue::fillIconMap(iconMap);
}

// ---- Page handling ----

void MainWidget::showPage(QWidget* page)
{
    page->show();
}

// A later visit only shows the page; nothing on it is rebuilt or refreshed.
void MainWidget::showStep(QWidget* page, void (MainWidget::*build)())
{
    if (page)
        showPage(page);
    else
        (this->*build)();
}

void MainWidget::insertStepPage(StepPage* page, Hover buttons)
{
    mainLayout->insertWidget(kStepPageIndex, page, 1);
    watchHover(page->prevButton, buttons);
    if (page->nextButton)
        watchHover(page->nextButton, buttons);
}

void MainWidget::showMainPage()
{
    content->show();
    setTitle(kMainTitle);
}

void MainWidget::buildStep1Page()
{
    step1Page = new Step1Page(this);
    insertStepPage(step1Page, Hover::StepButton);
    watchHover(step1Page->openImageButton, Hover::StepButton);
    DeviceTreeRows::fill(step1Page->deviceTree, DeviceLayer::instance());
    connect(step1Page->openImageButton, &QPushButton::clicked, this, &MainWidget::openImageButton_clicked);
    connect(step1Page->removeImageButton, &QPushButton::clicked, this, &MainWidget::removeImageButton_clicked);
    connect(step1Page->resumeButton, &QPushButton::clicked, this, &MainWidget::resumeButton_clicked);
    connect(step1Page->deviceTree, &QTreeWidget::itemClicked, this, &MainWidget::partitionClicked);
    connect(step1Page->prevButton, &QPushButton::clicked, this, &MainWidget::prevbtnStep1_clicked);
    connect(step1Page->nextButton, &QPushButton::clicked, this, &MainWidget::nextbtnStep1_clicked);
    step1Page->show();
}

void MainWidget::buildStep2Page()
{
    step2Page = new Step2Page(this);
    insertStepPage(step2Page, Hover::StepButton);
    loadFileTypes(step2Page->treeStep2);
    QTreeWidget* tree = step2Page->treeStep2;
    // Connected after the tree is filled, so filling it runs none of these.
    connect(tree, &QTreeWidget::itemChanged, this, &MainWidget::treeStep2_itemChanged);
    connect(tree, &QTreeWidget::itemClicked, this, &MainWidget::treeStep2_itemClicked);
    connect(tree, &QTreeWidget::itemDoubleClicked, this, &MainWidget::treeStep2_itemDoubleClicked);
    connect(step2Page->scanModeGroup, &QButtonGroup::idClicked, this, &MainWidget::scanModeClicked);
    connect(step2Page->fileTypeGroup, &QButtonGroup::idClicked, this, &MainWidget::fileTypeClicked);
    connect(step2Page->customTypes, &QRadioButton::toggled, this, &MainWidget::fileTypeToggled);
    connect(step2Page->selectAll, &QCheckBox::clicked, this, &MainWidget::selectAllBtn_clicked);
    connect(step2Page->selectNone, &QCheckBox::clicked, this, &MainWidget::selectNoneBtn_clicked);
    connect(step2Page->prevButton, &QPushButton::clicked, this, &MainWidget::prevbtnStep2_clicked);
    connect(step2Page->nextButton, &QPushButton::clicked, this, &MainWidget::nextbtnStep2_clicked);
    step2Page->show();
}

void MainWidget::buildStep3Page()
{
    step3Page = new Step3Page(this);
    browser = new ResultBrowser(step3Page, iconMap, [this](const QString& text) { showMessage(text); }, step3Page);
    insertStepPage(step3Page, Hover::StepButton);
    connect(step3Page->nextButton, &QPushButton::clicked, this, &MainWidget::nextbtnStep3_clicked);
    QTreeView* tree = step3Page->treeStep3;
    connect(tree, &QTreeView::expanded, this, &MainWidget::treeStep3_itemExpanded);
    connect(tree, &QTreeView::collapsed, this, &MainWidget::treeStep3_itemCollapsed);
    connect(step3Page->treeStep3ForList, &QTreeWidget::itemDoubleClicked, this,
            &MainWidget::treeStep3ForList_doubleClicked);
    connect(step3Page->listStep3ForIcon, &QListWidget::itemDoubleClicked, this,
            &MainWidget::listStep3ForIcon_doubleClicked);
    connect(step3Page->displayGroup, &QButtonGroup::idClicked, this, &MainWidget::displayModeChanged);
    connect(step3Page->pauseButton, &MyButton::clicked, this, &MainWidget::pauseButton_clicked);
    connect(step3Page->stopButton, &MyButton::clicked, this, &MainWidget::stopButton_clicked);
    step3Page->show();
}

void MainWidget::buildStep4Page()
{
    step4Page = new Step4Page(this);
    insertStepPage(step4Page, Hover::Hand);
    for (QPushButton* button : {step4Page->returnToMainButton, step4Page->restoreButton, step4Page->browseButton})
        watchHover(button, Hover::Hand);
    connect(step4Page->chooseDir, &QPushButton::clicked, this, &MainWidget::chooseDir_clicked);
    connect(step4Page->restoreButton, &QPushButton::clicked, this, &MainWidget::restoreButtonClicked);
    connect(step4Page->browseButton, &QPushButton::clicked, this, &MainWidget::browseButtonClicked);
    connect(step4Page->prevButton, &QPushButton::clicked, this, &MainWidget::prevbtnStep4_clicked);
    connect(step4Page->returnToMainButton, &QPushButton::clicked, this, &MainWidget::returnToMainButtonClicked);
    step4Page->show();
}

// Shows Step 3 with its Prev leading back by the given slot, and starts the scan.
void MainWidget::enterStep3(void (MainWidget::*prevSlot)())
{
    showStep(step3Page, &MainWidget::buildStep3Page);
    QPushButton* prev = step3Page->prevButton;
    disconnect(prev, &QPushButton::clicked, this, &MainWidget::prevbtnStep3_clicked);
    disconnect(prev, &QPushButton::clicked, this, &MainWidget::prevbtnStep3Type2_clicked);
    connect(prev, &QPushButton::clicked, this, prevSlot);
    state.currentPrevButton = prev;
    state.currentNextButton = step3Page->nextButton;
    state.currentIconList = step3Page->listStep3ForIcon;
    state.currentFileList = step3Page->treeStep3ForList;
    startScan();
}

// ---- Step 1 ----

void MainWidget::prevbtnStep1_clicked()
{
    showMainPage();
    step1Page->hide();
}

void MainWidget::nextbtnStep1_clicked()
{
    const bool chosen = step1Page->deviceTree->currentItem() != nullptr;
    if (recoveryMode == 3) {
        if (!chosen || state.diskNumber == -1) {
            showMessage(tr("请选择磁盘"));
            return;
        }
    } else if (!chosen || state.diskNumber == -1 || state.partitionNumber == -1 || state.driveLetter == '@') {
        // A partition without a letter has no volume to open.
        showMessage(tr("请选择分区"));
        return;
    }
    step1Page->hide();
    if (recoveryMode == 1) {
        showStep(step2Page, &MainWidget::buildStep2Page);
        return;
    }
    enterStep3(&MainWidget::prevbtnStep3Type2_clicked);
}

void MainWidget::partitionClicked(QTreeWidgetItem* item, int)
{
    state.diskNumber = item->data(1, Qt::UserRole).toInt();
    step1Page->removeImageButton->setEnabled(openedImages.contains(state.diskNumber));
    const QString key = item->data(0, Qt::UserRole).toString();
    if (key.isEmpty()) {
        state.partitionNumber = -1;
        state.driveLetter = '@';
        state.diskName = item->text(0);
    } else {
        const QStringList parts = key.split(QLatin1Char('|'));
        state.partitionNumber = parts.value(0).toInt();
        const QString letter = parts.value(1);
        state.driveLetter = letter.isEmpty() ? '@' : letter.at(0).toLatin1();
    }
    qDebug() << "diskNumber" << state.diskNumber << "partitionNumber" << state.partitionNumber << "driveLetter"
             << state.driveLetter;
    offerResume();
}

QString MainWidget::modeName() const
{
    return recoveryMode == 3 ? QStringLiteral("partition") : recoveryMode == 2 ? QStringLiteral("format") : QStringLiteral("file");
}

void MainWidget::offerResume()
{
    const bool wholeDisk = recoveryMode == 3;
    const bool usable = wholeDisk ? state.partitionNumber == -1 : state.driveLetter != '@';
    savedScan = usable ? WizardSaves::find(WizardSaves::openSource(state.diskNumber, wholeDisk ? '@' : state.driveLetter), modeName())
                       : std::nullopt;
    step1Page->resumeButton->setVisible(savedScan.has_value());
}

void MainWidget::resumeButton_clicked()
{
    if (!savedScan)
        return;
    state.fileFilter = savedScan->fileFilter;
    state.doExtra = savedScan->doExtra ? 1 : 0;
    resumeChosen = true;
    step1Page->hide();
    enterStep3(&MainWidget::prevbtnStep3Type2_clicked);
}

void MainWidget::openImageButton_clicked()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("打开磁盘映像…"), QDir::homePath());
    if (!path.isEmpty())
        addDiskImage(path);
}

void MainWidget::addDiskImage(const QString& path)
{
    const QString problem = ImageCheck::problem(path);
    if (!problem.isEmpty()) {
        showMessage(problem);
        return;
    }
    auto* images = dynamic_cast<ImageDeviceLayer*>(&DeviceLayer::instance());
    int error = 0;
    const int disk = images ? DeviceTreeRows::addImage(step1Page->deviceTree, *images, path, &error) : -1;
    if (disk < 0) {
        showMessage(tr("无法打开磁盘映像：%1").arg(QString::fromLocal8Bit(strerror(error))));
        return;
    }
    openedImages.insert(disk);
    showDeviceRowsForMode();
}

// The rows of an image opened here go; the disk list itself keeps it, so
// opening it again brings the rows back.
void MainWidget::removeImageButton_clicked()
{
    QTreeWidgetItem* current = step1Page->deviceTree->currentItem();
    if (!current)
        return;
    const int disk = current->data(1, Qt::UserRole).toInt();
    QTreeWidget* tree = step1Page->deviceTree;
    for (int i = tree->topLevelItemCount() - 1; i >= 0; --i) {
        if (tree->topLevelItem(i)->data(1, Qt::UserRole).toInt() == disk)
            delete tree->takeTopLevelItem(i);
    }
    openedImages.remove(disk);
    state.diskNumber = state.partitionNumber = -1;
    state.driveLetter = '@';
    step1Page->removeImageButton->setEnabled(false);
}

// ---- Step 2 ----

void MainWidget::scanModeClicked(int id)
{
    state.doExtra = id == 1 ? 0 : 1;
}

void MainWidget::fileTypeClicked(int id)
{
    state.fileFilter = id == 3 ? QStringLiteral("*") : QString();
}

void MainWidget::prevbtnStep2_clicked()
{
    step2Page->hide();
    showPage(step1Page);
}

void MainWidget::nextbtnStep2_clicked()
{
    if (state.fileFilter != QLatin1String("*"))
        state.fileFilter = FileTypeChecks::fileFilter(step2Page->treeStep2);
    step2Page->hide();
    enterStep3(&MainWidget::prevbtnStep3_clicked);
}

void MainWidget::fileTypeToggled(bool checked)
{
    QTreeWidget* tree = step2Page->treeStep2;
    if (checked) {
        step2Page->selectAll->setEnabled(true);
        step2Page->selectNone->setEnabled(true);
    } else {
        if (QTreeWidgetItem* current = tree->currentItem())
            FileTypeChecks::checkVisibleFrom(current, Qt::Checked);
        step2Page->selectAll->setChecked(true);
        step2Page->selectAll->setEnabled(false);
        step2Page->selectNone->setEnabled(false);
    }
    tree->setCurrentItem(nullptr);
    tree->collapseAll();
    tree->setEnabled(checked);
}

void MainWidget::selectAllBtn_clicked(bool)
{
    FileTypeChecks::checkWholeTree(step2Page->treeStep2, Qt::Checked);
}

void MainWidget::selectNoneBtn_clicked(bool)
{
    FileTypeChecks::checkWholeTree(step2Page->treeStep2, Qt::Unchecked);
}

void MainWidget::treeStep2_itemChanged(QTreeWidgetItem* item, int column)
{
    FileTypeChecks::treeStep2_itemChanged(item, column);
}

void MainWidget::treeStep2_itemClicked(QTreeWidgetItem*, int) {}
void MainWidget::treeStep2_itemDoubleClicked(QTreeWidgetItem*, int) {}

void MainWidget::treeItem_checkAllChild(QTreeWidgetItem* item, bool checked)
{
    FileTypeChecks::treeItem_checkAllChild(item, checked);
}

void MainWidget::treeItem_checkAllChild_recursion(QTreeWidgetItem* item, bool checked)
{
    FileTypeChecks::treeItem_checkAllChild_recursion(item, checked);
}

void MainWidget::checkSibling(QTreeWidgetItem* item)
{
    FileTypeChecks::checkSibling(item);
}

void MainWidget::treeItem_CheckChildChanged(QTreeWidgetItem* item)
{
    FileTypeChecks::treeItem_CheckChildChanged(item);
}

// ---- Step 3 ----

void MainWidget::startScan()
{
    state.currentPrevButton->setEnabled(false);
    state.currentNextButton->setEnabled(false);
    state.currentFolder = QModelIndex(); // it points into the tree about to go
    // The view on screen decides what the new tree fills.
    state.displayMode = quint8(step3Page->listStep3ForIcon->isVisible() ? 2 : 1);
    browser->setDisplayMode(state.displayMode);
    state.scanRunning = true;
    // Step 3's Prev can lead back here after a scan: each scan starts its own clock.
    state.scanFinished = false;
    state.scanTotal = WizardState().scanTotal;
    state.elapsedSeconds = 0;
    step3Page->pauseButton->toggleFlag = true;
    step3Page->pauseButton->update();
    step3Page->scanProgressBar->setValue(0);
    clock.start();
    showScanFigures();
    step3Page->summaryLabel->clear();
    step3Page->pauseButton->setEnabled(true);
    step3Page->stopButton->setEnabled(true);

    delete scanTimer;
    scanTimer = new QTimer(this);
    connect(scanTimer, &QTimer::timeout, this, &MainWidget::timerTimeout);
    scanTimer->start(kTimerMsecs);

    releaseScan();
    const OpenedSource opened = state.partitionNumber == -1 ? VolumeOpener::openDisk(state.diskNumber)
                                                            : VolumeOpener::openLetter(QChar::fromLatin1(state.driveLetter), state.doExtra != 0);
    scanThread = opened.scanner;
    if (!scanThread) {
        // Nothing runs: the clock stops and Prev leads back to choose again.
        delete scanTimer;
        scanTimer = nullptr;
        state.currentPrevButton->setEnabled(true);
        showMessage(opened.unopenable ? opened.problem : tr("无法识别的文件系统。"));
        return;
    }
    scanRoot = std::make_unique<ResultTree>(opened.rootName.isEmpty() ? state.diskName : opened.rootName, opened.ntfsTree);
    scanThread->rootFolder = scanRoot->root();
    treeModel = new TreeModel(scanRoot->top());
    browser->setModel(treeModel, scanThread);

    scanThread->fileFilter = state.fileFilter;
    scanThread->doExtra = state.doExtra != 0;
    QString why;
    if (std::exchange(resumeChosen, false) && savedScan && !savedScan->applyTo(scanThread, &why))
        qCritical("the saved scan is not resumed: %s", qUtf8Printable(why));
    scanSaver = WizardSaves::saverFor(scanThread, state.diskNumber, modeName());
    step3Page->scanProgressBar->setValue(0);
    connect(scanThread, &PartScan::scanBegin, this, &MainWidget::scanBegin);
    connect(scanThread, &PartScan::scanOne, this, &MainWidget::scanOne);
    connect(scanThread, &PartScan::scanDone, this, &MainWidget::scanDone);
    connect(scanThread, &PartScan::undeleteProgress, this, &MainWidget::undeleteProgress);
    connect(scanThread, &PartScan::undeleteDone, this, &MainWidget::undeleteDone);
    connect(scanThread, &PartScan::diskScanBegin, this, &MainWidget::diskScanBegin);
    connect(scanThread, &PartScan::diskScanEnd, this, &MainWidget::diskScanEnd);
    scanThread->start(QThread::InheritPriority);
}

// Ends the previous scan object, whatever its thread is doing, before its tree
// goes: the view lets go of the model first, and the thread, a scan or a
// restore, is stopped and waited for.
void MainWidget::releaseScan()
{
    browser->setModel(nullptr, nullptr);
    delete treeModel;
    treeModel = nullptr;
    if (scanThread) {
        disconnect(scanThread, nullptr, this, nullptr);
        scanThread->stop();
        scanThread->wait();
        // Signals it sent before it ended are still queued for this window.
        QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
        delete scanThread;
        scanThread = nullptr;
    }
    delete scanSaver; // after its scanner: that thread called it
    scanSaver = nullptr;
    scanRoot.reset();
    restoring = false;
    restoredOnce = false;
}

void MainWidget::scanBegin(int total)
{
    state.scanTotal = total;
}

void MainWidget::scanOne(int done)
{
    const quint64 total = quint64(qMax(state.scanTotal, 0));
    clock.progress(quint64(qMax(done, 0)), total);
    step3Page->scanProgressBar->setValue(ScanClock::percent(quint64(qMax(done, 0)), total));
}

void MainWidget::scanDone(quint64 results, quint64)
{
    QString why;
    if (scanSaver && scanThread && !scanSaver->saveNow(*scanThread, &why))
        qCritical("%s", qUtf8Printable(why));
    state.resultCount = results;
    state.scanFinished = true;
    const bool stopped = scanThread && scanThread->runState == PartScan::Stopped;
    if (!stopped)
        step3Page->scanProgressBar->setValue(100);
    step3Page->nextButton->setEnabled(true);
    step3Page->pauseButton->setEnabled(false);
    step3Page->stopButton->setEnabled(false);
    showScanFigures();
    step3Page->remainingLabel->setText(stopped ? tr("已停止") : QStringLiteral("00:00:00"));
    refreshTree();
    step3Page->summaryLabel->setText(ScanSummary::of(scanRoot ? scanRoot->root() : nullptr).text());
    if (scanThread && scanThread->deviceFailed())
        showMessage(tr("设备读取失败"));
    else
        showMessage(stopped ? tr("已停止") : tr("扫描完成！\n如果您对扫描结果不满意，可以尝试使用另外两种恢复模式。"));
}

void MainWidget::diskScanBegin(int, const QString&) {}
void MainWidget::diskScanEnd() {}

void MainWidget::timerTimeout()
{
    if (state.scanFinished || !state.scanRunning)
        return;
    showScanFigures();
    refreshTree();
}

// The model announces no new folders: the view asks again for the rows of the
// folders it shows, so the tree grows while the scan runs.
void MainWidget::refreshTree()
{
    step3Page->treeStep3->doItemsLayout();
    browser->refresh();
}

void MainWidget::showScanFigures()
{
    state.elapsedSeconds = int(clock.elapsedMsecs() / 1000);
    step3Page->elapsedLabel->setText(ScanClock::durationText(clock.elapsedMsecs()));
    step3Page->remainingLabel->setText(ScanClock::durationText(clock.remainingMsecs()));
    const quint64 found = scanRoot ? scanRoot->files() : 0;
    step3Page->foundLabel->setText(tr("已完成 %1%，已找到 %2 个文件")
                                       .arg(step3Page->scanProgressBar->value())
                                       .arg(found));
}

void MainWidget::pauseButton_clicked()
{
    if (state.scanFinished)
        return;
    state.scanRunning = !state.scanRunning;
    clock.setRunning(state.scanRunning);
    if (scanThread)
        scanThread->setRunning(state.scanRunning);
}

void MainWidget::stopButton_clicked()
{
    if (scanThread)
        scanThread->stop();
}


void MainWidget::prevbtnStep3_clicked()
{
    step3Page->hide();
    showPage(step2Page);
}

void MainWidget::prevbtnStep3Type2_clicked()
{
    step3Page->hide();
    showPage(step1Page);
}


void MainWidget::treeStep3_itemExpanded(const QModelIndex& index)
{
    step3Page->treeStep3->model()->setData(index, true, Qt::DecorationRole);
}

void MainWidget::treeStep3_itemCollapsed(const QModelIndex& index)
{
    step3Page->treeStep3->model()->setData(index, false, Qt::DecorationRole);
}

void MainWidget::displayModeChanged(int id)
{
    state.displayMode = quint8(id);
    const bool list = id == 1;
    step3Page->treeStep3ForList->setVisible(list);
    step3Page->listStep3ForIcon->setVisible(!list);
    browser->setDisplayMode(id);
}

void MainWidget::treeStep3ForList_doubleClicked(QTreeWidgetItem* item, int)
{
    preview(RowRef::of(item), item->text(0));
}

void MainWidget::listStep3ForIcon_doubleClicked(QListWidgetItem* item)
{
    preview(RowRef::of(item), item->text());
}

void MainWidget::preview(const RowRef& row, const QString& name)
{
    FilePreview::open(this, scanThread, row, name, [this](const QString& text) { showMessage(text); });
}

// ---- Step 4 ----

void MainWidget::prevbtnStep4_clicked()
{
    step4Page->hide();
    showPage(step3Page);
}

void MainWidget::returnToMainButtonClicked()
{
    step4Page->hide();
    showMainPage();
}

void MainWidget::nextbtnStep3_clicked()
{
    delete scanTimer;
    scanTimer = nullptr;
    step3Page->hide();
    const SelectionSums sums = SelectionSums::of(scanThread ? scanThread->rootFolder : nullptr, browser->filter());
    state.selectedCount = sums.count;
    state.selectedSize = sums.size;
    if (step4Page)
        showPage(step4Page);
    else
        buildStep4Page();
    if (!restoring && !restoredOnce)
        step4Page->startRun(state.driveLetter);
    step4Page->selectedCount->setText(Step4Page::red(QString::number(sums.count)));
    showSize(step4Page->selectedSize, step4Page->selectedUnit, sums.size);
}

void MainWidget::showSize(QLabel* value, QLabel* unit, quint64 bytes)
{
    value->setText(Step4Page::red(SelectionSums::sizeValue(bytes)));
    unit->setText(SelectionSums::sizeUnit(bytes));
}

void MainWidget::chooseDir_clicked()
{
    // From the folder typed or chosen last, else the user's home.
    const QString typed = QDir::fromNativeSeparators(step4Page->restoreDirEdit->text().trimmed());
    const QString start = !typed.isEmpty() && QFileInfo(typed).isDir() ? typed : QDir::homePath();
    const QString dir = QFileDialog::getExistingDirectory(this, tr("选择恢复文件夹"), start,
                                                          QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (!dir.isEmpty())
        step4Page->restoreDirEdit->setText(QDir::toNativeSeparators(dir));
}

void MainWidget::browseButtonClicked()
{
    const QString dir = step4Page->restoreDirEdit->text();
    if (dir.isEmpty()) {
        showMessage(tr("请选择恢复文件夹"));
        return;
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(QDir::fromNativeSeparators(dir)));
}

void MainWidget::restoreButtonClicked()
{
    const QString dir = QDir::fromNativeSeparators(step4Page->restoreDirEdit->text().trimmed());
    if (dir.isEmpty()) {
        showMessage(tr("请选择恢复文件夹"));
        return;
    }
    if (!scanThread || restoring)
        return;
    // scanDone comes at the very end of run(); the thread may not have left it yet.
    scanThread->wait();
    if (!planRestore(dir))
        return;
    restoring = true;
    restoredOnce = true;
    step4Page->startRun(state.driveLetter);
    scanThread->setRestoreDir(dir);
    restoredCount = 0;
    restoredBytes = 0;
    scanThread->start(QThread::InheritPriority);
}

// The checks before a restore: the folder takes files and has room, and the
// user agrees to what would be overwritten. False when the restore is off.
bool MainWidget::planRestore(const QString& dir)
{
    scanThread->filter = browser->filter();
    restorePlan = std::make_unique<RestorePlan>(RestorePlan::of(scanThread->rootFolder, dir, false, scanThread->filter));
    const QString problem = RestoreTargetCheck::problem(dir, restorePlan->bytes);
    if (!problem.isEmpty()) {
        showMessage(problem);
        return false;
    }
    scanThread->keepBoth = false;
    const int taken = restorePlan->existing();
    if (taken == 0)
        return true;
    const int answer = WizardMessages::ask(this, tr("目标文件夹中已有 %1 个同名文件。是否覆盖？").arg(taken),
                                           {tr("覆盖"), tr("保留两者"), tr("取消")});
    if (answer == 1) {
        scanThread->keepBoth = true;
        restorePlan = std::make_unique<RestorePlan>(RestorePlan::of(scanThread->rootFolder, dir, true, scanThread->filter));
    }
    return answer == 0 || answer == 1;
}

void MainWidget::undeleteProgress(quint64 files, quint64 bytes)
{
    restoredCount += int(files);
    restoredBytes += bytes;
    step4Page->restoredCount->setText(Step4Page::red(QString::number(restoredCount)));
    showSize(step4Page->restoredSize, step4Page->restoredUnit, restoredBytes);
    step4Page->restoreProgressBar->setValue(ScanClock::percent(quint64(restoredCount), state.resultCount));
}

void MainWidget::undeleteDone()
{
    restoring = false;
    step4Page->restoreProgressBar->setValue(100);
    // The restore's own account counts, not what the writer set out to write:
    // every file not written, and every one written with unreadable stretches.
    const QList<RestoredFile> files = scanThread ? scanThread->restoreReport.files() : QList<RestoredFile>();
    QStringList problems;
    const quint64 written = scanThread ? scanThread->restoreReport.written() + scanThread->restoreReport.damaged() : 0;
    const quint64 failed = scanThread ? scanThread->restoreReport.failed() : 0;
    for (const RestoredFile& f : files) {
        if (f.outcome == RestoredFile::NotWritten) {
            problems.append(tr("%1（未写入：%2）").arg(f.path, whyNotWritten(f.failure)));
            continue;
        }
        if (f.outcome == RestoredFile::Damaged)
            problems.append(tr("%1（%2 字节无法读取，已用零填充）").arg(f.path).arg(f.badBytes()));
    }
    step4Page->restoredCount->setText(Step4Page::red(QString::number(written)));
    if (problems.isEmpty()) {
        showMessage(tr("恢复完成！\n请点击\"浏览已恢复的文件\"查看。"));
        return;
    }
    WizardMessages::inform(this, tr("已恢复 %1 个，%2 个失败").arg(written).arg(failed),
                           tr("未能完整写入的文件：\n") + problems.join(QLatin1Char('\n')));
}
