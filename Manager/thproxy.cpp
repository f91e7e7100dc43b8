#include "thproxy.h"

#include "base/secret_string.h"
#include "card/card_tables.h"
#include "card/pkcs11.h"

#include <QDebug>
#include <QSslCertificate>
#include <QThread>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds refreshPause { 50 };

// A queued call carries copies of its arguments. Whoever sent it has let go of them by the time the card has answered.
void wipeArgument(const QString &argument)
{
    wipeSecret(const_cast<QString &>(argument));
}

} // namespace

ThProxy::ThProxy(Pkcs11 *card) : pkcs11(card) { }

void ThProxy::readers(int requireFlag, int nonRequiredFlag)
{
    pkcs11->finalize();
    QStringList found;
    const bool success =
        pkcs11->readers(found, static_cast<quint32>(requireFlag), static_cast<quint32>(nonRequiredFlag));
    emit readersFin(success, found);
}

void ThProxy::certsCount(const QString &reader)
{
    // Asked in another order than told.
    const int pres = pkcs11->certsCount(reader, Container::Presence);
    const int auth = pkcs11->certsCount(reader, Container::Authentication);
    const int author = pkcs11->certsCount(reader, Container::Authorization);
    const int qual = pkcs11->certsCount(reader, Container::Qualified);
    emit certsCountFin(auth, author, pres, qual);
}

ThProxy::ContainerStates ThProxy::containerStates(const QString &reader)
{
    const auto auth = pkcs11->tokenInfo(reader, Container::Authentication);
    const auto author = pkcs11->tokenInfo(reader, Container::Authorization);
    const auto qual = pkcs11->tokenInfo(reader, Container::Qualified);
    ContainerStates states;
    states.auth = auth.value("status").toString();
    states.author = author.value("status").toString();
    states.qual = qual.value("status").toString();
    states.tl_auth = auth.value("tries").toInt();
    states.tl_author = author.value("tries").toInt();
    // Presence has no PIN; its place carries the tries of the PUK, which is the officer's PIN of Qualified.
    states.tl_pres = qual.value("triesSO").toInt();
    states.tl_qual = qual.value("tries").toInt();
    return states;
}

void ThProxy::getConteinersAndICAO(const QString &reader)
{
    qDebug().noquote() << "Checking conteiners";
    const ContainerStates states = containerStates(reader);
    const bool pinPad = pkcs11->isPinPad(reader) == 1;
    qDebug().noquote() << "reader with pinpad: " << pinPad;
    const int chipType = pkcs11->typeOfChip(reader);
    const QStringList names { "DG1", "DG11", "DG12", "DG13" };
    auto groups = pkcs11->tokenDataMap(reader, Container::Emrtd, names);
    if (groups.isEmpty()) {
        qDebug().noquote() << "Loading DG1/DG11/DG12/DG13 from Presence container";
        groups = pkcs11->tokenDataMap(reader, Container::Presence, names);
    }
    emit getConteinersAndICAOFin(states.auth, states.author, states.qual, states.tl_auth, states.tl_author,
                                 states.tl_pres, states.tl_qual, pinPad, chipType, groups.value("DG1"),
                                 groups.value("DG11"), groups.value("DG12"), groups.value("DG13"));
    // What was read of the card goes with the last who holds it: this thread, or a receiver of the answer.
    wipeSecrets(groups);
}

void ThProxy::getPhoto(const QString &reader)
{
    const QStringList names { "DG2" };
    auto groups = pkcs11->tokenDataMap(reader, Container::Emrtd, names);
    if (groups.isEmpty()) {
        qDebug().noquote() << "Loading DG2 from Presence container";
        groups = pkcs11->tokenDataMap(reader, Container::Presence, names);
    }
    emit getPhotoFin(groups.value("DG2"));
    wipeSecrets(groups);
}

void ThProxy::selectReader(const QString &reader)
{
    emit selectReaderFin(pkcs11->selectReader(reader));
}

void ThProxy::getCerts(const QString &reader, bool getAuth, bool getPres, bool getAuthor, bool getQualified)
{
    const auto certs = [this, &reader](bool wanted, const char *conteiner) {
        return wanted ? pkcs11->tokenCerts(reader, conteiner) : QByteArrayList();
    };
    QByteArrayList auth = certs(getAuth, Container::Authentication);
    QByteArrayList pres = certs(getPres, Container::Presence);
    QByteArrayList author = certs(getAuthor, Container::Authorization);
    QByteArrayList qual = certs(getQualified, Container::Qualified);
    emit getCertsFin(auth.value(0), pres.value(0), author.value(0), qual);
    for (QByteArrayList *list : { &auth, &pres, &author, &qual })
        wipeSecrets(*list);
}

void ThProxy::changePin(const QString &reader, const QString &conteiner, const QString &oldPin, const QString &newPin)
{
    const int result = pkcs11->changePIN(reader, conteiner, oldPin, newPin);
    wipeArgument(oldPin);
    wipeArgument(newPin);
    // The new tries reach the window before the result does, and its pages rely on that.
    refreshCerts(reader);
    emit changePinFin(result);
}

void ThProxy::unblockPin(const QString &reader, const QString &conteiner, const QString &PUK, const QString &newPIN)
{
    const int result = pkcs11->unblockPIN(reader, conteiner, PUK, newPIN);
    wipeArgument(PUK);
    wipeArgument(newPIN);
    refreshCerts(reader);
    emit unblockPinFin(result);
}

void ThProxy::refreshCerts(const QString &reader)
{
    const ContainerStates states = containerStates(reader);
    emit refreshCertsFin(states.auth, states.author, states.qual, states.tl_auth, states.tl_author, states.tl_pres,
                         states.tl_qual);
    QThread::msleep(static_cast<unsigned long>(refreshPause.count()));
}

void ThProxy::loadSsl()
{
    qDebug().noquote() << "load SSL";
    const QSslCertificate forced { QByteArray() };
    Q_UNUSED(forced);
    qDebug().noquote() << "SSL loaded";
}
