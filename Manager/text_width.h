#pragma once

#include <QString>

// The text itself if its width in pixels leaves 20 of the label's, else so many of its characters as their average
// width allows, followed by "...".
QString elidedToWidth(const QString &text, int textWidth, int labelWidth);

// For a tool tip: a text that could be taken for rich text so that it shows as it is, any other unchanged. Names come
// from the card and must not become markup.
QString plainToolTip(const QString &text);
