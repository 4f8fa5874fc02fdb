#include "wizard/Step3Page.h"

#include <QHeaderView>
#include <QListWidget>
#include <QTreeView>
#include <QTreeWidget>

Step3Page::Step3Page(QWidget* parent) : StepPage(parent, QRect(630, 502, 70, 25), QRect(712, 502, 70, 25))
{
    treeStep3 = new QTreeView(box);
    treeStep3->setObjectName(QStringLiteral("treeStep3"));
    treeStep3->setGeometry(54, 76, 235, 392);
    treeStep3->setUniformRowHeights(true);
    treeStep3->setHeaderHidden(true);

    treeStep3ForList = new QTreeWidget(box);
    treeStep3ForList->setObjectName(QStringLiteral("treeStep3ForList"));
    treeStep3ForList->setGeometry(293, 97, 547, 372);
    treeStep3ForList->setColumnCount(3);
    treeStep3ForList->setHeaderHidden(true);
    treeStep3ForList->setRootIsDecorated(false);

    listStep3ForIcon = new QListWidget(box);
    listStep3ForIcon->setObjectName(QStringLiteral("listStep3ForIcon"));
    listStep3ForIcon->setGeometry(293, 76, 547, 393);
    listStep3ForIcon->setViewMode(QListView::IconMode);
    listStep3ForIcon->hide();
}
