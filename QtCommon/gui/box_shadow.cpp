#include "gui/box_shadow.h"

#include <QGraphicsBlurEffect>
#include <QGraphicsPathItem>
#include <QGraphicsScene>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>

#include <cmath>

namespace {

// How far the blur reaches to both sides of the box's edge.
int reachOf(qreal blur)
{
    return static_cast<int>(std::ceil(blur));
}

} // namespace

BoxShadow::BoxShadow(QWidget *box, int radius) : QGraphicsDropShadowEffect(box), widget(box), cornerRadius(radius) { }

int BoxShadow::cornerOf(int reach) const
{
    return 2 * reach + cornerRadius;
}

void BoxShadow::renderPatch(qreal ratio)
{
    const int reach = reachOf(blurRadius());
    const int side = 2 * cornerOf(reach) + 1;
    patchColour = color();
    patchBlur = blurRadius();

    // In the screen's own pixels, since effects take no notice of a painter's scale.
    const QSize size = QSize(side, side) * ratio;
    QPainterPath box;
    box.addRoundedRect(
        QRectF(QPointF(0, 0), size).adjusted(reach * ratio, reach * ratio, -reach * ratio, -reach * ratio),
        cornerRadius * ratio, cornerRadius * ratio);
    QGraphicsScene scene;
    auto *blur = new QGraphicsBlurEffect;
    // The blur effect doubles its radius, the drop shadow does not.
    blur->setBlurRadius(blurRadius() * ratio / 2);
    scene.addPath(box, Qt::NoPen, color())->setGraphicsEffect(blur);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    scene.render(&painter, image.rect(), image.rect());
    painter.end();
    patch = QPixmap::fromImage(image);
    patch.setDevicePixelRatio(ratio);
}

void BoxShadow::draw(QPainter *painter)
{
    const qreal ratio = painter->device()->devicePixelRatioF();
    if (patch.isNull() || patch.devicePixelRatioF() != ratio || patchColour != color() || patchBlur != blurRadius())
        renderPatch(ratio);

    const int reach = reachOf(blurRadius());
    const int corner = cornerOf(reach);
    const QRectF target = sourceBoundingRect().adjusted(-reach, -reach, reach, reach).translated(offset());
    if (target.width() < 2 * corner || target.height() < 2 * corner) {
        // Too small for four whole corners.
        QGraphicsDropShadowEffect::draw(painter);
        return;
    }
    painter->save();
    painter->setClipPath(aroundBox(target), Qt::IntersectClip);
    const qreal toX[] = { target.left(), target.left() + corner, target.right() - corner, target.right() };
    const qreal toY[] = { target.top(), target.top() + corner, target.bottom() - corner, target.bottom() };
    const int from[] = { 0, corner, corner + 1, 2 * corner + 1 };
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (row == 1 && column == 1)
                continue; // behind the box
            const QRectF to(QPointF(toX[column], toY[row]), QPointF(toX[column + 1], toY[row + 1]));
            const QRectF source(from[column] * ratio, from[row] * ratio, (from[column + 1] - from[column]) * ratio,
                                (from[row + 1] - from[row]) * ratio);
            painter->drawPixmap(to, patch, source);
        }
    }
    painter->restore();
    drawWidget(painter);
}

// Where the box is not, for its ring may leave a line of the ground open. Less by the edge, whose pixels are mixed.
QPainterPath BoxShadow::aroundBox(const QRectF &shadow) const
{
    constexpr qreal edge = 1;
    QPainterPath path;
    path.addRect(shadow);
    path.addRoundedRect(sourceBoundingRect().adjusted(edge, edge, -edge, -edge), cornerRadius, cornerRadius);
    return path;
}

void BoxShadow::drawWidget(QPainter *painter)
{
    // Not drawSource: its painter stays open, and the shadows of widgets inside this one could not open theirs.
    const QRegion dirty = painter->paintEngine()->systemClip();
    const QTransform toWidget = painter->combinedTransform().inverted();
    const QRect exposed = toWidget.mapRect(QRectF(dirty.boundingRect())).toAlignedRect();
    const QRect box = dirty.isEmpty() ? widget->rect() : exposed & widget->rect();
    if (box.isEmpty())
        return;
    // By an offset and not by the painter's transformation, which the clip of a shadow inside this one would miss.
    const QPoint origin = painter->worldTransform().map(QPoint(0, 0));
    painter->save();
    painter->setWorldTransform(QTransform());
    widget->render(painter, origin + box.topLeft(), box, QWidget::DrawChildren);
    painter->restore();
}
