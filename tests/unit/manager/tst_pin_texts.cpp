#include "pin_texts.h"

#include "support/testmain.h"

using namespace PinTexts;

// Words and colours of the PIN pages, apart from any widget.
class TestPinTexts : public QObject {
    Q_OBJECT

private slots:
    void resultsOfAChange_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("colour");
        QTest::newRow("done") << 0 << "PIN został zmieniony"
                              << "#6EBB6E";
        QTest::newRow("aborted") << -11 << "Zmiana PIN-u przerwana"
                                 << "#EA0449";
        QTest::newRow("PINs differ") << -9 << "Podane PINy różnią się"
                                     << "#EA0449";
        QTest::newRow("cancelled") << -8 << "Zmiana PIN-u anulowana"
                                   << "#2B9EEB";
        QTest::newRow("wrong PIN") << -6 << "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN"
                                   << "#EA0449";
        QTest::newRow("other failure") << -1 << "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN"
                                       << "#EA0449";
    }
    void resultsOfAChange()
    {
        QFETCH(int, code);
        const Outcome *outcome = changeOutcome(code);
        QVERIFY(outcome);
        QTEST(QString(outcome->text), "text");
        QTEST(colourValue(outcome->colour), "colour");
    }

    void resultsOfAnUnblock_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("firstPinText");
        QTest::addColumn<QString>("colour");
        const QString differ = "Podane PINy różnią się";
        const QString wrong = "Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.";
        const QString wrongFirst = "Niepoprawne nadanie PIN-u.\nNiepoprawny PUK.";
        QTest::newRow("done") << 0 << "PIN został odblokowany"
                              << "PIN został nadany"
                              << "#6EBB6E";
        QTest::newRow("aborted") << -11 << "Odblokowanie PIN-u anulowane"
                                 << "Kontener został aktywowany.\nNadawanie PIN-u przerwane.\nOdblokuj PIN ponownie."
                                 << "#2B9EEB";
        QTest::newRow("PINs differ") << -9 << differ << differ << "#EA0449";
        QTest::newRow("cancelled") << -8 << "Odblokowanie PIN-u anulowane"
                                   << "Nadawanie PIN-u anulowane"
                                   << "#2B9EEB";
        QTest::newRow("wrong PUK") << -4 << wrong << wrongFirst << "#EA0449";
        QTest::newRow("other failure") << -1 << wrong << wrongFirst << "#EA0449";
    }
    void resultsOfAnUnblock()
    {
        QFETCH(int, code);
        const Outcome *outcome = unblockOutcome(code);
        QVERIFY(outcome);
        QTEST(QString(outcome->text), "text");
        QTEST(QString(outcome->firstPinText), "firstPinText");
        QTEST(colourValue(outcome->colour), "colour");
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

    void triesAreTold()
    {
        QCOMPARE(triesLeft(1), QString("Pozostało prób: 1"));
        QCOMPARE(triesLeft(0), QString("Pozostało prób: 0"));
    }
};

VELMOR_TEST(TestPinTexts)
#include "tst_pin_texts.moc"
