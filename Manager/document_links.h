#pragma once

#include <QColor>
#include <QString>

// Rich text of a link to a document installed with the program.
QString documentLink(const QString &path, const QString &title);

// The rich text with its links in this colour: style sheets do not reach them.
QString inLinkColour(QString html, const QColor &colour);
