#include "base/ipc_msg.h"
#include "base/settings.h"

#include "support/flow.h"
#include "support/raw_inbox.h"

#include <QProcess>

// The update that siblings announce through the store of settings and the Monitor carries out: the two buttons, and
// what is sent. The store is written by another process throughout.
class TestWindowMessagesUpdate : public QObject {
    Q_OBJECT

private:
    static constexpr int segmentSize = 500;

    std::unique_ptr<Flow> flow;

    static void siblingStores(const char *key, const char *value)
    {
        const int code = QProcess::execute(QCoreApplication::applicationFilePath(), { "--set", key, value });
        QCOMPARE(code, 0);
    }

    void receiveCheckForUpdate()
    {
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "checkForUpdate", "" } });
    }

    bool arrowShown() const { return !flow->widget("bUpdateArrow")->isHidden(); }
    bool buttonShown() const { return !flow->widget("bUpdate")->isHidden(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void init()
    {
        flow = std::make_unique<Flow>();
        siblingStores(SettingsKey::updateAvailable, "false");
        siblingStores(SettingsKey::updateInProgress, "false");
    }
    void cleanup() { flow.reset(); }

    void updateStoredBeforeTheStartIsOfferedAtOnce_data()
    {
        QTest::addColumn<QByteArray>("inProgress");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("waiting for the user") << QByteArray("false") << true;
        QTest::newRow("under way") << QByteArray("true") << false;
    }
    void updateStoredBeforeTheStartIsOfferedAtOnce()
    {
        QFETCH(QByteArray, inProgress);
        QFETCH(bool, enabled);
        siblingStores(SettingsKey::updateAvailable, "true");
        siblingStores(SettingsKey::updateInProgress, inProgress.constData());
        LogCatcher log;

        flow->openWindow();

        QCOMPARE(log.count("Checking for Kzr update"), 1);
        QVERIFY(arrowShown());
        QVERIFY(buttonShown());
        QCOMPARE(flow->button("bUpdateArrow")->isEnabled(), enabled);
        QCOMPARE(flow->button("bUpdate")->isEnabled(), enabled);
    }

    void checkForUpdateFollowsTheStoreOfAnotherProcess()
    {
        flow->openWindow();
        QVERIFY(!arrowShown());
        QVERIFY(!buttonShown());

        siblingStores(SettingsKey::updateAvailable, "true");
        QVERIFY(!buttonShown());
        receiveCheckForUpdate();
        QVERIFY(arrowShown());
        QVERIFY(buttonShown());

        siblingStores(SettingsKey::updateAvailable, "false");
        receiveCheckForUpdate();
        QVERIFY(!arrowShown());
        QVERIFY(!buttonShown());
    }

    void updateButtonsAskTheMonitor_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("arrow") << QByteArray("bUpdateArrow");
        QTest::newRow("text") << QByteArray("bUpdate");
    }
    void updateButtonsAskTheMonitor()
    {
        QFETCH(QByteArray, button);
        RawInbox monitor("velmor_monitor", segmentSize);
        QVERIFY(monitor.isThere());
        siblingStores(SettingsKey::updateAvailable, "true");
        flow->openWindow();
        LogCatcher log;

        flow->button(button.constData())->click();

        QVERIFY(log.has("Update Kzr clicked"));
        QCOMPARE(monitor.text(),
                 QByteArray("<from>velmor_manager</from><to>velmor_monitor</to><updateApp>true</updateApp>"));
        QVERIFY(!flow->button("bUpdate")->isEnabled());
        QVERIFY(!flow->button("bUpdateArrow")->isEnabled());
        QCOMPARE(flow->button("bUpdate")->text(), QString("Aktualizuję"));
    }

    void updateThatHasEndedCanBeAskedForAgain()
    {
        siblingStores(SettingsKey::updateAvailable, "true");
        flow->openWindow();
        flow->button("bUpdate")->click();
        QVERIFY(!flow->button("bUpdate")->isEnabled());

        receiveCheckForUpdate();

        QVERIFY(flow->button("bUpdate")->isEnabled());
        QVERIFY(flow->button("bUpdateArrow")->isEnabled());
        QCOMPARE(flow->button("bUpdate")->text(), QString("Aktualizuj"));
    }

    void updateThatIsNoLongerThereSendsNothing()
    {
        RawInbox monitor("velmor_monitor", segmentSize);
        QVERIFY(monitor.isThere());
        flow->openWindow();
        siblingStores(SettingsKey::updateAvailable, "true");
        receiveCheckForUpdate();
        QVERIFY(buttonShown());
        siblingStores(SettingsKey::updateAvailable, "false");

        flow->button("bUpdate")->click();

        QVERIFY(monitor.isFree());
        QVERIFY(!arrowShown());
        QVERIFY(!buttonShown());
        QCOMPARE(flow->button("bUpdate")->text(), QString("Aktualizuj"));
    }
};

// With arguments of its own the program is a sibling that writes a setting.
int main(int argc, char *argv[])
{
    if (argc == 4 && !qstrcmp(argv[1], "--set")) {
        Settings().setValue(argv[2], QString(argv[3]));
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TestWindowMessagesUpdate test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window_messages_update.moc"
