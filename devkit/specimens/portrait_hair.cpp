#include "specimens/portrait_painter.h"

#include <QLinearGradient>

namespace specimen {

namespace {

// Both are empty where there is none.
const struct {
    Hair hair;
    const char *behind;
    const char *inFront;
} styles[] = {
    { Hair::ShortParted, "",
      "M88 168 C74 96 104 60 156 64 C206 66 226 108 212 168 C209 150 205 138 199 128 C176 134 148 126 126 108"
      "C112 120 98 138 88 168" },
    { Hair::Cropped, "",
      "M89 152 C82 98 112 72 150 72 C188 72 218 98 211 152 C207 128 198 114 186 108 C164 101 136 101 114 108"
      "C102 114 93 128 89 152" },
    { Hair::Curly,
      "O92 116 27 27 O208 116 27 27 O84 148 27 27 O216 148 27 27 O106 88 27 27 O194 88 27 27 O134 74 27 27"
      "O168 74 27 27",
      "O104 112 19 18 O126 98 19 18 O150 93 19 18 O174 98 19 18 O196 112 19 18 O93 134 19 18 O207 134 19 18" },
    { Hair::Long,
      "M150 62 C214 60 233 118 228 190 C226 240 240 280 226 318 L74 318 C60 280 74 240 72 190 C67 118 86 60 150 62",
      // Parted a little left of the middle, falling on both sides.
      "M140 66 C92 64 66 108 74 190 C78 230 72 264 82 296 C98 260 92 210 95 168 C100 134 122 122 138 92"
      "C158 124 198 132 205 168 C208 210 202 260 218 296 C228 264 222 230 226 190 C234 108 208 64 140 66" },
    { Hair::Bob,
      "M150 62 C216 60 236 118 230 186 C229 218 226 240 208 250 L92 250 C74 240 71 218 70 186 C64 118 84 60 150 62",
      "M150 64 C90 62 66 108 72 190 C73 220 76 238 90 248 C97 220 91 190 95 148 C118 134 182 134 205 148"
      "C209 190 203 220 210 248 C224 238 227 220 228 190 C234 108 210 62 150 64" },
    { Hair::Bun, "O150 60 32 27",
      "M89 160 C80 100 108 70 150 70 C192 70 220 100 211 160 C206 132 190 116 150 108 C110 116 94 132 89 160" },
    { Hair::Bald, "", "" },
};

const char *shapeOf(Hair hair, bool inFront)
{
    for (const auto &style : styles) {
        if (style.hair == hair)
            return inFront ? style.inFront : style.behind;
    }
    return "";
}

} // namespace

void PortraitPainter::hairBehind()
{
    fill(shapeOf(look.hair, false), hair.darker(118));
}

void PortraitPainter::hairInFront()
{
    if (look.hair == Hair::Bald)
        return fill(pair("M89 176 C76 152 80 116 100 104 C98 124 94 134 96 158 C94 166 92 172 89 176"), hair);
    QLinearGradient shine(0, 62, 0, 190);
    shine.setColorAt(0, hair.lighter(118));
    shine.setColorAt(0.5, hair);
    shine.setColorAt(1, hair.darker(108));
    fill(shapeOf(look.hair, true), shine);
    // Single strands.
    if (look.hair != Hair::Curly && look.hair != Hair::Cropped)
        line("M130 78 C106 88 92 110 88 138 M172 78 C196 90 208 112 212 138", hair.darker(120), 1.6);
}

void PortraitPainter::brows()
{
    const QColor pen = hair.lightness() > 150 ? hair.darker(135) : hair.darker(112);
    line(pair("M109 152 C116 144 128 143 137 149"), pen, look.beard || look.moustache ? 4.8 : 3.8);
}

void PortraitPainter::beard()
{
    const QColor of = hair.lightness() > 150 ? hair : hair.lighter(112);
    if (look.beard) {
        const QPainterPath outer =
            path("M92 176 C93 222 112 262 150 263 C188 262 207 222 208 176 C203 200 194 211 178 213"
                 "C166 209 134 209 122 213 C106 211 97 200 92 176");
        fill(outer.subtracted(path("O150 226 23 9.5")), of);
    }
    const QPainterPath half = path("M150 212 C140 207 124 212 117 226 C128 221 142 221 150 219 Z");
    if (look.moustache || look.beard) {
        fill(half, of.darker(106));
        fill(mirrored(half), of.darker(106));
    }
}

} // namespace specimen
