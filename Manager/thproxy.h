#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QObject>
#include <QString>
#include <QStringList>

class Pkcs11;

// The card worker: the only code that calls Pkcs11. It lives on a thread of its own, since a card call may take as long
// as a user needs at a pinpad. A request is a queued call of a slot, the answer a signal that ends in Fin; requests run
// one at a time, in the order of their emission, and each ends with its Fin whatever happened. Results of Pkcs11 pass
// unchanged.
//
// It keeps nothing of a card between two calls, and does not own the Pkcs11 object.
class ThProxy : public QObject {
    Q_OBJECT

public:
    explicit ThProxy(Pkcs11 *card);

public slots:
    // Flag words of Pkcs11::readers. Every query starts the card library afresh.
    void readers(int requireFlag, int nonRequiredFlag);
    void certsCount(const QString &reader);
    void getConteinersAndICAO(const QString &reader);
    void getPhoto(const QString &reader);
    void selectReader(const QString &reader);
    void getCerts(const QString &reader, bool getAuth, bool getPres, bool getAuthor, bool getQualified);
    // These two send refreshCertsFin, with the tries as they are afterwards, before their own Fin. What they are sent
    // of PIN and PUK is wiped after the card call, unless somebody else holds it too.
    void changePin(const QString &reader, const QString &conteiner, const QString &oldPin, const QString &newPin);
    void unblockPin(const QString &reader, const QString &conteiner, const QString &PUK, const QString &newPIN);
    // Makes Qt load its TLS library now, on this thread.
    void loadSsl();
    void refreshCerts(const QString &reader);

signals:
    void readersFin(bool success, const QStringList &res);
    void certsCountFin(int auth, int author, int pres, int qual);
    // Status texts, then tries (0 to 4). tl_pres is the tries of the PUK: Presence has no PIN. dgN: data groups as they
    // stand on the card, empty if absent.
    void getConteinersAndICAOFin(const QString &auth, const QString &author, const QString &qual, int tl_auth,
                                 int tl_author, int tl_pres, int tl_qual, bool _pinPad, int typeOfChip,
                                 const QByteArray &dg1, const QByteArray &dg11, const QByteArray &dg12,
                                 const QByteArray &dg13);
    void getPhotoFin(const QByteArray &dg2);
    void selectReaderFin(bool res);
    // Certificates in DER; those not asked for or not there are empty.
    void getCertsFin(const QByteArray &authen, const QByteArray &presence, const QByteArray &author,
                     const QByteArrayList &qual);
    void refreshCertsFin(const QString &auth, const QString &author, const QString &qual, int auth_tl, int author_tl,
                         int pres_tl, int qual_tl);
    // Codes of Pkcs11::changePIN and Pkcs11::unblockPIN.
    void changePinFin(int res);
    void unblockPinFin(int res);
    // Emitted by nobody; kept as part of the interface.
    void emitError(const QString &value);
    void loadSslFin();

private:
    struct ContainerStates {
        QString auth;
        QString author;
        QString qual;
        int tl_auth;
        int tl_author;
        int tl_pres;
        int tl_qual;
    };

    ContainerStates containerStates(const QString &reader);

    Pkcs11 *pkcs11;
};
