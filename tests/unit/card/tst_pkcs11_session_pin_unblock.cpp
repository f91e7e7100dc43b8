// Unblocking a PIN and setting the first one: which of the two ways is taken, which calls the card sees, what each
// result means, and that no PIN or PUK is logged.
#include "support/scripted_pkcs11/pkcs11_world.h"

namespace {

const QString conteiner = "Qualified";
const QString newPin = "45362718";
const QString puk = "24681357";

constexpr CK_FLAGS healthy = CKF_TOKEN_INITIALIZED | CKF_USER_PIN_INITIALIZED;
constexpr CK_FLAGS locked = healthy | CKF_USER_PIN_LOCKED;
constexpr CK_FLAGS firstUse = healthy | CKF_USER_PIN_TO_BE_CHANGED;
constexpr CK_FLAGS notInitialized = CKF_TOKEN_INITIALIZED;

} // namespace

class TestPkcs11SessionPinUnblock : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init() { startUp(); }
    void cleanup() { tearDown({ newPin, puk }); }

    void unblockLogsInWithThePukAndSetsThePin_data();
    void unblockLogsInWithThePukAndSetsThePin();
    void wrongPukOnLockedPinCallsNeitherInitPinNorLogout();
    void unblockMapsFailedLogins_data();
    void unblockMapsFailedLogins();
    void unblockOfAHealthyPinCallsNothing();
    void firstUseSetsThePinWithThePuk();
    void firstUseWithoutSessionOpensNone();
    void firstUseWithAWrongPukIsAPlainFailure();
    void notInitializedAndToBeChangedSkipsTheLogout();
    void lockedAndToBeChangedSkipsTheLogout();
    void unblockMapsResults_data();
    void unblockMapsResults();
    void firstUseMapsResults_data();
    void firstUseMapsResults();
    void unblockDecidesOnTheFlagsAsLastRead();
    void unblockWithoutLibrary_data();
    void unblockWithoutLibrary();
    void unblockWithoutCard();
    void unblockFindsACardThatHasJustAppeared();
    void unblockWithoutSessionIsThatOfTheLogin();

    void emptyPinsGoWithLengthZero();
};

void TestPkcs11SessionPinUnblock::unblockLogsInWithThePukAndSetsThePin_data()
{
    QTest::addColumn<quint64>("flags");
    QTest::newRow("locked") << quint64(locked);
    QTest::newRow("not initialized") << quint64(notInitialized);
    QTest::newRow("not initialized and locked") << quint64(notInitialized | CKF_USER_PIN_LOCKED);
}

void TestPkcs11SessionPinUnblock::unblockLogsInWithThePukAndSetsThePin()
{
    QFETCH(quint64, flags);
    insert(static_cast<CK_FLAGS>(flags));

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), 0);

    QCOMPARE(card->calls(),
             (QStringList { "C_OpenSession 4 flags=6", "C_Login 1 user=0 pin=8", "C_InitPIN 1 new=8", "C_Logout 1" }));
    QCOMPARE(card->pins, (QList<QByteArray> { puk.toLatin1(), newPin.toLatin1() }));
}

void TestPkcs11SessionPinUnblock::wrongPukOnLockedPinCallsNeitherInitPinNorLogout()
{
    insert(locked);
    openSession(conteiner);
    card->fail("C_Login", CKR_PIN_INCORRECT);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -4);

    QCOMPARE(card->functions(), QStringList { "C_Login" });
    QCOMPARE(log->lines().filter("Pkcs11 err: "),
             (QStringList { "Pkcs11 err:  Błędny PUK!", "Pkcs11 err:  Błąd podczas logowania pinem SO!" }));
}

void TestPkcs11SessionPinUnblock::unblockMapsFailedLogins_data()
{
    QTest::addColumn<uint>("rv");
    QTest::addColumn<int>("code");
    QTest::newRow("arguments bad") << 7u << -9;
    QTest::newRow("canceled") << 0x50u << -8;
    QTest::newRow("incorrect") << 0xA0u << -4;
    QTest::newRow("rejected") << 0x200u << -1;
    QTest::newRow("locked") << 0xA4u << -1;
}

void TestPkcs11SessionPinUnblock::unblockMapsFailedLogins()
{
    QFETCH(uint, rv);
    QFETCH(int, code);
    insert(locked);
    openSession(conteiner);
    card->fail("C_Login", rv);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), code);

    QCOMPARE(card->functions(), QStringList { "C_Login" });
}

void TestPkcs11SessionPinUnblock::unblockOfAHealthyPinCallsNothing()
{
    insert(healthy);
    openSession(conteiner);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -1);

    QVERIFY(card->calls().isEmpty());
    QVERIFY(log->has("Pkcs11 err:  Nie wspierany mechanizm odblokowania kodu PIN!"));
}

void TestPkcs11SessionPinUnblock::firstUseSetsThePinWithThePuk()
{
    insert(firstUse);
    openSession(conteiner);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), 0);

    QCOMPARE(card->calls(), QStringList { "C_SetPIN 1 old=8 new=8" });
    QCOMPARE(card->pins, (QList<QByteArray> { puk.toLatin1(), newPin.toLatin1() }));
}

void TestPkcs11SessionPinUnblock::firstUseWithoutSessionOpensNone()
{
    insert(firstUse);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -1);

    // The handle as it stands, in 32 bits.
    QCOMPARE(card->calls(), QStringList { "C_SetPIN 4294967295 old=8 new=8" });
}

void TestPkcs11SessionPinUnblock::firstUseWithAWrongPukIsAPlainFailure()
{
    insert(firstUse);
    openSession(conteiner);
    card->fail("C_SetPIN", CKR_PIN_INCORRECT);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -1);

    QCOMPARE(card->functions(), QStringList { "C_SetPIN" });
    QVERIFY(log->has("Pkcs11 err:  Błąd podczas odblokowywaniu pin-u!"));
}

void TestPkcs11SessionPinUnblock::notInitializedAndToBeChangedSkipsTheLogout()
{
    insert(notInitialized | CKF_USER_PIN_TO_BE_CHANGED);
    openSession(conteiner);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), 0);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_InitPIN" }));
}

void TestPkcs11SessionPinUnblock::lockedAndToBeChangedSkipsTheLogout()
{
    insert(locked | CKF_USER_PIN_TO_BE_CHANGED);
    openSession(conteiner);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), 0);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_InitPIN" }));
}

void TestPkcs11SessionPinUnblock::unblockMapsResults_data()
{
    QTest::addColumn<uint>("rv");
    QTest::addColumn<uint>("logout");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("done") << 0u << 0u << 0 << "";
    QTest::newRow("logout failed") << 0u << 5u << -1 << "Błąd podczas wylogowywania się po zmianie pin-u!";
    QTest::newRow("logout rejected") << 0u << 0x200u << -1 << "Błąd podczas wylogowywania się po zmianie pin-u!";
    for (const uint logout : { 0u, 5u }) {
        const auto name = [logout](const char *what) {
            return QString("%1, logout %2").arg(what).arg(logout).toLatin1();
        };
        QTest::newRow(name("arguments bad")) << 7u << logout << -9 << "Niezgodne PINy!";
        QTest::newRow(name("canceled")) << 0x50u << logout << -8 << "Operacja anulowana!";
        QTest::newRow(name("rejected")) << 0x200u << logout << -11 << "Operacja przerwana!";
        QTest::newRow(name("incorrect")) << 0xA0u << logout << -1 << "Błąd podczas odblokowywaniu pin-u!";
        QTest::newRow(name("device removed")) << 0x32u << logout << -1 << "Błąd podczas odblokowywaniu pin-u!";
    }
}

void TestPkcs11SessionPinUnblock::unblockMapsResults()
{
    QFETCH(uint, rv);
    QFETCH(uint, logout);
    QFETCH(int, code);
    QFETCH(QString, message);
    insert(locked);
    openSession(conteiner);
    if (rv)
        card->fail("C_InitPIN", rv);
    if (logout)
        card->fail("C_Logout", logout);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), code);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_InitPIN", "C_Logout" }));
    QCOMPARE(log->lines().filter("Pkcs11 err: "),
             message.isEmpty() ? QStringList() : QStringList { "Pkcs11 err:  " + message });
}

void TestPkcs11SessionPinUnblock::firstUseMapsResults_data()
{
    QTest::addColumn<uint>("rv");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("done") << 0u << 0 << "";
    QTest::newRow("arguments bad") << 7u << -9 << "Niezgodne PINy!";
    QTest::newRow("canceled") << 0x50u << -8 << "Operacja anulowana!";
    QTest::newRow("rejected") << 0x200u << -11 << "Operacja przerwana!";
    QTest::newRow("incorrect") << 0xA0u << -1 << "Błąd podczas odblokowywaniu pin-u!";
    QTest::newRow("locked") << 0xA4u << -1 << "Błąd podczas odblokowywaniu pin-u!";
}

void TestPkcs11SessionPinUnblock::firstUseMapsResults()
{
    QFETCH(uint, rv);
    QFETCH(int, code);
    QFETCH(QString, message);
    insert(firstUse);
    openSession(conteiner);
    if (rv)
        card->fail("C_SetPIN", rv);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), code);

    QCOMPARE(card->functions(), QStringList { "C_SetPIN" });
    QCOMPARE(log->lines().filter("Pkcs11 err: "),
             message.isEmpty() ? QStringList() : QStringList { "Pkcs11 err:  " + message });
}

void TestPkcs11SessionPinUnblock::unblockDecidesOnTheFlagsAsLastRead()
{
    insert(healthy);
    openSession(conteiner);
    card->slotOf(4)->tokenFlags = locked;

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -1);
    QVERIFY(card->calls().isEmpty());
    pkcs11->tokenInfo(reader, conteiner);
    card->clearCalls();
    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), 0);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_InitPIN", "C_Logout" }));
}

void TestPkcs11SessionPinUnblock::unblockWithoutLibrary_data()
{
    QTest::addColumn<ulong>("flags");
    QTest::newRow("locked") << ulong(locked);
    QTest::newRow("first use") << ulong(firstUse);
}

void TestPkcs11SessionPinUnblock::unblockWithoutLibrary()
{
    QFETCH(ulong, flags);
    insert(flags);
    openSession(conteiner);
    pkcs11->finalize();
    card->fail("C_Initialize", CKR_GENERAL_ERROR);
    card->clearCalls();

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -1);

    QCOMPARE(card->functions(), QStringList { "C_Initialize" });
}

void TestPkcs11SessionPinUnblock::unblockWithoutCard()
{
    insert(locked);

    QCOMPARE(pkcs11->unblockPIN("Reader C", conteiner, puk, newPin), -3);

    QVERIFY(log->has("Pkcs11 err:  unblockPIN: Brak karty!"));
    QVERIFY(card->pins.isEmpty());
}

void TestPkcs11SessionPinUnblock::unblockFindsACardThatHasJustAppeared()
{
    card->addReader(reader);
    card->slotOf(4)->tokenInfo = CKR_DEVICE_ERROR;
    pkcs11->detectSlots();
    pkcs11->selectReader(reader);
    card->slotOf(4)->tokenInfo = CKR_OK;
    card->slotOf(4)->tokenFlags = locked;

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), 0);
}

void TestPkcs11SessionPinUnblock::unblockWithoutSessionIsThatOfTheLogin()
{
    insert(locked);
    card->fail("C_OpenSession", CKR_DEVICE_REMOVED);

    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, puk, newPin), -1);

    QCOMPARE(card->functions(), QStringList { "C_OpenSession" });
}

void TestPkcs11SessionPinUnblock::emptyPinsGoWithLengthZero()
{
    insert(healthy);
    openSession(conteiner);
    QCOMPARE(pkcs11->changePIN(reader, conteiner, "", ""), 0);
    QCOMPARE(card->calls(), (QStringList { "C_Login 1 user=1 pin=0", "C_SetPIN 1 old=0 new=0", "C_Logout 1" }));

    card->clearCalls();
    card->slotOf(4)->tokenFlags = locked;
    pkcs11->tokenInfo(reader, conteiner);
    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, {}, {}), 0);
    QCOMPARE(card->calls().mid(1), (QStringList { "C_Login 1 user=0 pin=0", "C_InitPIN 1 new=0", "C_Logout 1" }));

    card->clearCalls();
    card->slotOf(4)->tokenFlags = firstUse;
    pkcs11->tokenInfo(reader, conteiner);
    QCOMPARE(pkcs11->unblockPIN(reader, conteiner, {}, {}), 0);
    QCOMPARE(card->calls().mid(1), QStringList { "C_SetPIN 1 old=0 new=0" });

    // The clean-up sees to it that each of them came by a pointer that is not null.
    QCOMPARE(card->pins.size(), 7);
}

VELMOR_TEST(TestPkcs11SessionPinUnblock)
#include "tst_pkcs11_session_pin_unblock.moc"
