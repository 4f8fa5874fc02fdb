#include "wizard/Step3Page.h"
#include "app/MyButton.h"

#include <QButtonGroup>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QTreeView>
#include <QTreeWidget>

namespace {
constexpr int kPointSize = 9;
constexpr int kCell = 160;
constexpr int kIconSide = 120;

const char* const kHeaderButtonStyle =
    "QPushButton{border:1px solid rgb(124, 124, 124);border-radius:2px;"
    "background:qconicalgradient(cx:0.5, cy:0.5, angle:0, stop:0 #f4f4f4, stop:1 #dcdcdc);}"
    "QPushButton:hover{background:qconicalgradient(cx:0.5, cy:0.5, angle:0, stop:0 #e7f3fd, stop:1 #c4e2fb);}"
    "QPushButton:pressed{background:qconicalgradient(cx:0.5, cy:0.5, angle:0, stop:0 #c4e2fb, stop:1 #8cc5f5);}";
} // namespace

Step3Page::Step3Page(QWidget* parent) : StepPage(parent, QRect(630, 502, 70, 25), QRect(712, 502, 70, 25))
{
    QFont font = box->font();
    font.setPointSize(kPointSize);
    box->setFont(font);
    buildScanControls();
    buildResultViews();
    buildListHeader();
    buildDisplaySwitch();
}

void Step3Page::buildScanControls()
{
    scanProgressBar = new QProgressBar(box);
    scanProgressBar->setGeometry(54, 15, 677, 28);
    scanProgressBar->setRange(0, 100);
    scanProgressBar->setValue(0);
    scanProgressBar->setTextVisible(false);
    pauseButton = new MyButton(true, box);
    pauseButton->setObjectName(QStringLiteral("pauseButton"));
    pauseButton->setGeometry(744, 22, 16, 16);
    stopButton = new MyButton(false, box);
    stopButton->setObjectName(QStringLiteral("stopButton"));
    stopButton->setGeometry(775, 22, 16, 16);
    addLabel(tr("已用时间："), 54, 47);
    elapsedLabel = addLabel(QStringLiteral("00:00:00"), 114, 47);
    addLabel(tr("估计剩余时间："), 178, 47);
    remainingLabel = addLabel(QStringLiteral("10:00:00"), 262, 47);
}

void Step3Page::buildResultViews()
{
    treeStep3 = new QTreeView(box);
    treeStep3->setObjectName(QStringLiteral("treeStep3"));
    treeStep3->setGeometry(54, 76, 235, 392);
    treeStep3->setUniformRowHeights(true);
    treeStep3->setHeaderHidden(true);
    treeStep3->setStyleSheet(QStringLiteral("border:1px solid #c5c5c7"));
    // A long name gets a scroll bar rather than being cut.
    treeStep3->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    treeStep3->header()->setStretchLastSection(false);

    treeStep3ForList = new QTreeWidget(box);
    treeStep3ForList->setObjectName(QStringLiteral("treeStep3ForList"));
    treeStep3ForList->setGeometry(293, 97, 547, 372);
    treeStep3ForList->setColumnCount(3);
    treeStep3ForList->setHeaderHidden(true);
    treeStep3ForList->setRootIsDecorated(false);
    treeStep3ForList->setUniformRowHeights(true);
    treeStep3ForList->setColumnWidth(0, 293);
    treeStep3ForList->setColumnWidth(1, 140);
    treeStep3ForList->setColumnWidth(2, 99);
    treeStep3ForList->setStyleSheet(QStringLiteral("border:2px solid #c5c5c7"));

    listStep3ForIcon = new QListWidget(box);
    listStep3ForIcon->setObjectName(QStringLiteral("listStep3ForIcon"));
    listStep3ForIcon->setGeometry(293, 76, 547, 393);
    listStep3ForIcon->setViewMode(QListView::IconMode);
    listStep3ForIcon->setUniformItemSizes(true);
    listStep3ForIcon->setLayoutMode(QListView::Batched);
    listStep3ForIcon->setEditTriggers(QAbstractItemView::NoEditTriggers);
    listStep3ForIcon->setGridSize(QSize(kCell, kCell));
    listStep3ForIcon->setIconSize(QSize(kIconSide, kIconSide));
    listStep3ForIcon->setSortingEnabled(false);
    listStep3ForIcon->setStyleSheet(QStringLiteral("border:2px solid #c5c5c7"));
    listStep3ForIcon->hide();
}

void Step3Page::buildListHeader()
{
    fileNameButton = addHeaderButton(tr("文件名"), QRect(295, 76, 290, 21));
    lastModificationButton = addHeaderButton(tr("最后修改时间"), QRect(586, 76, 140, 21));
    fileSizeButton = addHeaderButton(tr("文件大小"), QRect(727, 76, 112, 21));
}

void Step3Page::buildDisplaySwitch()
{
    addLabel(tr("显示方式："), 586, 47);
    addLabel(tr("（双击文件即可预览）"), 689, 48);
    displayGroup = new QButtonGroup(this);
    const char* const pictures[] = {":./list.png", ":./showIcon.png"};
    for (int id = 1; id <= 2; ++id) {
        auto* button = new QPushButton(box);
        button->setFlat(true);
        button->setGeometry(644 + (id - 1) * 25, 50, 25, 25);
        button->setIcon(QIcon(QString::fromLatin1(pictures[id - 1])));
        displayGroup->addButton(button, id);
    }
}

QLabel* Step3Page::addLabel(const QString& text, int left, int top)
{
    auto* label = new QLabel(text, box);
    label->move(left, top);
    label->adjustSize();
    return label;
}

QPushButton* Step3Page::addHeaderButton(const QString& text, const QRect& place)
{
    auto* button = new QPushButton(text, box);
    button->setGeometry(place);
    button->setStyleSheet(QLatin1String(kHeaderButtonStyle));
    return button;
}
