#include "carried_answers.h"

#include "base/secret_string.h"
#include "thproxy.h"

namespace {

using Text = const QString &;
using Bytes = const QByteArray &;

// Only for what a queued call carries: that is a copy of its own.
void wipeCarried(Bytes bytes)
{
    wipeSecret(const_cast<QByteArray &>(bytes));
}

void wipeGroups(Text, Text, Text, int, int, int, int, bool, int, Bytes dg1, Bytes dg11, Bytes dg12, Bytes dg13)
{
    for (const QByteArray *group : { &dg1, &dg11, &dg12, &dg13 })
        wipeCarried(*group);
}

void wipeCerts(Bytes authen, Bytes presence, Bytes author, const QByteArrayList &qual)
{
    for (const QByteArray *cert : { &authen, &presence, &author })
        wipeCarried(*cert);
    wipeSecrets(const_cast<QByteArrayList &>(qual));
}

} // namespace

void wipeCarriedAnswers(ThProxy *worker, QObject *receiver)
{
    // Queued whoever emits; else they would be the variables of the sender.
    constexpr auto always = Qt::QueuedConnection;
    QObject::connect(worker, &ThProxy::getConteinersAndICAOFin, receiver, wipeGroups, always);
    QObject::connect(worker, &ThProxy::getPhotoFin, receiver, wipeCarried, always);
    QObject::connect(worker, &ThProxy::getCertsFin, receiver, wipeCerts, always);
}
