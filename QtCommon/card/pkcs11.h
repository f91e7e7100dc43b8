#pragma once

#include "card/card_tables.h"

#include <QByteArrayList>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

class App;
class QLibrary;
struct Cryptoki;
struct Slot;
struct Token;

// The only class that touches the card. It loads the card maker's Cryptoki library (PKCS #11, version 2), keeps the
// slots and the tokens of one selected reader, and takes readers and containers by their names: no handle, slot number
// or Cryptoki type leaves it.
//
// It shows nothing. A failure is a log line and a number, false or an empty result; the Polish texts are for the log.
// A PIN goes to the card and nowhere else. An empty PIN lets the pinpad of the reader ask for it, and then the call
// lasts as long as the user does.
//
// It has no lock: after construction, and until its destruction, one thread only may touch it.
class Pkcs11 {
public:
    Pkcs11();
    ~Pkcs11();
    Pkcs11(const Pkcs11 &) = delete;
    Pkcs11 &operator=(const Pkcs11 &) = delete;

    // Loads the library, once; 0 or -1. A failed load is tried again from the start by the next call.
    int init();
    // Loads and initialises the library, once until the next finalize; 0, what init gave, or a CKR value.
    int initialize();
    // The tokens stay, with sessions that are dead from now on; a search notices that and opens new ones.
    void finalize();

    // Reads the slots anew; false if the library does not start or list them.
    bool detectSlots();
    // Makes the tokens of the selected reader from the slots. Those that are still there keep their sessions.
    void detectTokens();

    // Names of the readers that have one slot with a bit of requireFlag (0: any) and no bit of nonRequiredFlag. With
    // nonRequiredFlag 0 nothing is listed at all. False if the library does not start.
    bool readers(QStringList &out, unsigned long requireFlag, unsigned long nonRequiredFlag);
    // True if the reader has a card that can be used; otherwise no reader is selected any more.
    bool selectReader(const QString &reader);

    // These three: 0 done, -1 failed, -3 no card, -4 wrong PUK, -6 wrong PIN, -8 cancelled at the reader, -9 the reader
    // says that the two new PINs differ, -11 aborted (unblockPIN only). userType is CKU_SO 0 (the PUK) or CKU_USER 1.
    int login(const QString &reader, const QString &conteiner, const QString &pin, unsigned long userType);
    int changePIN(const QString &reader, const QString &conteiner, const QString &oldPin, const QString &newPin);
    // Unblocks a PIN or sets the first one, whichever the token flags as last read ask for.
    int unblockPIN(const QString &reader, const QString &conteiner, const QString &PUK, const QString &newPIN);

    // "triesSO" and "tries" (int: 1 to 3 left, 0 locked, 4 not set or to be changed), "status" (text of the PIN
    // button). Empty if there is no such token.
    QMap<QString, QVariant> tokenInfo(const QString &reader, const QString &conteiner);
    int certsCount(const QString &reader, const QString &conteiner);
    // Labelled objects with a value. type: 0 data, 1 certificates, -1 both; names: wanted labels, empty for all.
    QList<pkcsDataObj> tokenObjects(const QString &reader, const QString &conteiner, int type,
                                    const QStringList &names);
    // DER of the certificates, in the order of the token.
    QByteArrayList tokenCerts(const QString &reader, const QString &conteiner);
    // Values of the data objects by label; the last of one label counts.
    QMap<QString, QByteArray> tokenDataMap(const QString &reader, const QString &conteiner, const QStringList &names);
    // 1 with a pinpad, 0 without, -3 no card, -1 failed.
    int isPinPad(const QString &reader);
    // CardChip::chipType of the reader's card; 0 if unknown.
    int typeOfChip(const QString &reader);

private:
    int error(const QString &message, int code) const;
    // Asserts the one thread. For the public functions that do not begin with one that is checked.
    void checkThread();

    // pkcs11.cpp
    int loadLibrary();
    int loadFailed(const QString &message);
    std::vector<Token *> findTokens(const QString &name, const QString &label, qint32 slotId, qint32 session,
                                    quint32 slotFlags) const;
    Token *findToken(const QString &name, const QString &label, qint32 slotId, qint32 session, quint32 slotFlags) const;
    std::unique_ptr<Token> readToken(const Slot &slot) const;

    // pkcs11_session.cpp
    int sessionOpen(Token *token);
    int sessionClose(Token *token);
    void sessionRestore(Token *token);
    Token *lookUpToken(const QString &reader, const QString &conteiner);

    // pkcs11_objects.cpp
    unsigned long findObjectInit(Token *token);
    bool tokenObjectsInit(const QString &reader, const QString &conteiner, long &session);
    void tokenObjectsFinish(long session);
    unsigned long objectClass(long session, unsigned long object) const;
    QByteArray objectAttribute(long session, unsigned long object, unsigned long attribute) const;
    bool appendObject(long session, unsigned long object, const QString &conteiner, int type, const QStringList &names,
                      QList<pkcsDataObj> &objects) const;

    std::unique_ptr<QLibrary> library;
    std::vector<std::unique_ptr<Token>> tokens;
    std::vector<Slot> slotList;
    QString libraryPath;
    std::unique_ptr<Cryptoki> cryptoki; // null until the library is loaded
    bool loaded = false;
    bool initialized = false;
    // Only slots whose name holds this text get a token: empty lets all through, "null" is what a failed selection
    // leaves.
    QString selectedReader;
    App *app = nullptr;
    Qt::HANDLE thread = nullptr; // of the first use
};
