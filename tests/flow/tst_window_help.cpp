#include "help_report.h"
#include "page_entry.h"

#include "support/raw_inbox.h"

// How the help page is entered, and what is asked and appended at each visit.
class TestWindowHelp : public QObject, private HelpReport {
    Q_OBJECT

private:
    static constexpr int segmentSize = 500;

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { begin(); }
    void cleanup() { end(); }

    void entryTakesAwayThePageBefore()
    {
        flow.reset();
        PageEntry entry;
        entry.typeAPin();
        QVERIFY(!QTest::currentTestFailed());

        entry.press("bHelp");

        entry.verifyItIs("pageHelp", "Pomoc", "lPukBlocked_4");
        QVERIFY(!entry.flow->button("bHelp")->isEnabled());
    }

    void reportWaitsForTheMonitor()
    {
        showHelp();

        // No Monitor runs here.
        QVERIFY(!flow->widget("bDiagnosticStart")->isEnabled());
        QVERIFY(!text().isEmpty());
    }

    void linksOfTheReportStayInTheReport()
    {
        showHelp();

        QVERIFY(!report()->openLinks());
        QVERIFY(report()->openExternalLinks());
    }

    void refreshAsksTheMonitorAgain()
    {
        const QByteArray question = "<diagnoseReaders>1</diagnoseReaders><from>velmor_manager</from>"
                                    "<to>velmor_monitor</to>";
        RawInbox monitor("velmor_monitor", segmentSize);
        showHelp();
        QCOMPARE(monitor.text(), question);
        monitor.clear();
        answer("- Czytnik Alfa");

        flow->button("bDiagnosticStart")->click();

        QCOMPARE(monitor.text(), question);
        QVERIFY(!text().contains("- Czytnik Alfa"));
        QVERIFY(!flow->widget("bDiagnosticStart")->isEnabled());
    }

    // What is told of the readers is bounded at each visit; a text counts with its line's end.
    void firstTextBehindTheBoundIsReplacedByANote()
    {
        for (int visit = 0; visit < 2; ++visit) {
            showHelp();
            for (int kibibyte = 0; kibibyte < 64; ++kibibyte)
                answer(QString(1023, 'x'));
            QVERIFY(text().endsWith("xxx"));

            answer("y");
            QVERIFY(text().endsWith("\nDalsza diagnostyka czytników została pominięta."));

            answer("z");
            QCOMPARE(text().count("Dalsza diagnostyka"), 1);
            QVERIFY(!text().endsWith('z'));
        }
    }
};

VELMOR_TEST(TestWindowHelp)
#include "tst_window_help.moc"
