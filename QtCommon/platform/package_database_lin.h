#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

// The installed packages of a Debian-like system, as dpkg-query tells them.
namespace PackageDatabase {

struct Package {
    QString name;
    QString version;
    int bits; // 64 or 32; packages for every architecture count as 64
    QString summary;
};
using Packages = QVector<Package>;

// Asks dpkg-query once. Empty without one, after a failure, and if it takes longer than five seconds.
Packages installed();

// Its output, a line a package. Lines that are no records and packages that are not wholly installed are left out.
Packages parse(const QByteArray &output);

// Lines on card software: packages for smart cards that a vendor word of CardSoftware hits in name or summary, and
// others whose name has such a word as a whole, since short words stand in the middle of many names.
QStringList cardSoftware(const Packages &packages);

// Version of the first package with this text in name or summary, empty if there is none.
QString versionOf(const Packages &packages, const QString &text, int bits);

} // namespace PackageDatabase
