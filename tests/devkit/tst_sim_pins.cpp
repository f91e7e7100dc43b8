#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// PINs and the PUK of the simulated library, by the rules of PKCS #11.
class TstSimPins : public QObject {
    Q_OBJECT

private slots:
    void aWrongPinCountsDownToLockedAndARightOneResets();
    void theRightPinOfALockedContainerIsRefused();
    void thePukCountsForTheWholeCard();
    void changedPinHoldsAndTheOldOneDoesNot();
    void changeVerifiesTheOldPinAgain();
    void newPinMustHaveTheDigitsOfItsContainer_data();
    void newPinMustHaveTheDigitsOfItsContainer();
    void unblockBySecurityOfficer();
    void firstUseTakesThePukAsOldPin();
    void firstUseWithWrongPukCountsThePuk();
    void notInitializedPinIsSetBySecurityOfficerOnly();
    void securityOfficerCanChangeThePuk();
    void loginStates();
    void loginIsSharedByTheSessionsOfAToken();
    void securityOfficerAndReadOnlySessionsExcludeEachOther();
    void tokensWithoutPinRefuseLogin();
    void logoutWithoutLoginIsRefused();
    void initPinWithoutSecurityOfficerIsRefused();
    void setPinInReadOnlySessionIsRefused();
    void emptyPinWithoutKeypadIsWrongAndNotCounted();
    void stateOutlivesTheCardInTheReader();
    void restoreBringsTheCardBackAsMade();

private:
    SimFixture sim;
};

void TstSimPins::aWrongPinCountsDownToLockedAndARightOneResets()
{
    sim.start("anna");

    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, "9999"), CKR_PIN_INCORRECT);
    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_COUNT_LOW);
    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, "1234"), CKR_OK);
    QVERIFY(!(sim.flagsOf("Authentication") & CKF_USER_PIN_COUNT_LOW));
    for (int at = 0; at < 2; ++at)
        COMPARE_RV(sim.tryPin("Authentication", CKU_USER, "9999"), CKR_PIN_INCORRECT);
    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_FINAL_TRY);
    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, "9999"), CKR_PIN_INCORRECT);

    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_LOCKED);
    QVERIFY(!(sim.flagsOf("Authorization") & CKF_USER_PIN_LOCKED));
}

void TstSimPins::theRightPinOfALockedContainerIsRefused()
{
    sim.start("locked-authorization");

    COMPARE_RV(sim.tryPin("Authorization", CKU_USER, "123456"), CKR_PIN_LOCKED);
}

void TstSimPins::thePukCountsForTheWholeCard()
{
    sim.start("anna");

    COMPARE_RV(sim.tryPin("Authentication", CKU_SO, "00000000"), CKR_PIN_INCORRECT);
    COMPARE_RV(sim.tryPin("Authorization", CKU_SO, "00000000"), CKR_PIN_INCORRECT);
    QVERIFY(sim.flagsOf("Qualified") & CKF_SO_PIN_FINAL_TRY);
    COMPARE_RV(sim.tryPin("Qualified", CKU_SO, "00000000"), CKR_PIN_INCORRECT);

    QVERIFY(sim.flagsOf("Qualified") & CKF_SO_PIN_LOCKED);
    COMPARE_RV(sim.tryPin("Authentication", CKU_SO, "87654321"), CKR_PIN_LOCKED);
}

void TstSimPins::changedPinHoldsAndTheOldOneDoesNot()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Qualified");

    COMPARE_RV(sim.login(session, CKU_USER, "12345678"), CKR_OK);
    COMPARE_RV(sim.setPin(session, "12345678", "11223344"), CKR_OK);
    COMPARE_RV(sim.p11->C_Logout(session), CKR_OK);

    COMPARE_RV(sim.login(session, CKU_USER, "12345678"), CKR_PIN_INCORRECT);
    COMPARE_RV(sim.login(session, CKU_USER, "11223344"), CKR_OK);
}

void TstSimPins::changeVerifiesTheOldPinAgain()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    COMPARE_RV(sim.login(session, CKU_USER, "1234"), CKR_OK);

    COMPARE_RV(sim.setPin(session, "1235", "4321"), CKR_PIN_INCORRECT);

    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].tries, 2);
    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].pin, std::string("1234"));
}

void TstSimPins::newPinMustHaveTheDigitsOfItsContainer_data()
{
    QTest::addColumn<QByteArray>("container");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QByteArray>("fresh");
    QTest::addColumn<qulonglong>("result");
    QTest::newRow("4 of 4") << QByteArray("Authentication") << QByteArray("1234") << QByteArray("4321")
                            << qulonglong(CKR_OK);
    QTest::newRow("3 of 4") << QByteArray("Authentication") << QByteArray("1234") << QByteArray("321")
                            << qulonglong(CKR_PIN_LEN_RANGE);
    QTest::newRow("7 of 6") << QByteArray("Authorization") << QByteArray("123456") << QByteArray("7654321")
                            << qulonglong(CKR_PIN_LEN_RANGE);
    QTest::newRow("8 of 8") << QByteArray("Qualified") << QByteArray("12345678") << QByteArray("87654321")
                            << qulonglong(CKR_OK);
    QTest::newRow("letters") << QByteArray("Authorization") << QByteArray("123456") << QByteArray("12345a")
                             << qulonglong(CKR_PIN_INVALID);
    QTest::newRow("none") << QByteArray("Authorization") << QByteArray("123456") << QByteArray("")
                          << qulonglong(CKR_PIN_LEN_RANGE);
}

void TstSimPins::newPinMustHaveTheDigitsOfItsContainer()
{
    QFETCH(QByteArray, container);
    QFETCH(QByteArray, old);
    QFETCH(QByteArray, fresh);
    QFETCH(qulonglong, result);
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open(container);
    COMPARE_RV(sim.login(session, CKU_USER, old), CKR_OK);

    COMPARE_RV(sim.setPin(session, old, fresh), result);

    sim.p11->C_Logout(session);
    COMPARE_RV(sim.login(session, CKU_USER, result == CKR_OK ? fresh : old), CKR_OK);
    QCOMPARE(sim.world.cardState("anna")->pins[container.toStdString()].tries, 3);
}

void TstSimPins::unblockBySecurityOfficer()
{
    sim.start("locked-authentication");
    const CK_SESSION_HANDLE session = sim.open("Authentication");

    COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_OK);
    COMPARE_RV(sim.initPin(session, "2468"), CKR_OK);
    COMPARE_RV(sim.p11->C_Logout(session), CKR_OK);

    QVERIFY(!(sim.flagsOf("Authentication") & CKF_USER_PIN_LOCKED));
    COMPARE_RV(sim.login(session, CKU_USER, "2468"), CKR_OK);
}

void TstSimPins::firstUseTakesThePukAsOldPin()
{
    sim.start("first-pin");
    QCOMPARE(qulonglong(sim.flagsOf("Qualified") & (CKF_USER_PIN_INITIALIZED | CKF_USER_PIN_TO_BE_CHANGED)),
             0x80008ULL);
    const CK_SESSION_HANDLE session = sim.open("Qualified");
    COMPARE_RV(sim.login(session, CKU_USER, "12345678"), CKR_PIN_EXPIRED);

    COMPARE_RV(sim.setPin(session, "87654321", "13572468"), CKR_OK);

    QCOMPARE(qulonglong(sim.flagsOf("Qualified") & (CKF_USER_PIN_INITIALIZED | CKF_USER_PIN_TO_BE_CHANGED)), 0x8ULL);
    COMPARE_RV(sim.login(session, CKU_USER, "13572468"), CKR_OK);
}

void TstSimPins::firstUseWithWrongPukCountsThePuk()
{
    sim.start("first-pin");
    const CK_SESSION_HANDLE session = sim.open("Qualified");

    COMPARE_RV(sim.setPin(session, "00000000", "13572468"), CKR_PIN_INCORRECT);

    QVERIFY(sim.flagsOf("Qualified") & CKF_SO_PIN_COUNT_LOW);
    QVERIFY(sim.flagsOf("Qualified") & CKF_USER_PIN_TO_BE_CHANGED);
}

void TstSimPins::notInitializedPinIsSetBySecurityOfficerOnly()
{
    sim.start("not-initialized");
    QVERIFY(!(sim.flagsOf("Qualified") & CKF_USER_PIN_INITIALIZED));
    const CK_SESSION_HANDLE session = sim.open("Qualified");
    COMPARE_RV(sim.login(session, CKU_USER, "12345678"), CKR_USER_PIN_NOT_INITIALIZED);
    COMPARE_RV(sim.setPin(session, "87654321", "13572468"), CKR_USER_PIN_NOT_INITIALIZED);

    COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_OK);
    COMPARE_RV(sim.initPin(session, "13572468"), CKR_OK);
    COMPARE_RV(sim.p11->C_Logout(session), CKR_OK);

    QVERIFY(sim.flagsOf("Qualified") & CKF_USER_PIN_INITIALIZED);
    COMPARE_RV(sim.login(session, CKU_USER, "13572468"), CKR_OK);
}

void TstSimPins::securityOfficerCanChangeThePuk()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Qualified");
    COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_OK);

    COMPARE_RV(sim.setPin(session, "87654321", "10203040"), CKR_OK);

    sim.p11->C_Logout(session);
    COMPARE_RV(sim.login(session, CKU_SO, "10203040"), CKR_OK);
    sim.p11->C_Logout(session);
    COMPARE_RV(sim.login(session, CKU_USER, "12345678"), CKR_OK);
}

void TstSimPins::loginStates()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");
    CK_SESSION_INFO info = {};

    COMPARE_RV(sim.login(session, 7, "1234"), CKR_USER_TYPE_INVALID);
    COMPARE_RV(sim.login(session, CKU_USER, "1234"), CKR_OK);
    COMPARE_RV(sim.login(session, CKU_USER, "1234"), CKR_USER_ALREADY_LOGGED_IN);
    COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_USER_ANOTHER_ALREADY_LOGGED_IN);
    COMPARE_RV(sim.p11->C_GetSessionInfo(session, &info), CKR_OK);
    QCOMPARE(info.state, CK_STATE(CKS_RW_USER_FUNCTIONS));
    sim.p11->C_Logout(session);
    COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_OK);
    sim.p11->C_GetSessionInfo(session, &info);
    QCOMPARE(info.state, CK_STATE(CKS_RW_SO_FUNCTIONS));
}

void TstSimPins::loginIsSharedByTheSessionsOfAToken()
{
    sim.start("anna");
    const CK_SESSION_HANDLE one = sim.open("Authentication");
    const CK_SESSION_HANDLE other = sim.open("Authentication");
    const CK_SESSION_HANDLE elsewhere = sim.open("Authorization");

    COMPARE_RV(sim.login(one, CKU_USER, "1234"), CKR_OK);

    COMPARE_RV(sim.login(other, CKU_USER, "1234"), CKR_USER_ALREADY_LOGGED_IN);
    COMPARE_RV(sim.login(elsewhere, CKU_USER, "123456"), CKR_OK);
    sim.p11->C_CloseSession(one);
    COMPARE_RV(sim.p11->C_Logout(other), CKR_OK);
    sim.login(other, CKU_USER, "1234");
    sim.p11->C_CloseSession(other);
    COMPARE_RV(sim.p11->C_Logout(sim.open("Authentication")), CKR_USER_NOT_LOGGED_IN);
}

void TstSimPins::securityOfficerAndReadOnlySessionsExcludeEachOther()
{
    sim.start("anna");
    const CK_SESSION_HANDLE reading = sim.open("Authentication", CKF_SERIAL_SESSION);
    const CK_SESSION_HANDLE writing = sim.open("Authentication");

    COMPARE_RV(sim.login(writing, CKU_SO, "87654321"), CKR_SESSION_READ_ONLY_EXISTS);
    sim.p11->C_CloseSession(reading);
    COMPARE_RV(sim.login(writing, CKU_SO, "87654321"), CKR_OK);
    sim.open("Authentication", CKF_SERIAL_SESSION);
    COMPARE_RV(sim.openResult, CKR_SESSION_READ_WRITE_SO_EXISTS);
}

void TstSimPins::tokensWithoutPinRefuseLogin()
{
    sim.start("anna");

    COMPARE_RV(sim.tryPin("Presence", CKU_USER, "1234"), CKR_USER_PIN_NOT_INITIALIZED);
    COMPARE_RV(sim.tryPin("eMRTD", CKU_SO, "87654321"), CKR_USER_TYPE_INVALID);
    QCOMPARE(sim.world.cardState("anna")->pukTries, 3);
}

void TstSimPins::logoutWithoutLoginIsRefused()
{
    sim.start("anna");

    COMPARE_RV(sim.p11->C_Logout(sim.open("Authentication")), CKR_USER_NOT_LOGGED_IN);
}

void TstSimPins::initPinWithoutSecurityOfficerIsRefused()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");

    COMPARE_RV(sim.initPin(session, "4321"), CKR_USER_NOT_LOGGED_IN);
    sim.login(session, CKU_USER, "1234");
    COMPARE_RV(sim.initPin(session, "4321"), CKR_USER_NOT_LOGGED_IN);
}

void TstSimPins::setPinInReadOnlySessionIsRefused()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication", CKF_SERIAL_SESSION);

    COMPARE_RV(sim.setPin(session, "1234", "4321"), CKR_SESSION_READ_ONLY);
}

void TstSimPins::emptyPinWithoutKeypadIsWrongAndNotCounted()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");

    COMPARE_RV(sim.login(session, CKU_USER, ""), CKR_PIN_INCORRECT);
    COMPARE_RV(sim.p11->C_Login(session, CKU_USER, nullptr, 0), CKR_ARGUMENTS_BAD);
    COMPARE_RV(sim.p11->C_Login(session, CKU_USER, nullptr, 4), CKR_ARGUMENTS_BAD);

    QCOMPARE(sim.world.cardState("anna")->pins[sim::Authentication].tries, 3);
}

void TstSimPins::stateOutlivesTheCardInTheReader()
{
    sim.start("anna");
    sim.tryPin("Authentication", CKU_USER, "9999");

    sim.world.removeCard("R");
    sim.world.addReader("S");
    sim.world.insertCard("S", "anna");

    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_COUNT_LOW);
}

void TstSimPins::restoreBringsTheCardBackAsMade()
{
    sim.start("locked-authentication");
    sim.world.setPin("locked-authentication", sim::Authentication, "5555");
    COMPARE_RV(sim.tryPin("Authentication", CKU_USER, "5555"), CKR_OK);

    sim.world.restoreCard("locked-authentication");

    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_LOCKED);
}

VELMOR_TEST(TstSimPins)
#include "tst_sim_pins.moc"
