#include "system/family_runs.h"

#include "base/settings.h"

#include "support/raw_inbox.h"

#include <QRegularExpression>
#include <QThread>

#ifdef Q_OS_LINUX
#include <csignal>
#endif

// Manager among real siblings: start, second start, deaths at bad moments, the Monitor's pushes, messages by hand.
class TestFamily : public QObject, private FamilyRuns {
    Q_OBJECT

private:
    static constexpr int segmentSize = 500;

    void startAndWaitForTheMonitor()
    {
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv from:velmor_monitor"), patience);
    }

    // It hears and acts: the proof of life after each mishap.
    static bool answersToFocus()
    {
        const int before = countInLog("Show window called");
        return tell("velmor_manager", "windowFocus")
            && QTest::qWaitFor([&] { return countInLog("Show window called") > before; }, patience);
    }

    QProcess *startHelper(const QStringList &args)
    {
        QProcess *helper = startProgram(args, {}, QCoreApplication::applicationFilePath());
        helper->waitForReadyRead(patience);
        return helper;
    }

private slots:
    void init() { beginFamily(); }
    void cleanup() { endFamily(); }

    // Start

    void firstStartBringsTheMonitorUpAndHearsFromIt()
    {
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(runs("Monitor"), patience);
        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv from:velmor_monitor, readers:NO_READER, to:velmor_manager"), patience);
        QVERIFY(!logHas("Monitor is running"));
    }

    void monitorThatRunsIsNotStartedAgain()
    {
        startMonitor();
        QTRY_VERIFY_WITH_TIMEOUT(runs("Monitor"), patience);
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("Monitor is running"), patience);
        // It answers the query of the start.
        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv from:velmor_monitor, readers:NO_READER"), patience);
        QVERIFY(!logHas("run:"));
    }

    void secondStartRaisesTheFirstAndEndsWithOne_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::newRow("alone") << QStringList();
        QTest::newRow("with a page") << QStringList { "-p", "help" };
        QTest::newRow("with readers") << QStringList { "-r", "0:Czytnik Beta||" };
    }
    void secondStartRaisesTheFirstAndEndsWithOne()
    {
        QFETCH(QStringList, args);
        startAndWaitForTheMonitor();

        const Outcome second = runToEnd(args, {}, programIn(VELMOR_TEST_FAMILY));

        QCOMPARE(second.code, 1);
        // The second start has begun the log anew, which both now write.
        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv from:Manager, to:velmor_manager, windowFocus:1"), patience);
        QTRY_VERIFY(logHas("Show window called"));
        QVERIFY(!logHas("show help"));
        QVERIFY(!logHas("Czytnik Beta"));
    }

    void secondStartSendsTheseBytes()
    {
        RawInbox first("velmor_manager", segmentSize);
        QCOMPARE(runToEnd({}, {}, programIn(VELMOR_TEST_FAMILY)).code, 1);
        QCOMPARE(first.text(), QByteArray("<from>Manager</from><to>velmor_manager</to><windowFocus>1</windowFocus>"));
    }

    void secondStartBesideAFirstThatHearsNothingStillEndsWithOne()
    {
        RawInbox first("velmor_manager", segmentSize);
        first.write("<k>never read</k>");
        QCOMPARE(runToEnd({}, {}, programIn(VELMOR_TEST_FAMILY)).code, 1);
        QVERIFY(logHas("send failed 50"));
    }

    void secondStartOnTheOpeningPageAsksForReaders()
    {
        startAndWaitForTheMonitor();
        runToEnd({}, {}, programIn(VELMOR_TEST_FAMILY));
        QTRY_VERIFY_WITH_TIMEOUT(logHas("no reader go to disconnect page"), patience);
        QTRY_VERIFY(logHas("reader checked"));
    }

    void secondMonitorEndsByItself()
    {
        startMonitor();
        QTRY_VERIFY_WITH_TIMEOUT(runs("Monitor"), patience);
        QCOMPARE(runToEnd({}, {}, siblingPath("velmor_monitor")).code, 1);
        QVERIFY(runs("Monitor"));
    }

    void closeEndsTheProgramInOrder()
    {
        QProcess *manager = startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        QVERIFY(tell("velmor_manager", "close"));
        QCOMPARE(outcomeOf(*manager).code, 0);
        QVERIFY(logHas("Close from ipc"));
        QVERIFY(logHas("detach  velmor_manager"));
        QVERIFY(!runs("Manager"));
    }

    // Death at bad moments

    void killedWhileItsInboxIsFullItStartsAgainAndForgetsTheMessage()
    {
        // A sibling that is about to send keeps the segment alive, so there is none.
        QProcess *first = startProgram();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
#ifdef Q_OS_LINUX
        ::kill(static_cast<pid_t>(first->processId()), SIGSTOP);
#endif
        {
            RawInbox inbox("velmor_manager");
            inbox.write("<settings>1</settings><to>velmor_manager</to>");
        }
        first->kill();
        QVERIFY(first->waitForFinished());
        QFile::remove(logPath());

        startProgram();

        QTRY_VERIFY_WITH_TIMEOUT(logHas("shm lock created"), patience);
        QVERIFY(answersToFocus());
        QVERIFY(!logHas("show settings"));
    }

    void lockOfASenderThatDiedIsGivenBack()
    {
#ifdef Q_OS_WIN
        QSKIP("the platform never gives such a lock back");
#endif
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        QProcess *holder = startHelper({ "--hold", "velmor_manager" });
        holder->kill();
        QVERIFY(holder->waitForFinished());
        QVERIFY(answersToFocus());
    }

    void killedWhilePollingItStartsAgain()
    {
        // No sibling, whose sending would keep the segment alive.
        for (int round = 0; round < 4; ++round) {
            QFile::remove(logPath());
            QProcess *manager = startProgram();
            QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
            // At another moment of the poll each time.
            QThread::msleep(static_cast<unsigned long>(25 * round));
            manager->kill();
            QVERIFY(manager->waitForFinished());
        }
        QFile::remove(logPath());
        startProgram();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        QVERIFY(answersToFocus());
    }

    void sendersThatDieWhileSendingDoNoHarm()
    {
#ifdef Q_OS_WIN
        QSKIP("one that dies with the lock keeps it for good there");
#endif
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        for (int round = 0; round < 4; ++round) {
            QProcess *sender = startHelper({ "--flood", "velmor_manager" });
            QThread::msleep(static_cast<unsigned long>(120 + 30 * round));
            sender->kill();
            QVERIFY(sender->waitForFinished());
        }
        QVERIFY(countInLog("recv from:velmor_flood") >= 4);
        QVERIFY(answersToFocus());
    }

    void garbageInTheInboxDoesNoHarm()
    {
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        RawInbox inbox("velmor_manager");
        const QByteArray patterns[] = { QByteArray(segmentSize, '\xFF'), QByteArray(segmentSize, '<'),
                                        QByteArray("<a>").repeated(segmentSize / 3),
                                        "<to>velmor_manager</to><A>x</A><encID>",
                                        "<to>velmor_manager</to><readers></readers>" };
        for (const QByteArray &pattern : patterns) {
            QTRY_VERIFY_WITH_TIMEOUT(inbox.isFree(), patience);
            inbox.write(pattern);
        }
        QTRY_VERIFY_WITH_TIMEOUT(inbox.isFree(), patience);
        QVERIFY(answersToFocus());
    }

    // The raw bytes of a public value are changed on the way, or end the message: no key is agreed, and nothing else
    // happens.
    void keyAgreementOverASegmentYieldsGarbageAndNoHarm()
    {
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        RawInbox own("velmor_test", segmentSize);
        int answers = 0;
        for (int round = 0; round < 5; ++round) {
            own.clear();
            RawInbox inbox("velmor_manager");
            QTRY_VERIFY_WITH_TIMEOUT(inbox.isFree(), patience);
            inbox.write("<A>some number</A><encID>talk</encID><from>velmor_test</from><to>velmor_manager</to>");
            QTRY_VERIFY_WITH_TIMEOUT(!own.isFree(), patience);
            const QByteArray answer = own.text();
            QVERIFY2(answer.startsWith("<B>"), answer.constData());
            // 128 random bytes are no UTF-8; what has arrived is.
            QCOMPARE(QString::fromUtf8(answer).toUtf8(), answer);
            if (answer.contains("\xEF\xBF\xBD"))
                ++answers;
        }
        QVERIFY(answers > 0);
        // Encrypted with anything, a message gives commands that nobody knows, or none.
        own.clear();
        RawInbox inbox("velmor_manager");
        QTRY_VERIFY_WITH_TIMEOUT(inbox.isFree(), patience);
        inbox.write("<encID>talk</encID><from>velmor_test</from><msg>" + QByteArray(200, 'x')
                    + "</msg><to>velmor_manager</to>");
        QVERIFY(answersToFocus());
    }

    // The Monitor

    void cardsComeAndGoByThemselves()
    {
        startWithCard("Czytnik Alfa");

        QVERIFY(world.removeCard("Czytnik Alfa"));
        QTRY_VERIFY_WITH_TIMEOUT(logHas("readers:NO_CARD"), patience);
        QTRY_VERIFY(logHas("move to disconnect page"));
        QVERIFY(world.insertCard("Czytnik Alfa", "jan"));

        QTRY_VERIFY_WITH_TIMEOUT(logHas("load new readers"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(countInLog("all certs loaded"), 2, patience);
    }

    void everyChangeIsToldInItsOrder()
    {
        RawInbox manager("velmor_manager", segmentSize);
        startMonitor();
        const auto next = [&] {
            if (!QTest::qWaitFor([&] { return !manager.isFree(); }, patience))
                return QByteArray("nothing");
            const QByteArray text = manager.text();
            manager.clear();
            return text;
        };
        const auto readers = [](const char *value) {
            return "<from>velmor_monitor</from><readers>" + QByteArray(value) + "</readers><to>velmor_manager</to>";
        };
        QCOMPARE(next(), readers("NO_READER"));

        QVERIFY(world.applyScenario(
            "insert anna \"Czytnik Alfa\"\nremove \"Czytnik Alfa\"\ninsert jan \"Czytnik Żółw\"\n"));

        QCOMPARE(next(), readers("NO_CARD"));
        QCOMPARE(next(), readers("0:Czytnik Alfa||"));
        QCOMPARE(next(), readers("NO_CARD"));
        QCOMPARE(next(), readers("NO_CARD"));
        QCOMPARE(next(), readers("0:Czytnik Żółw||"));
    }

    void monitorAnswersItsQuestions()
    {
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));
        RawInbox manager("velmor_manager", segmentSize);
        startMonitor();
        QTRY_VERIFY_WITH_TIMEOUT(!manager.isFree(), patience);
        manager.clear();

        QVERIFY(tell("velmor_monitor", "getReadersWithPace"));
        QTRY_COMPARE_WITH_TIMEOUT(IpcMsg(manager.text()).param("readers"), QByteArray("0:Czytnik Alfa||"), patience);
        manager.clear();

        QVERIFY(tell("velmor_monitor", "diagnoseReaders"));
        QTRY_VERIFY_WITH_TIMEOUT(!manager.isFree(), patience);
        QVERIFY(IpcMsg(manager.text()).param("diagnoseReaders").contains("- Czytnik Alfa: karta gotowa"));
        QVERIFY(manager.text().size() < segmentSize);
    }

    void monitorPlaysAnUpdateThroughTheSettings()
    {
        const auto state = [] {
            Settings::instance()->sync();
            return Settings::instance()->value(SettingsKey::updateAvailable).toString() + ' '
                + Settings::instance()->value(SettingsKey::updateInProgress).toString();
        };
        startAndWaitForTheMonitor();

        QVERIFY(tell("velmor_monitor", "offerUpdate"));
        QTRY_COMPARE_WITH_TIMEOUT(state(), QString("true false"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(countInLog("recv checkForUpdate:1"), 1, patience);

        QVERIFY(tell("velmor_monitor", "updateApp", "true"));
        QTRY_COMPARE_WITH_TIMEOUT(state(), QString("true true"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(state(), QString("false false"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(countInLog("recv checkForUpdate:1"), 2, patience);
    }

    void monitorEndsWithItsWorld()
    {
        const QString folder = TestHome::path() + "/short-lived";
        QProcess *monitor = startProgram({}, { { "VELMOR_SIM_WORLD", folder } }, siblingPath("velmor_monitor"));
        QTRY_VERIFY_WITH_TIMEOUT(runs("Monitor") && QDir(folder).exists(), patience);
        QVERIFY(sim::SimWorld(folder.toStdString()).reset());
        const auto endedWithoutIt = [&folder, monitor] {
            // In vain as long as the Monitor, which reads what has just been set, has a file of it open.
            QDir(folder).removeRecursively();
            return monitor->state() == QProcess::NotRunning;
        };
        QTRY_VERIFY_WITH_TIMEOUT(endedWithoutIt(), patience);
        QCOMPARE(outcomeOf(*monitor).code, 0);
    }

    // By hand

    void simSendsAMessageByHand()
    {
        startManager();
        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        const QString sim = QString(VELMOR_TEST_FAMILY) + "/devkit/velmor-sim" + Platform::programSuffix();

        QCOMPARE(runToEnd({ "send", "velmor_manager", "isCard", "a \"b\" \\", "settings", "1" }, {}, sim).code, 0);

        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv from:velmor_send, isCard:a \"b\" \\, settings:1, to:velmor_manager"),
                                 patience);
        QTRY_VERIFY(logHas("show settings"));
        QCOMPARE(runToEnd({ "send", "--from", "velmor_can", "velmor_manager", "isCard", "1" }, {}, sim).code, 0);
        QTRY_VERIFY_WITH_TIMEOUT(logHas("recv from:velmor_can, isCard:1"), patience);
        QCOMPARE(runToEnd({ "send", "velmor_ctk", "close", "1" }, {}, sim).code, 1);
        QCOMPARE(runToEnd({ "send", "velmor_manager", "close" }, {}, sim).code, 2);
        QCOMPARE(runToEnd({ "send" }, {}, sim).code, 2);
    }

    void simWithoutTheSendingProgramSaysSo()
    {
        const Outcome outcome = runToEnd({ "send", "velmor_manager", "close", "1" }, {},
                                         QString(VELMOR_TEST_ROOT) + "/devkit/velmor-sim" + Platform::programSuffix());
        QCOMPARE(outcome.code, 1);
        QVERIFY(outcome.errors.contains("there is no velmor_send"));
    }
};

namespace {

// Holds the lock of a segment until it is killed.
[[noreturn]] void holdLock(const char *key)
{
    RawInbox inbox(key);
    inbox.memory.lock();
    std::puts("locked");
    std::fflush(stdout);
    for (;;)
        QThread::sleep(1);
}

[[noreturn]] void flood(const char *key)
{
    Ipc ipc;
    ipc.setName("velmor_flood");
    std::puts("begins");
    std::fflush(stdout);
    for (;;)
        ipc.send(IpcMsg { { "to", key }, { "isCard", QByteArray(300, 'x') } });
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 3 && !qstrcmp(argv[1], "--hold"))
        holdLock(argv[2]);
    if (argc == 3 && !qstrcmp(argv[1], "--flood"))
        flood(argv[2]);
    TestHome home;
    QApplication application(argc, argv);
    TestFamily test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_family.moc"
