#include "ipc_fixture.h"

// What a sender does with another program's segment: waiting for it, giving up, cutting, and the bytes that arrive.
class TestIpcSend : public IpcFixture {
    Q_OBJECT

private slots:
    void init() { openBus(); }
    void cleanup()
    {
        leaveBus();
        QVERIFY(!segmentExists(inboxKey));
    }

    void senderIsFilledInOnlyIfThereIsNone()
    {
        RawInbox inbox(inboxKey, prescribedSize);
        QVERIFY(sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } }));
        QCOMPARE(inbox.text(), QByteArray("<from>velmor_can</from><k>1</k><to>velmor_monitor</to>"));
        inbox.clear();
        QVERIFY(sender->send(IpcMsg { { "from", "velmor_can/req1" }, { "to", inboxKey }, { "k", 1 } }));
        QVERIFY(inbox.text().startsWith("<from>velmor_can/req1</from>"));
    }

    void pathOfTheAddressDoesNotChangeTheSegment()
    {
        RawInbox inbox(inboxKey, prescribedSize);
        QVERIFY(sender->send(IpcMsg { { "to", "velmor_monitor/req1" }, { "k", 1 } }));
        QVERIFY(inbox.text().endsWith("<to>velmor_monitor/req1</to>"));
    }

    void messageWithoutPayloadIsRefusedWithoutAWord()
    {
        RawInbox inbox(inboxKey, prescribedSize);
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
        RawInbox inbox(inboxKey, prescribedSize);
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
        RawInbox inbox(inboxKey, prescribedSize);
        inbox.write("<k>old</k>");
        LogCatcher log;
        // Free between the second and the third attempt.
        std::unique_ptr<QThread> thread(QThread::create([&inbox] {
            QThread::msleep(75);
            inbox.clear();
        }));
        thread->start();

        const bool sent = sender->send(IpcMsg { { "to", inboxKey }, { "k", 1 } });

        thread->wait();
        QVERIFY(sent);
        QCOMPARE(log.lines().size(), 1);
        const QRegularExpression form("^send success in  (\\d+) attempt$");
        const auto match = form.match(log.lines().first());
        QVERIFY2(match.hasMatch(), qPrintable(log.text()));
        // The third; a busy machine may have made it a later one.
        QVERIFY(match.captured(1).toInt() >= 3);
        QVERIFY(inbox.text().startsWith("<from>velmor_can</from><k>1</k>"));
    }

    void messageOfTheSegmentsSizeLeavesNoTerminator()
    {
        RawInbox inbox(inboxKey, prescribedSize);
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
        RawInbox inbox(inboxKey, prescribedSize);
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
