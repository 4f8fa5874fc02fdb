#include "wizard/Step2Page.h"

#include <QTreeWidget>

Step2Page::Step2Page(QWidget* parent) : StepPage(parent, QRect(590, 502, 70, 25), QRect(672, 502, 70, 25))
{
    treeStep2 = new QTreeWidget(box);
    treeStep2->setObjectName(QStringLiteral("treeStep2"));
    treeStep2->setGeometry(136, 226, 607, 268);
    treeStep2->setColumnCount(3);
    treeStep2->setColumnWidth(0, 330);
    treeStep2->setHeaderLabels({tr("描述"), tr("扩展名"), tr("最大尺寸（MB）")});
}
