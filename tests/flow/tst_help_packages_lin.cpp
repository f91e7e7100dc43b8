#include "support/fake_dpkg.h"
#include "support/flow.h"

#include <QTextBlock>
#include <QTextBrowser>

// The help page on a machine whose package database holds what it likes.
class TestHelpPackages : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    QTextDocument *report() const { return flow->find<QTextBrowser>("tDiagnosticsRaport")->document(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<Flow>();
        flow->openWindow();
    }
    void cleanup() { flow.reset(); }

    void installedProgramsAreToldUnderTheirHeadings()
    {
        FakeDpkg dpkg;
        dpkg.setOutput("ii \tchromium\t120\ti386\tweb browser\n"
                       "ii \tfirefox-esr\t115.3\tamd64\tMozilla Firefox\n"
                       "ii \topensc\t0.23\tamd64\tSmart card utilities\n"
                       "ii \tpcscd\t1.9\tamd64\tMiddleware to access a smart card\n"
                       "ii \tomnikey-driver\t2.1\tamd64\tDriver of a chipcard reader\n"
                       "ii \txca\t2.4\tamd64\tcertification authority\n");

        flow->window->moveToHelpPage();

        QVERIFY(report()->toPlainText().contains("\n\nPrzeglądarki: \nChromium (32-bit): 120\nFirefox ESR: 115.3\n\n"
                                                 "Programy/sterowniki do obsługi kart: \nomnikey-driver Ver: 2.1\n"
                                                 "opensc Ver: 0.23\npcscd Ver: 1.9\nxca Ver: 2.4\n\n"
                                                 "Czytniki w systemie: \n"));
        QCOMPARE(dpkg.timesAsked(), 1);
    }

    void machineWithoutAnyHasNone()
    {
        FakeDpkg dpkg;

        flow->window->moveToHelpPage();

        QVERIFY(report()->toPlainText().contains("\n\nPrzeglądarki: \nBRAK\n\n"
                                                 "Programy/sterowniki do obsługi kart: \nBRAK\n\n"));
    }

    void hostileTextBecomesNoLink_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char *text :
             { "<a href='clear_config'>smart card</a>", "<img src='file:///etc/passwd'>", "</p></body></html>",
               "<style>*{display:none}</style>", "&lt;b&gt;", "%1 %2", "{screens", "ąćęłńóśźż", "<!--" })
            QTest::newRow(text) << QByteArray(text);
    }
    void hostileTextBecomesNoLink()
    {
        QFETCH(QByteArray, text);
        FakeDpkg dpkg;
        dpkg.setOutput("ii \topensc" + text + "\t" + text + "\tamd64\tSmart card " + text + "\nii \tchromium\t" + text
                       + "\tamd64\tbrowser\n");

        flow->window->moveToHelpPage();

        const QString shown = QString::fromUtf8(text);
        QVERIFY(report()->toPlainText().contains("\nChromium: " + shown + '\n'));
        QVERIFY(report()->toPlainText().contains("\nopensc" + shown + " Ver: " + shown + '\n'));
        QStringList links;
        for (QTextBlock block = report()->begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                if (part.fragment().charFormat().isAnchor())
                    links << part.fragment().charFormat().anchorHref();
                QVERIFY(!part.fragment().charFormat().isImageFormat());
            }
        }
        QCOMPARE(links, QStringList { "create_folder" });
    }

    void databaseThatDoesNotAnswerDelaysTheReportAndNoMore()
    {
        FakeDpkg dpkg;
        dpkg.setScript("exec sleep 60");

        flow->window->moveToHelpPage();

        QVERIFY(report()->toPlainText().contains("Przeglądarki: \nBRAK"));
        QCOMPARE(dpkg.timesAsked(), 1);
    }
};

VELMOR_TEST(TestHelpPackages)
#include "tst_help_packages_lin.moc"
