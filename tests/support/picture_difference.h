#pragma once

#include <QImage>
#include <QString>

// Where two pictures of one size differ most, if by more than so many of the 255 steps of grey; empty if they do not.
inline QString differenceInGrey(const QImage &one, const QImage &other, int most)
{
    int worst = 0;
    QPoint where;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const int steps = qAbs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y)));
            if (steps > worst) {
                worst = steps;
                where = { x, y };
            }
        }
    }
    return worst <= most ? QString() : QString("%1 at %2, %3").arg(worst).arg(where.x()).arg(where.y());
}
