#include "support/byte_bus.h"
#include "support/fixed_random.h"
#include "support/key_asker.h"
#include "support/testmain.h"

// Addressing, key exchange and encrypted messages, over a transport that keeps every byte.
class TestIpcBase : public QObject, private ByteBusPair {
    Q_OBJECT

private:
    // All entries in one line.
    static QByteArray textOf(const IpcMsg &message) { return message.serialize(); }

    static QByteArray serialized(const QByteArray &key, const QByteArray &value)
    {
        return "<" + key + ">" + value + "</" + key + ">";
    }

    // The asking side's part; the key under which both can talk afterwards.
    QByteArray agree(const QByteArray &id, const QByteArray &secret = "a secret of twenty b")
    {
        const KeyAsker asker(secret);
        if (!monitor->sendReceive(IpcMsg { { "A", asker.publicValue() }, { "encID", id }, { "to", "velmor_manager" } },
                                  this, SLOT(takeReply(IpcMsg))))
            return {};
        monitor->carryTo(*manager);
        manager->carryTo(*monitor);
        QCoreApplication::processEvents();
        if (replies.isEmpty())
            return {};
        const QByteArray key = asker.key(replies.takeLast().param("B"));
        monitor->keepKey(id, key);
        return key;
    }

public slots:
    void takeReply(const IpcMsg &message) { replies << message; }

private slots:
    void initTestCase() { qRegisterMetaType<IpcMsg>("IpcMsg"); }

    void init() { renew(); }

    void plainMessageIsHandedOnAsItIs()
    {
        const IpcMsg message { { "from", "velmor_monitor" }, { "to", "velmor_manager" }, { "readers", "0:A||" } };
        manager->receive(message);
        QCOMPARE(manager->heard.size(), 1);
        QCOMPARE(textOf(manager->heard.first()), textOf(message));
        QVERIFY(manager->heard.first().encryptionId().isEmpty());
        QVERIFY(manager->sent.isEmpty());
    }

    void namedSlotsAddressTheirProgram_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QByteArray>("to");
        QTest::newRow("Can") << QByteArray("msgToCan") << QByteArray("velmor_can");
        QTest::newRow("Ctk") << QByteArray("msgToCtk") << QByteArray("velmor_ctk");
        QTest::newRow("Manager") << QByteArray("msgToManager") << QByteArray("velmor_manager");
        QTest::newRow("Monitor") << QByteArray("msgToMonitor") << QByteArray("velmor_monitor");
    }
    void namedSlotsAddressTheirProgram()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QByteArray, to);
        const IpcMsg message { { "to", "somebody else" }, { "close", 1 } };

        QVERIFY(QMetaObject::invokeMethod(manager.get(), slot.constData(), Q_ARG(IpcMsg, message)));

        QCOMPARE(manager->sent,
                 QList<QByteArray> { "<close>1</close><from>velmor_manager</from>" + serialized("to", to) });
    }

    void metaObjectHasTheSlotsAndSignals()
    {
        for (const char *method :
             { "received(IpcMsg)", "receivedTimed(IpcMsg)", "send(IpcMsg)", "sendReceiveTimeout()", "msgToCan(IpcMsg)",
               "msgToCtk(IpcMsg)", "msgToManager(IpcMsg)", "msgToMonitor(IpcMsg)" })
            QVERIFY2(IpcBase::staticMetaObject.indexOfMethod(method) >= 0, method);
        QVERIFY(IpcProxy::staticMetaObject.indexOfSlot("_received(IpcMsg)") >= 0);
    }

    void responseGoesToTheSenderUnderTheSameKey()
    {
        IpcMsg request { { "from", "velmor_monitor/req77" }, { "to", "velmor_manager" } };
        QVERIFY(manager->sendResponse(request, IpcMsg { { "k", "v" }, { "to", "elsewhere" } }));
        QCOMPARE(manager->sent.takeFirst(),
                 QByteArray("<from>velmor_manager</from><k>v</k><to>velmor_monitor/req77</to>"));

        manager->keepKey("id", "key");
        request.setEncryptionId("id");
        QVERIFY(manager->sendResponse(request, IpcMsg { { "k", "v" } }));
        const IpcMsg answer(manager->sent.takeFirst());
        QCOMPARE(answer.keys(), (QList<QByteArray> { "encID", "from", "msg", "to" }));
        QCOMPARE(answer.param("encID"), QByteArray("id"));
    }

    // Key exchange.

    void keyExchangeIsAnsweredWithBytesAsPublished()
    {
        const FixedRandom random(QByteArray::fromHex("0102030405060708090a0b0c0d0e0f1011121314"));
        manager->receive(
            IpcMsg { { "A", "\x02" }, { "encID", "talk" }, { "from", "velmor_monitor" }, { "to", "velmor_manager" } });
        // The public value of that secret, computed with python3.
        const QByteArray B = QByteArray::fromHex("43b2d1d44f0780c206e81c1b1142452d93f71db9be59b410dd84e6dc34093b7f"
                                                 "d60e253c41458428a0296bdb050dc1bcf67502c0451fc189580371b072fa8beb"
                                                 "0d0855f995298e624b0ddd2d3c0eb2cfd31e43cb4afa5d6c43344cc1352c6f0f"
                                                 "ed8c1a3f02a8b3a9cc14d2dbc2350c71ba4899afaa373542be992d0d6eb1c3fd");
        QCOMPARE(manager->sent,
                 QList<QByteArray> { "<B>" + B
                                     + "</B><encID>talk</encID><from>velmor_manager</from>"
                                       "<to>velmor_monitor</to>" });
        QVERIFY(manager->heard.isEmpty());
    }

    void failedKeyExchangeIsAnsweredWithRes()
    {
        // A secret of zero has no public value.
        const FixedRandom random(QByteArray(20, '\0'));
        manager->receive(
            IpcMsg { { "A", "\x02" }, { "encID", "talk" }, { "from", "velmor_monitor" }, { "to", "velmor_manager" } });
        QCOMPARE(manager->sent, QList<QByteArray> { "<from>velmor_manager</from><res>0</res><to>velmor_monitor</to>" });

        // And nothing was stored.
        LogCatcher log;
        manager->receive(IpcMsg { { "encID", "talk" }, { "msg", "x" }, { "to", "velmor_manager" } });
        QVERIFY(log.has("The key was not found"));
    }

    void conversationIsEncryptedBothWays()
    {
        QCOMPARE(agree("talk").size(), 32);
        IpcMsg question {
            { "from", "velmor_monitor" }, { "to", "velmor_manager" }, { "readers", "NO_CARD" }, { "reply", "0" }
        };
        question.setEncryptionId("talk");

        QVERIFY(monitor->send(question));

        const IpcMsg wire(monitor->sent.first());
        QCOMPARE(wire.keys(), (QList<QByteArray> { "encID", "from", "msg", "to" }));
        QVERIFY(!monitor->sent.first().contains("NO_CARD"));
        monitor->carryTo(*manager);
        QCOMPARE(manager->heard.size(), 1);
        const IpcMsg heard = manager->heard.first();
        QCOMPARE(textOf(heard), textOf(question));
        QCOMPARE(heard.encryptionId(), QByteArray("talk"));
        QVERIFY(!heard.wantsReply());

        QVERIFY(manager->sendResponse(heard, IpcMsg { { "k", "the answer" } }));
        QVERIFY(!manager->sent.first().contains("answer"));
        manager->carryTo(*monitor);
        QCOMPARE(monitor->heard.last().param("k"), QByteArray("the answer"));
    }

    // python3: bytes(c ^ k[i % 3] for i, c in enumerate(b"<close>1</close>"))
    void encryptedBytesAreTheKnownOnes()
    {
        manager->keepKey("id", "abc");
        IpcMsg message { { "to", "velmor_monitor" }, { "close", 1 } };
        message.setEncryptionId("id");
        manager->send(message);
        QCOMPARE(IpcMsg(manager->sent.first()).param("msg").toHex(), QByteArray("5d010f0e11065f535f4e010f0e11065f"));
    }

    // The example of docs/messages.md; the key was computed with python3 from both secrets.
    void conversationOfTheDocumentationIsUnderstood()
    {
        const FixedRandom random(QByteArray::fromHex("0102030405060708090a0b0c0d0e0f1011121314"));
        const QByteArray A = KeyAsker(QByteArray::fromHex("1234567890abcdef1234567890abcdef12345678")).publicValue();
        manager->receive(IpcMsg { { "A", A }, { "encID", "rozmowa-1" }, { "to", "velmor_manager" } });

        manager->receive(
            IpcMsg { { "encID", "rozmowa-1" },
                     { "from", "velmor_monitor" },
                     { "msg", QByteArray::fromHex("8f24fd3f738bc3712fc6b85c3becd9747b219477df4d549a9ad4") },
                     { "to", "velmor_manager" } });

        QCOMPARE(textOf(manager->heard.last()),
                 QByteArray("<from>velmor_monitor</from><readers>NO_CARD</readers><to>velmor_manager</to>"));
    }

    void secondExchangeUnderTheSameIdReplacesTheKey()
    {
        const QByteArray first = agree("talk");
        const QByteArray second = agree("talk", "another of 20 bytes.");
        QVERIFY(first != second);
        IpcMsg message { { "to", "velmor_manager" }, { "close", 1 } };
        message.setEncryptionId("talk");

        monitor->send(message);
        monitor->carryTo(*manager);
        QCOMPARE(manager->heard.last().param("close"), QByteArray("1"));

        monitor->keepKey("talk", first);
        monitor->send(message);
        monitor->carryTo(*manager);
        // The old key gives garbage, without any sign.
        QVERIFY(manager->heard.last().param("close").isEmpty());
    }

    void innerAddressOverwritesTheOuter()
    {
        manager->keepKey("id", "abc");
        const QByteArray inner = Crypto::encryptValue("<from>inner</from><k>v</k><to>elsewhere</to>", "abc");
        manager->receive(IpcMsg {
            { "encID", "id" }, { "from", "outer" }, { "msg", inner }, { "to", "velmor_manager" }, { "x", 1 } });
        QCOMPARE(textOf(manager->heard.last()), QByteArray("<from>inner</from><k>v</k><to>elsewhere</to>"));
    }

    void brokenEncryptedMessagesAreDropped_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QStringList>("lines");
        const QString wrongId = "receive message with wrong id";
        QTest::newRow("neither A nor msg")
            << QByteArray("<encID>id</encID><to>velmor_manager</to>") << QStringList { wrongId };
        QTest::newRow("empty A is no exchange") << QByteArray("<A></A><encID>id</encID>") << QStringList { wrongId };
        QTest::newRow("empty msg") << QByteArray("<encID>id</encID><msg></msg>") << QStringList { wrongId };
        QTest::newRow("key never agreed") << QByteArray("<encID>id</encID><msg>x</msg>")
                                          << QStringList { "The key was not found", "The key array is empty", wrongId };
        QTest::newRow("B of an exchange that was no request")
            << QByteArray("<B>x</B><encID>id</encID>") << QStringList { wrongId };
    }
    void brokenEncryptedMessagesAreDropped()
    {
        QFETCH(QByteArray, message);
        LogCatcher log;
        manager->receive(IpcMsg(message));
        QTEST(log.lines(), "lines");
        QVERIFY(manager->heard.isEmpty());
        QVERIFY(manager->sent.isEmpty());
    }

    void messageWithoutAKeyIsNotSent()
    {
        LogCatcher log;
        IpcMsg message { { "to", "velmor_monitor" }, { "close", 1 } };
        message.setEncryptionId("nobody's");
        QVERIFY(!manager->send(message));
        QVERIFY(log.has("encrypt mesege is empty"));
        QVERIFY(manager->sent.isEmpty());
    }

    void messageOfAddressesAloneCannotBeEncrypted()
    {
        manager->keepKey("id", "abc");
        LogCatcher log;
        IpcMsg message { { "from", "a" }, { "to", "b" } };
        message.setEncryptionId("id");
        QVERIFY(!manager->prepareMsg(message));
        QCOMPARE(log.lines(), (QStringList { "provided empty input array", "encrypt mesege is empty" }));
    }

    void hostilePublicValuesAreAnsweredLikeAnyOther_data()
    {
        QTest::addColumn<QByteArray>("A");
        QTest::newRow("one zero byte") << QByteArray(1, '\0');
        QTest::newRow("10,000 bytes") << QByteArray(10000, '\xFF');
        QTest::newRow("the prime") << QByteArray::fromHex(
            "B10B8F96A080E01DDE92DE5EAE5D54EC52C99FBCFB06A3C69A6A9DCA52D23B61"
            "6073E28675A23D189838EF1E2EE652C013ECB4AEA906112324975C3CD49B83BF"
            "ACCBDD7D90C4BD7098488E9C219A73724EFFD6FAE5644738FAA31A4FF55BCCC0"
            "A151AF5F0DC8B4BD45BF37DF365C1A65E68CFDA76D4DA708DF1FB2BC2E4A4371");
        QTest::newRow("text") << QByteArray("not a number at all");
    }
    void hostilePublicValuesAreAnsweredLikeAnyOther()
    {
        QFETCH(QByteArray, A);
        manager->receive(IpcMsg { { "A", A }, { "encID", "talk" }, { "from", "velmor_monitor" } });
        QCOMPARE(manager->sent.size(), 1);
        QVERIFY(!IpcMsg(manager->sent.first()).param("B").isEmpty());
    }

    void proxyHandsOnWhatIsAddressedToItsName_data()
    {
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<int>("heard");
        QTest::newRow("the name") << QByteArray("velmor_manager") << 1;
        QTest::newRow("the name with a path") << QByteArray("velmor_manager/x") << 1;
        QTest::newRow("another") << QByteArray("velmor_monitor") << 0;
        QTest::newRow("none") << QByteArray() << 0;
    }
    void proxyHandsOnWhatIsAddressedToItsName()
    {
        QFETCH(QByteArray, to);
        IpcProxy proxy(manager.get(), "velmor_manager");
        proxy._received(IpcMsg { { "to", to }, { "k", 1 } });
        QTEST(manager->heard.size(), "heard");
    }
};

VELMOR_TEST(TestIpcBase)
#include "tst_ipc_base.moc"
