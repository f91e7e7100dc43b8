#include "base/ipc_msg.h"

#include "support/plain_parser.h"
#include "support/testmain.h"

#include <random>

class TestIpcMsg : public QObject {
    Q_OBJECT

private:
    // Keys and values in one line, for tables.
    static QByteArray entriesOf(const IpcMsg &message)
    {
        QByteArrayList entries;
        for (const QByteArray &key : message.keys())
            entries << key + '=' + message.param(key);
        return entries.join('|');
    }

    static QString logged(const QByteArray &value) { return IpcMsg { { "k", value } }.toString(); }

private slots:
    void valuesBecomeBytes_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("true") << QVariant(true) << QByteArray("1");
        QTest::newRow("false") << QVariant(false) << QByteArray("0");
        QTest::newRow("int") << QVariant(1) << QByteArray("1");
        QTest::newRow("negative int") << QVariant(-12) << QByteArray("-12");
        QTest::newRow("bytes") << QVariant(QByteArray("a\0b", 3)) << QByteArray("a\0b", 3);
        QTest::newRow("text") << QVariant(QString("Łódź")) << QByteArray("Łódź");
        QTest::newRow("the word") << QVariant("true") << QByteArray("true");
        QTest::newRow("nothing") << QVariant() << QByteArray();
    }
    void valuesBecomeBytes()
    {
        QFETCH(QVariant, value);
        QFETCH(QByteArray, bytes);
        const IpcMsg message { { "key", value } };

        QCOMPARE(message.param("key"), bytes);
        QCOMPARE(message.serialize(), "<key>" + bytes + "</key>");
    }

    void textFormHasTheEntriesInTheOrderOfTheirKeys()
    {
        const IpcMsg message { { "to", "velmor_monitor" }, { "getReadersWithPace", 1 }, { "from", "velmor_manager" } };
        QCOMPARE(message.serialize(),
                 QByteArray("<from>velmor_manager</from><getReadersWithPace>1</getReadersWithPace>"
                            "<to>velmor_monitor</to>"));
    }

    void orderIsThatOfBytes()
    {
        const IpcMsg message { { "b", 1 }, { "B", 2 }, { "", 3 }, { "\xC4", 4 }, { "ba", 5 }, { "encID", 6 } };
        QCOMPARE(message.keys(), (QList<QByteArray> { "", "B", "b", "ba", "encID", "\xC4" }));
    }

    void laterDuplicateWins() { QCOMPARE(entriesOf(IpcMsg { { "k", 1 }, { "k", 2 } }), QByteArray("k=2")); }

    void textFormIsReadBack_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("entries");
        const struct {
            const char *name;
            const char *text;
            const char *entries;
        } rows[] = {
            { "empty", "", "" },
            { "one entry", "<a>1</a>", "a=1" },
            { "several", "<a>1</a><b>2</b>", "a=1|b=2" },
            { "empty value", "<a></a>", "a=" },
            { "empty key", "<>v</>", "=v" },
            { "text around and between", "x<a>1</a> y <b>2</b>z", "a=1|b=2" },
            { "later duplicate wins", "<a>1</a><a>2</a>", "a=2" },
            { "value with its own closing tag is cut", "<a>1</a>2</a><b>3</b>", "a=1|b=3" },
            { "entries inside of a value belong to it", "<a><b>1</b></a>", "a=<b>1</b>" },
            { "entry at the end of a value, under a longer key", "<longer-key><b></b></longer-key>",
              "longer-key=<b></b>" },
            { "same key inside", "<a><a>1</a></a>", "a=<a>1" },
            { "without closing tag", "<a>1", "" },
            { "without closing tag, then one", "<a>1<b>2</b>", "b=2" },
            { "closing tag alone", "</a>", "" },
            { "closing tag in front", "</a><a>1</a>", "a=1" },
            { "closing tag as a key", "</a>1<//a>", "/a=1" },
            { "half closing tag", "<a>1</a", "" },
            { "half opening tag", "<a", "" },
            { "brackets alone", "<<<<", "" },
            { "other brackets alone", ">>>>", "" },
            { "bracket in the key", "<a<b>1</a<b>", "a<b=1" },
            { "bracket in front of an entry", "<<a>1</a>", "a=1" },
            { "key of another case", "<a>1</A>", "" },
            { "blank in the key", "<a >1</a >", "a =1" },
            { "end of one key is another", "<a>1</ba>2</a>", "a=1</ba>2" },
            { "closing tag inside of another", "<a>1</b</a>2</b</a>", "a=1</b" },
            { "closing tag with a slash too much", "<a>1<//a></a>", "a=1<//a>" },
            { "Polish", "<readers>0:Czytnik Ąę||</readers>", "readers=0:Czytnik Ąę||" },
        };
        for (const auto &row : rows)
            QTest::newRow(row.name) << QByteArray(row.text) << QByteArray(row.entries);
        QTest::newRow("zero bytes") << QByteArray("<a>\0</a>", 8) << QByteArray("a=\0", 3);
    }
    void textFormIsReadBack()
    {
        QFETCH(QByteArray, text);
        QTEST(entriesOf(IpcMsg(text)), "entries");
    }

    void everyTruncationGivesTheWholeEntriesBeforeIt()
    {
        const QByteArray text = "<a>1</a><bb>22</bb><c></c>";
        for (int size = 0; size <= text.size(); ++size) {
            const QByteArray expected = size < 8 ? "" : size < 19 ? "a=1" : size < 26 ? "a=1|bb=22" : "a=1|bb=22|c=";
            QCOMPARE(entriesOf(IpcMsg(text.left(size))), expected);
        }
    }

    void randomTextsAreReadAsInThePlainWay()
    {
        std::mt19937 random(1);
        const char letters[] = "<<>>//ab";
        for (int round = 0; round < 20000; ++round) {
            QByteArray text;
            for (unsigned size = random() % 60; size > 0; --size)
                text += letters[random() % 8];
            const QMap<QByteArray, QByteArray> expected = entriesReadPlainly(text);
            const IpcMsg message(text);
            QCOMPARE(message.keys(), expected.keys());
            for (const QByteArray &key : expected.keys())
                QCOMPARE(message.param(key), expected.value(key));
        }
    }

    void typesDoNotSurviveTheTrip()
    {
        const IpcMsg sent { { "res", false }, { "n", 5 } };
        const IpcMsg read(sent.serialize());
        QCOMPARE(read.param("res"), QByteArray("0"));
        QCOMPARE(read.param("n"), QByteArray("5"));
    }

    void addressingAndReplyAreNoPayload()
    {
        IpcMsg message { { "from", "a" }, { "to", "b" }, { "reply", "0" } };
        QVERIFY(message.isEmpty());
        QVERIFY(!message.hasPayload());

        message.setRes(true);
        message.setParam("close", 1);
        QCOMPARE(message.payloadKeys(), (QList<QByteArray> { "close", "res" }));
        QVERIFY(message.hasPayload());
        QVERIFY(!message.isEmpty());
        QCOMPARE(message.keys().size(), 5);
    }

    void onlyZeroRefusesAReply_data()
    {
        QTest::addColumn<QVariant>("reply");
        QTest::addColumn<bool>("wanted");
        QTest::newRow("0") << QVariant("0") << false;
        QTest::newRow("false") << QVariant(false) << false;
        QTest::newRow("00") << QVariant("00") << true;
        QTest::newRow("1") << QVariant("1") << true;
        QTest::newRow("empty") << QVariant("") << true;
        QTest::newRow("no") << QVariant("no") << true;
    }
    void onlyZeroRefusesAReply()
    {
        QFETCH(QVariant, reply);
        QTEST((IpcMsg { { "reply", reply } }.wantsReply()), "wanted");
        QVERIFY(IpcMsg().wantsReply());
    }

    void entriesAreOverwrittenRemovedAndCleared()
    {
        IpcMsg message { { "a", 1 }, { "b", 2 } };
        message.setEncryptionId("id");
        message.setParam("a", 3);
        message.removeParam("b");
        message.removeParam("missing");
        QCOMPARE(entriesOf(message), QByteArray("a=3"));

        message.clearParams();

        QVERIFY(message.keys().isEmpty());
        QCOMPARE(message.encryptionId(), QByteArray("id"));
        QCOMPARE(message.param("a"), QByteArray());
    }

    void addressIsCutAtItsPath_data()
    {
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("key");
        QTest::newRow("no path") << QByteArray("velmor_can") << "velmor_can";
        QTest::newRow("request") << QByteArray("velmor_can/req12") << "velmor_can";
        QTest::newRow("first of two") << QByteArray("a/b/c") << "a";
        QTest::newRow("path alone") << QByteArray("/req") << "";
        QTest::newRow("empty") << QByteArray() << "";
        QTest::newRow("byte by byte") << QByteArray("\xC4\x85") << QString::fromLatin1("\xC4\x85");
    }
    void addressIsCutAtItsPath()
    {
        QFETCH(QByteArray, to);
        IpcMsg message;
        message.setTo(to);
        QTEST(message.shmKey(), "key");
    }

    void logTextNamesEachEntry()
    {
        QCOMPARE(IpcMsg().toString(), QString());
        QCOMPARE((IpcMsg { { "to", "b" }, { "from", "a" }, { "n", true } }).toString(), QString("from:a, n:1, to:b"));
        QCOMPARE((IpcMsg { { "a", "" } }).toString(), QString("a:"));
        // A key that could write lines of its own.
        QCOMPARE((IpcMsg { { "a\nb", "1" } }).toString(), QString("610a62:1"));
        QCOMPARE((IpcMsg { { "\xff", "1" } }).toString(), QString("ff:1"));
    }

    void longValuesAreShortenedInTheLog_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("shown");
        const QByteArray digits = "01234567890123456789012345678901234567890";
        QTest::newRow("35 bytes") << digits.left(35) << digits.left(35);
        QTest::newRow("36 bytes") << digits.left(36) << QByteArray("01234567...89012345(36b)");
        // The first blank: 4 to 11 bytes in front of it.
        QTest::newRow("blank after 3") << "abc " + digits.left(33) << QByteArray("abc 0123...56789012(37b)");
        QTest::newRow("blank after 4") << "abcd " + digits.left(33) << "abcd... " + digits.left(33) + "(38b)";
        QTest::newRow("blank after 11") << digits.left(11) + " " + digits.left(30)
                                        << "01234567890... " + digits.left(30) + "(42b)";
        QTest::newRow("blank after 12") << digits.left(12) + " " + digits.left(30)
                                        << "01234567... " + digits.left(30) + "(43b)";
        // The last blank: past place 3, and at least one byte behind it.
        QTest::newRow("last blank before one byte") << "abcd " + digits.left(33) + " x" << QByteArray("abcd... x(40b)");
        QTest::newRow("last blank at the end") << digits.left(36) + " " << QByteArray("01234567...9012345 (37b)");
        QTest::newRow("first and last") << "Czytnik " + digits + " koniec" << QByteArray("Czytnik... koniec(56b)");
        QTest::newRow("only blank at 3") << "abc" + QByteArray(" ") + digits.left(36)
                                         << QByteArray("abc 0123...89012345(40b)");
        // What is no text.
        QTest::newRow("8 bytes") << QByteArray("\x00\x01\x02\x03\x04\x05\x06\x07", 8)
                                 << QByteArray("0001020304050607(8b)");
        QTest::newRow("9 bytes") << QByteArray("\x00\x01\x02\x03\x04\x05\x06\x07\x08", 9)
                                 << QByteArray("000102...060708(9b)");
        QTest::newRow("no UTF-8") << QByteArray("\xFF") << QByteArray("ff(1b)");
        QTest::newRow("line feed") << QByteArray("a\n") << QByteArray("610a(2b)");
        // Valid UTF-8; as many of its bytes as it has characters are tested for printing.
        QTest::newRow("one Polish letter") << QByteArray("ą") << QByteArray("ą");
        QTest::newRow("two Polish letters") << QByteArray("ąą") << QByteArray("c485c485(4b)");
    }
    void longValuesAreShortenedInTheLog()
    {
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, shown);
        QCOMPARE(logged(value), QString("k:" + shown));
    }

    void canNeverReachesTheLog_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::newRow("checkCan") << QByteArray("checkCan");
        QTest::newRow("setCanToVerify") << QByteArray("setCanToVerify");
        QTest::newRow("setCanVerified") << QByteArray("setCanVerified");
    }
    void canNeverReachesTheLog()
    {
        QFETCH(QByteArray, key);
        for (const char *value : { "123456", "", "\x01" })
            QCOMPARE((IpcMsg { { key, value }, { "z", 1 } }).toString(), QString(key) + ":#, z:1");
        // Nor as part of a message that another one carries.
        QCOMPARE(logged("<" + key + ">123456</" + key + ">"), QString("k:#"));
        QCOMPARE(IpcMsg("<k><" + key + ">123456</" + key + "></k>").toString(), QString("k:#"));
    }

    void messageTravelsThroughQueuedCalls()
    {
        qRegisterMetaType<IpcMsg>("IpcMsg");
        QCOMPARE(QByteArray(QMetaType::typeName(qMetaTypeId<IpcMsg>())), QByteArray("IpcMsg"));
        const QVariant carried = QVariant::fromValue(IpcMsg { { "k", 1 } });
        QCOMPARE(carried.value<IpcMsg>().param("k"), QByteArray("1"));
    }
};

VELMOR_TEST(TestIpcMsg)
#include "tst_ipc_msg.moc"
