#pragma once

#include <QWidget>

// What the style sheets cost to which each card, and each hint, adds a colour, in KiB: what goes with them, and the
// room in which the longest is parsed. They are gone afterwards. What was measured is printed.
long costOfStyleSheets(QWidget &window);
