#include "wizard/IconListRows.h"
#include "preview/PreviewDialog.h"
#include "results/FolderNode.h"
#include "wizard/FileListRows.h"
#include "wizard/FoundFileContent.h"
#include "wizard/RowRef.h"

#include <QDebug>
#include <QListWidget>
#include <QPixmap>

namespace {
constexpr int kPointSize = 9;
constexpr int kCell = 160;
constexpr int kLongLoadMinFiles = 20;
constexpr int kLongLoadOthers = 5;
} // namespace

void IconListRows::fill(QListWidget* list, FolderNode* folder, PartScan* scanner, const Notify& notify,
                        const ResultFilter& filter)
{
    list->clear();
    const QList<FoundFile*> files = FileListRows::filesOf(folder, filter);
    if (isLongLoad(files))
        notify(QObject::tr("文件较大，加载需要一段时间，请不要关闭软件哦～"));
    
    for (FoundFile* file : files) {
        auto* item = new QListWidgetItem(file->name());
        QFont font = item->font();
        font.setPointSize(kPointSize);
        item->setFont(font);
        item->setToolTip(file->name());
        QPixmap icon = thumbnail(scanner, folder, file);
        if (icon.isNull())
            icon = QPixmap(QStringLiteral(":./defaultPic.png"));
        item->setIcon(icon);
        RowRef{file, folder, folder->partIndex}.storeIn(item);
        item->setCheckState(file->selected ? Qt::Checked : Qt::Unchecked);
        item->setSizeHint(QSize(kCell, kCell));
        list->insertItem(list->count(), item);
    }
}

bool IconListRows::isLongLoad(const QList<FoundFile*>& files)
{
    int jpegs = 0;
    for (const FoundFile* file : files) {
        if (file->nameView().endsWith(QLatin1String(".jpg")))
            ++jpegs;
    }
    qDebug() << "showJpgDialog" << jpegs << files.size();
    return files.size() >= kLongLoadMinFiles && jpegs > files.size() - kLongLoadOthers;
}

QPixmap IconListRows::thumbnail(PartScan* scanner, FolderNode* folder, FoundFile* file)
{
    const QString extension = PreviewDialog::extensionOf(file->name());
    if (!scanner || PreviewDialog::viewFor(extension) != PreviewDialog::PictureView)
        return {};
    const quint64 length = FoundFileContent::bufferLength(scanner, folder, file);
    if (length >= FoundFileContent::kThumbnailLimit)
        return {};
    const QByteArray content = FoundFileContent::read(scanner, folder, file, length);
    QPixmap picture;
    picture.loadFromData(reinterpret_cast<const uchar*>(content.constData()), uint(content.size()),
                         extension.toUpper().toLatin1().constData());
    return picture;
}
