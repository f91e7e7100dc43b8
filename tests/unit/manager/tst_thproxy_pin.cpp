// PIN operations of the card worker: the tries reach the window before the result does.
#include "support/scripted_pkcs11/worker_world.h"

#include <QElapsedTimer>
#include <QSignalSpy>

// Notes the names of the two answers as they arrive on the asking thread.
class Arrivals : public QObject {
public:
    explicit Arrivals(ThProxy *proxy)
    {
        connect(proxy, &ThProxy::refreshCertsFin, this,
                [this](const QString &, const QString &, const QString &, int auth, int author, int pres, int qual) {
                    names << QString("tries %1 %2 %3 %4").arg(auth).arg(author).arg(pres).arg(qual);
                });
        connect(proxy, &ThProxy::changePinFin, this, [this](int res) { names << QString("change %1").arg(res); });
        connect(proxy, &ThProxy::unblockPinFin, this, [this](int res) { names << QString("unblock %1").arg(res); });
    }

    QStringList names;
};

class TestThProxyPin : public QObject, private WorkerWorld {
    Q_OBJECT

private slots:
    void init() { startUp(); }
    void cleanup() { tearDown(); }

    void changedPinTellsTheTriesFirst();
    void failedChangeTellsTheTriesToo();
    void changeOnAMissingReaderStillEnds();
    void unblockedPinTellsTheTriesFirst();
    void wrongPukTellsTheTriesToo();
    void resultWaitsAfterTheTries();
    void noPinReachesTheLog();
    void argumentsAreEmptyAfterTheCardCall();
};

void TestThProxyPin::changedPinTellsTheTriesFirst()
{
    select();
    Arrivals arrivals(proxy.get());

    emit window->changePinSig(reader, "Qualified", "90817263", "45362718");

    QTRY_COMPARE(arrivals.names, (QStringList { "tries 3 3 3 3", "change 0" }));
    QCOMPARE(card->calls(),
             (QStringList { "C_OpenSession 4 flags=6", "C_Login 1 user=1 pin=8", "C_SetPIN 1 old=8 new=8", "C_Logout 1",
                            "C_GetTokenInfo 1", "C_GetTokenInfo 3", "C_GetTokenInfo 4" }));
    QCOMPARE(card->pins, (QList<QByteArray> { "90817263", "90817263", "45362718" }));
}

void TestThProxyPin::failedChangeTellsTheTriesToo()
{
    select();
    card->fail("C_Login", CKR_PIN_INCORRECT);
    card->onCall = [this](const QString &function) {
        if (function == "C_Login")
            setTries(authorizationSlot, CKF_USER_PIN_COUNT_LOW);
    };
    Arrivals arrivals(proxy.get());

    emit window->changePinSig(reader, "Authorization", "111111", "222222");

    QTRY_COMPARE(arrivals.names, (QStringList { "tries 3 2 3 3", "change -6" }));
}

void TestThProxyPin::changeOnAMissingReaderStillEnds()
{
    select();
    Arrivals arrivals(proxy.get());

    emit window->changePinSig("Reader C", "Authorization", "111111", "222222");

    QTRY_COMPARE(arrivals.names, (QStringList { "tries 0 0 0 0", "change -3" }));
}

void TestThProxyPin::unblockedPinTellsTheTriesFirst()
{
    setTries(qualifiedSlot, CKF_USER_PIN_LOCKED);
    select();
    card->onCall = [this](const QString &function) {
        if (function == "C_InitPIN")
            setTries(qualifiedSlot, 0);
    };
    Arrivals arrivals(proxy.get());

    emit window->unblockPinSig(reader, "Qualified", "24681357", "45362718");

    QTRY_COMPARE(arrivals.names, (QStringList { "tries 3 3 3 3", "unblock 0" }));
    QCOMPARE(card->functions(),
             (QStringList { "C_OpenSession", "C_Login", "C_InitPIN", "C_Logout", "C_GetTokenInfo", "C_GetTokenInfo",
                            "C_GetTokenInfo" }));
    QCOMPARE(card->pins, (QList<QByteArray> { "24681357", "45362718" }));
}

void TestThProxyPin::wrongPukTellsTheTriesToo()
{
    setTries(qualifiedSlot, CKF_USER_PIN_LOCKED);
    select();
    card->fail("C_Login", CKR_PIN_INCORRECT);
    card->onCall = [this](const QString &function) {
        if (function == "C_Login")
            setTries(qualifiedSlot, CKF_USER_PIN_LOCKED | CKF_SO_PIN_FINAL_TRY);
    };
    Arrivals arrivals(proxy.get());

    emit window->unblockPinSig(reader, "Qualified", "24681357", "45362718");

    QTRY_COMPARE(arrivals.names, (QStringList { "tries 3 3 1 0", "unblock -4" }));
}

void TestThProxyPin::resultWaitsAfterTheTries()
{
    select();
    QElapsedTimer clock;
    qint64 pause = 0;
    // On the worker's own thread, so that no delivery is measured.
    connect(
        proxy.get(), &ThProxy::refreshCertsFin, proxy.get(), [&clock] { clock.start(); }, Qt::DirectConnection);
    connect(
        proxy.get(), &ThProxy::changePinFin, proxy.get(), [&] { pause = clock.elapsed(); }, Qt::DirectConnection);
    QSignalSpy answers(proxy.get(), &ThProxy::changePinFin);

    emit window->changePinSig(reader, "Authorization", "111111", "222222");

    QTRY_COMPARE(answers.size(), 1);
    QVERIFY2(pause >= 49, qPrintable(QString::number(pause)));
}

void TestThProxyPin::noPinReachesTheLog()
{
    setTries(qualifiedSlot, CKF_USER_PIN_LOCKED);
    select();
    Arrivals arrivals(proxy.get());

    emit window->changePinSig(reader, "Authorization", "908172", "453627");
    emit window->unblockPinSig(reader, "Qualified", "24681357", "45362718");
    QTRY_COMPARE(arrivals.names.size(), 4);
    card->fail("C_Login", CKR_PIN_INCORRECT);
    emit window->changePinSig(reader, "Authorization", "908172", "453627");
    QTRY_COMPARE(arrivals.names.size(), 6);

    for (const char *secret : { "908172", "453627", "24681357" })
        QVERIFY2(!log->has(secret), qPrintable(log->text()));
}

// They are the copies that the queue carries; whoever else has one keeps it.
void TestThProxyPin::argumentsAreEmptyAfterTheCardCall()
{
    setTries(qualifiedSlot, CKF_USER_PIN_LOCKED);
    select();
    const QString kept = "24681357";
    QString actual = "908172";
    QString changed = "453627";
    QString puk = kept;
    QString unblocked = "45362718";

    QMetaObject::invokeMethod(
        proxy.get(),
        [&] {
            proxy->changePin(reader, "Authorization", actual, changed);
            proxy->unblockPin(reader, "Qualified", puk, unblocked);
        },
        Qt::BlockingQueuedConnection);

    for (const QString &argument : { actual, changed, puk, unblocked })
        QCOMPARE(argument, QString());
    QCOMPARE(kept, QString("24681357"));
    QCOMPARE(card->pins.last(), QByteArray("45362718"));
}

VELMOR_TEST(TestThProxyPin)
#include "tst_thproxy_pin.moc"
