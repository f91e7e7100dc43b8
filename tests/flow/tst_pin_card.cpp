#include "support/pin_flow.h"

#include <QProcess>
#include <QStandardPaths>

// PIN operations on the keyboard against the simulated card: the calls, the counters, and what the card knows later.
class TestPinCard : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    static void containers()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name : { sim::Authentication, sim::Authorization, sim::Qualified })
            QTest::newRow(name) << QByteArray(name);
    }

    QString pinOf(const QByteArray &name) const
    {
        return QString::fromStdString(flow->state().pins[name.toStdString()].pin);
    }
    int triesOf(const QByteArray &name) const { return flow->state().pins[name.toStdString()].tries; }

    void change(const QByteArray &name, const QString &actual)
    {
        const QString fresh = PinFlow::container(name).newPin;
        flow->openPinPage(name);
        flow->typeChange(actual, fresh, fresh);
        flow->world.clearTrace();
        flow->click("bChangePin");
        QVERIFY(flow->waitForEnd());
    }
    void unblock(const QByteArray &name, const QString &puk)
    {
        const QString fresh = PinFlow::container(name).newPin;
        flow->openPinPage(name);
        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(flow->field("lineInsertPuk")->text(), QString());
        flow->typeUnblock(puk, fresh, fresh);
        flow->world.clearTrace();
        flow->click("bChangePinPuk");
        QVERIFY(flow->waitForEnd());
    }

    // Another program at the same card.
    bool toolLogsIn(const QByteArray &container, const QString &pin) const
    {
        QProcess tool;
        tool.start("pkcs11-tool",
                   { "--module", VELMOR_TEST_ROOT "/velmor-pkcs11-64.so", "--token-label", container, "--login",
                     "--pin", pin, "--list-objects" });
        return tool.waitForFinished(30000) && tool.exitCode() == 0;
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void changeLogsInSetsAndLogsOut_data() { containers(); }
    void changeLogsInSetsAndLogsOut()
    {
        QFETCH(QByteArray, name);
        const PinFlow::Container &row = PinFlow::container(name);
        QVERIFY(flow->start("anna"));

        change(name, row.pin);

        QVERIFY(flow->showsChange(CardResult::done));
        QCOMPARE(pinOf(name), QString(row.newPin));
        // The session of the card's reading serves; the tries of all are read again afterwards.
        QCOMPARE(flow->pinCalls(),
                 (QStringList { "C_Login container=" + name + " user=USER pin=set -> 0x0",
                                "C_SetPIN container=" + name + " oldPin=set newPin=set -> 0x0",
                                "C_Logout container=" + name + " -> 0x0" }));
        QCOMPARE(flow->calls().filter("C_GetTokenInfo"),
                 (QStringList { "C_GetTokenInfo Authentication", "C_GetTokenInfo Authorization",
                                "C_GetTokenInfo Qualified" }));
    }

    void changedPinOutlivesTheProgramAndIsTheOneThatOthersNeed_data() { containers(); }
    void changedPinOutlivesTheProgramAndIsTheOneThatOthersNeed()
    {
        QFETCH(QByteArray, name);
        if (QStandardPaths::findExecutable("pkcs11-tool").isEmpty())
            QSKIP("pkcs11-tool (package opensc) is not installed");
        const PinFlow::Container &row = PinFlow::container(name);
        QVERIFY(flow->start("anna"));
        change(name, row.pin);

        flow->closeWindow();

        QVERIFY(!toolLogsIn(name, row.pin));
        QVERIFY(toolLogsIn(name, row.newPin));
    }

    void wrongPinCountsDownToTheLockAndThePageForThePuk_data() { containers(); }
    void wrongPinCountsDownToTheLockAndThePageForThePuk()
    {
        QFETCH(QByteArray, name);
        const QString wrong = QString("999999999").left(QString(PinFlow::container(name).pin).size());
        QVERIFY(flow->start("anna"));
        for (const int left : { 2, 1 }) {
            change(name, wrong);

            QCOMPARE(flow->page(), QString("pageCorrectChange"));
            QVERIFY(flow->showsChange(CardResult::wrongPin));
            QCOMPARE(flow->label("lTryNumDesc")->text(), "Pozostało prób: " + QString::number(left));
            // Logged out although no login succeeded.
            QCOMPARE(flow->pinCalls(),
                     (QStringList { "C_Login container=" + name + " user=USER pin=set -> 0xa0",
                                    "C_Logout container=" + name + " -> 0x101" }));
            QCOMPARE(triesOf(name), left);
            flow->click("bWrocPin");
        }

        change(name, wrong);

        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        QCOMPARE(triesOf(name), 0);
        flow->click("bCancel_2");
        QCOMPARE(flow->button(PinFlow::container(name).button)->text().trimmed(), QString("Odblokuj PIN"));
    }

    void lockedPinIsUnblockedByTheOfficersLogin_data() { containers(); }
    void lockedPinIsUnblockedByTheOfficersLogin()
    {
        QFETCH(QByteArray, name);
        QVERIFY(flow->start("locked-pins"));

        unblock(name, PinFlow::puk);

        QVERIFY(flow->showsUnblock(CardResult::done));
        QCOMPARE(flow->pinCalls(),
                 (QStringList { "C_Login container=" + name + " user=SO pin=set -> 0x0",
                                "C_InitPIN container=" + name + " newPin=set -> 0x0",
                                "C_Logout container=" + name + " -> 0x0" }));
        QCOMPARE(pinOf(name), QString(PinFlow::container(name).newPin));
        QCOMPARE(triesOf(name), 3);
        flow->click("bWrocPin");
        QCOMPARE(flow->button(PinFlow::container(name).button)->text().trimmed(), QString("Zmień PIN"));
    }

    void wrongPukCountsDownToTheBlockedPage()
    {
        QVERIFY(flow->start("locked-pins"));
        for (const int left : { 2, 1 }) {
            unblock(sim::Authorization, "99999999");

            QVERIFY(flow->showsUnblock(CardResult::wrongPuk));
            // Neither a try to set the PIN nor a logout.
            QCOMPARE(flow->pinCalls(), QStringList("C_Login container=Authorization user=SO pin=set -> 0xa0"));
            QCOMPARE(flow->label("lTryNumDescPUK")->text(), "Pozostało prób: " + QString::number(left));
            flow->click("bWrocPin");
        }

        unblock(sim::Authorization, "99999999");

        QCOMPARE(flow->page(), QString("pageBlockedPuk_2"));
        QCOMPARE(flow->state().pukTries, 0);
        flow->click("bWrocPuk");
        flow->openPinPage(sim::Qualified);
        QCOMPARE(flow->page(), QString("pageBlockedPuk_2"));
    }

    void firstPinIsSetWithThePukInPlaceOfTheOldPin()
    {
        QVERIFY(flow->start("first-pin"));

        unblock(sim::Qualified, PinFlow::puk);

        QVERIFY(flow->showsFirstPin(CardResult::done));
        QCOMPARE(flow->title(), QString("Nadawanie PIN-u "));
        QCOMPARE(flow->pinCalls(), QStringList("C_SetPIN container=Qualified oldPin=set newPin=set -> 0x0"));
        QCOMPARE(pinOf(sim::Qualified), QString("48261537"));
        flow->click("bWrocPin");
        QCOMPARE(flow->button("bChangePinQualifiedCert")->text().trimmed(), QString("Zmień PIN"));
    }

    void firstPinOfAnUninitialisedTokenIsSetByTheOfficer()
    {
        QVERIFY(flow->start("not-initialized"));

        unblock(sim::Qualified, PinFlow::puk);

        QVERIFY(flow->showsFirstPin(CardResult::done));
        QCOMPARE(
            flow->pinCalls(),
            (QStringList { "C_Login container=Qualified user=SO pin=set -> 0x0",
                           "C_InitPIN container=Qualified newPin=set -> 0x0", "C_Logout container=Qualified -> 0x0" }));
    }

    // There the wrong PUK comes back as a wrong old PIN, which has no code of its own.
    void wrongPukForAFirstPinIsToldAndCounted()
    {
        QVERIFY(flow->start("first-pin"));

        unblock(sim::Qualified, "99999999");

        QVERIFY(flow->showsFirstPin(CardResult::wrongPuk));
        QCOMPARE(flow->pinCalls(), QStringList("C_SetPIN container=Qualified oldPin=set newPin=set -> 0xa0"));
        QCOMPARE(flow->state().pukTries, 2);
    }

    // The window looked before another program unblocked the PIN.
    void healthyPinIsNotTouchedByAnUnblock()
    {
        QVERIFY(flow->start("anna"));
        flow->window->refreshCertsStatus("Odblokuj PIN", "Zmień PIN", "Zmień PIN", 0, 3, 3, 3);

        unblock(sim::Authentication, PinFlow::puk);

        QVERIFY(flow->showsUnblock(CardResult::wrongPuk));
        QCOMPARE(flow->pinCalls(), QStringList());
        QCOMPARE(pinOf(sim::Authentication), QString("1234"));
    }

    void wholeLifeOfACard()
    {
        QVERIFY(flow->start("anna"));
        const QByteArray name = sim::Authentication;
        change(name, "1234");
        flow->click("bWrocPin");
        for (int i = 0; i < 2; ++i) {
            change(name, "1234");
            flow->click("bWrocPin");
        }
        change(name, "1234");
        // Straight on, from the attempt that locked it.
        QCOMPARE(flow->page(), QString("pageUnblockPin"));
        flow->typeUnblock(PinFlow::puk, "7777", "7777");
        flow->click("bChangePinPuk");
        QVERIFY(flow->waitForPage("pageCorrectChange"));
        QVERIFY(flow->showsUnblock(CardResult::done));
        flow->click("bWrocPin");
        change(name, "7777");
        QVERIFY(flow->showsChange(CardResult::done));
    }
};

VELMOR_TEST(TestPinCard)
#include "tst_pin_card.moc"
