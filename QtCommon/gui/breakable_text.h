#pragma once

#include <QString>

// Rich text with places at which a line may end in words that have none: behind the separators of a path, and in any
// run of letters that is longer than `run`. The marks have no width; tags and character references stay as they are.
QString breakableText(const QString &html, int run);

// The same text without these marks.
QString withoutBreaks(QString text);
