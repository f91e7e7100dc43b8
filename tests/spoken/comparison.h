#pragma once

#include <QString>
#include <QStringList>

// What is heard against what is shown. Case, punctuation and blanks do not count, since a voice has none of them, and
// "kan" is the way in which CAN is said.
namespace Comparison {

// Letters and digits only.
QString bare(const QString &text);

// The texts shown that no single utterance holds.
QStringList unheard(const QStringList &shown, const QStringList &heard);

// Of each utterance what is left of it without the texts shown and without what is only spoken; nothing if it holds
// nothing else. The entries of `onlySpoken` that were needed are added to `used`.
QStringList notShown(const QStringList &heard, const QStringList &shown, const QStringList &onlySpoken,
                     QStringList *used);

} // namespace Comparison
