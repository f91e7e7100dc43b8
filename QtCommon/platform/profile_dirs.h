#pragma once

#include <QString>
#include <QStringList>

// Entries of a folder of profiles, given with "/" at its end, that look like a database of NSS: those under which a
// list of modules stands, in its present form or the old one. Spelt as the folder is, and in no order.
QStringList profileDirsIn(const QString &root);
