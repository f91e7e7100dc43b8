#pragma once

#include <QStringList>

class QWidget;

// What a person sees in the window: the texts of its visible widgets as they stand there, without markup. Not one word
// of it comes from the names and descriptions for screen readers.
QStringList shownTexts(const QWidget *window);

// Those of them that can be asked for: what is off is no stop, and its text stays unsaid until it can be used.
QStringList textsToHear(const QWidget *window);
