#include "app/HoverStyle.h"

#include <QPalette>
#include <QPushButton>
#include <QWidget>

namespace {
void setRole(QWidget* widget, QPalette::ColorRole role, const QBrush& brush)
{
    QPalette palette = widget->palette();
    palette.setBrush(QPalette::Active, role, brush);
    palette.setBrush(QPalette::Inactive, role, brush);
    widget->setAutoFillBackground(true);
    widget->setPalette(palette);
}
} // namespace

void HoverStyle::fill(QWidget* widget, const QColor& colour)
{
    setRole(widget, QPalette::Button, colour);
    // Under the application style sheet the palette alone doesn't reach the
    // button's background, so the same colour goes into its own sheet.
    const QString sheet = qobject_cast<QPushButton*>(widget)
                              ? QStringLiteral("QPushButton {border:1px solid #707070;background-color:%1;}")
                              : QStringLiteral("QToolButton {background-color:%1;border:none;}");
    widget->setStyleSheet(sheet.arg(colour.name()));
}

void HoverStyle::plainToolButton(QWidget* widget)
{
    widget->setStyleSheet(QStringLiteral("QToolButton {background-color:transparent;border:none;}"));
}

void HoverStyle::plainPushButton(QWidget* widget)
{
    widget->setStyleSheet(QStringLiteral("QPushButton {border:1px solid #707070;background-color:transparent;}"));
}

void HoverStyle::paintBackground(QWidget* widget, const QColor& colour)
{
    setRole(widget, QPalette::Window, colour);
}
