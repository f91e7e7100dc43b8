#include "pin_texts.h"

#include "support/testmain.h"

using namespace PinTexts;

// Words and colours of the PIN pages, apart from any widget.
class TestPinTexts : public QObject {
    Q_OBJECT

private:
    static constexpr char red[] = "#EA0449", green[] = "#6EBB6E", blue[] = "#2B9EEB";

    struct Row {
        const char *name;
        int code;
        const char *colour;
        const char *log;
        const char *text;
        const char *firstPinText = nullptr;
    };

    static void columns()
    {
        QTest::addColumn<int>("code");
        for (const char *column : { "colour", "log", "text", "firstPinText" })
            QTest::addColumn<QString>(column);
    }
    template <std::size_t N>
    static void add(const Row (&rows)[N])
    {
        for (const Row &row : rows)
            QTest::newRow(row.name) << row.code << QString(row.colour) << QString(row.log) << QString(row.text)
                                    << QString(row.firstPinText);
    }
    static void compare(const Outcome *outcome)
    {
        QVERIFY(outcome);
        QTEST(colourValue(outcome->colour), "colour");
        QTEST(QString(outcome->log), "log");
        QTEST(QString(outcome->text), "text");
        QTEST(QString(outcome->firstPinText), "firstPinText");
    }

private slots:
    void resultsOfAChange_data()
    {
        columns();
        const char *wrongPin = "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN";
        const Row rows[] = {
            { "done", 0, green, "Pin changed correctly", "PIN został zmieniony" },
            { "aborted", -11, red, "changePinFin() -- Operation rejected", "Zmiana PIN-u przerwana" },
            { "PINs differ", -9, red, "changePinFin() -- Pins Don't Match", "Podane PINy różnią się" },
            { "cancelled", -8, blue, "changePinFin() -- Operation canceled", "Zmiana PIN-u anulowana" },
            { "wrong PIN", -6, red, "changePinFin() -- Incorrect Actual Pin", wrongPin },
            { "other failure", -1, red, "changePinFin() -- Incorrect Actual Pin", wrongPin },
        };
        add(rows);
    }
    void resultsOfAChange()
    {
        QFETCH(int, code);
        compare(changeOutcome(code));
    }

    void resultsOfAnUnblock_data()
    {
        columns();
        const char *wrong = "Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.";
        const char *wrongFirst = "Niepoprawne nadanie PIN-u.\nNiepoprawny PUK.";
        const Row rows[] = {
            { "done", 0, green, "unblockPinFin() -- PIN unblocked correctly", "PIN został odblokowany",
              "PIN został nadany" },
            { "aborted", -11, blue, "unblockPinFin() -- Operation rejected", "Odblokowanie PIN-u anulowane",
              "Kontener został aktywowany.\nNadawanie PIN-u przerwane.\nOdblokuj PIN ponownie." },
            { "PINs differ", -9, red, "unblockPinFin() -- Pins Don't Match", "Podane PINy różnią się",
              "Podane PINy różnią się" },
            { "cancelled", -8, blue, "unblockPinFin() -- Operation canceled", "Odblokowanie PIN-u anulowane",
              "Nadawanie PIN-u anulowane" },
            { "wrong PUK", -4, red, "unblockPinFin() -- Incorrect PUK", wrong, wrongFirst },
            { "other failure", -1, red, "unblockPinFin() -- Incorrect PUK", wrong, wrongFirst },
        };
        add(rows);
    }
    void resultsOfAnUnblock()
    {
        QFETCH(int, code);
        compare(unblockOutcome(code));
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
            << red << 2;
        QTest::newRow("first PIN")
            << true << QStringList { "Nadawanie PIN-u", "Twój dowód nie ma nadanego PIN-u. Wpisz PUK i nadaj PIN.",
                                     "Nadaj PIN",       "PIN",
                                     "Powtórz PIN",     "2. Podaj PIN",
                                     "3. Powtórz PIN",  "Nadawanie PIN-u \n Proszę czekać" }
            << blue << 3;
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
