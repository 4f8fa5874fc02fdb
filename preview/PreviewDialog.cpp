#include "preview/PreviewDialog.h"
#include "ui_PreviewDialog.h"

#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QStringList>
#include <QTextCursor>

namespace {
constexpr int kPointSize = 9;
constexpr uint kDumpLineBytes = 16;
constexpr quint64 kDumpMaxLines = 1000;

const char* const kPictureExtensions[] = {"BMP", "GIF", "JPG", "JPEG", "PNG", "PBM",
                                          "PGM", "PPM", "TIFF", "XBM", "XPM", "ICO"};
const char* const kTextExtensions[] = {"TXT", "HTML", "XML", "HTM", "INI", "CPP", "C", "H", "HPP", "JAVA"};

template <size_t N>
bool listed(const char* const (&list)[N], const QString& extension)
{
    for (const char* entry : list) {
        if (extension.compare(QLatin1String(entry), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QString hexByte(uchar byte)
{
    return QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper();
}

QString dumpLine(const uchar* data, uint size, quint64 offset)
{
    QString line = QStringLiteral("%1").arg(offset, 4, 16, QLatin1Char('0')).toUpper() + QStringLiteral("  ");
    for (uint j = 0; j < kDumpLineBytes; ++j) {
        line += offset + j < size ? hexByte(data[offset + j]) + QLatin1Char(' ') : QStringLiteral("   ");
        if (j == 7 || j == 15)
            line += QStringLiteral("  ");
    }
    line += QStringLiteral("    ");
    for (uint j = 0; j < kDumpLineBytes; ++j) {
        if (offset + j >= size) {
            line += QStringLiteral("  ");
            continue;
        }
        const uchar c = data[offset + j];
        line += c >= 0x20 && c <= 0x7E ? QLatin1Char(char(c)) : QLatin1Char('.');
    }
    return line + QLatin1Char('\n');
}
} // namespace

PreviewDialog::PreviewDialog(const QString& fileName, const char* data, uint size, QWidget* parent)
    : QDialog(parent), ui(new Ui::PreviewDialog)
{
    ui->setupUi(this);
    setWindowIcon(QIcon(QPixmap(QString())));
    QFont font = this->font();
    font.setPointSize(kPointSize);
    setFont(font);
    setWindowTitle(tr("预览"));

    ui->labelFileName->setText(tr("文件名字： ") + fileName);
    ui->labelFileSize->setText(tr("文件大小： ") + QString::number(size) + QStringLiteral(" bytes"));
    ui->labelPicSize->clear();
    for (QWidget* w : {static_cast<QWidget*>(ui->labelFileName), static_cast<QWidget*>(ui->labelFileSize),
                       static_cast<QWidget*>(ui->labelPicSize)})
        w->setFont(font);

    const QString extension = extensionOf(fileName);
    switch (viewFor(extension)) {
    case PictureView:
        if (showPicture(data, size, extension))
            break;
        showBrokenPictureNotice();
        showDump(data, size);
        break;
    case TextView:
        showText(data, size);
        break;
    case DumpView:
        showDump(data, size);
        break;
    }
    ui->pushButton->setFont(font);
}

PreviewDialog::~PreviewDialog()
{
    delete ui;
}

QString PreviewDialog::extensionOf(const QString& fileName)
{
    const QStringList parts = fileName.split(QLatin1Char('.'), Qt::KeepEmptyParts);
    return parts.size() > 1 ? parts.last() : QString();
}

PreviewDialog::View PreviewDialog::viewFor(const QString& extension)
{
    if (listed(kPictureExtensions, extension))
        return PictureView;
    if (listed(kTextExtensions, extension))
        return TextView;
    return DumpView;
}

QString PreviewDialog::hexDump(const char* data, uint size)
{
    const quint64 lines = qMin((quint64(size) + kDumpLineBytes - 1) / kDumpLineBytes, kDumpMaxLines);
    QString dump;
    for (quint64 i = 0; i < lines; ++i)
        dump += dumpLine(reinterpret_cast<const uchar*>(data), size, i * kDumpLineBytes);
    return dump;
}

void PreviewDialog::on_pushButton_clicked()
{
    close();
}

bool PreviewDialog::showPicture(const char* data, uint size, const QString& extension)
{
    QPixmap picture;
    picture.loadFromData(reinterpret_cast<const uchar*>(data), size, extension.toUpper().toLatin1().constData());
    if (picture.isNull())
        return false;
    QTextCursor cursor = ui->textEdit->textCursor();
    cursor.insertImage(picture.toImage(), QString());
    ui->textEdit->setTextCursor(cursor);
    ui->labelPicSize->setText(tr("原始尺寸：") + QString::number(picture.width()) + QStringLiteral(" x ") +
                              QString::number(picture.height()));
    ui->textEdit->setReadOnly(true);
    return true;
}

void PreviewDialog::showText(const char* data, uint size)
{
    // The text ends at the first zero byte; the bound keeps a buffer without one safe.
    ui->textEdit->setText(QString::fromLocal8Bit(data, qsizetype(qstrnlen(data, size))));
    ui->textEdit->setReadOnly(true);
    ui->textEdit->setFont(QFont(QStringLiteral("Fixedsys"), kPointSize));
}

void PreviewDialog::showDump(const char* data, uint size)
{
    ui->textEdit->setText(hexDump(data, size));
    ui->textEdit->setReadOnly(true);
    ui->textEdit->setFont(QFont(QStringLiteral("SimSun"), 10));
}

void PreviewDialog::showBrokenPictureNotice()
{
    QMessageBox box(this);
    const QFont font(QStringLiteral("SimSun"), 10);
    box.setFont(font);
    box.setIcon(QMessageBox::Information);
    box.setWindowTitle(tr("提示"));
    box.setText(tr("图片文件无法预览，可能已经损坏。"));
    auto* ok = new QPushButton(tr("确定"), &box);
    ok->setFont(font);
    box.addButton(ok, QMessageBox::AcceptRole);
    box.exec();
}
