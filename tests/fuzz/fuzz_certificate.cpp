#include "card/card_tables.h"
#include "card/cert_store.h"
#include "certificate_text.h"
#include "fuzz/fuzz_target.h"
#include "text_width.h"

#include <QRegularExpression>
#include <QSslCertificate>
#include <QTextDocument>

#include <openssl/x509.h>

#include <memory>

// The certificate that a card holds, whatever it is: what its card on the page says, and the holder's names that are
// taken from it. What it should say is read by OpenSSL from the same bytes.
namespace {

using Fuzz::require;
using X509Pointer = std::unique_ptr<X509, decltype(&X509_free)>;

// The certificate's bytes carry each text; the rest is separators.
constexpr int mostSeparators = 6;
constexpr int longestDate = 40;

// Values of one kind, the last first, as the toolkit has them.
QString entry(const X509_NAME *name, int kind)
{
    QStringList values;
    for (int at = X509_NAME_get_index_by_NID(name, kind, -1); at >= 0;
         at = X509_NAME_get_index_by_NID(name, kind, at)) {
        unsigned char *bytes = nullptr;
        const int size = ASN1_STRING_to_UTF8(&bytes, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, at)));
        values.prepend(size < 0 ? QString() : QString::fromUtf8(reinterpret_cast<char *>(bytes), size));
        OPENSSL_free(bytes);
    }
    return values.join(' ');
}

// From left to right, and what was closed up is not looked at again.
QString closedUp(const QString &text)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text.mid(i, 3) == ", ,")
            i += 2;
    }
    return result;
}

void checkTips(const QString &name)
{
    const QString tip = plainToolTip(name);
    if (Qt::mightBeRichText(tip)) {
        const QString inner = tip.mid(4, tip.size() - 9);
        require(tip.startsWith("<qt>") && tip.endsWith("</qt>") && !inner.contains('<'), "a name is markup");
    } else {
        require(tip == name, "a plain tip is another text");
    }
    const QString cut = elidedToWidth(name, 8 * name.size(), 200);
    require(cut == name || (cut.endsWith("...") && name.startsWith(cut.left(cut.size() - 3)) && 8 * cut.size() < 300),
            "a name is cut to something else");
}

void checkDate(const QDateTime &time, const ASN1_TIME *expected)
{
    static const QRegularExpression form("\\A(\\d\\d) \\w+ (\\d+)\\z", QRegularExpression::UseUnicodePropertiesOption);
    const QString text = CertificateText::longDate(time);
    require(text.size() <= longestDate, "a date without end");
    require(text.isEmpty() == !time.isValid(), "a date for a time that is none");
    tm parts = {};
    // The toolkit takes no notice of a zone, which the standard forbids.
    const QByteArray raw(reinterpret_cast<const char *>(ASN1_STRING_get0_data(expected)), ASN1_STRING_length(expected));
    if (text.isEmpty() || !raw.endsWith('Z') || ASN1_TIME_to_tm(expected, &parts) != 1)
        return;
    const QRegularExpressionMatch match = form.match(text);
    require(match.hasMatch(), "a date of another form: " + text);
    require(match.captured(1).toInt() == parts.tm_mday && match.captured(2).toInt() == parts.tm_year + 1900,
            "another day than OpenSSL's: " + text);
}

void checkCertificate(const QSslCertificate &certificate, const X509 *expected, int room)
{
    const QString issuer = CertificateText::issuer(certificate);
    const CertificateText::Holder holder = CertificateText::holder(certificate);
    require(issuer.size() <= room + mostSeparators, "an issuer longer than the certificate");
    checkTips(holder.names);
    checkTips(issuer);

    QStringList parts;
    for (const int kind : { NID_commonName, NID_organizationName, NID_organizationalUnitName, NID_countryName })
        parts << entry(X509_get_issuer_name(expected), kind);
    require(issuer == closedUp(parts.join(", ")), "another issuer than OpenSSL's");

    const QString surname = entry(X509_get_subject_name(expected), NID_surname);
    const QString common = entry(X509_get_subject_name(expected), NID_commonName);
    require(holder.surname == surname, "another surname than OpenSSL's");
    require(holder.names == common.left(qMax(0, common.size() - surname.size())).trimmed(),
            "other names than OpenSSL's");

    checkDate(certificate.effectiveDate(), X509_get0_notBefore(expected));
    checkDate(certificate.expiryDate(), X509_get0_notAfter(expected));
}

// The store keeps what came, wherever an index or a name leads.
void checkStore(const QByteArray &der)
{
    CertStore store;
    store.setCounts(1, 0, -1, der.size());
    for (const int index : { -1, 0, 1, 2, 3, 4 })
        store.setCerts(index, der);
    require(store.certs(-1).isEmpty() && store.certs(4).isEmpty(), "a container that there is not");
    require(store.certs(CertStore::Presence) == (der.isEmpty() ? QByteArrayList() : QByteArrayList { der }),
            "another certificate than came");
    store.setQualifiedCerts({ der, der });
    require(store.certs(CertStore::Qualified).size() == 2 && store.qualifiedCount() == der.size(), "one is lost");
    require(store.hasContainer(0) && !store.hasContainer(1) && !store.hasContainer(2) && !store.hasContainer(4),
            "counts are mixed up");
    require(CertStore::containerIndex(QString::fromUtf8(der)) == -1, "bytes of a certificate name a container");
    store.clear();
    require(store.certs(CertStore::Qualified).isEmpty() && !store.hasContainer(0), "something stays");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qputenv("TZ", "UTC");
    Fuzz::silence();
    const QByteArray der(reinterpret_cast<const char *>(data), static_cast<int>(size));
    require(CertStore::containerIndex(Container::Qualified) == CertStore::Qualified, "a container has lost its place");
    checkStore(der);

    const QList<QSslCertificate> certificates = QSslCertificate::fromData(der, QSsl::Der);
    const int count = certificates.size();
    const int columns = CertificateText::columns(count);
    require(columns * CertificateText::rows(count) >= count && columns <= 2, "a card without a cell");

    // They may stand one behind the other.
    const unsigned char *at = data;
    for (const QSslCertificate &certificate : certificates) {
        const unsigned char *const end = data + size;
        const X509Pointer expected(d2i_X509(nullptr, &at, end - at), X509_free);
        require(expected != nullptr, "a certificate that OpenSSL does not read");
        if (!certificate.isNull())
            checkCertificate(certificate, expected.get(), der.size());
    }
    return 0;
}
