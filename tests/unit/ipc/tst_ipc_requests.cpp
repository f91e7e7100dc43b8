#include "support/byte_bus.h"
#include "support/testmain.h"

#include <QAbstractEventDispatcher>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QThread>

namespace {

// The event dispatcher of a thread that waits for nothing: it notes the timers that run there.
class TimerBook : public QAbstractEventDispatcher {
public:
    // Their intervals in milliseconds, by the numbers of the timers.
    explicit TimerBook(QMap<int, int> &book) : running(book) { }

    void registerTimer(int id, int interval, Qt::TimerType, QObject *) override { running.insert(id, interval); }
    bool unregisterTimer(int id) override { return running.remove(id) > 0; }
    bool unregisterTimers(QObject *) override { return false; }
    QList<TimerInfo> registeredTimers(QObject *) const override { return {}; }
    int remainingTime(int) override { return -1; }

    bool processEvents(QEventLoop::ProcessEventsFlags) override { return false; }
    bool hasPendingEvents() override { return false; }
    void registerSocketNotifier(QSocketNotifier *) override { }
    void unregisterSocketNotifier(QSocketNotifier *) override { }
#ifdef Q_OS_WIN
    bool registerEventNotifier(QWinEventNotifier *) override
    {
        return false;
    }
    void unregisterEventNotifier(QWinEventNotifier *) override { }
#endif
    void wakeUp() override { }
    void interrupt() override { }
    void flush() override { }

private:
    QMap<int, int> &running;
};

} // namespace

// Requests whose answers go to a slot: their addresses, the time-out, and answers that nobody waits for.
class TestIpcRequests : public QObject, private ByteBusPair {
    Q_OBJECT

public slots:
    void takeReply(const IpcMsg &message) { replies << message; }

private slots:
    void initTestCase() { qRegisterMetaType<IpcMsg>("IpcMsg"); }

    void init() { renew(); }

    void requestCarriesAnAddressForItsReply()
    {
        const QRegularExpression form("^velmor_monitor/req[0-9a-f]{16}$");
        QSet<QByteArray> addresses;
        QSet<char> firstDigits;
        for (int request = 0; request < 300; ++request) {
            QVERIFY(
                monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, this, SLOT(takeReply(IpcMsg))));
            const QByteArray from = IpcMsg(monitor->sent.takeFirst()).from();
            QVERIFY2(form.match(from).hasMatch(), from.constData());
            addresses << from;
            firstDigits << from.at(from.size() - 16);
            monitor->sendReceiveTimeout();
        }
        QCoreApplication::processEvents();

        QCOMPARE(addresses.size(), 300);
        // The zero as well, which is filled in where the number is shorter.
        QCOMPARE(firstDigits.size(), 16);
    }

    void replyReachesTheSlotThroughTheEventLoop()
    {
        monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, this, SLOT(takeReply(IpcMsg)));
        monitor->carryTo(*manager);
        manager->sendResponse(manager->heard.first(), IpcMsg { { "k", "reply" } });
        QCOMPARE(IpcMsg(manager->sent.first()).shmKey(), QString("velmor_monitor"));

        manager->carryTo(*monitor);

        QVERIFY(replies.isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(replies.size(), 1);
        QCOMPARE(replies.first().param("k"), QByteArray("reply"));
        QVERIFY(monitor->heard.isEmpty());
    }

    void secondRequestIsRefusedWhileOneIsOpen()
    {
        const IpcMsg request { { "to", "velmor_manager" }, { "k", 1 } };
        QVERIFY(monitor->sendReceive(request, this, SLOT(takeReply(IpcMsg))));
        QVERIFY(!monitor->sendReceive(request, this, SLOT(takeReply(IpcMsg))));
        QCOMPARE(monitor->sent.size(), 1);
    }

    void requestThatCouldNotBeSentIsNotOpen()
    {
        const IpcMsg request { { "to", "velmor_manager" }, { "k", 1 } };
        monitor->deaf = true;
        QVERIFY(!monitor->sendReceive(request, this, SLOT(takeReply(IpcMsg))));
        monitor->deaf = false;
        QVERIFY(monitor->sendReceive(request, this, SLOT(takeReply(IpcMsg))));
    }

    void replyToNobodyIsDropped_data()
    {
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<bool>("open");
        QTest::addColumn<QString>("line");
        QTest::newRow("no request open") << QByteArray("velmor_monitor/req0123") << false
                                         << "receive message with wrong id";
        QTest::newRow("another request open")
            << QByteArray("velmor_monitor/req0123") << true << "receive message with wrong id";
        QTest::newRow("the mark alone, one open")
            << QByteArray("velmor_monitor/req") << true << "receive message with wrong id";
        QTest::newRow("the mark alone, none ever") << QByteArray("velmor_monitor/req") << false << "unexpected reply";
    }
    void replyToNobodyIsDropped()
    {
        QFETCH(QByteArray, to);
        QFETCH(bool, open);
        QFETCH(QString, line);
        if (open)
            monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, this, SLOT(takeReply(IpcMsg)));
        LogCatcher log;

        monitor->receive(IpcMsg { { "to", to }, { "k", 1 } });

        QCOMPARE(log.lines(), QStringList { line });
        QCoreApplication::processEvents();
        QVERIFY(replies.isEmpty());
        QVERIFY(monitor->heard.isEmpty());
    }

    void secondReplyIsUnexpected()
    {
        monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, this, SLOT(takeReply(IpcMsg)));
        const IpcMsg reply { { "to", IpcMsg(monitor->sent.first()).from() }, { "k", 2 } };
        monitor->receive(reply);
        LogCatcher log;
        monitor->receive(reply);
        QCOMPARE(log.lines(), QStringList { "unexpected reply" });
        QCoreApplication::processEvents();
        QCOMPARE(replies.size(), 1);
    }

    void timerRunsWhileARequestIsOpen()
    {
        const IpcMsg request { { "to", "velmor_manager" }, { "k", 1 } };
        QMap<int, int> running;
        QList<int> atTheRequest;
        QList<int> afterTheReply;
        QList<int> whereNothingWasSent;
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            ByteBusProgram program("velmor_monitor");
            program.sendReceive(request, this, SLOT(takeReply(IpcMsg)));
            atTheRequest = running.values();
            program.receive(IpcMsg { { "to", IpcMsg(program.sent.first()).from() }, { "k", "reply" } });
            afterTheReply = running.values();
            program.deaf = true;
            program.sendReceive(request, this, SLOT(takeReply(IpcMsg)));
            whereNothingWasSent = running.values();
        }));
        thread->setEventDispatcher(new TimerBook(running));

        thread->start();
        QVERIFY(thread->wait());

        QCOMPARE(atTheRequest, QList<int> { 5000 });
        QCOMPARE(afterTheReply, QList<int>());
        QCOMPARE(whereNothingWasSent, QList<int>());
        QTRY_COMPARE(replies.size(), 1);
    }

    void silenceEndsInATimeoutMessageAfterFiveSeconds()
    {
        QElapsedTimer clock;
        clock.start();
        monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, this, SLOT(takeReply(IpcMsg)));

        QTRY_COMPARE_WITH_TIMEOUT(replies.size(), 1, 8000);

        QVERIFY(clock.elapsed() >= 4500);
        QCOMPARE(replies.first().serialize(), QByteArray("<TIMEOUT>1</TIMEOUT>"));
    }

    void timeoutWithoutARequestDoesNothing()
    {
        LogCatcher log;
        monitor->sendReceiveTimeout();
        QVERIFY(log.lines().isEmpty());
    }

    void slotOfAnyKnownNumberIsCalled_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::newRow("number 0") << QByteArray("0takeReply(IpcMsg)");
        QTest::newRow("number 1") << QByteArray("1takeReply(IpcMsg)");
        QTest::newRow("number 2") << QByteArray("2takeReply(IpcMsg)");
    }
    void slotOfAnyKnownNumberIsCalled()
    {
        QFETCH(QByteArray, slot);
        monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, this, slot.constData());
        monitor->receive(IpcMsg { { "to", IpcMsg(monitor->sent.first()).from() }, { "k", "reply" } });
        QCoreApplication::processEvents();
        QCOMPARE(replies.size(), 1);
        QCOMPARE(replies.first().param("k"), QByteArray("reply"));
    }

    void slotInAnotherFormIsWarnedOf_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::newRow("without a number") << QByteArray("takeReply(IpcMsg)");
        QTest::newRow("a character before the numbers") << QByteArray("/takeReply(IpcMsg)");
        QTest::newRow("number 3") << QByteArray("3takeReply(IpcMsg)");
        QTest::newRow("without a bracket") << QByteArray("1takeReply");
        QTest::newRow("empty") << QByteArray("");
    }
    void slotInAnotherFormIsWarnedOf()
    {
        QFETCH(QByteArray, slot);
        const IpcMsg request { { "to", "velmor_manager" }, { "k", 1 } };
        monitor->sendReceive(request, this, slot.constData());
        QTest::ignoreMessage(QtWarningMsg, "IpcBase::sendReceive: Invalid slot specification");
        monitor->sendReceiveTimeout();
        QCoreApplication::processEvents();
        QVERIFY(replies.isEmpty());
        // That request is over; the next one is not held up by it.
        monitor->sent.clear();
        QVERIFY(monitor->sendReceive(request, this, SLOT(takeReply(IpcMsg))));
        monitor->receive(IpcMsg { { "to", IpcMsg(monitor->sent.first()).from() }, { "k", "reply" } });
        QCoreApplication::processEvents();
        QCOMPARE(replies.size(), 1);
    }

    void replyForAReceiverThatHasGoneIsDropped()
    {
        auto receiver = std::make_unique<QObject>();
        monitor->sendReceive(IpcMsg { { "to", "velmor_manager" }, { "k", 1 } }, receiver.get(), SLOT(deleteLater()));
        receiver.reset();
        monitor->sendReceiveTimeout();
        QCoreApplication::processEvents();
    }
};

VELMOR_TEST(TestIpcRequests)
#include "tst_ipc_requests.moc"
