#pragma once

#include <QPoint>
#include <QSize>

// Whether a press in the window lies on the header of the frame inside it: within the frame's 900 pixels of width and
// its top 80 pixels, borders excluded.
bool isOnHeader(QPoint press, QSize window, QSize frame);
