#include "wizard/FilePreview.h"
#include "preview/PreviewDialog.h"
#include "results/FolderNode.h"
#include "wizard/FoundFileContent.h"
#include "wizard/RowRef.h"

#include <QDebug>

bool FilePreview::open(QWidget* parent, PartScan* scanner, const RowRef& row, const QString& name,
                       const Notify& notify)
{
    if (!scanner || !row.file || !row.folder)
        return false;
    if (!row.folder->ntfs)
        qDebug() << "partcount=" << row.partIndex;
    const quint64 length = FoundFileContent::bufferLength(scanner, row.folder, row.file);
    if (length > FoundFileContent::kPreviewLimit) {
        notify(QObject::tr("预览内容超过300M!"));
        return false;
    }
    const QByteArray content = FoundFileContent::read(scanner, row.folder, row.file, length);
    PreviewDialog dialog(name, content.constData(), uint(qMin<quint64>(row.file->size, length)), parent);
    dialog.exec();
    return true;
}
