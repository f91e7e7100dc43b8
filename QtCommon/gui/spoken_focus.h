#pragma once

#include <QAccessible>

class QWidget;

// Gives the focus to a widget whose accessible name or description has just changed, so that a screen reader speaks it.
// A widget that has the focus already tells it anew: by itself nothing would be said, since the focus goes nowhere.
void focusAloud(QWidget *widget);

// Takes the focus from whatever has it in this window, unheard. Before that is hidden or goes off: else the toolkit
// hands the focus on to what comes next, and a screen reader speaks of that before it speaks of the page.
void leaveFocus(const QWidget *window);

// While it lives, a screen reader is not told where the focus goes; whatever else happens it is told. For the moments
// at which what has the focus is hidden: the toolkit hands the focus on to what comes next, and nobody went there.
class FocusPause {
public:
    FocusPause();
    ~FocusPause();
    FocusPause(const FocusPause &) = delete;
    FocusPause &operator=(const FocusPause &) = delete;

private:
    QAccessible::UpdateHandler before;
};
