#include "ipc_fixture.h"

#include "app/app_lock.h"
#include "support/ordinary_user.h"

#include <unistd.h>

// Somebody else's account has taken the names of our segments: it hears nothing, and does not keep the program from
// starting.
class TestIpcForeign : public IpcFixture {
    Q_OBJECT

private:
    static void takeName(const char *key)
    {
        constexpr uid_t otherUser = 65534;
        const QString file = QSharedMemory(QString::fromLatin1(key)).nativeKey();
        QVERIFY(writeFileBytes(file, {}));
        QCOMPARE(chown(QFile::encodeName(file).constData(), otherUser, otherUser), 0);
    }

private slots:
    void initTestCase()
    {
        if (geteuid() != 0)
            QSKIP("only the super-user can be two users");
        App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
    }
    void init() { openBus(); }
    void cleanup()
    {
        leaveBus();
        for (const char *key : { "velmor_manager", inboxKey })
            QFile::remove(QSharedMemory(QString::fromLatin1(key)).nativeKey());
    }

    void programStartsWithoutAnInbox()
    {
        takeName("velmor_manager");
        LogCatcher log;
        QVERIFY(App::instance()->lock());
        QVERIFY(log.has("segment of another user left alone: velmor_manager"));
        QVERIFY(!log.has("Another"));

        receiver->useLock(*App::instance());
        receiver->start();
        const int lines = log.lines().size();
        // Three looks into the inbox that is not there.
        QTest::qWait(350);
        QCOMPARE(log.lines().size(), lines);
        receiver->stop();
    }

    void lockIsNotGivenBackTwice()
    {
        takeName("velmor_manager");
        QVERIFY(App::instance()->lock());
        LogCatcher log;
        App::instance()->unlock();
        QCOMPARE(log.lines(), QStringList());
    }

    void siblingWithAForeignSegmentDoesNotRun()
    {
        takeName(inboxKey);
        QVERIFY(!Common::isAppRunning("Monitor", "velmor"));
    }

    void nothingIsSentToAForeignSegment()
    {
        takeName(inboxKey);
        LogCatcher log;
        QVERIFY(!sender->send(IpcMsg { { "to", inboxKey }, { "readers", "NO_CARD" } }));
        QVERIFY(log.has("segment of another user left alone: velmor_monitor"));
        QVERIFY(log.has("send velmor_monitor  - send command error! (the app probably is closed?)"));
    }

    void inboxIsNotMadeUnderAForeignName()
    {
        takeName(inboxKey);
        LogCatcher log;
        listen();
        QVERIFY(log.has("segment of another user left alone: velmor_monitor"));
        QVERIFY(log.has("shm not created:"));
    }
};

VELMOR_TEST(TestIpcForeign)
#include "tst_ipc_foreign_lin.moc"
