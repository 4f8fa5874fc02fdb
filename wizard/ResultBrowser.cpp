#include "wizard/ResultBrowser.h"
#include "results/FolderNode.h"
#include "results/FoundFile.h"
#include "results/TreeModel.h"
#include "wizard/FileListRows.h"
#include "wizard/FilterBar.h"
#include "wizard/FoundFileContent.h"
#include "preview/PreviewPane.h"
#include "wizard/IconListRows.h"
#include "wizard/RowRef.h"
#include "wizard/Step3Page.h"

#include <QItemSelectionModel>
#include <QListWidget>
#include <QTreeView>
#include <QTreeWidget>

namespace {
// Files up to this size are read for the pane as the highlight moves; larger
// ones wait for a double click.
constexpr quint64 kPaneReadLimit = 16 * 1024 * 1024;
} // namespace

ResultBrowser::ResultBrowser(Step3Page* page, const QMap<QString, QString>& iconMap, Notify notify, QObject* parent)
    : QObject(parent), page(page), icons(iconMap), notify(std::move(notify))
{
    // A click on a folder's check box makes it the current folder too.
    connect(page->treeStep3, &QTreeView::clicked, this,
            [this](const QModelIndex& index) { this->page->treeStep3->setCurrentIndex(index); });
    connect(page->treeStep3ForList, &QTreeWidget::itemChanged, this, &ResultBrowser::fileRowChanged);
    connect(page->listStep3ForIcon, &QListWidget::itemChanged, this, &ResultBrowser::iconChanged);
    // The arrow keys move through the files; the pane follows.
    connect(page->treeStep3ForList, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        previewRow(item ? RowRef::of(item) : RowRef(), item ? item->text(0) : QString());
    });
    connect(page->listStep3ForIcon, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        previewRow(item ? RowRef::of(item) : RowRef(), item ? item->text() : QString());
    });
    connect(page->filterBar, &FilterBar::filterChanged, this, [this] {
        if (model)
            model->setFilter(this->page->filterBar->filter());
        fill();
    });
}

void ResultBrowser::setModel(TreeModel* newModel, PartScan* newScanner)
{
    model = newModel;
    scanner = newScanner;
    page->treeStep3ForList->clear();
    page->listStep3ForIcon->clear();
    page->treeStep3->setModel(model);
    page->filterBar->clear();
    if (!model)
        return;
    connect(page->treeStep3->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { currentChanged(current); });
    connect(model, &QAbstractItemModel::dataChanged, this, &ResultBrowser::syncTicks);
    page->treeStep3->setCurrentIndex(model->index(0, 0));
}

void ResultBrowser::setDisplayMode(int newMode)
{
    mode = newMode;
    fill();
}

ResultFilter ResultBrowser::filter() const
{
    return model ? model->filter() : ResultFilter();
}

FolderNode* ResultBrowser::currentFolder() const
{
    const QModelIndex current = model ? page->treeStep3->currentIndex() : QModelIndex();
    return current.isValid() ? static_cast<FolderNode*>(current.internalPointer()) : nullptr;
}

void ResultBrowser::refresh()
{
    FolderNode* folder = currentFolder();
    if (!folder)
        return;
    const int shown = mode == 1 ? page->treeStep3ForList->topLevelItemCount() : page->listStep3ForIcon->count();
    if (shown != FileListRows::filesOf(folder, filter()).size())
        fill();
}

void ResultBrowser::currentChanged(const QModelIndex&)
{
    fill();
}

void ResultBrowser::fill()
{
    filling = true;
    FolderNode* folder = currentFolder();
    page->treeStep3ForList->clear();
    page->listStep3ForIcon->clear();
    page->previewPane->clear();
    if (folder && mode == 1)
        FileListRows::fill(page->treeStep3ForList, folder, icons, filter());
    else if (folder)
        IconListRows::fill(page->listStep3ForIcon, folder, scanner, notify, filter());
    filling = false;
}

void ResultBrowser::previewRow(const RowRef& row, const QString& name)
{
    if (!scanner || !row.file || !row.folder) {
        page->previewPane->clear();
        return;
    }
    const quint64 length = FoundFileContent::bufferLength(scanner, row.folder, row.file);
    const QByteArray content = length <= kPaneReadLimit
        ? FoundFileContent::read(scanner, row.folder, row.file, length).left(qsizetype(qMin(row.file->size, length)))
        : QByteArray();
    page->previewPane->showFile(name, content, row.file->size);
}

void ResultBrowser::fileRowChanged(QTreeWidgetItem* item, int column)
{
    if (column != 0 || filling)
        return;
    const RowRef row = RowRef::of(item);
    tick(row.folder, row.file, item->checkState(0) == Qt::Checked);
}

void ResultBrowser::iconChanged(QListWidgetItem* item)
{
    if (filling)
        return;
    const RowRef row = RowRef::of(item);
    tick(row.folder, row.file, item->checkState() == Qt::Checked);
}

void ResultBrowser::tick(FolderNode* folder, FoundFile* file, bool selected)
{
    if (model && folder && file && file->selected != selected)
        model->setFileSelected(folder, file, selected);
}

// A folder's check box changed the ticks of the files shown.
void ResultBrowser::syncTicks()
{
    filling = true;
    for (int i = 0; i < page->treeStep3ForList->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = page->treeStep3ForList->topLevelItem(i);
        if (const FoundFile* file = RowRef::of(item).file)
            item->setCheckState(0, file->selected ? Qt::Checked : Qt::Unchecked);
    }
    for (int i = 0; i < page->listStep3ForIcon->count(); ++i) {
        QListWidgetItem* item = page->listStep3ForIcon->item(i);
        if (const FoundFile* file = RowRef::of(item).file)
            item->setCheckState(file->selected ? Qt::Checked : Qt::Unchecked);
    }
    filling = false;
}
