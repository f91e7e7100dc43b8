#pragma once

#include <QPoint>
#include <QSize>

// Whether a press in the window lies on the header of the frame inside it: within the frame's 900 pixels of width, and
// above the header's 80 pixels plus the vertical margin, borders excluded.
bool isOnHeader(QPoint press, QSize window, QSize frame);
