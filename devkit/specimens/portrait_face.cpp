#include "specimens/portrait_painter.h"

#include <QPainter>
#include <QTransform>

#include "specimens/portrait.h"

namespace specimen {

PortraitPainter::PortraitPainter(QPainter &paintOn, const Look &wanted) :
    painter(paintOn), look(wanted), skin(QColor::fromRgb(wanted.skin)), hair(QColor::fromRgb(wanted.hairColour)),
    cloth(QColor::fromRgb(wanted.clothesColour)), accent(QColor::fromRgb(wanted.accent))
{
}

QPainterPath PortraitPainter::mirrored(const QPainterPath &path)
{
    return QTransform(-1, 0, 0, 1, 2 * middle, 0).map(path);
}

void PortraitPainter::draw()
{
    background();
    hairBehind();
    neck();
    clothes();
    ears();
    head();
    brows();
    eyes();
    nose();
    mouth();
    beard();
    hairInFront();
    glasses();
}

void PortraitPainter::fill(const QPainterPath &path, const QBrush &brush)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    painter.drawPath(path);
}

void PortraitPainter::line(const QPainterPath &path, const QColor &pen, qreal width)
{
    painter.setPen(QPen(pen, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
}

void PortraitPainter::background()
{
    QLinearGradient light(0, 0, 0, portraitHeight);
    light.setColorAt(0, QColor(0xE9, 0xEE, 0xF1));
    light.setColorAt(1, QColor(0xCF, 0xD8, 0xDE));
    painter.fillRect(QRectF(0, 0, portraitWidth, portraitHeight), light);
}

QPainterPath PortraitPainter::headShape() const
{
    QPainterPath path(QPointF(middle, 92));
    path.cubicTo(192, 92, 211, 122, 209, 165);
    path.cubicTo(207, 206, 184, 250, middle, 251);
    path.cubicTo(116, 250, 93, 206, 91, 165);
    path.cubicTo(89, 122, 108, 92, middle, 92);
    return path;
}

void PortraitPainter::ears()
{
    QPainterPath ear(QPointF(96, 160));
    ear.cubicTo(80, 152, 78, 172, 83, 188);
    ear.cubicTo(87, 200, 96, 202, 100, 194);
    ear.closeSubpath();
    QPainterPath hollow(QPointF(92, 168));
    hollow.cubicTo(86, 168, 86, 180, 91, 188);
    QPainterPath jewel;
    jewel.addEllipse(QPointF(89, 203), 3.6, 3.6);
    for (const bool left : { true, false }) {
        fill(left ? ear : mirrored(ear), skin.darker(106));
        line(left ? hollow : mirrored(hollow), skin.darker(124), 2);
        if (look.earrings)
            fill(left ? jewel : mirrored(jewel), QColor(0xE3, 0xB9, 0x4F));
    }
}

void PortraitPainter::head()
{
    QRadialGradient light(QPointF(138, 150), 120);
    light.setColorAt(0, skin.lighter(105));
    light.setColorAt(0.65, skin);
    light.setColorAt(1, skin.darker(109));
    fill(headShape(), light);
    for (const qreal x : { 116.0, 184.0 }) {
        QRadialGradient blush(QPointF(x, 203), 19);
        QColor pink(0xE2, 0x6F, 0x62, 46);
        blush.setColorAt(0, pink);
        pink.setAlpha(0);
        blush.setColorAt(1, pink);
        QPainterPath cheek;
        cheek.addEllipse(QPointF(x, 203), 19, 15);
        fill(cheek, blush);
    }
}

void PortraitPainter::eyes()
{
    QPainterPath lids(QPointF(110, 171));
    lids.cubicTo(115, 161, 130, 160, 137, 171);
    lids.cubicTo(130, 179, 116, 179, 110, 171);
    for (const bool left : { true, false }) {
        const QPainterPath shape = left ? lids : mirrored(lids);
        fill(shape, QColor(0xFD, 0xFC, 0xFA));
        painter.save();
        painter.setClipPath(shape);
        const QPointF at(left ? 124 : 2 * middle - 124, 169.5);
        disc(at, 7.4, QColor::fromRgb(look.eyes));
        disc(at, 3.8, QColor(0x1B, 0x16, 0x14));
        disc(at + QPointF(2.2, -2.6), 1.7, Qt::white);
        painter.restore();
        QPainterPath lash(QPointF(109, 171.5));
        lash.cubicTo(115, 160.5, 130, 159.5, 138, 171);
        line(left ? lash : mirrored(lash), QColor(0x33, 0x25, 0x20), 2.4);
        QPainterPath under(QPointF(113, 178));
        under.cubicTo(118, 182, 128, 182, 134, 178);
        line(left ? under : mirrored(under), skin.darker(118), 1.2);
    }
}

void PortraitPainter::disc(const QPointF &at, qreal radius, const QColor &of)
{
    QPainterPath path;
    path.addEllipse(at, radius, radius);
    fill(path, of);
}

void PortraitPainter::nose()
{
    QPainterPath path(QPointF(153, 168));
    path.cubicTo(154, 184, 160, 194, 161, 202);
    path.cubicTo(160, 209, 146, 210, 140, 204);
    line(path, skin.darker(126), 2.4);
}

void PortraitPainter::mouth()
{
    const QColor lip = QColor::fromHsl(8, 105, qBound(86, skin.lightness() - 62, 150));
    QPainterPath lips(QPointF(127, 222));
    lips.cubicTo(138, 219, 146, 219, middle, 221.5);
    lips.cubicTo(154, 219, 162, 219, 173, 222);
    lips.cubicTo(164, 236, 136, 236, 127, 222);
    fill(lips, lip);
    QPainterPath gap(QPointF(126, 221.5));
    gap.cubicTo(140, 227.5, 160, 227.5, 174, 221.5);
    line(gap, lip.darker(140), 1.8);
}

void PortraitPainter::glasses()
{
    if (!look.glasses)
        return;
    const QColor frame(0x3A, 0x34, 0x33);
    QPainterPath glass;
    glass.addRoundedRect(QRectF(104, 157, 39, 29), 11, 11);
    QPainterPath bow(QPointF(104, 168));
    bow.lineTo(89, 164);
    for (const bool left : { true, false }) {
        fill(left ? glass : mirrored(glass), QColor(255, 255, 255, 40));
        line(left ? glass : mirrored(glass), frame, 2.8);
        line(left ? bow : mirrored(bow), frame, 2.8);
    }
    QPainterPath bridge(QPointF(143, 169));
    bridge.cubicTo(147, 165, 153, 165, 157, 169);
    line(bridge, frame, 2.8);
}

} // namespace specimen
