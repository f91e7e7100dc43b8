#include "card/cert_store.h"

#include "base/secret_string.h"
#include "card/card_tables.h"

#include <QMap>

namespace {

void forget(QList<QByteArray> &certs)
{
    wipeSecrets(certs);
    certs.clear();
}

} // namespace

void CertStore::clear()
{
    counts = {};
    for (QList<QByteArray> &list : lists)
        forget(list);
}

void CertStore::setCounts(int auth, int author, int pres, int qual)
{
    counts = { auth, author, pres, qual };
}

bool CertStore::hasContainer(int index) const
{
    return index >= 0 && index < containers && counts[index] > 0;
}

int CertStore::qualifiedCount() const
{
    return counts[Qualified];
}

void CertStore::setCerts(int index, const QByteArray &cert)
{
    if (index < 0 || index >= containers || cert.isEmpty())
        return;
    forget(lists[index]);
    lists[index] = { cert };
}

void CertStore::setQualifiedCerts(const QList<QByteArray> &certs)
{
    forget(lists[Qualified]);
    lists[Qualified] = certs;
}

QList<QByteArray> CertStore::certs(int index) const
{
    return index >= 0 && index < containers ? lists[index] : QList<QByteArray>();
}

int CertStore::containerIndex(const QString &name)
{
    static const QMap<QString, int> indices = {
        { Container::Authentication, Authentication },
        { Container::Authorization, Authorization },
        { Container::Presence, Presence },
        { Container::Qualified, Qualified },
    };
    return indices.value(name, -1);
}
