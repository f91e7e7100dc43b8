#include "specimens/portrait_painter.h"

#include <QLinearGradient>

namespace specimen {

void PortraitPainter::neck()
{
    fill("M123 225 L123 288 C124 318 176 318 177 288 L177 225 Z", skin.darker(108));
    fill("M123 236 C136 270 164 270 177 236 L177 252 C164 282 136 282 123 252 Z", skin.darker(124));
}

void PortraitPainter::clothes()
{
    QLinearGradient fabric(0, 285, 0, 400);
    fabric.setColorAt(0, cloth.lighter(108));
    fabric.setColorAt(1, cloth.darker(112));
    fill("M18 400 C18 338 44 312 88 300 C106 295 116 290 122 282 C132 306 168 306 178 282 C184 290 194 295 212 300"
         "C256 312 282 338 282 400 Z",
         fabric);
    line(pair("M66 400 C66 378 70 362 78 350"), cloth.darker(128), 2);
    switch (look.clothes) {
    case Clothes::RoundNeck:
        return roundNeck();
    case Clothes::Shirt:
        return shirt();
    case Clothes::Blouse:
        return blouse();
    case Clothes::JacketAndTie:
        return jacketAndTie();
    case Clothes::Turtleneck:
        return turtleneck();
    }
}

// Every opening begins across the neck, above where the cloth begins.
void PortraitPainter::roundNeck()
{
    fill("M123 276 L177 276 L184 286 C178 322 122 322 116 286 Z", skin.darker(108));
    line("M115 288 C122 325 178 325 185 288", cloth.darker(122), 5);
}

void PortraitPainter::collar(const QColor &collarColour)
{
    fill("M123 276 L177 276 L180 284 L150 316 L120 284 Z", skin.darker(108));
    const QPainterPath half = path("M118 278 C112 286 108 292 106 300 L132 332 L150 312 C136 306 124 294 118 278");
    for (const auto &side : { half, mirrored(half) }) {
        fill(side, collarColour);
        line(side, collarColour.darker(118), 1.2);
    }
}

void PortraitPainter::shirt()
{
    line("M150 314 L150 400", cloth.darker(118), 1.6);
    fill("O157 340 3 3 O157 374 3 3", cloth.darker(130));
    collar(cloth.lighter(112));
}

void PortraitPainter::blouse()
{
    fill("M123 276 L177 276 L183 284 L150 346 L117 284 Z", skin.darker(108));
    fill(pair("M115 284 L104 300 L150 362 L150 344 Z"), accent);
}

void PortraitPainter::jacketAndTie()
{
    fill("M112 292 L150 400 L188 292 C176 308 124 308 112 292", QColor(0xF7, 0xF7, 0xF5));
    fill("M141 312 L159 312 L155 326 L166 400 L134 400 L145 326 Z", accent);
    fill("M141 312 L159 312 L155 327 L145 327 Z", accent.darker(122));
    collar(QColor(0xFF, 0xFF, 0xFF));
    fill(pair("M110 292 L84 322 L100 334 L94 342 L138 400 L142 400 L108 300 Z"), cloth.darker(126));
}

void PortraitPainter::turtleneck()
{
    fill("M118 268 C132 284 168 284 182 268 C187 284 188 298 184 306 C170 322 130 322 116 306 C112 298 113 284 118 268",
         cloth.lighter(110));
    line("M118 269 C132 285 168 285 182 269", cloth.darker(120), 2);
    line("M115 306 C130 323 170 323 185 306", cloth.darker(122), 2);
}

} // namespace specimen
