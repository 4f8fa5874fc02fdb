#include "app/MyButton.h"
#include "app/Resources.h"

#include <QPainter>
#include <QStyleOptionButton>

MyButton::MyButton(bool kind, QWidget* parent) : QPushButton(parent), kind(kind)
{
    Resources::load();
    const QString first = kind ? QStringLiteral(":./pause1.png") : QStringLiteral(":./stop1.png");
    firstPixmap = QPixmap(first);
    firstHoverPixmap = firstPixmap;
    if (kind) {
        secondPixmap = QPixmap(QStringLiteral(":./resume1.png"));
        secondHoverPixmap = secondPixmap;
    }
}

const QPixmap& MyButton::currentPixmap(bool hover) const
{
    if (kind && !toggleFlag)
        return hover ? secondHoverPixmap : secondPixmap;
    return hover ? firstHoverPixmap : firstPixmap;
}

// Fires on the press, for any mouse button, without the base's release logic.
void MyButton::mousePressEvent(QMouseEvent*)
{
    toggleFlag = !toggleFlag;
    setDown(true);
    emit clicked(false);
}

void MyButton::mouseReleaseEvent(QMouseEvent*)
{
    setDown(false);
}

void MyButton::paintEvent(QPaintEvent*)
{
    QStyleOptionButton option;
    option.initFrom(this);
    QPainter painter(this);
    if (isDown())
        painter.translate(1, 1); // a pressed button sinks by one pixel
    const bool hover = option.state.testFlag(QStyle::State_MouseOver);
    painter.drawPixmap(rect(), currentPixmap(hover));
}
