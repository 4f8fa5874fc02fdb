#pragma once
#include "results/FoundFile.h"
#include "results/ResultFilter.h"

#include <QAbstractItemModel>
#include <QIcon>
#include <QList>

struct FolderNode;

// The value of role 32: the records that lie directly in a folder.
using FoundFileList = QList<FoundFile*>;
Q_DECLARE_METATYPE(FoundFileList)

// The folders of a result tree for treeStep3; files are not rows. The model
// never announces new rows: the scan appends on its own thread and the view
// picks new folders up when it lays a folder out again. Every walk of
// `children` or `files` holds its ResultTree's lock for reading.
class TreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    static constexpr int FilesRole = Qt::UserRole;

    explicit TreeModel(FolderNode* top, QObject* parent = nullptr);

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // One file's tick, from a row of the file lists; repaints the folders it changes.
    void setFileSelected(FolderNode* folder, FoundFile* file, bool selected);
    // The files the views show; a folder's count is of those and its folders.
    void setFilter(const ResultFilter& newFilter);
    const ResultFilter& filter() const { return shown; }

private:
    void repaint(FolderNode* changed);
    int shownCount(const FolderNode* node) const;
    FolderNode* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOf(FolderNode* node) const;

    FolderNode* top;
    ResultFilter shown;
    QIcon closedIcon;
    QIcon openIcon;
};
