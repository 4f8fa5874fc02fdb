#include "wizard/FileListRows.h"

#include <QHeaderView>
#include "preview/PreviewDialog.h"
#include "results/Fat32File.h"
#include "results/FolderNode.h"
#include "results/ResultTree.h"
#include "wizard/RowRef.h"

#include <QDateTime>
#include <QPixmap>
#include "results/TreeLock.h"
#include <QTreeWidget>

namespace {
constexpr int kPointSize = 9;
constexpr int kIconSide = 16;
constexpr int kSortRole = Qt::UserRole + 8; // past RowRef's roles
// The zone the engine reads FAT stamps in (see Fat32DirEntry::stampMsecs).
constexpr int kFatZoneSeconds = 8 * 3600;
constexpr double kKi = 1024.0;
const QString kNullIcon = QStringLiteral(":./null.ico");
const QString kCarvedFolder = QStringLiteral("额外文件");

// Sorts a column by the value stored under kSortRole, so sizes and times order
// as numbers and the unknown time comes last.
class FileRow : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem& other) const override
    {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        const QVariant a = data(column, kSortRole);
        const QVariant b = other.data(column, kSortRole);
        if (a.isValid() && b.isValid())
            return a.toULongLong() < b.toULongLong();
        return text(column).compare(other.text(column), Qt::CaseInsensitive) < 0;
    }
};
} // namespace

void FileListRows::fill(QTreeWidget* list, FolderNode* folder, const QMap<QString, QString>& iconMap,
                        const ResultFilter& filter)
{
    list->setSortingEnabled(false);
    list->clear();
    const bool carved = isCarvedFolder(folder);
    for (FoundFile* file : filesOf(folder, filter)) {
        auto* row = new FileRow(QStringList{file->name(), timeText(file->modifiedMsecs, dynamic_cast<const Fat32File*>(file) != nullptr),
                                            sizeText(file->size), statusText(carved, *file)});
        for (int column = 0; column < ColumnCount; ++column) {
            QFont font = row->font(column);
            font.setPointSize(kPointSize);
            row->setFont(column, font);
        }
        row->setData(TimeColumn, kSortRole, file->modifiedMsecs ? file->modifiedMsecs : ~quint64(0));
        row->setData(SizeColumn, kSortRole, file->size);
        row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setToolTip(0, file->name());
        QPixmap icon(iconPath(file->name(), iconMap));
        if (icon.isNull())
            icon = QPixmap(kNullIcon);
        row->setIcon(0, icon.scaled(kIconSide, kIconSide, Qt::KeepAspectRatio, Qt::FastTransformation));
        RowRef{file, folder, folder->partIndex}.storeIn(row);
        row->setCheckState(0, file->selected ? Qt::Checked : Qt::Unchecked);
        list->addTopLevelItem(row);
    }
    // A list the user has not sorted yet shows names from A to Z (a header's
    // own default is descending).
    if (!list->header()->isSortIndicatorShown())
        list->header()->setSortIndicator(NameColumn, Qt::AscendingOrder);
    list->setSortingEnabled(true);
}

QString FileListRows::timeText(quint64 modifiedMsecs, bool fatTime)
{
    if (modifiedMsecs == 0)
        return QObject::tr("未知时间");
    const QDateTime when = fatTime
        ? QDateTime::fromMSecsSinceEpoch(qint64(modifiedMsecs), Qt::OffsetFromUTC, kFatZoneSeconds)
        : QDateTime::fromMSecsSinceEpoch(qint64(modifiedMsecs));
    return when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString FileListRows::sizeText(quint64 bytes)
{
    if (bytes < quint64(kKi))
        return QStringLiteral("%1 B").arg(bytes);
    const char* const units[] = {"KB", "MB", "GB", "TB"};
    double value = double(bytes) / kKi;
    int unit = 0;
    while (value >= kKi && unit < 3) {
        value /= kKi;
        ++unit;
    }
    return QStringLiteral("%1 %2").arg(QString::number(value, 'f', 1), QLatin1String(units[unit]));
}

QString FileListRows::iconPath(const QString& fileName, const QMap<QString, QString>& iconMap)
{
    const QString key = QLatin1Char('.') + PreviewDialog::extensionOf(fileName);
    return iconMap.value(key, iconMap.value(key.toLower(), kNullIcon));
}

bool FileListRows::isCarvedFolder(const FolderNode* folder)
{
    TreeLock::Read lock(ResultTree::lockOf(folder));
    for (const FolderNode* f = folder; f; f = f->parent) {
        if (f->name == kCarvedFolder)
            return true;
    }
    return false;
}

QString FileListRows::statusText(bool carved, const FoundFile& file)
{
    if (!carved)
        return file.nameOnly ? QObject::tr("已删除（仅文件名）") : QObject::tr("已删除");
    return file.cut ? QObject::tr("碎片恢复（不完整）") : QObject::tr("碎片恢复");
}

QList<FoundFile*> FileListRows::filesOf(FolderNode* folder, const ResultFilter& filter)
{
    TreeLock::Read lock(ResultTree::lockOf(folder));
    if (filter.isOpen())
        return folder->files;
    QList<FoundFile*> shown;
    for (FoundFile* file : folder->files) {
        if (filter.matches(*file))
            shown.append(file);
    }
    return shown;
}
