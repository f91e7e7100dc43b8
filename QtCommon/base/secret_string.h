#pragma once

#include <QByteArray>
#include <QString>

// Lets go of a text or of bytes, and empties the variable. Whoever is the last to hold them overwrites them first, in
// whatever order and on whatever threads the holders let go, as long as the last of them does it here; a literal, or
// the bytes of somebody else's buffer, are never written to.
void wipeSecret(QString &text);
void wipeSecret(QByteArray &bytes);

// The same text in memory of its own, so that the copy can be wiped whatever happens to the other.
QString copyOfSecret(const QString &text);
