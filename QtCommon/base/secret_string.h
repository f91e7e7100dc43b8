#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <initializer_list>

// Lets go of a text or of bytes, and empties the variable. Whoever is the last to hold them overwrites them first, in
// whatever order and on whatever threads the holders let go, as long as the last of them does it here; a literal, or
// the bytes of somebody else's buffer, are never written to.
void wipeSecret(QString &text);
void wipeSecret(QByteArray &bytes);

// Each of a list or map.
template <class Secrets>
void wipeSecrets(Secrets &secrets)
{
    for (auto &secret : secrets)
        wipeSecret(secret);
}

// Overwrites the characters where they stand, for all who share them. A literal is left as it is.
void overwriteSecret(const QString &text);

// These, one behind the other, in memory of their own: it can be wiped whatever happens to them, and nothing is left
// behind on the way, as where a text grows and moves.
QString joinSecrets(std::initializer_list<QStringView> parts);
