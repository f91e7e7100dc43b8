#include "reader_list.h"

#include "base/common.h"

#include "support/testmain.h"

class TestReaderList : public QObject {
    Q_OBJECT

private slots:
    void listTextGivesNamesBehindTheFirstColon_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("error");
        QTest::newRow("two") << "0:Reader A||1:Reader B" << QStringList { "Reader A", "Reader B" } << "";
        QTest::newRow("one, ended") << "0:Reader A||" << QStringList { "Reader A", "" } << "";
        QTest::newRow("suffix stays") << "12:Reader A #1||" << QStringList { "Reader A #1", "" } << "";
        QTest::newRow("no number") << ":Reader A||" << QStringList { "Reader A", "" } << "";
        QTest::newRow("colon in name") << "0:A:B||" << QStringList { "A:B", "" } << "";
        QTest::newRow("part without colon") << "x||1:B" << QStringList { "", "B" } << "";
        QTest::newRow("only separator") << "||" << QStringList { "", "" } << "";
        QTest::newRow("no separator is an error word") << "NO_CARD" << QStringList {} << "NO_CARD";
        QTest::newRow("one reader without separator is an error word")
            << "0:Reader A" << QStringList {} << "0:Reader A";
        QTest::newRow("single bar") << "0:A|1:B" << QStringList {} << "0:A|1:B";
        QTest::newRow("empty") << "" << QStringList {} << "";
        QTest::newRow("Polish letters") << "0:Czytnik Łódź||" << QStringList { "Czytnik Łódź", "" } << "";
    }
    void listTextGivesNamesBehindTheFirstColon()
    {
        QFETCH(QString, text);
        const ReaderList list = parseReaders(text);

        QTEST(list.names, "names");
        QTEST(list.error, "error");
    }

    void readerNameEndsBeforeTheFirstNumberSign()
    {
        QCOMPARE(Common::readerName("Reader A #1"), QString("Reader A"));
        QCOMPARE(Common::readerName("Reader A #1 #2"), QString("Reader A"));
        QCOMPARE(Common::readerName("Reader#A"), QString("Reader#A"));
        QCOMPARE(Common::readerName("Reader A"), QString("Reader A"));
        QCOMPARE(Common::readerName(" #1"), QString(""));
        QCOMPARE(readerNames({ "A #1", "B" }), (QStringList { "A", "B" }));
    }

    void textWithBrakInAnyCaseNamesNoReader_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("usable");
        QTest::newRow("opening item") << "brak czytnika lub karty" << false;
        QTest::newRow("reader of that name") << "Brak" << false;
        QTest::newRow("inside") << "Czytnik BRAKnet 2" << false;
        QTest::newRow("reader") << "Reader A" << true;
        QTest::newRow("empty box counts as a reader") << "" << true;
    }
    void textWithBrakInAnyCaseNamesNoReader()
    {
        QFETCH(QString, text);
        QTEST(namesReader(text), "usable");
    }

    void listDecidesByBoxAndPage_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("rules"); // of a page that shows the list, without a layer, needing no card, busy
        const QString none = "brak czytnika lub karty";
        QTest::newRow("same list") << "0:A||"
                                   << "A"
                                   << "take reload note note";
        QTest::newRow("marked as a container's") << "12:A #1||"
                                                 << "A"
                                                 << "take reload note note";
        QTest::newRow("one more") << "0:A||1:B||"
                                  << "A"
                                  << "take reload note note";
        QTest::newRow("another") << "0:B||"
                                 << "A"
                                 << "reload reload note reload";
        QTest::newRow("nothing in it") << "||"
                                       << "A"
                                       << "reload reload note reload";
        QTest::newRow("no value") << ""
                                  << "A"
                                  << "reload reload note reload";
        QTest::newRow("error word") << "NO_CARD"
                                    << "A"
                                    << "take take take take";
        QTest::newRow("first reader") << "0:A||" << none << "reload reload note reload";
        QTest::newRow("a reader that is named like none") << "0:brak||"
                                                          << "brak"
                                                          << "reload reload note reload";
        QTest::newRow("none, as before") << "" << none << "take reload note note";
        QTest::newRow("error word, none before") << "NO_READER" << none << "take take take take";
        QTest::newRow("list for an empty box") << "0:A||"
                                               << ""
                                               << "reload reload note reload";
        QTest::newRow("no value for an empty box") << ""
                                                   << ""
                                                   << "reload reload note reload";
    }
    void listDecidesByBoxAndPage()
    {
        QFETCH(QString, value);
        QFETCH(QString, box);
        QStringList rules;
        for (const ReaderPage page :
             { ReaderPage::ShowsList, ReaderPage::NoElectricLayer, ReaderPage::NeedsNoCard, ReaderPage::Busy }) {
            const ReadersRule rule = readersRule(value, box, page);
            rules << (rule == ReadersRule::Take ? "take" : rule == ReadersRule::Note ? "note" : "reload");
        }
        QTEST(rules.join(' '), "rules");
    }

    void problemWordsGiveItemMessageAndRow_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<bool>("waiting");
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("hide");
        const QString place = "Umieść velmor na podłączonym czytniku";
        const QString again = "Zdejmij i przyłóż ponownie velmor do czytnika";
        QTest::newRow("NO_READER") << "NO_READER" << false << "brak podłączonego czytnika"
                                   << "Podłącz poprawnie czytnik" << false;
        QTest::newRow("NO_CARD") << "NO_CARD" << false << "brak karty w czytniku" << place << false;
        QTest::newRow("NO_SUPPORTED_CARD")
            << "NO_SUPPORTED_CARD" << false << "brak wspieranej karty w czytniku" << place << false;
        QTest::newRow("other") << "WAIT_CAN" << false << "brak połączenia z kartą" << again << true;
        QTest::newRow("other, CAN asked") << "WAIT_CAN" << true << "brak połączenia z kartą"
                                          << "Oczekiwanie na wprowadzenie numeru CAN" << true;
        QTest::newRow("known words do not wait") << "NO_CARD" << true << "brak karty w czytniku" << place << false;
    }
    void problemWordsGiveItemMessageAndRow()
    {
        QFETCH(QString, error);
        QFETCH(bool, waiting);
        const ReaderProblem problem = readerProblem(error, waiting);

        QTEST(problem.item, "item");
        QTEST(problem.message, "message");
        QTEST(problem.hideReaders, "hide");
        QVERIFY(!namesReader(problem.item));
    }

    void onlyTheThreeKnownWordsAreNoCanProblem()
    {
        for (const char *known : { "NO_READER", "NO_CARD", "NO_SUPPORTED_CARD" })
            QVERIFY(!isCanProblem(known));
        for (const char *other : { "WAIT_CAN", "no_card", "", "NO_CARD " })
            QVERIFY(isCanProblem(other));
    }
};

VELMOR_TEST(TestReaderList)
#include "tst_reader_list.moc"
