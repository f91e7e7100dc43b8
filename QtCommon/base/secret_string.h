#pragma once

#include <QString>

// Overwrites the characters of a text that nobody else holds, and empties it. A text that is shared stays as it is for
// the others, and a literal is never written to.
void wipeSecret(QString &text);

// The same text in memory of its own, so that the copy can be wiped whatever happens to the other.
QString copyOfSecret(const QString &text);
