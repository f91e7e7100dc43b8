#include "ipc_fixture.h"

// What a sender does with another program's segment: waiting for it, giving up, cutting, and the bytes that arrive.
class TestIpcSend : public IpcFixture {
    Q_OBJECT

private:
    // The attempt in which a message was sent, as the log tells it, and 1 where it tells nothing; 0 for anything else.
    int attemptsIfFreeAfter(RawInbox &inbox, unsigned long milliseconds) const
    {
        LogCatcher log;
        std::unique_ptr<QThread> thread(QThread::create([&inbox, milliseconds] {
            QThread::msleep(milliseconds);
            inbox.clear();
        }));
        thread->start();
        const bool sent = sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } });
        thread->wait();
        if (!sent)
            return 0;
        if (log.lines().isEmpty())
            return 1;
        const QRegularExpression form("^send success in  (\\d+) attempt$");
        return log.lines().size() == 1 ? form.match(log.lines().first()).captured(1).toInt() : 0;
    }

private slots:
    void init() { openBus(); }
    void cleanup()
    {
        leaveBus();
        QVERIFY(!segmentExists(inboxKey));
    }

    void senderIsFilledInOnlyIfThereIsNone()
    {
        RawInbox inbox(inboxKey, agreedSize);
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QCOMPARE(inbox.text(), QByteArray("<from>velmor_can</from><k>1</k><to>velmor_monitor</to>"));
        inbox.clear();
        QVERIFY(sender->send(IpcMsg { { "from", "velmor_can/req1" }, { "to", inboxKey }, { "k", 1 } }));
        QVERIFY(inbox.text().startsWith("<from>velmor_can/req1</from>"));
    }

    void pathOfTheAddressDoesNotChangeTheSegment()
    {
        RawInbox inbox(inboxKey, agreedSize);
        QVERIFY(sender->send(IpcMsg { { "to", "velmor_monitor/req1" }, { "k", 1 } }));
        QVERIFY(inbox.text().endsWith("<to>velmor_monitor/req1</to>"));
    }

    void messageWithoutPayloadIsRefusedWithoutAWord()
    {
        RawInbox inbox(inboxKey, agreedSize);
        LogCatcher log;
        QVERIFY(!sender->send(IpcMsg { { "to", inboxKey }, { "reply", "0" } }));
        QVERIFY(log.lines().isEmpty());
        QVERIFY(inbox.isFree());
    }

    void messageWithoutItsKeyIsRefused()
    {
        IpcMsg message { { "to", inboxKey }, { "k", 1 } };
        message.setEncryptionId("unknown");
        LogCatcher log;
        QVERIFY(!sender->send(message));
        QCOMPARE(log.lines().mid(2), (QStringList { "encrypt mesege is empty", "Failed prepare msage" }));
    }

    void closedProgramFailsAtOnce_data()
    {
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("key");
        QTest::newRow("not running") << "velmor_ctk"
                                     << "velmor_ctk";
        QTest::newRow("with a path") << "velmor_ctk/req1"
                                     << "velmor_ctk";
        QTest::newRow("no address") << ""
                                    << "";
        QTest::newRow("no segment's name") << "../../x"
                                           << "..";
    }
    void closedProgramFailsAtOnce()
    {
        QFETCH(QString, to);
        QFETCH(QString, key);
        LogCatcher log;
        QVERIFY(!sender->send(IpcMsg { { "to", to }, { "k", 1 } }));
        QCOMPARE(log.lines(), QStringList { "send " + key + "  - send command error! (the app probably is closed?)" });
    }

    void fullInboxIsGivenUpAfterFortyNineAttempts()
    {
        RawInbox inbox(inboxKey, agreedSize);
        inbox.write("<k>old</k>");
        LogCatcher log;
        QElapsedTimer clock;
        clock.start();

        QVERIFY(!sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));

        // 48 rests of 50 ms.
        QVERIFY2(clock.elapsed() >= 2400, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(log.lines(), QStringList { "send failed 50" });
        QCOMPARE(inbox.text(), QByteArray("<k>old</k>"));
    }

    void inboxThatBecomesFreeIsCountedInAttempts()
    {
        // The third, unless a busy machine keeps one of the two threads waiting; then once more.
        constexpr int mostTries = 40;
        int told = 0;
        for (int i = 0; i < mostTries && told != 3; ++i) {
            RawInbox inbox(inboxKey, agreedSize);
            inbox.write("<k>old</k>");
            QElapsedTimer clock;
            clock.start();
            told = attemptsIfFreeAfter(inbox, 75);
            const qint64 took = clock.elapsed();

            QVERIFY(told > 0);
            // Rests of 50 ms, of which a system with coarse clocks keeps a little less.
            QVERIFY2(took >= 40 * (told - 1), qPrintable(QString("%1 in %2 ms").arg(told).arg(took)));
            QVERIFY(inbox.text().startsWith("<from>velmor_can</from><k>1</k>"));
        }
        QCOMPARE(told, 3);
    }

    void messageOfTheSegmentsSizeLeavesNoTerminator()
    {
        RawInbox inbox(inboxKey, agreedSize);
        const IpcMsg message = messageOfSize(inbox.size());
        LogCatcher log;
        QVERIFY(sender->send(message));
        QVERIFY(log.lines().isEmpty());
        QCOMPARE(inbox.bytes(), message.serialize());
        listen();
        QCOMPARE(heard.first().serialize(), message.serialize());
    }

    void longerMessageIsCutAndLosesTheEntriesAtItsEnd()
    {
        RawInbox inbox(inboxKey, agreedSize);
        const IpcMsg message = messageOfSize(inbox.size() + 1);
        LogCatcher log;
        QVERIFY(sender->send(message));
        QVERIFY(log.has("memcpy error | _DestinationSize < _SourceSize"));
        QCOMPARE(inbox.bytes(), message.serialize().left(inbox.size()));
        listen();
        // "</to" was all that was left of its last closing tag.
        QCOMPARE(heard.first().keys(), (QList<QByteArray> { "from", "k" }));
    }

    void bytesChangeAsTheThreeCharacterSetsHaveIt_data()
    {
        QTest::addColumn<QByteArray>("sent");
        QTest::addColumn<QByteArray>("arrived");
        QTest::newRow("ASCII") << QByteArray("abc") << QByteArray("abc");
        QTest::newRow("UTF-8") << QByteArray("Ąęż") << QByteArray("Ąęż");
        QTest::newRow("no UTF-8") << QByteArray("a\xFF\xFE") << QByteArray("a\xEF\xBF\xBD\xEF\xBF\xBD");
    }
    void bytesChangeAsTheThreeCharacterSetsHaveIt()
    {
        QFETCH(QByteArray, sent);
        listen();
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", sent } }));
        QTRY_COMPARE(heard.size(), 1);
        QTEST(heard.first().param("k"), "arrived");
    }

    void zeroByteEndsTheMessage()
    {
        listen();
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", QByteArray("a\0b", 3) } }));
        QTRY_COMPARE(heard.size(), 1);
        QCOMPARE(heard.first().keys(), QList<QByteArray> { "from" });
    }

    void canOnItsWayIsNotLogged()
    {
        listen();
        LogCatcher log;
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "setCanToVerify", "274951" } }));
        QTRY_COMPARE(heard.size(), 1);
        QVERIFY(log.has("setCanToVerify:#"));
        QVERIFY2(!log.has("274951"), qPrintable(log.text()));
    }
};

VELMOR_TEST(TestIpcSend)
#include "tst_ipc_send.moc"
