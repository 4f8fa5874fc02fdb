#include "wizard/Step2Page.h"

#include <QButtonGroup>
#include <QFrame>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QRadioButton>
#include <QTreeWidget>

namespace {
constexpr int kTextPointSize = 9;
constexpr int kHeadingPointSize = 10;
constexpr int kIndent = 8; // options sit a little right of their heading

QFont pointFont(const QWidget* w, int points, bool bold)
{
    QFont font = w->font();
    font.setPointSize(points);
    font.setBold(bold);
    return font;
}
} // namespace

Step2Page::Step2Page(QWidget* parent) : StepPage(parent, true)
{
    addHeading(tr("1. 选择扫描模式"));
    quickScan = addRadio(tr("快速扫描（1-10分钟）"));
    deepScan = addRadio(tr("深度扫描（2小时以上，扫描更彻底）"));
    auto* separator = new QFrame(box);
    separator->setFrameShape(QFrame::HLine);
    separator->setStyleSheet(QStringLiteral("color:#bfbec1"));
    content->addWidget(separator);

    addHeading(tr("2. 选择文件类型"));
    defaultTypes = addRadio(tr("默认设置（如果您不了解文件类型，请选择默认设置。）"));
    customTypes = addRadio(tr("自定义设置（您可以手动选择需要恢复的文件类型。）"));
    auto* hint = new QLabel(tr("请勾选要恢复的文件类型："), box);
    hint->setFont(pointFont(hint, kTextPointSize, false));
    selectAll = addCheckBox(tr("全选"));
    selectNone = addCheckBox(tr("全不选"));
    auto* hintRow = new QHBoxLayout;
    hintRow->setContentsMargins(kIndent, 0, 0, 0);
    hintRow->addWidget(hint);
    hintRow->addWidget(selectAll);
    hintRow->addWidget(selectNone);
    hintRow->addStretch(1);
    content->addLayout(hintRow);

    scanModeGroup = new QButtonGroup(this);
    scanModeGroup->addButton(quickScan, 1);
    scanModeGroup->addButton(deepScan, 2);
    fileTypeGroup = new QButtonGroup(this);
    fileTypeGroup->addButton(defaultTypes, 3);
    fileTypeGroup->addButton(customTypes, 4);
    // Exclusive: the two boxes act as a pair of radio buttons.
    selectionGroup = new QButtonGroup(this);
    selectionGroup->addButton(selectAll, 1);
    selectionGroup->addButton(selectNone, 2);
    // Checked only now: before the groups, all radios of the box exclude each other.
    quickScan->setChecked(true);
    defaultTypes->setChecked(true);
    selectAll->setChecked(true);

    treeStep2 = new QTreeWidget(box);
    treeStep2->setObjectName(QStringLiteral("treeStep2"));
    treeStep2->setStyleSheet(QStringLiteral("QTreeWidget#treeStep2{border:1px solid #797979;}"));
    treeStep2->setFont(pointFont(treeStep2, kTextPointSize, false));
    treeStep2->header()->setFont(treeStep2->font());
    treeStep2->setColumnCount(3);
    treeStep2->setHeaderLabels({tr("描述"), tr("扩展名"), tr("最大尺寸（MB）")});
    treeStep2->setSelectionMode(QAbstractItemView::SingleSelection);
    treeStep2->setColumnWidth(0, 333);
    treeStep2->setColumnWidth(1, 117);
    treeStep2->setEnabled(false);
    content->addWidget(treeStep2, 1);
}

QLabel* Step2Page::addHeading(const QString& text)
{
    auto* label = new QLabel(text, box);
    label->setFont(pointFont(label, kHeadingPointSize, true));
    content->addWidget(label);
    return label;
}

QRadioButton* Step2Page::addRadio(const QString& text)
{
    auto* radio = new QRadioButton(text, box);
    radio->setFont(pointFont(radio, kTextPointSize, true));
    auto* row = new QHBoxLayout;
    row->setContentsMargins(kIndent, 0, 0, 0);
    row->addWidget(radio);
    content->addLayout(row);
    return radio;
}

QCheckBox* Step2Page::addCheckBox(const QString& text)
{
    auto* check = new QCheckBox(text, box);
    check->setFont(pointFont(check, kTextPointSize, false));
    check->setEnabled(false);
    return check;
}
