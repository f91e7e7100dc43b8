#pragma once

#include <QString>

// The text itself if its width in pixels leaves 20 of the label's, else so many of its characters as their average
// width allows, followed by "...".
QString elidedToWidth(const QString &text, int textWidth, int labelWidth);
