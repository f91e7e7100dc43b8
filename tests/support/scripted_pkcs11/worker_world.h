#pragma once

#include "support/scripted_pkcs11/pkcs11_world.h"
#include "thproxy.h"

#include <QThread>

// The signals of the window that reach the card worker.
class WorkerRequests : public QObject {
    Q_OBJECT

signals:
    void getReaders(int requireFlag, int nonRequiredFlag);
    void getCertsCount(const QString &reader);
    void getConteinersAndICAO(const QString &reader);
    void getPhoto(const QString &reader);
    void selectDriverReader(const QString &reader);
    void getCerts(const QString &reader, bool getAuthen, bool getPres, bool getAuthor, bool getQual);
    void changePinSig(const QString &reader, const QString &conteiner, const QString &oldPin, const QString &newPin);
    void unblockPinSig(const QString &reader, const QString &conteiner, const QString &PUK, const QString &newPIN);
    void loadSsl();
};

// A card worker on its thread, connected as the window connects it, with a card in "Reader A".
class WorkerWorld : protected Pkcs11World {
protected:
    static constexpr CK_FLAGS initialized = CKF_TOKEN_INITIALIZED | CKF_USER_PIN_INITIALIZED;
    static constexpr CK_SLOT_ID authenticationSlot = 1;
    static constexpr CK_SLOT_ID presenceSlot = 2;
    static constexpr CK_SLOT_ID authorizationSlot = 3;
    static constexpr CK_SLOT_ID qualifiedSlot = 4;
    static constexpr CK_SLOT_ID emrtdSlot = 5;

    void startUp();
    void tearDown();

    // Lists and selects as the window does at first, so that the worker knows the card.
    void select();
    // Flags of a token whose PIN is set.
    void setTries(CK_SLOT_ID slot, CK_FLAGS flags) { card->slotOf(slot)->tokenFlags = initialized | flags; }

    std::unique_ptr<ThProxy> proxy;
    std::unique_ptr<QThread> workerThread;
    std::unique_ptr<WorkerRequests> window;
};
