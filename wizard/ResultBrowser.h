#pragma once
#include "results/ResultFilter.h"

#include <QMap>
#include <QModelIndex>
#include <QObject>
#include <functional>

class PartScan;
class QListWidgetItem;
class QTreeWidgetItem;
class Step3Page;
struct RowRef;
class TreeModel;
struct FolderNode;
struct FoundFile;

// The result half of Step 3: the folder tree, and beside it the files of the
// current folder as a list or as thumbnails. The current folder is the tree's
// current index, however it got there (a click, a check box, the arrow keys),
// and the views always show it. A tick on a file row is the file's own tick.
class ResultBrowser : public QObject {
    Q_OBJECT
public:
    using Notify = std::function<void(const QString&)>;

    ResultBrowser(Step3Page* page, const QMap<QString, QString>& iconMap, Notify notify, QObject* parent);

    // A new scan's tree; null to let go of the old one. Shows the visible root.
    void setModel(TreeModel* model, PartScan* scanner);
    // 1 file list, 2 thumbnails.
    void setDisplayMode(int mode);
    int displayMode() const { return mode; }
    FolderNode* currentFolder() const;
    // What the filters of the page let through; the restore keeps to it too.
    ResultFilter filter() const;
    // Shows the current folder's files again, after the scan added some.
    void refresh();

private:
    void currentChanged(const QModelIndex& current);
    void fileRowChanged(QTreeWidgetItem* item, int column);
    void iconChanged(QListWidgetItem* item);
    void fill();
    void tick(FolderNode* folder, FoundFile* file, bool selected);
    void syncTicks();
    void previewRow(const RowRef& row, const QString& name);

    Step3Page* page;
    const QMap<QString, QString>& icons;
    Notify notify;
    TreeModel* model = nullptr;
    PartScan* scanner = nullptr;
    int mode = 1;
    bool filling = false;
};
