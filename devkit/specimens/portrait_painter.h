#pragma once

#include <QColor>
#include <QPainterPath>

#include "specimens/person.h"

class QPainter;

namespace specimen {

// Draws one portrait, from the background to the glasses. All positions are in the pixels of the finished picture; the
// face is symmetric about x = 150.
class PortraitPainter {
public:
    PortraitPainter(QPainter &paintOn, const Look &wanted);

    void draw();

private:
    // Shapes are written as in an SVG path, absolute: M x y, L x y, C x y x y x y, Z; and O x y rx ry for an ellipse.
    static QPainterPath path(const char *shape);
    static QPainterPath mirrored(const QPainterPath &path);
    static QPainterPath pair(const char *shape); // on both sides of the face
    void fill(const QPainterPath &path, const QBrush &brush);
    void fill(const char *shape, const QBrush &brush) { fill(path(shape), brush); }
    void line(const QPainterPath &path, const QColor &pen, qreal width);
    void line(const char *shape, const QColor &pen, qreal width) { line(path(shape), pen, width); }

    // portrait_face.cpp
    void background();
    void ears();
    void head();
    void eyes();
    void mouth();
    void glasses();

    // portrait_hair.cpp
    void hairBehind();
    void hairInFront();
    void brows();
    void beard();

    // portrait_clothes.cpp
    void neck();
    void clothes();
    void roundNeck();
    void collar(const QColor &collarColour);
    void shirt();
    void blouse();
    void jacketAndTie();
    void turtleneck();

    QPainter &painter;
    const Look &look;
    const QColor skin;
    const QColor hair;
    const QColor cloth;
    const QColor accent;
};

} // namespace specimen
