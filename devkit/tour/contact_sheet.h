#pragma once

#include <QStringList>

// Puts the pictures side by side on one, each with the name of its file below it, in the order of the list. False if
// one of them cannot be read or the sheet cannot be written.
bool saveContactSheet(const QStringList &pictures, const QString &path);
