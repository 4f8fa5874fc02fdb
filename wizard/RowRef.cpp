#include "wizard/RowRef.h"
#include "results/FolderNode.h"

#include <QListWidgetItem>
#include <QTreeWidgetItem>

namespace {
QVariant pointerValue(const void* pointer)
{
    return QVariant::fromValue(quint64(reinterpret_cast<quintptr>(pointer)));
}

template <typename T>
T* pointerOf(const QVariant& value)
{
    return reinterpret_cast<T*>(quintptr(value.toULongLong()));
}
} // namespace

void RowRef::storeIn(QTreeWidgetItem* item) const
{
    item->setData(0, FileRole, pointerValue(file));
    item->setData(0, FolderRole, pointerValue(folder));
    item->setData(0, PartRole, partIndex);
}

void RowRef::storeIn(QListWidgetItem* item) const
{
    item->setData(FileRole, pointerValue(file));
    item->setData(FolderRole, pointerValue(folder));
    item->setData(PartRole, partIndex);
}

RowRef RowRef::of(const QTreeWidgetItem* item)
{
    return {pointerOf<FoundFile>(item->data(0, FileRole)), pointerOf<FolderNode>(item->data(0, FolderRole)),
            item->data(0, PartRole).toInt()};
}

RowRef RowRef::of(const QListWidgetItem* item)
{
    return {pointerOf<FoundFile>(item->data(FileRole)), pointerOf<FolderNode>(item->data(FolderRole)),
            item->data(PartRole).toInt()};
}
