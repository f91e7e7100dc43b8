// Login and PIN change: which calls the card sees, what each result means, and that no PIN is logged.
#include "support/scripted_pkcs11/pkcs11_world.h"

namespace {

const QString conteiner = "Qualified";
const QString oldPin = "90817263";
const QString newPin = "45362718";

constexpr CK_FLAGS healthy = CKF_TOKEN_INITIALIZED | CKF_USER_PIN_INITIALIZED;

} // namespace

class TestPkcs11SessionPinChange : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init() { startUp(); }
    void cleanup() { tearDown({ oldPin, newPin }); }

    void loginOpensASessionOnce();
    void loginSendsPinAndUser_data();
    void loginSendsPinAndUser();
    void loginMapsResults_data();
    void loginMapsResults();
    void loginWithoutLibraryIsSilent();
    void loginWithoutCard();
    void loginWithoutSession();
    void loginFindsATokenWhateverItsSlotSays();
    void loginOnSlotZero();
    void loginWithANegativeSlot();

    void changeCallsLoginSetPinLogout();
    void changeOnAnOpenSessionOpensNone();
    void changeSendsTheOldPinTwice();
    void changeWithWrongPinLogsOutAllTheSame();
    void changeMapsResults_data();
    void changeMapsResults();
    void changeMapsFailedLogins_data();
    void changeMapsFailedLogins();
    void changeWithoutLibrary();
    void changeWithoutCard();
    void changeWithoutSession();
    void changeFindsACardThatHasJustAppeared();
    void changeOnADeadSessionFails();

    void notADigitIsOneByteAll();
};

void TestPkcs11SessionPinChange::loginOpensASessionOnce()
{
    insert(healthy);

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), 0);
    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), 0);

    QCOMPARE(card->calls(),
             (QStringList { "C_OpenSession 4 flags=6", "C_Login 1 user=1 pin=8", "C_Login 1 user=1 pin=8" }));
    QVERIFY(log->has("session  1 opened for  Token 0x4"));
}

void TestPkcs11SessionPinChange::loginSendsPinAndUser_data()
{
    QTest::addColumn<ulong>("user");
    QTest::addColumn<QString>("pin");
    QTest::newRow("PIN") << 1ul << "1234";
    QTest::newRow("PUK") << 0ul << "24681357";
}

void TestPkcs11SessionPinChange::loginSendsPinAndUser()
{
    QFETCH(ulong, user);
    QFETCH(QString, pin);
    insert(healthy);

    QCOMPARE(pkcs11->login(reader, conteiner, pin, user), 0);

    QCOMPARE(card->calls().last(), QString("C_Login 1 user=%1 pin=%2").arg(user).arg(pin.size()));
    QCOMPARE(card->pins, QList<QByteArray> { pin.toLatin1() });
}

void TestPkcs11SessionPinChange::loginMapsResults_data()
{
    QTest::addColumn<uint>("rv");
    QTest::addColumn<ulong>("user");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    for (const ulong user : { 0ul, 1ul }) {
        const auto name = [user](const char *what) { return QString("%1, user %2").arg(what).arg(user).toLatin1(); };
        const QString other = "Błąd podczas logowania !" + QString::number(user);
        QTest::newRow(name("arguments bad")) << 7u << user << -9 << "Niezgodne PINy!";
        QTest::newRow(name("canceled")) << 0x50u << user << -8 << "Operacja anulowana!";
        QTest::newRow(name("incorrect")) << 0xA0u << user << (user ? -6 : -4) << (user ? "Błędny PIN!" : "Błędny PUK!");
        QTest::newRow(name("rejected")) << 0x200u << user << -1 << other;
        QTest::newRow(name("already logged in")) << 0x100u << user << -1 << other;
        QTest::newRow(name("locked")) << 0xA4u << user << -1 << other;
        QTest::newRow(name("length range")) << 0xA2u << user << -1 << other;
        QTest::newRow(name("session invalid")) << 0xB3u << user << -1 << other;
        QTest::newRow(name("device removed")) << 0x32u << user << -1 << other;
    }
    QTest::newRow("incorrect, another user") << 0xA0u << 2ul << -1 << "Błąd podczas logowania !2";
}

void TestPkcs11SessionPinChange::loginMapsResults()
{
    QFETCH(uint, rv);
    QFETCH(ulong, user);
    QFETCH(int, code);
    QFETCH(QString, message);
    insert(healthy);
    card->fail("C_Login", rv);

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, user), code);

    QCOMPARE(log->lines().last(), "Pkcs11 err:  " + message);
}

void TestPkcs11SessionPinChange::loginWithoutLibraryIsSilent()
{
    insert(healthy);
    pkcs11->finalize();
    card->fail("C_Initialize", CKR_GENERAL_ERROR);
    log->clear();

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), -1);

    QVERIFY(!log->has("Pkcs11 err: "));
    QCOMPARE(card->count("C_Login"), 0);
}

void TestPkcs11SessionPinChange::loginWithoutCard()
{
    insert(healthy);
    card->clearCalls();

    QCOMPARE(pkcs11->login("Reader C", conteiner, oldPin, 1), -3);

    QVERIFY(log->has("Pkcs11 err:  login: Brak karty!"));
    // Looked for once more, among the slots that are known.
    QCOMPARE(card->count("C_GetTokenInfo"), 5);
    QCOMPARE(card->count("C_GetSlotList"), 0);
    QCOMPARE(card->count("C_Login"), 0);
}

void TestPkcs11SessionPinChange::loginWithoutSession()
{
    insert(healthy);
    card->fail("C_OpenSession", CKR_DEVICE_REMOVED);

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), -1);

    QCOMPARE(
        log->lines().filter("Pkcs11 err: "),
        (QStringList { "Pkcs11 err:  Błąd podczas otwierania sesji.", "Pkcs11 err:  Błąd podczas otwierania sesji!" }));
    QCOMPARE(card->count("C_Login"), 0);
}

void TestPkcs11SessionPinChange::loginFindsATokenWhateverItsSlotSays()
{
    card->addReader(reader);
    card->slotOf(4)->flags = 0;
    listAndSelect();

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), 0);

    // At once, without another look at the tokens.
    QCOMPARE(card->functions(), (QStringList { "C_OpenSession", "C_Login" }));
}

void TestPkcs11SessionPinChange::loginOnSlotZero()
{
    ScriptedSlot slot;
    slot.id = 0;
    slot.description = "Reader A #1";
    slot.label = "Qualified";
    card->card = { slot };
    pkcs11->detectSlots();
    pkcs11->selectReader(reader);

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), 0);

    QVERIFY(card->calls().contains("C_OpenSession 0 flags=6"));
}

void TestPkcs11SessionPinChange::loginWithANegativeSlot()
{
    ScriptedSlot slot;
    slot.id = 0x80000001u;
    slot.description = "Reader A #1";
    slot.label = "Qualified";
    card->card = { slot };
    pkcs11->detectSlots();
    pkcs11->selectReader(reader);
    card->clearCalls();

    QCOMPARE(pkcs11->login(reader, conteiner, oldPin, 1), -1);

    QVERIFY(log->has("Pkcs11 err:  Nieprawidłowy ID slotu."));
    QVERIFY(card->calls().isEmpty());
}

void TestPkcs11SessionPinChange::changeCallsLoginSetPinLogout()
{
    insert(healthy);

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), 0);

    QCOMPARE(
        card->calls(),
        (QStringList { "C_OpenSession 4 flags=6", "C_Login 1 user=1 pin=8", "C_SetPIN 1 old=8 new=8", "C_Logout 1" }));
}

void TestPkcs11SessionPinChange::changeOnAnOpenSessionOpensNone()
{
    insert(healthy);
    openSession(conteiner);

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), 0);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_SetPIN", "C_Logout" }));
}

void TestPkcs11SessionPinChange::changeSendsTheOldPinTwice()
{
    insert(healthy);

    pkcs11->changePIN(reader, conteiner, oldPin, newPin);

    QCOMPARE(card->pins, (QList<QByteArray> { oldPin.toLatin1(), oldPin.toLatin1(), newPin.toLatin1() }));
}

void TestPkcs11SessionPinChange::changeWithWrongPinLogsOutAllTheSame()
{
    insert(healthy);
    openSession(conteiner);
    card->fail("C_Login", CKR_PIN_INCORRECT);

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), -6);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_Logout" }));
}

void TestPkcs11SessionPinChange::changeMapsResults_data()
{
    QTest::addColumn<uint>("setPin");
    QTest::addColumn<uint>("logout");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("done") << 0u << 0u << 0 << "";
    QTest::newRow("logout failed") << 0u << 5u << -1 << "Błąd podczas wylogowywania się po zmianie pin-u!";
    QTest::newRow("logout: arguments bad") << 0u << 7u << -1 << "Błąd podczas wylogowywania się po zmianie pin-u!";
    for (const uint logout : { 0u, 5u }) {
        const auto name = [logout](const char *what) {
            return QString("%1, logout %2").arg(what).arg(logout).toLatin1();
        };
        QTest::newRow(name("arguments bad")) << 7u << logout << -9 << "Niezgodne PINy!";
        QTest::newRow(name("canceled")) << 0x50u << logout << -8 << "Operacja anulowana!";
        QTest::newRow(name("rejected")) << 0x200u << logout << -1 << "Błędna zmiana pinu!";
        QTest::newRow(name("incorrect")) << 0xA0u << logout << -1 << "Błędna zmiana pinu!";
        QTest::newRow(name("locked")) << 0xA4u << logout << -1 << "Błędna zmiana pinu!";
        QTest::newRow(name("device removed")) << 0x32u << logout << -1 << "Błędna zmiana pinu!";
    }
}

void TestPkcs11SessionPinChange::changeMapsResults()
{
    QFETCH(uint, setPin);
    QFETCH(uint, logout);
    QFETCH(int, code);
    QFETCH(QString, message);
    insert(healthy);
    openSession(conteiner);
    if (setPin)
        card->fail("C_SetPIN", setPin);
    if (logout)
        card->fail("C_Logout", logout);

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), code);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_SetPIN", "C_Logout" }));
    QCOMPARE(log->lines().filter("Pkcs11 err: "),
             message.isEmpty() ? QStringList() : QStringList { "Pkcs11 err:  " + message });
}

void TestPkcs11SessionPinChange::changeMapsFailedLogins_data()
{
    QTest::addColumn<uint>("rv");
    QTest::addColumn<int>("code");
    QTest::newRow("arguments bad") << 7u << -9;
    QTest::newRow("canceled") << 0x50u << -8;
    QTest::newRow("incorrect") << 0xA0u << -6;
    QTest::newRow("rejected") << 0x200u << -1;
    QTest::newRow("locked") << 0xA4u << -1;
}

void TestPkcs11SessionPinChange::changeMapsFailedLogins()
{
    QFETCH(uint, rv);
    QFETCH(int, code);
    insert(healthy);
    openSession(conteiner);
    card->fail("C_Login", rv);
    card->fail("C_Logout", CKR_USER_NOT_LOGGED_IN);

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), code);

    QCOMPARE(card->functions(), (QStringList { "C_Login", "C_Logout" }));
}

void TestPkcs11SessionPinChange::changeWithoutLibrary()
{
    insert(healthy);
    // One that only seems to be open.
    openSession(conteiner);
    pkcs11->finalize();
    card->fail("C_Initialize", CKR_GENERAL_ERROR);
    card->clearCalls();

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), -1);

    QCOMPARE(card->functions(), QStringList { "C_Initialize" });
}

void TestPkcs11SessionPinChange::changeWithoutCard()
{
    insert(healthy);

    QCOMPARE(pkcs11->changePIN("Reader C", conteiner, oldPin, newPin), -3);

    QVERIFY(log->has("Pkcs11 err:  changePIN: Brak karty!"));
    QVERIFY(card->pins.isEmpty());
}

void TestPkcs11SessionPinChange::changeWithoutSession()
{
    insert(healthy);
    card->fail("C_OpenSession", CKR_DEVICE_REMOVED);

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), -1);

    QVERIFY(log->has("Pkcs11 err:  Błąd podczas otwierania sesji!"));
    QCOMPARE(card->functions(), QStringList { "C_OpenSession" });
}

void TestPkcs11SessionPinChange::changeFindsACardThatHasJustAppeared()
{
    // The slot is known, and its token could not be asked at the detection. The slot's flags do not matter.
    card->addReader(reader);
    card->slotOf(4)->flags = 0;
    card->slotOf(4)->tokenInfo = CKR_DEVICE_ERROR;
    pkcs11->detectSlots();
    pkcs11->selectReader(reader);
    card->clearCalls();
    card->slotOf(4)->tokenInfo = CKR_OK;

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), 0);

    QCOMPARE(card->functions(),
             (QStringList { "C_GetTokenInfo", "C_GetTokenInfo", "C_GetTokenInfo", "C_GetTokenInfo", "C_GetTokenInfo",
                            "C_OpenSession", "C_Login", "C_SetPIN", "C_Logout" }));
}

void TestPkcs11SessionPinChange::changeOnADeadSessionFails()
{
    insert(healthy);
    openSession(conteiner);
    pkcs11->finalize();
    card->clearCalls();

    QCOMPARE(pkcs11->changePIN(reader, conteiner, oldPin, newPin), -1);

    QCOMPARE(card->functions(), (QStringList { "C_Initialize", "C_Login", "C_Logout" }));
}

void TestPkcs11SessionPinChange::notADigitIsOneByteAll()
{
    insert(healthy);

    pkcs11->login(reader, conteiner, QString::fromUtf8("1ż34"), 1);

    // The window lets digits in only; whatever comes, the length is that of the buffer.
    QCOMPARE(card->calls().last(), QString("C_Login 1 user=1 pin=4"));
}

VELMOR_TEST(TestPkcs11SessionPinChange)
#include "tst_pkcs11_session_pin_change.moc"
