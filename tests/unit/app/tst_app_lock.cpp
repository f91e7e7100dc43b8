#include "support/testmain.h"

#include "app/app_lock.h"

#include <QProcess>
#include <QSharedMemory>

#include <cstdio>
#include <cstdlib>

// The lock that one instance of a program can hold, and the question whether a sibling runs.
class TstAppLock : public QObject {
    Q_OBJECT

private slots:
    void init();

    void lockIsTakenAndLogged();
    void lockMayBeSetLater();
    void segmentHasItsSize();
    void secondInstanceIsRefused();
    void secondLockInTheSameProcessIsRefused();
    void refusedInstanceLeavesTheLockAlone();
    void unlockGivesTheLockBack();
    void secondUnlockDoesNothing();
    void unlockLetsGoOfTheContentFirst();
    void unlockOfWhatIsNotLockedDoesNothing();
    void destructorGivesTheLockBack();
    void lockIsFreeAfterAProperEnd();
    void lockIsFreeAfterACrash();
    void otherKeysAreOtherLocks();
    void withoutAKeyThereIsNoLock();

    void nobodyRuns();
    void siblingThatHoldsItsSegmentRuns();
    void idIsTakenInLowerCase();
    void askingLeavesTheSegmentAlone();
    void whoHasAskedHoldsNothing();
    void crashedSiblingDoesNotRun();
    void ownSegmentCountsToo();

private:
    QString key;
};

namespace {

constexpr char childHold[] = "--hold";
constexpr char childTry[] = "--try";

// Another process that holds a lock until it is told to go or is killed.
class Holder {
public:
    explicit Holder(const QString &key)
    {
        process.start(QCoreApplication::applicationFilePath(), { childHold, key });
        process.waitForReadyRead();
        answer = process.readLine().trimmed();
    }
    ~Holder() { end(); }
    Holder(const Holder &) = delete;
    Holder &operator=(const Holder &) = delete;

    bool holds() const { return answer == "locked"; }
    void end()
    {
        process.closeWriteChannel();
        process.waitForFinished();
    }
    void crash()
    {
        process.kill();
        process.waitForFinished();
    }

private:
    QProcess process;
    QByteArray answer;
};

QByteArray tryInAnotherProcess(const QString &key)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), { childTry, key });
    process.waitForFinished();
    return process.readAllStandardOutput().trimmed();
}

} // namespace

void TstAppLock::init()
{
    key = QString("velmor_%1_%2").arg(QTest::currentTestFunction()).arg(QCoreApplication::applicationPid()).toLower();
}

void TstAppLock::lockIsTakenAndLogged()
{
    CommonAppLock lock(key, 500);
    const LogCatcher log;

    QVERIFY(lock.lock());

    QCOMPARE(log.lines(), QStringList({ "shm lock created " + key + " 500" }));
}

void TstAppLock::lockMayBeSetLater()
{
    CommonAppLock lock;
    lock.set(key, 700);
    const LogCatcher log;

    QVERIFY(lock.lock());

    QCOMPARE(log.lines(), QStringList({ "shm lock created " + key + " 700" }));
    QCOMPARE(tryInAnotherProcess(key), QByteArray("refused"));
}

void TstAppLock::segmentHasItsSize()
{
    CommonAppLock lock(key);
    QVERIFY(lock.lock());

    QSharedMemory segment(key);
    QVERIFY(segment.attach());

#ifdef Q_OS_WIN
    QVERIFY(segment.size() >= 500); // whole pages here
#else
    QCOMPARE(segment.size(), 500);
#endif
}

void TstAppLock::secondInstanceIsRefused()
{
    Holder first(key);
    QVERIFY(first.holds());
    CommonAppLock second(key);
    const LogCatcher log;

    QVERIFY(!second.lock());

    QCOMPARE(log.lines(), QStringList({ "Another '" + key + "' app seems to be running" }));
}

void TstAppLock::secondLockInTheSameProcessIsRefused()
{
    CommonAppLock first(key);
    CommonAppLock second(key);

    QVERIFY(first.lock());

    QVERIFY(!second.lock());
}

void TstAppLock::refusedInstanceLeavesTheLockAlone()
{
    Holder first(key);
    {
        CommonAppLock second(key);
        QVERIFY(!second.lock());
    }

    // Neither the refusal nor the end of the refused one has freed the segment.
    QCOMPARE(tryInAnotherProcess(key), QByteArray("refused"));
    QCOMPARE(tryInAnotherProcess(key), QByteArray("refused"));
    CommonAppLock third(key);
    QVERIFY(!third.lock());
}

void TstAppLock::unlockGivesTheLockBack()
{
    CommonAppLock lock(key);
    QVERIFY(lock.lock());
    const LogCatcher log;

    lock.unlock();

    QCOMPARE(log.lines(), QStringList({ "shm lock " + key + " removed" }));
    QCOMPARE(tryInAnotherProcess(key), QByteArray("locked"));
    QVERIFY(lock.lock());
}

void TstAppLock::secondUnlockDoesNothing()
{
    CommonAppLock lock(key);
    QVERIFY(lock.lock());
    lock.unlock();
    const LogCatcher log;

    lock.unlock();

    QCOMPARE(log.lines(), QStringList());
}

// The segment is the inbox as well, and the program may end while it reads.
void TstAppLock::unlockLetsGoOfTheContentFirst()
{
    CommonAppLock lock(key);
    QVERIFY(lock.lock());
    QVERIFY(lock.segment()->lock());
    const LogCatcher log;

    lock.unlock();

    // Without a complaint of the toolkit about a lock that it holds already.
    QCOMPARE(log.lines(), QStringList({ "shm lock " + key + " removed" }));
}

void TstAppLock::unlockOfWhatIsNotLockedDoesNothing()
{
    CommonAppLock lock(key);
    CommonAppLock empty;
    const LogCatcher log;

    lock.unlock();
    empty.unlock();

    QCOMPARE(log.lines(), QStringList());
}

void TstAppLock::destructorGivesTheLockBack()
{
    const LogCatcher log;
    {
        CommonAppLock lock(key);
        QVERIFY(lock.lock());
    }

    QCOMPARE(log.lines(), QStringList({ "shm lock created " + key + " 500", "shm lock " + key + " removed" }));
    QCOMPARE(tryInAnotherProcess(key), QByteArray("locked"));
}

void TstAppLock::lockIsFreeAfterAProperEnd()
{
    Holder first(key);
    QVERIFY(first.holds());

    first.end();

    CommonAppLock next(key);
    QVERIFY(next.lock());
}

void TstAppLock::lockIsFreeAfterACrash()
{
    Holder first(key);
    QVERIFY(first.holds());

    first.crash();

    CommonAppLock next(key);
    QVERIFY(next.lock());
}

void TstAppLock::otherKeysAreOtherLocks()
{
    CommonAppLock lock(key);
    QVERIFY(lock.lock());

    QCOMPARE(tryInAnotherProcess(key + "_other"), QByteArray("locked"));
}

void TstAppLock::withoutAKeyThereIsNoLock()
{
    CommonAppLock lock;

    QVERIFY(!lock.lock());

    QVERIFY(!lock.isHeld());
}

void TstAppLock::nobodyRuns()
{
    QVERIFY(!Common::isAppRunning("Monitor", "velmor"));
}

void TstAppLock::siblingThatHoldsItsSegmentRuns()
{
    Holder monitor("velmor_monitor");
    QVERIFY(monitor.holds());

    QVERIFY(Common::isAppRunning("monitor", "velmor"));

    monitor.end();
    QVERIFY(!Common::isAppRunning("monitor", "velmor"));
}

void TstAppLock::idIsTakenInLowerCase()
{
    const Holder monitor("velmor_monitor");

    QVERIFY(Common::isAppRunning("Monitor", "velmor"));
    QVERIFY(Common::isAppRunning("MONITOR", "velmor"));
    // The product is not.
    QVERIFY(!Common::isAppRunning("Monitor", "Velmor"));
    QVERIFY(!Common::isAppRunning("Can", "velmor"));
}

void TstAppLock::askingLeavesTheSegmentAlone()
{
    const Holder monitor("velmor_monitor");

    for (int round = 0; round < 3; ++round)
        QVERIFY(Common::isAppRunning("Monitor", "velmor"));

    QCOMPARE(tryInAnotherProcess("velmor_monitor"), QByteArray("refused"));
}

void TstAppLock::whoHasAskedHoldsNothing()
{
    Holder monitor("velmor_monitor");
    CommonAppLock question("velmor_monitor");
    QVERIFY(question.isHeld());

    QVERIFY(!question.segment()->isAttached());
    QVERIFY(question.isHeld());
    monitor.end();
    QCOMPARE(tryInAnotherProcess("velmor_monitor"), QByteArray("locked"));
}

void TstAppLock::crashedSiblingDoesNotRun()
{
    Holder monitor("velmor_monitor");
    QVERIFY(monitor.holds());

    monitor.crash();

    QVERIFY(!Common::isAppRunning("Monitor", "velmor"));
    QVERIFY(!Common::isAppRunning("Monitor", "velmor"));
}

void TstAppLock::ownSegmentCountsToo()
{
    CommonAppLock lock("velmor_manager");
    QVERIFY(lock.lock());

    QVERIFY(Common::isAppRunning("Manager", "velmor"));
    // Asking has not let go of it.
    QCOMPARE(tryInAnotherProcess("velmor_manager"), QByteArray("refused"));
}

// With an argument of its own the program is another instance.
int main(int argc, char *argv[])
{
    if (argc == 3) {
        CommonAppLock lock(QString::fromLocal8Bit(argv[2]));
        std::puts(lock.lock() ? "locked" : "refused");
        std::fflush(stdout);
        if (qstrcmp(argv[1], childHold) == 0)
            std::getchar();
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstAppLock test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_app_lock.moc"
