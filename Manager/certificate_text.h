#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

class QSslCertificate;

// What a card of the certificate page says, and how the cards stand. No widgets here.
namespace CertificateText {

// "CN, O, OU, C" of the issuer, each with its values joined by a blank. An empty one in the middle closes up, at either
// end it leaves its separator.
QString issuer(const QSslCertificate &certificate);
QString issuer(const QStringList &parts);

// The surname, and the common name without as many characters at its end: there it stands once more.
struct Holder {
    QString surname;
    QString names;
};
Holder holder(const QSslCertificate &certificate);

// Like "17 października 2023", in the language and the time zone of the machine; empty for a time that cannot be read.
QString longDate(const QDateTime &time);

int columns(int cards);
int rows(int cards);

} // namespace CertificateText
