#include "certificate_text.h"

#include <QLocale>
#include <QSslCertificate>

#include <utility>

namespace CertificateText {

QString issuer(const QSslCertificate &certificate)
{
    QStringList parts;
    for (const char *entry : { "CN", "O", "OU", "C" })
        parts << certificate.issuerInfo(entry).join(' ');
    return issuer(parts);
}

QString issuer(const QStringList &parts)
{
    // In one pass, so two empty entries beside each other still show.
    return parts.join(", ").replace(", ,", ",");
}

Holder holder(const QSslCertificate &certificate)
{
    const QString surname = certificate.subjectInfo("SN").join(' ');
    QString names = certificate.subjectInfo("CN").join(' ');
    names.chop(surname.size());
    // In place, so that no copy is left that nobody overwrites.
    return { surname, std::move(names).trimmed() };
}

QString longDate(const QDateTime &time)
{
    return QLocale::system().toString(time.toLocalTime().date(), "dd MMMM yyyy");
}

int columns(int cards)
{
    return cards == 1 ? 1 : 2;
}

int rows(int cards)
{
    return (cards + 1) / 2;
}

} // namespace CertificateText
