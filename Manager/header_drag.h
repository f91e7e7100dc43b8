#pragma once

#include <QPoint>
#include <QSize>

// Whether a press in the window lies on the header of the frame inside it: within the frame's 900 pixels of width, and
// above the header's 80 pixels plus the vertical margin, borders excluded.
bool isOnHeader(QPoint press, QSize window, QSize frame);

// The drag of a window by its header. The place of the press counts, so the window still moves when the pointer has
// left the header.
struct HeaderDrag {
    bool dragging = false; // the left button is held down
    QPoint dragPos; // of the last press of any button

    bool moves(QSize window, QSize frame) const { return dragging && isOnHeader(dragPos, window, frame); }
};
