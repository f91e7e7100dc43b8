#include "base/secret_string.h"

#include "support/own_memory.h"
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
        QString copy = copyOfSecret(kept);
        QCOMPARE(copy, kept);
        wipeSecret(copy);
        QCOMPARE(kept, digits.text());
    }

    void emptyTextIsLeftAlone()
    {
        QString nothing;
        wipeSecret(nothing);
        QVERIFY(nothing.isNull());
        QVERIFY(copyOfSecret({}).isEmpty());
    }
};

VELMOR_TEST(TestSecretString)
#include "tst_secret_string.moc"
