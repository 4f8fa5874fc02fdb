#include "wizard/MainPage.h"
#include "app/HoverStyle.h"

#include <QLabel>
#include <QPushButton>

namespace {
const QColor kContentColour(235, 241, 255);
constexpr int kBorderLeft = 372;
constexpr int kBorderTop = 70;
constexpr int kBorderStep = 166;
constexpr int kTicked = 2;

QLabel* textLabel(QWidget* parent, const QString& text, const QRect& place, int pixelSize, bool bold,
                  const char* colour)
{
    auto* label = new QLabel(text, parent);
    label->setGeometry(place);
    QFont font = label->font();
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    label->setFont(font);
    label->setStyleSheet(QStringLiteral("color:%1;").arg(QLatin1String(colour)));
    return label;
}
} // namespace

MainPage::MainPage(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("widgetContent"));
    HoverStyle::paintBackground(this, kContentColour);
    addLeftColumn();
    const Mode modes[] = {
        {"pushButtonFileRecovery", ":./file.png", tr("文件恢复"),
         {tr("恢复误删除的文件"), tr("恢复回收站的文件"), tr("——文件恢复，支持硬盘，U盘，各种存储卡")}},
        {"pushButtonFormatRecovery", ":./format.png", tr("格式化恢复"),
         {tr("从格式化或损坏的分区中恢复文件"), tr("适用于提示磁盘未被格式化"),
          tr("——格式化恢复，支持硬盘，U盘，各种存储卡")}},
        {"pushButtonPartitionRecovery", ":./partition.png", tr("分区恢复"),
         {tr("恢复硬盘丢失的分区及文件"), tr("适用于整个硬盘变成一个分区")}},
    };
    pushButtonFileRecovery = addMode(modes[0], 0);
    pushButtonFormatRecovery = addMode(modes[1], 1);
    pushButtonPartitionRecovery = addMode(modes[2], 2);
}

QList<QPushButton*> MainPage::modeButtons() const
{
    return {pushButtonFileRecovery, pushButtonFormatRecovery, pushButtonPartitionRecovery};
}

QLabel* MainPage::addPicture(const char* objectName, const char* path, const QPoint& at)
{
    auto* label = new QLabel(this);
    label->setObjectName(QLatin1String(objectName));
    const QPixmap pixmap{QString::fromLatin1(path)};
    label->setPixmap(pixmap);
    label->setGeometry(QRect(at, pixmap.size()));
    return label;
}

void MainPage::addLeftColumn()
{
    QLabel* banner = textLabel(this, tr("Ostrel数据恢复——最易用最强大的恢复软件"), QRect(0, 14, 884, 36), 22, true,
                               "#2a5a9c");
    banner->setObjectName(QStringLiteral("labelBanner"));
    banner->setAlignment(Qt::AlignCenter);
    addPicture("labelIcon_2", ":./ostrel-big.png", QPoint(96, 84));
    addPicture("labelSearch", ":./search.png", QPoint(110, 238));
    addPicture("labelPhone", ":./phone.png", QPoint(60, 434));
    textLabel(this, tr("服务热线"), QRect(124, 436, 200, 22), 14, false, "#555555");
    textLabel(this, QStringLiteral("400-000-5713"), QRect(124, 458, 200, 30), 22, true, "#e0661f");
}

QPushButton* MainPage::addMode(const Mode& mode, int index)
{
    const int top = kBorderTop + index * kBorderStep;
    QLabel* border = addPicture(qPrintable(QStringLiteral("labelBorder%1").arg(index + 1)), ":./border.png",
                                QPoint(kBorderLeft, top));
    border->lower();

    auto* button = new QPushButton(this);
    button->setObjectName(QLatin1String(mode.button));
    const QPixmap picture{QString::fromLatin1(mode.picture)};
    button->setIcon(picture);
    button->setIconSize(picture.size());
    button->setFlat(true);
    button->setStyleSheet(QStringLiteral("QPushButton{border:none;background:transparent;}"));
    button->setGeometry(kBorderLeft + 4, top + 7, picture.width(), picture.height());

    const int textLeft = kBorderLeft + 134;
    textLabel(this, mode.caption, QRect(textLeft, top + 12, 300, 28), 20, true, "#2a5a9c");
    for (int line = 0; line < mode.lines.size(); ++line) {
        const int y = top + 46 + line * 22;
        const bool ticked = line < kTicked;
        if (ticked) {
            addPicture(qPrintable(QStringLiteral("labelYes%1").arg(index * kTicked + line + 1)), ":./yes.png",
                       QPoint(textLeft, y + 1));
        }
        textLabel(this, mode.lines[line], QRect(textLeft + (ticked ? 26 : 0), y, 300, 22), 13, false,
                  ticked ? "#333333" : "#7a7a7a");
    }
    return button;
}
