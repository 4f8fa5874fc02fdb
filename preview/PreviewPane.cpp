#include "preview/PreviewPane.h"
#include "preview/PreviewDialog.h"
#include "preview/TextGuess.h"

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStackedLayout>
#include <QVBoxLayout>

PreviewPane::PreviewPane(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("previewPane"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    title = new QLabel(this);
    title->setWordWrap(true);
    column->addWidget(title);
    stack = new QStackedLayout;
    picture = new QLabel(this);
    picture->setAlignment(Qt::AlignCenter);
    picture->setMinimumSize(1, 1);
    picture->setStyleSheet(QStringLiteral("QLabel{background:white;border:1px solid #c5c5c7}"));
    text = new QPlainTextEdit(this);
    text->setReadOnly(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    stack->addWidget(picture);
    stack->addWidget(text);
    column->addLayout(stack, 1);
    clear();
}

void PreviewPane::clear()
{
    current = Nothing;
    original = QPixmap();
    title->setText(tr("选择一个文件即可在此预览"));
    picture->clear();
    text->clear();
    stack->setCurrentWidget(picture);
}

void PreviewPane::showFile(const QString& fileName, const QByteArray& content, quint64 size)
{
    title->setText(tr("%1（%2 字节）").arg(fileName).arg(size));
    if (content.isNull()) {
        current = Nothing;
        original = QPixmap();
        text->setPlainText(tr("文件较大，请双击在预览窗口中查看。"));
        stack->setCurrentWidget(text);
        return;
    }
    const QString extension = PreviewDialog::extensionOf(fileName);
    if (PreviewDialog::viewFor(extension) == PreviewDialog::PictureView &&
        original.loadFromData(content, extension.toUpper().toLatin1().constData())) {
        current = Picture;
        stack->setCurrentWidget(picture);
        fitPicture();
        return;
    }
    original = QPixmap();
    const QString decoded = TextGuess::decode(content);
    current = decoded.isNull() ? Dump : Text;
    text->setPlainText(decoded.isNull() ? PreviewDialog::hexDump(content.constData(), uint(content.size()))
                                        : decoded);
    stack->setCurrentWidget(text);
}

QString PreviewPane::textShown() const
{
    return text->toPlainText();
}

void PreviewPane::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitPicture();
}

// Smaller pictures stay at their own size; larger ones shrink to fit.
void PreviewPane::fitPicture()
{
    if (original.isNull())
        return;
    const QSize room = picture->contentsRect().size();
    if (original.width() <= room.width() && original.height() <= room.height())
        picture->setPixmap(original);
    else
        picture->setPixmap(original.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}
