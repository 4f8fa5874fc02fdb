#include "results/TreeModel.h"
#include "app/Resources.h"
#include "results/CheckStates.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"

#include "results/TreeLock.h"

TreeModel::TreeModel(FolderNode* top, QObject* parent)
    : QAbstractItemModel(parent), top(top)
{
    Resources::load();
    closedIcon = QIcon(QStringLiteral(":./folder_closed.ico"));
    openIcon = QIcon(QStringLiteral(":./folder_open.ico"));
    qRegisterMetaType<FoundFileList>("FoundFileList");
}

FolderNode* TreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<FolderNode*>(index.internalPointer()) : top;
}

// The row of a folder is its place among its parent's children; the visible
// root and anything not found give an invalid index.
QModelIndex TreeModel::indexOf(FolderNode* node) const
{
    if (!node || node == top || !node->parent)
        return {};
    TreeLock::Read lock(ResultTree::lockOf(node));
    const qsizetype row = node->parent->children.indexOf(node);
    return row < 0 ? QModelIndex() : createIndex(int(row), 0, node);
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    FolderNode* node = nodeOf(parent);
    TreeLock::Read lock(ResultTree::lockOf(node));
    FolderNode* child = row < node->children.size() ? node->children.at(row) : nullptr;
    return child ? createIndex(row, column, child) : QModelIndex();
}

QModelIndex TreeModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return {};
    FolderNode* p = nodeOf(child)->parent;
    if (!p || p == top)
        return {};
    return indexOf(p);
}

int TreeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return 0;
    FolderNode* node = nodeOf(parent);
    TreeLock::Read lock(ResultTree::lockOf(node));
    return int(node->children.size());
}

int TreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

QVariant TreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    FolderNode* node = nodeOf(index);
    switch (role) {
    case Qt::DisplayRole: {
        TreeLock::Read lock(ResultTree::lockOf(node));
        return QStringLiteral("%1 (%2)").arg(node->name).arg(shownCount(node));
    }
    case Qt::DecorationRole:
        return node->expanded ? openIcon : closedIcon;
    case Qt::CheckStateRole:
        return node->checkState;
    case FilesRole: {
        // A copy taken under the lock; the scan's next append detaches from it.
        TreeLock::Read lock(ResultTree::lockOf(node));
        return QVariant::fromValue(FoundFileList(node->files));
    }
    default:
        return {};
    }
}

bool TreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid())
        return false;
    FolderNode* node = nodeOf(index);
    if (role == Qt::DecorationRole) {
        node->expanded = value.toBool();
    } else if (role == Qt::CheckStateRole) {
        CheckStates::set(node, value.toInt(), [this](FolderNode* changed) { repaint(changed); });
    }
    return true;
}

Qt::ItemFlags TreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled | Qt::ItemIsAutoTristate;
}

void TreeModel::setFileSelected(FolderNode* folder, FoundFile* file, bool selected)
{
    CheckStates::setFile(folder, file, selected, [this](FolderNode* changed) { repaint(changed); });
}

void TreeModel::setFilter(const ResultFilter& newFilter)
{
    // Every count may change; the rows stay.
    emit layoutAboutToBeChanged();
    shown = newFilter;
    emit layoutChanged();
}

// Under the read lock.
int TreeModel::shownCount(const FolderNode* node) const
{
    if (shown.isOpen())
        return node->directCount();
    int count = int(node->children.size());
    for (const FoundFile* file : node->files)
        count += shown.matches(*file) ? 1 : 0;
    return count;
}

void TreeModel::repaint(FolderNode* changed)
{
    const QModelIndex at = indexOf(changed);
    if (at.isValid())
        emit dataChanged(at, at);
}
