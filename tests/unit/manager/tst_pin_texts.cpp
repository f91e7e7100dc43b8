#include "pin_texts.h"

#include "support/pin_results.h"
#include "support/testmain.h"

using namespace PinTexts;

// Words and colours of the PIN pages, apart from any widget.
class TestPinTexts : public QObject {
    Q_OBJECT

private:
    template <std::size_t N>
    static void add(const PinResult (&rows)[N])
    {
        QTest::addColumn<PinResult>("result");
        for (const PinResult &row : rows)
            QTest::newRow(row.name) << row;
    }
    static void compare(const Outcome *outcome, const PinResult &result)
    {
        QVERIFY(outcome);
        QCOMPARE(colourValue(outcome->colour), QString(result.colour));
        QCOMPARE(outcome->log, result.log);
        QCOMPARE(outcome->text, result.text);
        QCOMPARE(outcome->firstPinText, result.firstPinText);
    }

private slots:
    void resultsOfAChange_data() { add(pin_results::ofAChange); }
    void resultsOfAChange()
    {
        QFETCH(PinResult, result);
        compare(changeOutcome(result.code), result);
    }

    void resultsOfAnUnblock_data() { add(pin_results::ofAnUnblock); }
    void resultsOfAnUnblock()
    {
        QFETCH(PinResult, result);
        compare(unblockOutcome(result.code), result);
    }

    void codesOfTheOtherOperationShowNothing_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("change");
        QTest::addColumn<bool>("unblock");
        for (const int code : { -2, -3, -5, -7, -10, -12, 1, 100 })
            QTest::newRow(QByteArray::number(code).constData()) << code << false << false;
        QTest::newRow("wrong PUK in a change") << -4 << false << true;
        QTest::newRow("wrong PIN in an unblock") << -6 << true << false;
    }
    void codesOfTheOtherOperationShowNothing()
    {
        QFETCH(int, code);
        QTEST(changeOutcome(code) != nullptr, "change");
        QTEST(unblockOutcome(code) != nullptr, "unblock");
    }

    void digitsAreCountedInPolish_data()
    {
        QTest::addColumn<int>("digits");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("hint");
        QTest::newRow("4") << 4 << "cztero"
                           << "PIN musi mieć 4 cyfry";
        QTest::newRow("6") << 6 << "sześcio"
                           << "PIN musi mieć 6 cyfr";
        QTest::newRow("8") << 8 << "ośmio"
                           << "PIN musi mieć 8 cyfr";
        QTest::newRow("none") << 0 << ""
                              << "PIN musi mieć 0 cyfr";
    }
    void digitsAreCountedInPolish()
    {
        QFETCH(int, digits);
        QTEST(digitWord(digits), "word");
        QTEST(lengthHint(digits), "hint");
    }

    // Two end in a blank.
    void eachOperationHasItsTitle()
    {
        QCOMPARE(pageTitle(1), QString("Zmiana PIN-u"));
        QCOMPARE(pageTitle(2), QString("Odblokowanie PIN-u "));
        QCOMPARE(pageTitle(3), QString("Nadawanie PIN-u "));
        for (const int other : { 0, 4 })
            QCOMPARE(pageTitle(other), QString());
    }

    void pageForThePukHasTwoSetsOfWords_data()
    {
        QTest::addColumn<bool>("firstPin");
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("colour");
        QTest::addColumn<int>("resultTitle");
        QTest::newRow("unblock")
            << false
            << QStringList { "Odblokowanie PIN-u",  "PIN jest zablokowany. Użyj numeru PUK do nadania nowego PIN-u.",
                             "Zmień PIN",           "Nowy PIN",
                             "Powtórz nowy PIN",    "2. Podaj nowy PIN",
                             "3. Powtórz nowy PIN", "Odblokowywanie PIN-u \n Proszę czekać" }
            << pin_results::red << 2;
        QTest::newRow("first PIN")
            << true << QStringList { "Nadawanie PIN-u", "Twój dowód nie ma nadanego PIN-u. Wpisz PUK i nadaj PIN.",
                                     "Nadaj PIN",       "PIN",
                                     "Powtórz PIN",     "2. Podaj PIN",
                                     "3. Powtórz PIN",  "Nadawanie PIN-u \n Proszę czekać" }
            << pin_results::blue << 3;
    }
    void pageForThePukHasTwoSetsOfWords()
    {
        QFETCH(bool, firstPin);
        const PukPageWords &words = firstPin ? firstPinWords() : unblockWords();
        const QStringList told { words.mainTitle, words.details,   words.button,       words.newPin,
                                 words.repeatPin, words.padNewPin, words.padRepeatPin, words.loader };
        QTEST(told, "words");
        QTEST(colourValue(words.detailsColour), "colour");
        QTEST(int(words.resultTitle), "resultTitle");
    }

    void triesAreTold()
    {
        QCOMPARE(triesLeft(1), QString("Pozostało prób: 1"));
        QCOMPARE(triesLeft(0), QString("Pozostało prób: 0"));
    }
};

VELMOR_TEST(TestPinTexts)
#include "tst_pin_texts.moc"
