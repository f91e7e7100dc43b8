#include "specimens/portrait_painter.h"

#include <QLinearGradient>

namespace specimen {

void PortraitPainter::neck()
{
    QPainterPath path(QPointF(123, 225));
    path.lineTo(123, 288);
    path.cubicTo(124, 318, 176, 318, 177, 288);
    path.lineTo(177, 225);
    path.closeSubpath();
    fill(path, skin.darker(108));
    QPainterPath shadow(QPointF(123, 236));
    shadow.cubicTo(136, 270, 164, 270, 177, 236);
    shadow.lineTo(177, 252);
    shadow.cubicTo(164, 282, 136, 282, 123, 252);
    shadow.closeSubpath();
    fill(shadow, skin.darker(124));
}

QPainterPath PortraitPainter::shoulders() const
{
    QPainterPath path(QPointF(18, 400));
    path.cubicTo(18, 338, 44, 312, 88, 300);
    path.cubicTo(106, 295, 116, 290, 122, 282);
    path.cubicTo(132, 306, 168, 306, 178, 282);
    path.cubicTo(184, 290, 194, 295, 212, 300);
    path.cubicTo(256, 312, 282, 338, 282, 400);
    path.closeSubpath();
    return path;
}

void PortraitPainter::clothes()
{
    QLinearGradient fabric(0, 285, 0, 400);
    fabric.setColorAt(0, cloth.lighter(108));
    fabric.setColorAt(1, cloth.darker(112));
    fill(shoulders(), fabric);
    for (const bool left : { true, false })
        fold(left);
    switch (look.clothes) {
    case Clothes::RoundNeck:
        roundNeck();
        break;
    case Clothes::Shirt:
        shirt(cloth, cloth.lighter(112));
        break;
    case Clothes::Blouse:
        blouse();
        break;
    case Clothes::JacketAndTie:
        jacketAndTie();
        break;
    case Clothes::Turtleneck:
        turtleneck();
        break;
    }
}

void PortraitPainter::fold(bool left)
{
    QPainterPath path(QPointF(66, 400));
    path.cubicTo(66, 378, 70, 362, 78, 350);
    line(left ? path : mirrored(path), cloth.darker(128), 2);
}

// The upper edge of every opening: across the neck, above where the cloth begins.
QPainterPath PortraitPainter::nape() const
{
    QPainterPath path(QPointF(123, 276));
    path.lineTo(177, 276);
    return path;
}

void PortraitPainter::roundNeck()
{
    QPainterPath opening = nape();
    opening.lineTo(184, 286);
    opening.cubicTo(178, 322, 122, 322, 116, 286);
    opening.closeSubpath();
    fill(opening, skin.darker(108));
    QPainterPath hem(QPointF(115, 288));
    hem.cubicTo(122, 325, 178, 325, 185, 288);
    line(hem, cloth.darker(122), 5);
}

void PortraitPainter::collar(const QColor &collarColour)
{
    QPainterPath opening = nape();
    opening.lineTo(180, 284);
    opening.lineTo(middle, 316);
    opening.lineTo(120, 284);
    opening.closeSubpath();
    fill(opening, skin.darker(108));
    QPainterPath half(QPointF(118, 278));
    half.cubicTo(112, 286, 108, 292, 106, 300);
    half.lineTo(132, 332);
    half.lineTo(middle, 312);
    half.cubicTo(136, 306, 124, 294, 118, 278);
    for (const auto &path : { half, mirrored(half) }) {
        fill(path, collarColour);
        line(path, collarColour.darker(118), 1.2);
    }
}

void PortraitPainter::shirt(const QColor &body, const QColor &collarColour)
{
    QPainterPath seam(QPointF(middle, 314));
    seam.lineTo(middle, 400);
    line(seam, body.darker(118), 1.6);
    for (const qreal y : { 340.0, 374.0 }) {
        QPainterPath button;
        button.addEllipse(QPointF(middle + 7, y), 3, 3);
        fill(button, body.darker(130));
    }
    collar(collarColour);
}

void PortraitPainter::blouse()
{
    QPainterPath opening = nape();
    opening.lineTo(183, 284);
    opening.lineTo(middle, 346);
    opening.lineTo(117, 284);
    opening.closeSubpath();
    fill(opening, skin.darker(108));
    QPainterPath lapel(QPointF(115, 284));
    lapel.lineTo(104, 300);
    lapel.lineTo(middle, 362);
    lapel.lineTo(middle, 344);
    lapel.closeSubpath();
    for (const auto &path : { lapel, mirrored(lapel) })
        fill(path, accent);
}

void PortraitPainter::jacketAndTie()
{
    QPainterPath front(QPointF(112, 292));
    front.lineTo(middle, 400);
    front.lineTo(188, 292);
    front.cubicTo(176, 308, 124, 308, 112, 292);
    fill(front, QColor(0xF7, 0xF7, 0xF5));
    QPainterPath tie(QPointF(141, 312));
    tie.lineTo(159, 312);
    tie.lineTo(155, 326);
    tie.lineTo(166, 400);
    tie.lineTo(134, 400);
    tie.lineTo(145, 326);
    tie.closeSubpath();
    fill(tie, accent);
    QPainterPath knot(QPointF(141, 312));
    knot.lineTo(159, 312);
    knot.lineTo(155, 327);
    knot.lineTo(145, 327);
    knot.closeSubpath();
    fill(knot, accent.darker(122));
    collar(QColor(0xFF, 0xFF, 0xFF));
    QPainterPath lapel(QPointF(110, 292));
    lapel.lineTo(84, 322);
    lapel.lineTo(100, 334);
    lapel.lineTo(94, 342);
    lapel.lineTo(138, 400);
    lapel.lineTo(142, 400);
    lapel.lineTo(108, 300);
    lapel.closeSubpath();
    for (const auto &path : { lapel, mirrored(lapel) })
        fill(path, cloth.darker(126));
}

void PortraitPainter::turtleneck()
{
    QPainterPath roll(QPointF(118, 268));
    roll.cubicTo(132, 284, 168, 284, 182, 268);
    roll.cubicTo(187, 284, 188, 298, 184, 306);
    roll.cubicTo(170, 322, 130, 322, 116, 306);
    roll.cubicTo(112, 298, 113, 284, 118, 268);
    fill(roll, cloth.lighter(110));
    QPainterPath edge(QPointF(118, 269));
    edge.cubicTo(132, 285, 168, 285, 182, 269);
    line(edge, cloth.darker(120), 2);
    QPainterPath seam(QPointF(115, 306));
    seam.cubicTo(130, 323, 170, 323, 185, 306);
    line(seam, cloth.darker(122), 2);
}

} // namespace specimen
