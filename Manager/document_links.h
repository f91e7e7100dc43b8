#pragma once

#include <QString>

// Rich text of a link to a document installed with the program.
QString documentLink(const QString &path, const QString &title);
