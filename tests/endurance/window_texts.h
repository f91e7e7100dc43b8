#pragma once

#include <QString>

class QWidget;

// All that a window says, hidden widgets left out if only what can be seen is asked for: texts, tool tips, names and
// descriptions for a screen reader, cells of tables. One line a text, with the widget that says it.
QString windowTexts(const QWidget &window, bool onlyVisible);
