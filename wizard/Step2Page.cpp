#include "wizard/Step2Page.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QRadioButton>
#include <QTreeWidget>

namespace {
constexpr int kTextPointSize = 9;
constexpr int kHeadingPointSize = 10;

QFont pointFont(const QWidget* w, int points, bool bold)
{
    QFont font = w->font();
    font.setPointSize(points);
    font.setBold(bold);
    return font;
}
} // namespace

Step2Page::Step2Page(QWidget* parent) : StepPage(parent, QRect(590, 502, 70, 25), QRect(672, 502, 70, 25))
{
    addHeading(tr("1. 选择扫描模式"), 18);
    quickScan = addRadio(tr("快速扫描（1-10分钟）"), QRect(135, 43, 300, 25));
    deepScan = addRadio(tr("深度扫描（2小时以上，扫描更彻底）"), QRect(135, 71, 300, 25));
    auto* separator = new QWidget(box);
    separator->setGeometry(135, 110, 614, 2);
    separator->setStyleSheet(QStringLiteral("border:1px solid #bfbec1"));

    addHeading(tr("2. 选择文件类型"), 120);
    defaultTypes = addRadio(tr("默认设置（如果您不了解文件类型，请选择默认设置。）"), QRect(135, 147, 350, 25));
    customTypes = addRadio(tr("自定义设置（您可以手动选择需要恢复的文件类型。）"), QRect(135, 167, 350, 25));
    auto* hint = new QLabel(tr("请勾选要恢复的文件类型："), box);
    hint->setGeometry(135, 205, 152, 20);
    hint->setFont(pointFont(hint, kTextPointSize, false));
    selectAll = addCheckBox(tr("全选"), QRect(335, 205, 52, 20));
    selectNone = addCheckBox(tr("全不选"), QRect(425, 205, 82, 20));

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
    treeStep2->setGeometry(136, 226, 607, 268);
    treeStep2->setStyleSheet(QStringLiteral("border:1px solid #797979;"));
    treeStep2->setFont(pointFont(treeStep2, kTextPointSize, false));
    treeStep2->header()->setFont(treeStep2->font());
    treeStep2->setColumnCount(3);
    treeStep2->setHeaderLabels({tr("描述"), tr("扩展名"), tr("最大尺寸（MB）")});
    treeStep2->setSelectionMode(QAbstractItemView::SingleSelection);
    treeStep2->setColumnWidth(0, 333);
    treeStep2->setColumnWidth(1, 117);
    treeStep2->setEnabled(false);
}

QLabel* Step2Page::addHeading(const QString& text, int top)
{
    auto* label = new QLabel(text, box);
    label->setGeometry(130, top, 115, 20);
    label->setFont(pointFont(label, kHeadingPointSize, true));
    return label;
}

QRadioButton* Step2Page::addRadio(const QString& text, const QRect& place)
{
    auto* radio = new QRadioButton(text, box);
    radio->setGeometry(place);
    radio->setFont(pointFont(radio, kTextPointSize, true));
    return radio;
}

QCheckBox* Step2Page::addCheckBox(const QString& text, const QRect& place)
{
    auto* check = new QCheckBox(text, box);
    check->setGeometry(place);
    check->setFont(pointFont(check, kTextPointSize, false));
    check->setEnabled(false);
    return check;
}
