#include "specimens/portrait_painter.h"

#include <QLinearGradient>

namespace specimen {

void PortraitPainter::hairBehind()
{
    QPainterPath path;
    switch (look.hair) {
    case Hair::Long:
        path.moveTo(middle, 62);
        path.cubicTo(214, 60, 233, 118, 228, 190);
        path.cubicTo(226, 240, 240, 280, 226, 318);
        path.lineTo(74, 318);
        path.cubicTo(60, 280, 74, 240, 72, 190);
        path.cubicTo(67, 118, 86, 60, middle, 62);
        break;
    case Hair::Bob:
        path.moveTo(middle, 62);
        path.cubicTo(216, 60, 236, 118, 230, 186);
        path.cubicTo(229, 218, 226, 240, 208, 250);
        path.lineTo(92, 250);
        path.cubicTo(74, 240, 71, 218, 70, 186);
        path.cubicTo(64, 118, 84, 60, middle, 62);
        break;
    case Hair::Curly:
        for (const QPointF &at : { QPointF(92, 116), QPointF(208, 116), QPointF(84, 148), QPointF(216, 148),
                                   QPointF(106, 88), QPointF(194, 88), QPointF(134, 74), QPointF(168, 74) })
            path.addEllipse(at, 27, 27);
        path.setFillRule(Qt::WindingFill);
        break;
    case Hair::Bun:
        path.addEllipse(QPointF(middle, 60), 32, 27);
        break;
    default:
        break;
    }
    fill(path, hair.darker(118));
}

void PortraitPainter::brows()
{
    QPainterPath brow(QPointF(109, 152));
    brow.cubicTo(116, 144, 128, 143, 137, 149);
    const QColor pen = hair.lightness() > 150 ? hair.darker(135) : hair.darker(112);
    for (const auto &path : { brow, mirrored(brow) })
        line(path, pen, look.beard || look.moustache ? 4.8 : 3.8);
}

void PortraitPainter::beard()
{
    const QColor of = hair.lightness() > 150 ? hair : hair.lighter(112);
    if (look.beard) {
        QPainterPath outer(QPointF(92, 176));
        outer.cubicTo(93, 222, 112, 262, middle, 263);
        outer.cubicTo(188, 262, 207, 222, 208, 176);
        outer.cubicTo(203, 200, 194, 211, 178, 213);
        outer.cubicTo(166, 209, 134, 209, 122, 213);
        outer.cubicTo(106, 211, 97, 200, 92, 176);
        QPainterPath lips;
        lips.addEllipse(QPointF(middle, 226), 23, 9.5);
        fill(outer.subtracted(lips), of);
    }
    if (look.moustache || look.beard) {
        QPainterPath half(QPointF(middle, 212));
        half.cubicTo(140, 207, 124, 212, 117, 226);
        half.cubicTo(128, 221, 142, 221, middle, 219);
        half.closeSubpath();
        for (const auto &path : { half, mirrored(half) })
            fill(path, of.darker(106));
    }
}

void PortraitPainter::hairInFront()
{
    QPainterPath path;
    switch (look.hair) {
    case Hair::ShortParted:
        path.moveTo(88, 168);
        path.cubicTo(74, 96, 104, 60, 156, 64);
        path.cubicTo(206, 66, 226, 108, 212, 168);
        path.cubicTo(209, 150, 205, 138, 199, 128);
        path.cubicTo(176, 134, 148, 126, 126, 108);
        path.cubicTo(112, 120, 98, 138, 88, 168);
        break;
    case Hair::Cropped:
        path.moveTo(89, 152);
        path.cubicTo(82, 98, 112, 72, middle, 72);
        path.cubicTo(188, 72, 218, 98, 211, 152);
        path.cubicTo(207, 128, 198, 114, 186, 108);
        path.cubicTo(164, 101, 136, 101, 114, 108);
        path.cubicTo(102, 114, 93, 128, 89, 152);
        break;
    case Hair::Curly:
        for (const QPointF &at : { QPointF(104, 112), QPointF(126, 98), QPointF(150, 93), QPointF(174, 98),
                                   QPointF(196, 112), QPointF(93, 134), QPointF(207, 134) })
            path.addEllipse(at, 19, 18);
        path.setFillRule(Qt::WindingFill);
        break;
    case Hair::Long:
        path = curtain(190);
        break;
    case Hair::Bob:
        path = fringe();
        break;
    case Hair::Bun:
        path.moveTo(89, 160);
        path.cubicTo(80, 100, 108, 70, middle, 70);
        path.cubicTo(192, 70, 220, 100, 211, 160);
        path.cubicTo(206, 132, 190, 116, middle, 108);
        path.cubicTo(110, 116, 94, 132, 89, 160);
        break;
    case Hair::Bald:
        baldSides();
        return;
    }
    QLinearGradient shine(0, 62, 0, 190);
    shine.setColorAt(0, hair.lighter(118));
    shine.setColorAt(0.5, hair);
    shine.setColorAt(1, hair.darker(108));
    fill(path, shine);
    strands();
}

// Parted a little left of the middle, falling on both sides.
QPainterPath PortraitPainter::curtain(qreal down) const
{
    QPainterPath path(QPointF(140, 66));
    path.cubicTo(92, 64, 66, 108, 74, down);
    path.cubicTo(78, down + 40, 72, down + 74, 82, down + 106);
    path.cubicTo(98, down + 70, 92, down + 20, 95, 168);
    path.cubicTo(100, 134, 122, 122, 138, 92);
    path.cubicTo(158, 124, 198, 132, 205, 168);
    path.cubicTo(208, down + 20, 202, down + 70, 218, down + 106);
    path.cubicTo(228, down + 74, 222, down + 40, 226, down);
    path.cubicTo(234, 108, 208, 64, 140, 66);
    return path;
}

QPainterPath PortraitPainter::fringe() const
{
    QPainterPath path(QPointF(middle, 64));
    path.cubicTo(90, 62, 66, 108, 72, 190);
    path.cubicTo(73, 220, 76, 238, 90, 248);
    path.cubicTo(97, 220, 91, 190, 95, 148);
    path.cubicTo(118, 134, 182, 134, 205, 148);
    path.cubicTo(209, 190, 203, 220, 210, 248);
    path.cubicTo(224, 238, 227, 220, 228, 190);
    path.cubicTo(234, 108, 210, 62, middle, 64);
    return path;
}

void PortraitPainter::baldSides()
{
    QPainterPath side(QPointF(89, 176));
    side.cubicTo(76, 152, 80, 116, 100, 104);
    side.cubicTo(98, 124, 94, 134, 96, 158);
    side.cubicTo(94, 166, 92, 172, 89, 176);
    for (const auto &path : { side, mirrored(side) })
        fill(path, hair);
}

void PortraitPainter::strands()
{
    if (look.hair == Hair::Curly || look.hair == Hair::Cropped)
        return;
    QPainterPath one(QPointF(130, 78));
    one.cubicTo(106, 88, 92, 110, 88, 138);
    QPainterPath other(QPointF(172, 78));
    other.cubicTo(196, 90, 208, 112, 212, 138);
    for (const auto &path : { one, other })
        line(path, hair.darker(120), 1.6);
}

} // namespace specimen
