#pragma once

#include "card/pkcs11.h"
#include "support/scripted_pkcs11/scripted_card.h"
#include "support/testmain.h"

#include <QStringList>

#include <memory>

// What a test of Pkcs11 stands on: a scripted card library, the object on it, and what it logs.
class Pkcs11World {
protected:
    // A library without any reader.
    void startUp();
    // Also sees to it that none of the secrets was logged, no PIN came by a null pointer, no function was called beside
    // those agreed on, and never more than one attribute was asked at a time.
    void tearDown(const QStringList &secrets = {});

    // Lists and selects as the program does at first; what was called and logged meanwhile is forgotten.
    void listAndSelect(const QString &name = "Reader A");
    // The same with a card in "Reader A" whose five tokens have these flags.
    void insert(CK_FLAGS tokenFlags);
    // Leaves a session on the token, as the count of certificates does, and forgets the calls.
    void openSession(const QString &conteiner);

    static ScriptedSlot slot(CK_SLOT_ID id, const QByteArray &description, CK_FLAGS flags = CKF_TOKEN_PRESENT,
                             const QByteArray &label = "velmor Qualified");
    // Objects of one container of the card in "Reader A".
    std::vector<ScriptedObject> &objects(const char *conteiner);
    static QStringList labels(const QList<pkcsDataObj> &found);

    const QString reader = "Reader A";
    std::unique_ptr<ScriptedCard> card;
    std::unique_ptr<Pkcs11> pkcs11;
    std::unique_ptr<LogCatcher> log;
};
