#include "support/own_rest.h"
#include "unit/ipc/ipc_fixture.h"

#include <QDir>
#include <QFile>

#include <sys/ipc.h>
#include <sys/sem.h>

// The rests between the attempts to deliver, and a segment whose lock has been taken away, as its user can do.
class TestIpcLock : public IpcFixture {
    Q_OBJECT

private:
    static QString place()
    {
        // As it was at first: of a folder that has gone nothing is told.
        static const QString path = QDir::tempPath();
        return path;
    }
    static QString aside() { return place() + ".aside"; }

    // Removes the semaphores of all segments, and the place where the toolkit would make others.
    static void breakLocks()
    {
        const QDir folder(place());
        for (const QString &file : folder.entryList({ "qipc_systemsem_*" }, QDir::AllEntries | QDir::System)) {
            const key_t key = ftok(QFile::encodeName(folder.filePath(file)).constData(), 'Q');
            semctl(semget(key, 1, 0), 0, IPC_RMID);
        }
        QVERIFY(QDir().rename(place(), aside()));
    }
    static void mendLocks()
    {
        if (QDir(aside()).exists())
            QDir().rename(aside(), place());
    }

    static IpcMsg message() { return { { "to", inboxKey }, { "k", 1 } }; }

private slots:
    void init()
    {
        place();
        openBus();
    }
    void cleanup()
    {
        onRest = nullptr;
        mendLocks();
        leaveBus();
    }

    void fullInboxIsTriedEveryFiftyMilliseconds()
    {
        RawInbox inbox(inboxKey, agreedSize);
        inbox.write("<k>old</k>");
        QList<long> rests;
        onRest = [&rests](long milliseconds) { rests << milliseconds; };

        QVERIFY(!sender->send(message()));

        QCOMPARE(rests.size(), 48);
        QCOMPARE(rests.count(50), 48);
    }

    void attemptThatSucceedsIsCounted_data()
    {
        QTest::addColumn<int>("restsBefore");
        QTest::addColumn<QString>("line");
        QTest::newRow("the second") << 1 << "send success in  2 attempt";
        QTest::newRow("the fifth") << 4 << "send success in  5 attempt";
    }
    void attemptThatSucceedsIsCounted()
    {
        QFETCH(int, restsBefore);
        QFETCH(QString, line);
        RawInbox inbox(inboxKey, agreedSize);
        inbox.write("<k>old</k>");
        int rests = 0;
        onRest = [&](long) {
            if (++rests == restsBefore)
                inbox.clear();
        };
        LogCatcher log;

        QVERIFY(sender->send(message()));

        QCOMPARE(log.lines(), QStringList { line });
    }

    void nothingIsDeliveredWithoutTheLock()
    {
        RawInbox inbox(inboxKey, agreedSize);
        inbox.write("<k>old</k>");
        char *bytes = static_cast<char *>(inbox.memory.data());
        int rests = 0;
        onRest = [&](long) {
            if (++rests == 1) {
                *bytes = '\0';
                breakLocks();
            }
        };

        QVERIFY(!sender->send(message()));

        QCOMPARE(rests, 48);
        QCOMPARE(*bytes, '\0');
    }

    void nothingIsReadWithoutTheLock()
    {
        listen();
        RawInbox inbox(inboxKey);
        char *bytes = static_cast<char *>(inbox.memory.data());
        breakLocks();
        std::strcpy(bytes, "<k>1</k>");

        QTest::qWait(250); // two looks into it

        QVERIFY(heard.isEmpty());
        QCOMPARE(QByteArray(bytes), QByteArray("<k>1</k>"));
        mendLocks();
        QTRY_COMPARE(heard.size(), 1);
    }

    void segmentStaysAsItIsWithoutTheLock()
    {
        listen();
        RawInbox inbox(inboxKey);
        char *bytes = static_cast<char *>(inbox.memory.data());
        breakLocks();
        std::strcpy(bytes, "<k>1</k>");
        LogCatcher log;

        receiver->stop();

        QCOMPARE(log.lines(), QStringList { "stop error" });
        QCOMPARE(QByteArray(bytes), QByteArray("<k>1</k>"));
        mendLocks();
    }
};

VELMOR_TEST(TestIpcLock)
#include "tst_ipc_lock_linux.moc"
