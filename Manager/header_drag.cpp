#include "header_drag.h"

#include <cstdlib>

bool isOnHeader(QPoint press, QSize window, QSize frame)
{
    constexpr int frameWidth = 900;
    constexpr int headerHeight = 80;
    const int marginX = std::abs((window.width() - frame.width()) / 2);
    const int marginY = std::abs((window.height() - frame.height()) / 2);
    // The vertical margin only shifts the lower edge, since the frame stands at the window's top.
    return press.x() > marginX && press.x() < marginX + frameWidth && press.y() > 0
        && press.y() < marginY + headerHeight;
}
