#include "wizard/FileListRows.h"
#include "preview/PreviewDialog.h"
#include "results/FolderNode.h"
#include "results/ResultTreeLock.h"
#include "wizard/RowRef.h"

#include <QDateTime>
#include <QPixmap>
#include <QReadLocker>
#include <QTreeWidget>

namespace {
constexpr int kPointSize = 9;
constexpr int kIconSide = 16;
const QString kNullIcon = QStringLiteral(":./null.ico");
} // namespace

void FileListRows::fill(QTreeWidget* list, FolderNode* folder, const QMap<QString, QString>& iconMap)
{
    list->clear();
    const auto state = Qt::CheckState(rowCheckState(folder));
    for (FoundFile* file : filesOf(folder)) {
        auto* row = new QTreeWidgetItem({file->name, timeText(file->modifiedMsecs), sizeText(file->size)});
        for (int column = 0; column < 3; ++column) {
            QFont font = row->font(column);
            font.setPointSize(kPointSize);
            row->setFont(column, font);
        }
        row->setToolTip(0, file->name);
        QPixmap icon(iconPath(file->name, iconMap));
        if (icon.isNull())
            icon = QPixmap(kNullIcon);
        row->setIcon(0, icon.scaled(kIconSide, kIconSide, Qt::KeepAspectRatio, Qt::FastTransformation));
        RowRef{file, folder, folder->partIndex}.storeIn(row);
        row->setCheckState(0, state);
        list->addTopLevelItem(row);
    }
}

QString FileListRows::timeText(quint64 modifiedMsecs)
{
    if (modifiedMsecs == 0)
        return QObject::tr("未知时间");
    return QDateTime::fromMSecsSinceEpoch(qint64(modifiedMsecs)).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString FileListRows::sizeText(quint64 bytes)
{
    return QStringLiteral("%1 KB").arg(QString::number(double(bytes) / 1024, 'f', 1), 10, QLatin1Char(' '));
}

QString FileListRows::iconPath(const QString& fileName, const QMap<QString, QString>& iconMap)
{
    return iconMap.value(QLatin1Char('.') + PreviewDialog::extensionOf(fileName), kNullIcon);
}

QList<FoundFile*> FileListRows::filesOf(FolderNode* folder)
{
    QReadLocker lock(&ResultTreeLock::lock());
    return folder->files;
}

int FileListRows::rowCheckState(const FolderNode* folder)
{
    return folder->checkState == Qt::PartiallyChecked ? Qt::Checked : folder->checkState;
}
