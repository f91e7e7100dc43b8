#pragma once

#include <QGraphicsDropShadowEffect>
#include <QPainterPath>
#include <QPixmap>

// The drop shadow of a filled box. Looks like its base class on a box of one colour, and is drawn in a fraction of the
// time: the shadow is blurred once, small, and stretched along the edges, where the base class blurs a picture of the
// whole widget at every change in it. Colour, offset and blur radius are those of the base class.
class BoxShadow : public QGraphicsDropShadowEffect {
    Q_OBJECT

public:
    // The radius is that of the box's own corners, in pixels. The caller sets the effect on the box, which owns it
    // then.
    explicit BoxShadow(QWidget *box, int cornerRadius = 0);

protected:
    void draw(QPainter *painter) override;

private:
    void renderPatch(qreal ratio);
    // Side of a corner of the patch, beyond which the shadow no longer changes along an edge.
    int cornerOf(int reach) const;
    QPainterPath aroundBox(const QRectF &shadow) const;
    void drawWidget(QPainter *painter);

    QWidget *widget;
    int cornerRadius;
    // The shadow of a box just large enough to hold four corners and one pixel between them.
    QPixmap patch;
    QColor patchColour;
    qreal patchBlur = 0;
};
