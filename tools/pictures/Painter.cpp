#include "Painter.h"

#include <QFont>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRandomGenerator>
#include <QtMath>

namespace {
const QColor kBlueDark(61, 113, 188);
const QColor kBlueLight(110, 166, 232);
const QColor kInk(51, 51, 51);

QImage canvas(int w, int h, const QColor& fill = Qt::transparent)
{
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    image.fill(fill);
    return image;
}

void smooth(QPainter& p)
{
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
}

QLinearGradient vertical(const QRectF& r, const QColor& top, const QColor& bottom)
{
    QLinearGradient g(r.topLeft(), r.bottomLeft());
    g.setColorAt(0, top);
    g.setColorAt(1, bottom);
    return g;
}

void roundedCard(QPainter& p, const QRectF& r, const QColor& top, const QColor& bottom, qreal radius)
{
    p.setPen(Qt::NoPen);
    p.setBrush(vertical(r, top, bottom));
    p.drawRoundedRect(r, radius, radius);
}

// A circular arrow, three quarters round, with its head at the top.
void circularArrow(QPainter& p, const QPointF& centre, qreal radius, qreal width, const QColor& colour)
{
    QPen pen(colour, width, Qt::SolidLine, Qt::RoundCap);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    const QRectF r(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    p.drawArc(r, 100 * 16, 280 * 16);
    const QPointF tip(centre.x() + radius * qCos(qDegreesToRadians(100.0)),
                      centre.y() - radius * qSin(qDegreesToRadians(100.0)));
    QPainterPath head;
    head.moveTo(tip + QPointF(-width * 1.6, -width * 1.4));
    head.lineTo(tip + QPointF(width * 1.5, 0));
    head.lineTo(tip + QPointF(-width * 1.6, width * 1.4));
    head.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawPath(head);
}

void document(QPainter& p, const QRectF& r, const QColor& fill, const QColor& line)
{
    const qreal fold = r.width() * 0.3;
    QPainterPath page;
    page.moveTo(r.topLeft());
    page.lineTo(r.right() - fold, r.top());
    page.lineTo(r.right(), r.top() + fold);
    page.lineTo(r.bottomRight());
    page.lineTo(r.bottomLeft());
    page.closeSubpath();
    p.setPen(QPen(line, qMax(1.0, r.width() / 24)));
    p.setBrush(fill);
    p.drawPath(page);
    QPainterPath corner;
    corner.moveTo(r.right() - fold, r.top());
    corner.lineTo(r.right() - fold, r.top() + fold);
    corner.lineTo(r.right(), r.top() + fold);
    p.setBrush(line.lighter(160));
    p.drawPath(corner);
}

void hardDrive(QPainter& p, const QRectF& r, const QColor& body)
{
    roundedCard(p, r, body.lighter(125), body, r.height() * 0.18);
    p.setBrush(QColor(255, 255, 255, 90));
    p.drawRoundedRect(QRectF(r.left() + r.width() * 0.08, r.top() + r.height() * 0.22, r.width() * 0.6,
                             r.height() * 0.16),
                      2, 2);
    p.setBrush(QColor(120, 230, 120));
    const qreal led = qMax(1.5, r.height() * 0.14);
    p.drawEllipse(QPointF(r.right() - r.width() * 0.14, r.bottom() - r.height() * 0.3), led, led);
}

void centredText(QPainter& p, const QRectF& r, const QString& text, int pixelSize, const QColor& colour,
                 bool bold = true)
{
    QFont font(QStringLiteral("Noto Sans CJK SC"));
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    p.setFont(font);
    p.setPen(colour);
    p.drawText(r, Qt::AlignCenter, text);
}

// The largest pixel size at which the label fits the width.
int fittingPixelSize(const QString& label, qreal width, int start)
{
    for (int size = start; size > 4; --size) {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(size);
        font.setBold(true);
        if (QFontMetricsF(font).horizontalAdvance(label) <= width)
            return size;
    }
    return 5;
}
} // namespace

namespace Painter {

QImage logo(int size)
{
    QImage image = canvas(size, size);
    QPainter p(&image);
    smooth(p);
    const QRectF r(size * 0.04, size * 0.04, size * 0.92, size * 0.92);
    roundedCard(p, r, kBlueLight, kBlueDark, size * 0.2);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 60));
    p.drawEllipse(r.center(), size * 0.3, size * 0.3);
    circularArrow(p, r.center(), size * 0.26, qMax(1.5, size * 0.075), Qt::white);
    p.setBrush(Qt::white);
    p.drawEllipse(r.center(), size * 0.07, size * 0.07);
    return image;
}

QImage titleIcon()
{
    QImage image = canvas(55, 40);
    QPainter p(&image);
    smooth(p);
    p.drawImage(QRectF(9, 1, 38, 38), logo(76));
    return image;
}

QImage productPicture()
{
    QImage image = canvas(177, 128);
    QPainter p(&image);
    smooth(p);
    p.drawImage(QRectF(48, 4, 82, 82), logo(164));
    centredText(p, QRectF(0, 88, 177, 36), QStringLiteral("Ostrel"), 28, kBlueDark);
    return image;
}

QImage modePicture(int mode)
{
    QImage image = canvas(112, 102);
    QPainter p(&image);
    smooth(p);
    const QColor tops[] = {QColor(104, 176, 255), QColor(255, 170, 80), QColor(110, 210, 150)};
    const QColor bottoms[] = {QColor(45, 110, 205), QColor(225, 105, 35), QColor(35, 150, 95)};
    const QRectF card(6, 3, 100, 96);
    roundedCard(p, card, tops[mode - 1], bottoms[mode - 1], 18);
    if (mode == 1) {
        document(p, QRectF(30, 18, 46, 60), Qt::white, QColor(190, 205, 225));
        circularArrow(p, QPointF(68, 68), 14, 5, QColor(255, 190, 60));
    } else if (mode == 2) {
        hardDrive(p, QRectF(22, 30, 68, 40), QColor(90, 95, 110));
        p.setPen(QPen(Qt::white, 5, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(30, 84), QPointF(82, 84));
        circularArrow(p, QPointF(80, 28), 12, 4, Qt::white);
    } else {
        p.setPen(Qt::NoPen);
        p.setBrush(Qt::white);
        const QRectF pie(26, 19, 60, 60);
        p.drawPie(pie, 30 * 16, 250 * 16);
        p.setBrush(QColor(255, 220, 90));
        p.drawPie(pie.translated(5, -3), -80 * 16, 110 * 16);
    }
    return image;
}

QImage searchPicture()
{
    QImage image = canvas(148, 149);
    QPainter p(&image);
    smooth(p);
    hardDrive(p, QRectF(10, 78, 104, 56), QColor(120, 135, 160));
    p.setPen(QPen(QColor(70, 80, 100), 14, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(108, 108), QPointF(136, 136));
    p.setPen(QPen(kBlueDark, 10));
    p.setBrush(QColor(200, 225, 255, 170));
    p.drawEllipse(QPointF(78, 66), 40, 40);
    p.setPen(QPen(QColor(255, 255, 255, 200), 5, Qt::SolidLine, Qt::RoundCap));
    p.drawArc(QRectF(54, 42, 48, 48), 100 * 16, 70 * 16);
    return image;
}

QImage border()
{
    QImage image = canvas(459, 116);
    QPainter p(&image);
    smooth(p);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, 18));
    p.drawRoundedRect(QRectF(3, 4, 455, 111), 12, 12);
    p.setPen(QPen(QColor(176, 202, 232), 1.5));
    p.setBrush(vertical(QRectF(0, 0, 459, 116), QColor(255, 255, 255), QColor(244, 248, 255)));
    p.drawRoundedRect(QRectF(1, 1, 455, 111), 12, 12);
    return image;
}

QImage tick()
{
    QImage image = canvas(20, 20);
    QPainter p(&image);
    smooth(p);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(46, 170, 90));
    p.drawEllipse(QRectF(1, 1, 18, 18));
    p.setPen(QPen(Qt::white, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPolyline(QPolygonF({QPointF(5.5, 10.5), QPointF(8.7, 13.5), QPointF(14.5, 6.8)}));
    return image;
}

QImage phone()
{
    QImage image = canvas(55, 55);
    QPainter p(&image);
    smooth(p);
    p.setPen(Qt::NoPen);
    p.setBrush(vertical(QRectF(0, 0, 55, 55), QColor(255, 150, 70), QColor(235, 95, 30)));
    p.drawEllipse(QRectF(2, 2, 51, 51));
    QPainterPath handset;
    handset.moveTo(17, 14);
    handset.cubicTo(12, 20, 20, 38, 38, 42);
    handset.lineTo(41, 36);
    handset.lineTo(34, 32);
    handset.lineTo(31, 35);
    handset.cubicTo(26, 33, 22, 28, 21, 24);
    handset.lineTo(24, 21);
    handset.lineTo(20, 13);
    handset.closeSubpath();
    p.setBrush(Qt::white);
    p.drawPath(handset);
    return image;
}

QImage qqButton()
{
    QImage image = canvas(83, 26);
    QPainter p(&image);
    smooth(p);
    roundedCard(p, QRectF(0.5, 0.5, 82, 25), QColor(80, 170, 250), QColor(25, 120, 215), 12.5);
    p.setBrush(Qt::white);
    p.drawEllipse(QRectF(8, 6, 15, 12));
    p.drawPolygon(QPolygonF({QPointF(11, 16), QPointF(10, 21), QPointF(15, 17)}));
    centredText(p, QRectF(24, 0, 56, 26), QStringLiteral("在线咨询"), 12, Qt::white);
    return image;
}

// A code-like pattern with the three corner marks of a scannable code.
QImage contactCode()
{
    const int cells = 25;
    const int cell = 6;
    const int margin = 12;
    const int side = cells * cell + 2 * margin;
    QImage image = canvas(side, side, Qt::white);
    QPainter p(&image);
    QRandomGenerator random(0x05713e1);
    for (int y = 0; y < cells; ++y)
        for (int x = 0; x < cells; ++x)
            if (random.bounded(2))
                p.fillRect(margin + x * cell, margin + y * cell, cell, cell, kInk);
    const QPoint corners[] = {{0, 0}, {cells - 7, 0}, {0, cells - 7}};
    for (const QPoint& c : corners) {
        const QRect outer(margin + c.x() * cell, margin + c.y() * cell, 7 * cell, 7 * cell);
        p.fillRect(outer.adjusted(-cell, -cell, cell, cell), Qt::white);
        p.fillRect(outer, kInk);
        p.fillRect(outer.adjusted(cell, cell, -cell, -cell), Qt::white);
        p.fillRect(outer.adjusted(2 * cell, 2 * cell, -2 * cell, -2 * cell), kInk);
    }
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF badge(side / 2.0 - 16, side / 2.0 - 16, 32, 32);
    p.fillRect(badge.adjusted(-3, -3, 3, 3), Qt::white);
    p.drawImage(badge, logo(64));
    return image;
}

QImage disk(int size)
{
    QImage image = canvas(size, size);
    QPainter p(&image);
    smooth(p);
    hardDrive(p, QRectF(size * 0.06, size * 0.22, size * 0.88, size * 0.58), QColor(95, 110, 135));
    return image;
}

QImage folder(bool open)
{
    QImage image = canvas(16, 16);
    QPainter p(&image);
    smooth(p);
    p.setPen(QPen(QColor(200, 145, 20), 0.8));
    p.setBrush(QColor(240, 190, 60));
    QPainterPath back;
    back.moveTo(1, 13.5);
    back.lineTo(1, 3);
    back.lineTo(6, 3);
    back.lineTo(7.5, 4.5);
    back.lineTo(14.5, 4.5);
    back.lineTo(14.5, 13.5);
    back.closeSubpath();
    p.drawPath(back);
    p.setBrush(QColor(255, 214, 102));
    if (open) {
        p.drawPolygon(QPolygonF({QPointF(1, 13.5), QPointF(3.5, 7), QPointF(15.5, 7), QPointF(13, 13.5)}));
    } else {
        p.drawRoundedRect(QRectF(1, 6, 13.5, 7.5), 1, 1);
    }
    return image;
}

QImage unknownFile(int size)
{
    QImage image = canvas(size, size);
    QPainter p(&image);
    smooth(p);
    const QRectF page(size * 0.16, size * 0.04, size * 0.68, size * 0.92);
    document(p, page, Qt::white, QColor(150, 160, 175));
    if (size >= 20)
        centredText(p, page.adjusted(0, size * 0.12, 0, 0), QStringLiteral("?"), int(size * 0.5),
                    QColor(150, 160, 175));
    return image;
}

QImage defaultPicture()
{
    QImage image = canvas(248, 198, QColor(243, 246, 250));
    QPainter p(&image);
    smooth(p);
    p.setPen(QPen(QColor(214, 222, 232), 2));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(1, 1, 246, 196));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(200, 212, 228));
    p.drawPolygon(QPolygonF({QPointF(64, 140), QPointF(104, 88), QPointF(132, 120), QPointF(150, 100),
                             QPointF(186, 140)}));
    p.drawEllipse(QPointF(160, 70), 12, 12);
    return image;
}

QImage listMode(bool icons)
{
    QImage image = canvas(128, 128);
    QPainter p(&image);
    smooth(p);
    roundedCard(p, QRectF(4, 4, 120, 120), QColor(250, 252, 255), QColor(228, 236, 248), 20);
    p.setBrush(kBlueDark);
    if (icons) {
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 2; ++x)
                p.drawRoundedRect(QRectF(24 + x * 44, 24 + y * 44, 36, 36), 6, 6);
    } else {
        for (int row = 0; row < 4; ++row) {
            p.drawRoundedRect(QRectF(24, 26 + row * 22, 14, 12), 3, 3);
            p.drawRoundedRect(QRectF(46, 28 + row * 22, 58, 8), 4, 4);
        }
    }
    return image;
}

QImage scanControl(int which, int size)
{
    QImage image = canvas(size, size);
    QPainter p(&image);
    smooth(p);
    const QColor colour = which == 2 ? QColor(216, 70, 71) : kBlueDark;
    p.setPen(Qt::NoPen);
    p.setBrush(vertical(QRectF(0, 0, size, size), colour.lighter(130), colour));
    p.drawEllipse(QRectF(1, 1, size - 2, size - 2));
    p.setBrush(Qt::white);
    const qreal s = size / 32.0;
    if (which == 0) {
        p.drawRoundedRect(QRectF(11 * s, 9 * s, 4 * s, 14 * s), s, s);
        p.drawRoundedRect(QRectF(17 * s, 9 * s, 4 * s, 14 * s), s, s);
    } else if (which == 1) {
        p.drawPolygon(QPolygonF({QPointF(12 * s, 9 * s), QPointF(23 * s, 16 * s), QPointF(12 * s, 23 * s)}));
    } else {
        p.drawRoundedRect(QRectF(10.5 * s, 10.5 * s, 11 * s, 11 * s), 1.5 * s, 1.5 * s);
    }
    return image;
}

QImage arrow(int direction)
{
    QImage image = canvas(14, 14);
    QPainter p(&image);
    smooth(p);
    p.translate(7, 7);
    const int angles[] = {0, 180, 270, 90};
    p.rotate(angles[direction]);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(136, 136, 136));
    p.drawPolygon(QPolygonF({QPointF(-4, 2.5), QPointF(0, -2.5), QPointF(4, 2.5)}));
    return image;
}

QImage checkBox(int state)
{
    QImage image = canvas(16, 16);
    QPainter p(&image);
    smooth(p);
    const QRectF box(1.5, 1.5, 13, 13);
    if (state == 0) {
        p.setPen(QPen(QColor(140, 150, 165), 1));
        p.setBrush(Qt::white);
        p.drawRoundedRect(box, 2.5, 2.5);
        return image;
    }
    p.setPen(QPen(kBlueDark.darker(110), 1));
    p.setBrush(kBlueDark);
    p.drawRoundedRect(box, 2.5, 2.5);
    if (state == 1) {
        p.setPen(Qt::NoPen);
        p.setBrush(Qt::white);
        p.drawRoundedRect(QRectF(4.5, 7, 7, 2), 1, 1);
    } else {
        p.setPen(QPen(Qt::white, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.drawPolyline(QPolygonF({QPointF(4.5, 8), QPointF(7, 10.5), QPointF(11.5, 5.5)}));
    }
    return image;
}

QImage typeIcon(int size, const QColor& colour, const QString& label)
{
    QImage image = canvas(size, size);
    QPainter p(&image);
    smooth(p);
    const qreal s = size / 16.0;
    const QRectF page(1.5 * s, 0.5 * s, 13 * s, 15 * s);
    document(p, page, Qt::white, colour.darker(115));
    const QRectF band(0.5 * s, 6.5 * s, 15 * s, 7 * s);
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawRoundedRect(band, 1.2 * s, 1.2 * s);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(fittingPixelSize(label, band.width() / s - 1, 7) * s);
    font.setBold(true);
    p.setFont(font);
    p.setPen(Qt::white);
    p.drawText(band, Qt::AlignCenter, label);
    return image;
}

} // namespace Painter
