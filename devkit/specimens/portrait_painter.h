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
    static QPainterPath mirrored(const QPainterPath &path);
    void fill(const QPainterPath &path, const QBrush &brush);
    void line(const QPainterPath &path, const QColor &pen, qreal width);
    void disc(const QPointF &at, qreal radius, const QColor &of);

    // portrait_face.cpp
    void background();
    QPainterPath headShape() const;
    void ears();
    void head();
    void eyes();
    void nose();
    void mouth();
    void glasses();

    // portrait_hair.cpp
    void hairBehind();
    void hairInFront();
    QPainterPath curtain(qreal down) const;
    QPainterPath fringe() const;
    void baldSides();
    void strands();
    void brows();
    void beard();

    // portrait_clothes.cpp
    void neck();
    void clothes();
    QPainterPath shoulders() const;
    QPainterPath nape() const;
    void fold(bool left);
    void roundNeck();
    void collar(const QColor &collarColour);
    void shirt(const QColor &body, const QColor &collarColour);
    void blouse();
    void jacketAndTie();
    void turtleneck();

    static constexpr qreal middle = 150;

    QPainter &painter;
    const Look &look;
    const QColor skin;
    const QColor hair;
    const QColor cloth;
    const QColor accent;
};

} // namespace specimen
