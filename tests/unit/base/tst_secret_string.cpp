#include "base/secret_string.h"

#include "support/own_memory.h"
#include "support/proc_status.h"
#include "support/testmain.h"

// A secret is overwritten where its characters stand, and only where nobody else reads them.
class TestSecretString : public QObject {
    Q_OBJECT

private:
    const HiddenDigits digits { "62059384" };

private slots:
    void wipedTextStandsNowhere()
    {
        QString secret = digits.text();
        QVERIFY(digits.places(sizeof(QChar)) > 0);
        wipeSecret(secret);
        QVERIFY(secret.isEmpty());
        QCOMPARE(digits.places(sizeof(QChar)), 0);
    }

    void textThatIsSharedStaysForTheOther()
    {
        const QString kept = digits.text();
        QString secret = kept;
        wipeSecret(secret);
        QVERIFY(secret.isEmpty());
        QCOMPARE(kept, digits.text());
    }

    // As the worker and the window do with what was read of a card.
    void lastToLetGoOverwritesIt()
    {
        // Digits of its own: other tests leave theirs behind.
        const HiddenDigits own { "73950284" };
        QString first = own.text();
        QString second = first;
        QString third = second;
        wipeSecret(first);
        {
            const QString alsoHeld = std::move(second);
        }
        QVERIFY(own.places(sizeof(QChar)) > 0);
        wipeSecret(third);
        QCOMPARE(own.places(sizeof(QChar)), 0);
    }

    void bytesAreOverwrittenToTheEndOfTheirRoom()
    {
        const HiddenDigits own { "40628517" };
        QByteArray bytes;
        bytes.reserve(64);
        bytes.append("head");
        for (int i = 0; i < own.size(); ++i)
            bytes.append(own.at(i)).append('\0');
        // What is cut off stands there still.
        bytes.truncate(2);
        QCOMPARE(own.places(2), 1);
        QByteArray copy = bytes;
        wipeSecret(bytes);
        QVERIFY(bytes.isNull());
        QCOMPARE(copy.size(), 2);
        wipeSecret(copy);
        QCOMPARE(own.places(2), 0);
    }

    void wipedMemoryIsGivenBack()
    {
#ifdef Q_OS_LINUX
        constexpr int megabytes = 4;
        constexpr int rounds = 192;
        constexpr long kilobytes = 1024;
        const long before = numberInStatus("/proc/self/status", "VmRSS");
        QVERIFY(before > 0);
        for (int round = 0; round < rounds; ++round) {
            QByteArray bytes(megabytes << 20, 'x');
            wipeSecret(bytes);
        }
        // A checker of memory keeps freed blocks for a while, and not all of them.
        QVERIFY(numberInStatus("/proc/self/status", "VmRSS") - before < rounds / 2 * megabytes * kilobytes);
#else
        QSKIP("Done on the other platform");
#endif
    }

    void bytesOfSomebodyElseAreNotWrittenTo()
    {
        const char foreign[] = "of somebody else";
        QByteArray bytes = QByteArray::fromRawData(foreign, sizeof foreign - 1);
        wipeSecret(bytes);
        QVERIFY(bytes.isEmpty());
        QCOMPARE(foreign, "of somebody else");
    }

    void literalIsNotWrittenTo()
    {
        const auto literal = [] { return QStringLiteral("4826"); };
        QString secret = literal();
        wipeSecret(secret);
        QVERIFY(secret.isEmpty());
        QCOMPARE(literal(), QString("4826"));
    }

    void copyCanBeWipedWhileTheOtherStays()
    {
        const QString kept = digits.text();
        QString copy = joinSecrets({ kept });
        QCOMPARE(copy, kept);
        wipeSecret(copy);
        QCOMPARE(kept, digits.text());
    }

    void partsAreJoinedInTheirOrder()
    {
        QCOMPARE(joinSecrets({ u"ab", digits.text(), QStringView(), u"ż" }), "ab" + digits.text() + "ż");
    }

    // No part of it is left where a text that has grown lay before.
    void joinedTextDoesNotGrow()
    {
        for (const int length : { 3, 17, 100 }) {
            const QString part(length, 'a');
            const QString joined = joinSecrets({ part, u"b", part });
            QCOMPARE(joined.size(), 2 * length + 1);
            QCOMPARE(joined.capacity(), joined.size());
        }
    }

    void textIsOverwrittenForAllWhoShareIt()
    {
        const HiddenDigits own { "51938462" };
        const QString first = own.text();
        const QString second = first;
        overwriteSecret(first);
        QCOMPARE(second, QString(own.size(), QChar('\0')));
        QCOMPARE(own.places(2), 0);
    }
    void literalIsNotOverwritten()
    {
        const auto literal = [] { return QStringLiteral("4826"); };
        overwriteSecret(literal());
        overwriteSecret({});
        QCOMPARE(literal(), QString("4826"));
    }

    void emptyTextIsLeftAlone()
    {
        QString nothing;
        wipeSecret(nothing);
        QVERIFY(nothing.isNull());
        QVERIFY(joinSecrets({}).isEmpty());
    }
};

VELMOR_TEST(TestSecretString)
#include "tst_secret_string.moc"
