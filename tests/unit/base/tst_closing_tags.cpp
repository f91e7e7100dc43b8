#include "base/closing_tags.h"
#include "base/ipc_msg.h"

#include "support/testmain.h"

#include <QtAlgorithms>

// Where the tags of a message's text form end, asked as the reading of a message asks.
class TestClosingTags : public QObject {
    Q_OBJECT

private:
    // Two keys that differ in every letter. In the order of Thue and Morse they have the same sum of powers modulo
    // 2^64, whatever odd number the powers are of.
    static QByteArray key(bool other)
    {
        constexpr quint32 length = 2048;
        QByteArray letters;
        for (quint32 i = 0; i < length; ++i)
            letters += (qPopulationCount(i) % 2 == 1) == other ? 'a' : 'b';
        return letters;
    }

private slots:
    void tagThatClosesAKeyIsFound_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("place");
        // The key is the second letter.
        QTest::newRow("behind a value") << QByteArray("<a>1</a>") << 4;
        QTest::newRow("at once") << QByteArray("<a></a>") << 3;
        QTest::newRow("the first of two") << QByteArray("<a>1</a>2</a>") << 4;
        QTest::newRow("behind another") << QByteArray("<a>1</b>2</a>") << 9;
        QTest::newRow("none at all") << QByteArray("<a>1") << -1;
        QTest::newRow("of another key alone") << QByteArray("<a>1</b>") << -1;
        QTest::newRow("without its bracket") << QByteArray("<a>1</a") << -1;
        QTest::newRow("in front alone") << QByteArray("</a>") << -1;
    }
    void tagThatClosesAKeyIsFound()
    {
        QFETCH(QByteArray, text);

        QTEST(ClosingTags(text).find(1, 2), "place");
    }

    void openingTagEndsAtTheNextBracket()
    {
        const ClosingTags tags("<a><b>1");

        QCOMPARE(tags.endOfTag(0), 2);
        QCOMPARE(tags.endOfTag(1), 2);
        QCOMPARE(tags.endOfTag(3), 5);
        QCOMPARE(tags.endOfTag(6), -1);
    }

    // What arrives may have been made by anybody.
    void keysOfOneHashAreToldApart()
    {
        const QByteArray wanted = key(false);
        const QByteArray alike = key(true);
        QCOMPARE(wanted.size(), alike.size());
        QVERIFY(wanted != alike);

        QVERIFY(IpcMsg('<' + wanted + ">1</" + alike + '>').keys().isEmpty());
        const IpcMsg message('<' + wanted + ">1</" + alike + ">2</" + wanted + '>');
        QCOMPARE(message.keys(), QList<QByteArray> { wanted });
        QCOMPARE(message.param(wanted), "1</" + alike + ">2");
    }

    // If each opening tag were compared with each closing one, this would take many minutes.
    void tagsThatHaveNothingInCommonAreNotCompared()
    {
        constexpr int pairs = 400000;
        QByteArray opening;
        QByteArray closing;
        for (int i = 0; i < pairs; ++i) {
            const QByteArray number = QByteArray::number(i).rightJustified(6, '0');
            opening += "<a" + number + '>';
            closing += "</b" + number + '>';
        }

        QVERIFY(IpcMsg(opening + closing).keys().isEmpty());
    }
};

VELMOR_TEST(TestClosingTags)
#include "tst_closing_tags.moc"
