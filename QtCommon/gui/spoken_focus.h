#pragma once

class QWidget;

// Gives the focus to a widget whose accessible name or description has just changed, so that a screen reader speaks it.
// A widget that has the focus already tells it anew: by itself nothing would be said, since the focus goes nowhere.
void focusAloud(QWidget *widget);
