#include "dialogs/FramelessDialog.h"
#include "app/HoverStyle.h"
#include "app/Resources.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QToolButton>

namespace {
constexpr int kTitleHeight = 37;
constexpr int kRightGap = 3; // between the title and content and the right edge
const QColor kBarColour(157, 195, 233);
const QColor kCloseHover(216, 70, 71);
const QColor kDivider(121, 121, 121);
constexpr int kDividerWidth = 3;
} // namespace

FramelessDialog::FramelessDialog(QWidget* parent, const QString& title, const QSize& size, const QLine& divider)
    : QDialog(parent), divider(divider)
{
    Resources::load();
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setFixedSize(size);

    labelTitle = new QLabel(QStringLiteral("   ") + title, this);
    labelTitle->setObjectName(QStringLiteral("labelTitle"));
    labelTitle->setGeometry(0, 0, size.width() - kRightGap, kTitleHeight);
    QFont font = labelTitle->font();
    font.setBold(true);
    labelTitle->setFont(font);
    HoverStyle::paintBackground(labelTitle, kBarColour);
    // The window's style sheet reaches labels and would drop the palette fill.
    labelTitle->setStyleSheet(QStringLiteral("QLabel{background-color:%1;}").arg(kBarColour.name()));

    widget = new QWidget(this);
    widget->setObjectName(QStringLiteral("widget"));
    widget->setGeometry(0, kTitleHeight, size.width() - kRightGap, size.height() - kTitleHeight - kRightGap);

    // Known to the filter by its empty object name.
    closeToolButton = new QToolButton(this);
    closeToolButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    HoverStyle::plainToolButton(closeToolButton);
    closeToolButton->setGeometry(size.width() - 33, 3, 30, 33);
    closeToolButton->setFocusPolicy(Qt::NoFocus);
    connect(closeToolButton, &QToolButton::clicked, this, &QDialog::close);

    closeToolButton->installEventFilter(this);
    widget->installEventFilter(this);
}

bool FramelessDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == closeToolButton && watched->objectName().isEmpty()) {
        if (event->type() == QEvent::Enter) {
            HoverStyle::fill(closeToolButton, kCloseHover);
            return true;
        }
        if (event->type() == QEvent::Leave) {
            HoverStyle::plainToolButton(closeToolButton);
            return true;
        }
    }
    if (watched == widget && event->type() == QEvent::Paint) {
        paintDivider();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void FramelessDialog::paintDivider()
{
    QPainter painter(widget);
    painter.setPen(QPen(kDivider, kDividerWidth));
    painter.drawLine(divider);
}
