#include "specimens/portrait_painter.h"

#include <sstream>

#include <QPainter>
#include <QTransform>

#include "specimens/portrait.h"

namespace specimen {

PortraitPainter::PortraitPainter(QPainter &paintOn, const Look &wanted) :
    painter(paintOn), look(wanted), skin(QColor::fromRgb(wanted.skin)), hair(QColor::fromRgb(wanted.hairColour)),
    cloth(QColor::fromRgb(wanted.clothesColour)), accent(QColor::fromRgb(wanted.accent))
{
}

QPainterPath PortraitPainter::path(const char *shape)
{
    std::istringstream text(shape);
    const auto next = [&text] {
        QPointF point;
        text >> point.rx() >> point.ry();
        return point;
    };
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (char verb = 0; text >> verb;) {
        if (verb == 'Z') {
            path.closeSubpath();
            continue;
        }
        const QPointF first = next();
        if (verb == 'M') {
            path.moveTo(first);
        } else if (verb == 'L') {
            path.lineTo(first);
        } else if (verb == 'O') {
            const QPointF radii = next();
            path.addEllipse(first, radii.x(), radii.y());
        } else {
            const QPointF second = next();
            path.cubicTo(first, second, next());
        }
    }
    return path;
}

QPainterPath PortraitPainter::mirrored(const QPainterPath &path)
{
    return QTransform(-1, 0, 0, 1, portraitWidth, 0).map(path);
}

QPainterPath PortraitPainter::pair(const char *shape)
{
    QPainterPath both = path(shape);
    both.addPath(mirrored(both));
    return both;
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

void PortraitPainter::ears()
{
    fill(pair("M96 160 C80 152 78 172 83 188 C87 200 96 202 100 194 Z"), skin.darker(106));
    line(pair("M92 168 C86 168 86 180 91 188"), skin.darker(124), 2);
    if (look.earrings)
        fill(pair("O89 203 3.6 3.6"), QColor(0xE3, 0xB9, 0x4F));
}

void PortraitPainter::head()
{
    QRadialGradient light(QPointF(138, 150), 120);
    light.setColorAt(0, skin.lighter(105));
    light.setColorAt(0.65, skin);
    light.setColorAt(1, skin.darker(109));
    fill("M150 92 C192 92 211 122 209 165 C207 206 184 250 150 251 C116 250 93 206 91 165 C89 122 108 92 150 92",
         light);
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
    const QPainterPath lids = pair("M110 171 C115 161 130 160 137 171 C130 179 116 179 110 171");
    fill(lids, QColor(0xFD, 0xFC, 0xFA));
    painter.save();
    painter.setClipPath(lids);
    fill("O124 169.5 7.4 7.4 O176 169.5 7.4 7.4", QColor::fromRgb(look.eyes));
    fill("O124 169.5 3.8 3.8 O176 169.5 3.8 3.8", QColor(0x1B, 0x16, 0x14));
    fill("O126.2 166.9 1.7 1.7 O178.2 166.9 1.7 1.7", Qt::white);
    painter.restore();
    line(pair("M109 171.5 C115 160.5 130 159.5 138 171"), QColor(0x33, 0x25, 0x20), 2.4);
    line(pair("M113 178 C118 182 128 182 134 178"), skin.darker(118), 1.2);
    // The nose.
    line("M153 168 C154 184 160 194 161 202 C160 209 146 210 140 204", skin.darker(126), 2.4);
}

void PortraitPainter::mouth()
{
    const QColor lip = QColor::fromHsl(8, 105, qBound(86, skin.lightness() - 62, 150));
    fill("M127 222 C138 219 146 219 150 221.5 C154 219 162 219 173 222 C164 236 136 236 127 222", lip);
    line("M126 221.5 C140 227.5 160 227.5 174 221.5", lip.darker(140), 1.8);
}

void PortraitPainter::glasses()
{
    if (!look.glasses)
        return;
    const QColor frame(0x3A, 0x34, 0x33);
    QPainterPath glass;
    glass.addRoundedRect(QRectF(104, 157, 39, 29), 11, 11);
    for (const auto &side : { glass, mirrored(glass) }) {
        fill(side, QColor(255, 255, 255, 40));
        line(side, frame, 2.8);
    }
    line(pair("M104 168 L89 164"), frame, 2.8);
    line("M143 169 C147 165 153 165 157 169", frame, 2.8);
}

} // namespace specimen
