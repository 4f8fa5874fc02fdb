#include "app/MyProxyStyle.h"
#include <QStyleFactory>

MyProxyStyle::MyProxyStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void MyProxyStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const
{
    if (element == QStyle::PE_FrameFocusRect)
        return;
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}
