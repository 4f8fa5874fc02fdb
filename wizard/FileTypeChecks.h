#pragma once
#include <QString>
#include <Qt>

class QTreeWidget;
class QTreeWidgetItem;

// The three-state check logic of the options page's type tree. The items have
// no Qt::ItemIsTristate: these functions keep a category in step with its
// types. They run from the tree's itemChanged and re-enter through it on every
// check state they change; the walk settles because setting a state that is
// already there fires nothing.
class FileTypeChecks {
public:
    // The slot of itemChanged: carries a category's state down, then settles
    // the parents above the item.
    static void treeStep2_itemChanged(QTreeWidgetItem* item, int column);
    static void treeItem_checkAllChild(QTreeWidgetItem* item, bool checked);
    static void treeItem_checkAllChild_recursion(QTreeWidgetItem* item, bool checked);
    // The state the item's parent should take from the item and its siblings.
    static Qt::CheckState checkSibling(QTreeWidgetItem* item);
    static void treeItem_CheckChildChanged(QTreeWidgetItem* item);

    // Sets every visible item from start up to the top, then from start down
    // to the bottom. A collapsed category's types follow through itemChanged.
    static void checkVisibleFrom(QTreeWidgetItem* start, Qt::CheckState state);
    // Select all / select none: from the current item, else the first one.
    static void checkWholeTree(QTreeWidget* tree, Qt::CheckState state);

    // The ticked types' extensions in tree order, joined by ";".
    static QString fileFilter(QTreeWidget* tree);
};
