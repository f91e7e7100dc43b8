#include "ipc_fixture.h"

#include "app/app_lock.h"
#include "support/armed_timers.h"

#ifdef Q_OS_LINUX
#include <sys/shm.h>
#endif

// The segments of the bus inside one process: opening, polling and leaving, and whatever others write into them.
class TestIpcShm : public IpcFixture {
    Q_OBJECT

private slots:
    void init() { openBus(); }
    void cleanup()
    {
        leaveBus();
        QVERIFY(!segmentExists(inboxKey));
    }

    // Opening and leaving.

    void startCreatesASegmentOfFiveHundredBytes()
    {
        LogCatcher log;
        listen();
        QCOMPARE(log.lines(), QStringList { "create shm velmor_monitor" });
        RawInbox inbox(inboxKey);
        QVERIFY(inbox.isThere());
#ifdef Q_OS_LINUX
        QCOMPARE(inbox.size(), agreedSize);
#else
        QVERIFY(inbox.size() >= agreedSize);
#endif
    }

    void segmentIsItsOwnersAlone()
    {
#ifdef Q_OS_LINUX
        listen();
        const key_t key = ftok(QFile::encodeName(RawInbox(inboxKey).memory.nativeKey()).constData(), 'Q');
        shmid_ds state {};
        QCOMPARE(shmctl(shmget(key, 0, 0), IPC_STAT, &state), 0);
        QCOMPARE(int(state.shm_perm.mode & 0777), 0600);
#else
        QSKIP("the platform keeps segments within the user's session");
#endif
    }

    void startTakesASegmentThatIsThere()
    {
        RawInbox inbox(inboxKey, agreedSize);
        inbox.write("<a>waiting</a>");
        LogCatcher log;
        listen();
        QVERIFY(!log.has("create shm"));
        QCOMPARE(heard.size(), 1);
        QCOMPARE(heard.first().param("a"), QByteArray("waiting"));
    }

    void segmentThatCannotBeCreatedIsLoggedAndThePollRunsOn()
    {
        LogCatcher log;
        keepWhatIsHeard();
        // Without a name there is no segment.
        receiver->start();
        QCOMPARE(log.count("create shm"), 1);
        // What the platform itself says of such a segment.
        QSharedMemory nameless { QString() };
        QVERIFY(!nameless.create(agreedSize));
        QCOMPARE(log.lines().last(), "shm not created: " + nameless.errorString());
        QTest::qWait(250);
        QCOMPARE(log.lines().size(), 2);
        // Nor is there anything to give back.
        receiver->stop();
        QCOMPARE(log.lines().size(), 2);
    }

    void stopWipesAndRemovesTheSegment()
    {
        listen();
        RawInbox inbox(inboxKey);
        inbox.write(QByteArray(agreedSize, 'x'));
        LogCatcher log;

        receiver->stop();

        QCOMPARE(log.lines(), QStringList { "remove  velmor_monitor" });
        QVERIFY(inbox.isFree());
        inbox.memory.detach();
        QVERIFY(!segmentExists(inboxKey));
        receiver->stop();
        QCOMPARE(log.lines().size(), 1);
    }

    void endOfTheObjectIsAStop()
    {
        listen();
        RawInbox inbox(inboxKey);
        inbox.write("<k>unread</k>");
        LogCatcher log;

        receiver.reset();

        QCOMPARE(log.lines(), QStringList { "remove  velmor_monitor" });
        QVERIFY(inbox.isFree());
    }

    void stoppedInboxIsLookedIntoNoMore()
    {
        listen();
        receiver->stop();

        QCOMPARE(waitsArmedBy([this] { receiver->listenLoop(); }), QList<int>());
    }

    void stoppedInboxIsNotReadAnyMore()
    {
        listen();
        RawInbox inbox(inboxKey);
        receiver->stop();
        inbox.write("<a>1</a>");
        QTest::qWait(250);
        QCOMPARE(inbox.text(), QByteArray("<a>1</a>"));
        QVERIFY(heard.isEmpty());
    }

    void inboxOpensAgainAfterAStop()
    {
        listen();
        receiver->stop();
        QTest::qWait(150); // the armed poll has seen it
        receiver->start();
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QTRY_COMPARE(heard.size(), 1);
    }

    void inboxOfTheLockIsAttachedAgainByThePoll()
    {
        App *app = App::instance();
        app->init("Monitor", VELMOR_TEST_ROOT, "x86_64", "Monitor");
        QVERIFY(app->lock());
        RawInbox inbox(inboxKey); // keeps the segment
        receiver->useLock(*app);
        keepWhatIsHeard();
        receiver->start();
        receiver->stop();
        QTest::qWait(150); // the armed poll has seen it
        QVERIFY(!app->lockSegment()->isAttached());

        receiver->start();

        QVERIFY(app->lockSegment()->isAttached());
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QTRY_COMPARE(heard.size(), 1);
        // Read-write, so the text was wiped.
        QVERIFY(inbox.isFree());
    }

    void inboxOfTheInstanceLockIsItsSegment()
    {
        App *app = App::instance();
        app->init("Monitor", VELMOR_TEST_ROOT, "x86_64", "Monitor");
        QVERIFY(app->lock());
        keepWhatIsHeard();
        receiver->useLock(*app);
        QCOMPARE(receiver->name(), QByteArray(inboxKey));
        LogCatcher log;
        receiver->start();
        QVERIFY(!log.has("create shm"));
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QTRY_COMPARE(heard.size(), 1);

        receiver->stop();

        QCOMPARE(log.lines().last(), QString("detach  velmor_monitor"));
        QVERIFY(app->lockSegment());
        QVERIFY(!app->lockSegment()->isAttached());
    }

    void stopLetsGoOfTheContentOfTheLocksSegmentFirst()
    {
        App *app = App::instance();
        app->init("Monitor", VELMOR_TEST_ROOT, "x86_64", "Monitor");
        QVERIFY(app->lock());
        receiver->useLock(*app);
        receiver->start();
        QVERIFY(app->lockSegment()->lock());
        LogCatcher log;

        receiver->stop();

        // Without a complaint of the toolkit about a lock that it holds already.
        QCOMPARE(log.lines(), QStringList { "detach  velmor_monitor" });
    }

    void inboxThatWasNeverOpenedLeavesTheLockAlone()
    {
        App *app = App::instance();
        app->init("Monitor", VELMOR_TEST_ROOT, "x86_64", "Monitor");
        QVERIFY(app->lock());
        receiver->useLock(*app);
        LogCatcher log;

        receiver.reset();

        QCOMPARE(log.lines(), QStringList());
        QVERIFY(app->lockSegment()->isAttached());
    }

    void twoSiblingsOfOneNameShareTheMessages()
    {
        listen();
        Ipc other;
        QList<IpcMsg> heardByOther;
        connect(&other, &Ipc::received, this, [&](const IpcMsg &message) { heardByOther << message; });
        other.setName(inboxKey);
        other.start();
        for (int i = 0; i < 4; ++i) {
            QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", i } }));
            QTRY_COMPARE(heard.size() + heardByOther.size(), i + 1);
        }
    }

    // Polling.

    void messageIsLoggedTakenAndWiped()
    {
        listen();
        RawInbox inbox(inboxKey);
        LogCatcher log;
        inbox.write("<k>value</k><to>velmor_monitor</to>");
        QTRY_COMPARE(heard.size(), 1);
        QCOMPARE(log.lines(), QStringList { "recv k:value, to:velmor_monitor" });
        QCOMPARE(inbox.bytes().left(agreedSize), QByteArray(agreedSize, '\0'));
    }

    void nextLookIsATenthOfASecondLater()
    {
        QCOMPARE(waitsArmedBy([this] { listen(); }), QList<int> { 100 });
    }

    void inboxIsLookedIntoTenTimesASecond()
    {
        listen();
        RawInbox inbox(inboxKey);
        int messages = 0;
        connect(receiver.get(), &Ipc::received, this, [&] {
            ++messages;
            inbox.write("<k>again</k>");
        });
        inbox.write("<k>first</k>");
        QTest::qWait(1050);
        receiver->stop();
        QVERIFY2(messages >= 6 && messages <= 11, qPrintable(QString::number(messages)));
    }

    void handlerRunsAfterTheUnlock()
    {
        listen();
        bool taken = false;
        connect(receiver.get(), &Ipc::received, this, [&] {
            // Blocks for ever if the lock were still held.
            taken = sender->send(IpcMsg { { "to", inboxKey }, { "k", 2 } });
        });
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QTRY_VERIFY(taken);
        receiver->disconnect(this);
    }

    void anythingInTheSegmentIsHarmless_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("messages");
        const int size = agreedSize;
        QTest::newRow("no terminator") << messageOfSize(size).serialize() << 1;
        QTest::newRow("brackets") << QByteArray(size, '<') << 1;
        QTest::newRow("nested tags") << QByteArray("<a>").repeated(size / 3) << 1;
        QTest::newRow("half a message") << messageOfSize(200).serialize().left(100) << 1;
        QTest::newRow("all bits") << QByteArray(size, '\xFF') << 1;
        QTest::newRow("one byte") << QByteArray("x") << 1;
        QTest::newRow("zero in front") << QByteArray("\0<a>1</a>", 9) << 0;
        QTest::newRow("unknown keys") << QByteArray("<x>1</x><y>2</y>") << 1;
        QTest::newRow("duplicate keys") << QByteArray("<x>1</x><x>2</x>") << 1;
        QTest::newRow("encID without A or msg") << QByteArray("<encID>i</encID>") << 0;
        QTest::newRow("encID never agreed") << QByteArray("<encID>i</encID><msg>m</msg>") << 0;
        QTest::newRow("exchange with nobody") << QByteArray("<A>xx</A><encID>i</encID>") << 0;
        QTest::newRow("reply without a request") << QByteArray("<to>velmor_monitor/req1</to><x>1</x>") << 0;
    }
    void anythingInTheSegmentIsHarmless()
    {
        QFETCH(QByteArray, bytes);
        listen();
        RawInbox inbox(inboxKey);
        inbox.write(bytes);

        QTRY_VERIFY(inbox.bytes().left(agreedSize) == QByteArray(agreedSize, '\0') || bytes.startsWith('\0'));
        QTest::qWait(120);

        QTEST(heard.size(), "messages");
        // And it goes on.
        inbox.clear();
        heard.clear();
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QTRY_COMPARE(heard.size(), 1);
    }

    void smallerSegmentIsNeverTouchedBeyondItsEnd()
    {
        RawInbox inbox(inboxKey, 10);
        inbox.write(QByteArray(inbox.size(), '<'));
#ifdef Q_OS_LINUX
        // The rest of the page is there as well, and shows what went too far.
        char *const beyond = static_cast<char *>(inbox.memory.data()) + inbox.size();
        const QByteArray mark = "<a>1</a>";
        std::memcpy(beyond, mark.constData(), static_cast<std::size_t>(mark.size()));
#endif
        listen();
        QCOMPARE(heard.size(), 1);
        QVERIFY(inbox.isFree());
#ifdef Q_OS_LINUX
        QVERIFY(heard.first().keys().isEmpty());
        QCOMPARE(QByteArray(beyond, mark.size()), mark);
#endif
    }

    // The tail that the wipe of 500 bytes leaves behind a long message is read as the end of the next full one.
    void largerSegmentKeepsTheTailOfALongMessage()
    {
        RawInbox inbox(inboxKey, 4096);
        listen();
        QVERIFY(sender->send(IpcMsg { { "from", "f" }, { "to", inboxKey }, { "z", QByteArray(500, 'x') } }));
        QTRY_COMPARE(heard.size(), 1);
        QCOMPARE(heard.first().param("z"), QByteArray(500, 'x'));
        QCOMPARE(inbox.bytes().left(agreedSize), QByteArray(agreedSize, '\0'));
        QVERIFY(inbox.bytes().mid(agreedSize).startsWith("xxx"));

        inbox.write("<z>" + QByteArray(agreedSize - 3, 'y'));

        QTRY_COMPARE(heard.size(), 2);
        QCOMPARE(QString(heard.at(1).param("z")).remove('x'), QString(agreedSize - 3, 'y'));
    }

    void segmentThatWentWhileRunningIsNoHarm()
    {
        listen();
#ifdef Q_OS_LINUX
        RawInbox inbox(inboxKey);
        const QByteArray path = QFile::encodeName(inbox.memory.nativeKey());
        const int id = shmget(ftok(path.constData(), 'Q'), 0, 0);
        inbox.memory.detach();
        QCOMPARE(shmctl(id, IPC_RMID, nullptr), 0);
#endif
        QTest::qWait(250);
#ifdef Q_OS_LINUX
        QVERIFY(!sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QFile::remove(QFile::decodeName(path));
#endif
    }
};

VELMOR_TEST(TestIpcShm)
#include "tst_ipc_shm.moc"
