#include "wizard/FileTypeChecks.h"

#include <QTreeWidget>

void FileTypeChecks::treeStep2_itemChanged(QTreeWidgetItem* item, int)
{
    const Qt::CheckState state = item->checkState(0);
    if (item->childCount() > 0 && state != Qt::PartiallyChecked)
        treeItem_checkAllChild(item, state == Qt::Checked);
    treeItem_CheckChildChanged(item);
}

void FileTypeChecks::treeItem_checkAllChild(QTreeWidgetItem* item, bool checked)
{
    treeItem_checkAllChild_recursion(item, checked);
}

void FileTypeChecks::treeItem_checkAllChild_recursion(QTreeWidgetItem* item, bool checked)
{
    for (int i = 0; i < item->childCount(); ++i)
        treeItem_checkAllChild_recursion(item->child(i), checked);
    item->setCheckState(0, checked ? Qt::Checked : Qt::Unchecked);
}

Qt::CheckState FileTypeChecks::checkSibling(QTreeWidgetItem* item)
{
    QTreeWidgetItem* parent = item->parent();
    if (!parent)
        return item->checkState(0);
    int checked = 0;
    int unchecked = 0;
    for (int i = 0; i < parent->childCount(); ++i) {
        const Qt::CheckState state = parent->child(i)->checkState(0);
        if (state == Qt::PartiallyChecked)
            return Qt::PartiallyChecked;
        if (state == Qt::Checked)
            ++checked;
        else
            ++unchecked;
        if (checked > 0 && unchecked > 0)
            return Qt::PartiallyChecked;
    }
    return unchecked == 0 ? Qt::Checked : Qt::Unchecked;
}

void FileTypeChecks::treeItem_CheckChildChanged(QTreeWidgetItem* item)
{
    Qt::CheckState state = checkSibling(item);
    QTreeWidgetItem* parent = item->parent();
    while (parent) {
        if (state != Qt::PartiallyChecked)
            parent->setCheckState(0, state == Qt::Checked ? Qt::Checked : Qt::Unchecked);
        else if (parent->childCount() > 0)
            parent->setCheckState(0, Qt::PartiallyChecked);
        state = checkSibling(parent);
        parent = parent->parent();
    }
}

void FileTypeChecks::checkVisibleFrom(QTreeWidgetItem* start, Qt::CheckState state)
{
    QTreeWidget* tree = start->treeWidget();
    for (QTreeWidgetItem* item = start; item; item = tree->itemAbove(item))
        item->setCheckState(0, state);
    for (QTreeWidgetItem* item = start; item; item = tree->itemBelow(item))
        item->setCheckState(0, state);
}

void FileTypeChecks::checkWholeTree(QTreeWidget* tree, Qt::CheckState state)
{
    QTreeWidgetItem* start = tree->currentItem() ? tree->currentItem() : tree->topLevelItem(0);
    if (start)
        checkVisibleFrom(start, state);
}

QString FileTypeChecks::fileFilter(QTreeWidget* tree)
{
    QString filter;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* category = tree->topLevelItem(i);
        for (int j = 0; j < category->childCount(); ++j) {
            if (category->child(j)->checkState(0) != Qt::Checked)
                continue;
            if (!filter.isEmpty())
                filter += QLatin1Char(';');
            filter += category->child(j)->text(1);
        }
    }
    return filter;
}
