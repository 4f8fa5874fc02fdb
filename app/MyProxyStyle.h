#pragma once
#include <QProxyStyle>

// The application style: Fusion without the dotted focus frame.
class MyProxyStyle : public QProxyStyle {
public:
    MyProxyStyle();
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
};
