#include "wizard/Step3Page.h"
#include "app/MyButton.h"
#include "preview/PreviewPane.h"
#include "wizard/FileListRows.h"
#include "wizard/FilterBar.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QTreeView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
constexpr int kPointSize = 9;
constexpr int kCell = 160;
constexpr int kIconSide = 120;
constexpr int kControlSide = 16;
constexpr int kTreeWidth = 235;
constexpr int kListWidth = 380;
constexpr int kPreviewWidth = 200;
} // namespace

Step3Page::Step3Page(QWidget* parent) : StepPage(parent, true)
{
    QFont font = box->font();
    font.setPointSize(kPointSize);
    box->setFont(font);
    buildScanControls();
    buildDisplaySwitch();
    filterBar = new FilterBar(box);
    content->addWidget(filterBar);
    buildResultViews();
    summaryLabel = new QLabel(box);
    summaryLabel->setWordWrap(true);
    buttonRow->insertWidget(0, summaryLabel, 1);
}

void Step3Page::buildScanControls()
{
    auto* barRow = new QHBoxLayout;
    scanProgressBar = new QProgressBar(box);
    scanProgressBar->setRange(0, 100);
    scanProgressBar->setValue(0);
    scanProgressBar->setTextVisible(false);
    scanProgressBar->setFixedHeight(28);
    barRow->addWidget(scanProgressBar, 1);
    pauseButton = new MyButton(true, box);
    pauseButton->setObjectName(QStringLiteral("pauseButton"));
    pauseButton->setFixedSize(kControlSide, kControlSide);
    stopButton = new MyButton(false, box);
    stopButton->setObjectName(QStringLiteral("stopButton"));
    stopButton->setFixedSize(kControlSide, kControlSide);
    barRow->addWidget(pauseButton);
    barRow->addWidget(stopButton);
    content->addLayout(barRow);

    toolRow = new QHBoxLayout;
    addLabel(tr("已用时间："), toolRow);
    elapsedLabel = addLabel(QStringLiteral("00:00:00"), toolRow);
    toolRow->addSpacing(16);
    addLabel(tr("估计剩余时间："), toolRow);
    remainingLabel = addLabel(QStringLiteral("--:--:--"), toolRow);
    toolRow->addSpacing(16);
    foundLabel = addLabel(QString(), toolRow);
    toolRow->addStretch(1);
    content->addLayout(toolRow);
}

void Step3Page::buildResultViews()
{
    splitter = new QSplitter(Qt::Horizontal, box);
    splitter->setChildrenCollapsible(false);
    treeStep3 = new QTreeView(splitter);
    treeStep3->setObjectName(QStringLiteral("treeStep3"));
    treeStep3->setUniformRowHeights(true);
    treeStep3->setHeaderHidden(true);
    treeStep3->setTextElideMode(Qt::ElideNone);
    treeStep3->setStyleSheet(QStringLiteral("QTreeView#treeStep3{border:1px solid #c5c5c7}"));
    // A long name gets a scroll bar rather than being cut.
    treeStep3->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    treeStep3->header()->setStretchLastSection(false);

    auto* files = new QWidget(splitter);
    auto* stack = new QVBoxLayout(files);
    stack->setContentsMargins(0, 0, 0, 0);
    treeStep3ForList = new QTreeWidget(files);
    treeStep3ForList->setObjectName(QStringLiteral("treeStep3ForList"));
    treeStep3ForList->setColumnCount(FileListRows::ColumnCount);
    treeStep3ForList->setHeaderLabels({tr("文件名"), tr("最后修改时间"), tr("文件大小"), tr("状态")});
    treeStep3ForList->setRootIsDecorated(false);
    treeStep3ForList->setUniformRowHeights(true);
    treeStep3ForList->setSortingEnabled(true);
    treeStep3ForList->sortByColumn(FileListRows::NameColumn, Qt::AscendingOrder);
    treeStep3ForList->header()->setSortIndicatorShown(true);
    treeStep3ForList->setColumnWidth(FileListRows::NameColumn, 230);
    treeStep3ForList->setColumnWidth(FileListRows::TimeColumn, 140);
    treeStep3ForList->setColumnWidth(FileListRows::SizeColumn, 80);
    treeStep3ForList->setStyleSheet(QStringLiteral("QTreeWidget#treeStep3ForList{border:1px solid #c5c5c7}"));
    stack->addWidget(treeStep3ForList);

    listStep3ForIcon = new QListWidget(files);
    listStep3ForIcon->setObjectName(QStringLiteral("listStep3ForIcon"));
    listStep3ForIcon->setViewMode(QListView::IconMode);
    listStep3ForIcon->setResizeMode(QListView::Adjust);
    listStep3ForIcon->setUniformItemSizes(true);
    listStep3ForIcon->setLayoutMode(QListView::Batched);
    listStep3ForIcon->setEditTriggers(QAbstractItemView::NoEditTriggers);
    listStep3ForIcon->setGridSize(QSize(kCell, kCell));
    listStep3ForIcon->setIconSize(QSize(kIconSide, kIconSide));
    listStep3ForIcon->setSortingEnabled(false);
    listStep3ForIcon->setStyleSheet(QStringLiteral("QListWidget#listStep3ForIcon{border:1px solid #c5c5c7}"));
    listStep3ForIcon->hide();
    stack->addWidget(listStep3ForIcon);

    previewPane = new PreviewPane(splitter);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setStretchFactor(2, 1);
    splitter->setSizes({kTreeWidth, kListWidth, kPreviewWidth});
    content->addWidget(splitter, 1);
}

void Step3Page::buildDisplaySwitch()
{
    addLabel(tr("显示方式："), toolRow);
    displayGroup = new QButtonGroup(this);
    const char* const pictures[] = {":./list.png", ":./showIcon.png"};
    for (int id = 1; id <= 2; ++id) {
        auto* button = new QPushButton(box);
        button->setFlat(true);
        button->setFixedSize(25, 25);
        button->setIcon(QIcon(QString::fromLatin1(pictures[id - 1])));
        displayGroup->addButton(button, id);
        toolRow->addWidget(button);
    }
    addLabel(tr("（双击文件即可预览）"), toolRow);
}

QLabel* Step3Page::addLabel(const QString& text, QHBoxLayout* row)
{
    auto* label = new QLabel(text, box);
    row->addWidget(label);
    return label;
}
