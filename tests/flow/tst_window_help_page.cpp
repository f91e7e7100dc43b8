#include "help_report.h"

#include "support/opened_urls.h"

#include <QClipboard>

// The help page: what it shows and offers, its keyboard, and the answers of the Monitor.
class TestWindowHelpPage : public QObject, private HelpReport {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { begin(); }
    void cleanup() { end(); }

    void pageOpensWithTitleFocusAndReport()
    {
        flow->openWindow();
        LogCatcher log;

        flow->button("bHelp")->click();

        QCOMPARE(flow->page(), QString("pageHelp"));
        QCOMPARE(flow->title(), QString("Pomoc"));
        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QCOMPARE(log.count("show help"), 1);
        QCOMPARE(flow->window->focusWidget(), flow->widget("lPukBlocked_4"));
        QVERIFY(!flow->widget("bHelp")->isEnabled());
        QVERIFY(!flow->widget("cbReaders")->isEnabled());
        QVERIFY(flow->widget("frameReaders")->isHidden());
        QVERIFY(text().startsWith("Wersja aplikacji: 4.3.5.23\nKatalog: "));
    }

    void wayBackIsOfferedOnlyWithAReader()
    {
        showHelp();
        QVERIFY(flow->widget("bWroc")->isHidden());

        QVERIFY(flow->showCard("anna"));
        showHelp();

        QVERIFY(!flow->widget("bWroc")->isHidden());
    }

    void reportHoldsAllSectionsInTheirOrder()
    {
        showHelp();

        const QStringList headings { "Wersja aplikacji: 4.3.5.23",
                                     "Katalog: ",
                                     "System: ",
                                     "Architektura: ",
                                     "Katalog z logami: " + Os().logsDir(),
                                     "Zbieranie logów: ",
                                     "Zawartość pliku konfiguracyjnego: ",
                                     "Monitory:",
                                     "1) ",
                                     "Przeglądarki: ",
                                     "Programy/sterowniki do obsługi kart: ",
                                     "Czytniki w systemie: " };
        int position = -1;
        for (const QString &heading : headings) {
            const int found = text().indexOf(heading, position + 1);
            QVERIFY2(found > position, qPrintable(heading));
            position = found;
        }
        QVERIFY(lines().contains("Katalog: " + QString(VELMOR_TEST_ROOT)));
    }

    void nothingOfTheCardIsInTheReport()
    {
        QVERIFY(flow->showCard("anna"));
        const QStringList person { flow->label("lCommonNameVal")->text(), flow->label("lsurnameVal")->text() };

        showHelp();

        for (const QString &name : person) {
            QVERIFY(name.size() > 2);
            QVERIFY2(!text().contains(name, Qt::CaseInsensitive), qPrintable(name));
        }
    }

    void answerOfTheMonitorIsAppended()
    {
        showHelp();
        const QString before = text();

        answer("Liczba czytników: 1\n- Czytnik Alfa: karta gotowa");

        QCOMPARE(text(), before + "\n\nLiczba czytników: 1\n- Czytnik Alfa: karta gotowa");
        QVERIFY(flow->widget("bDiagnosticStart")->isEnabled());
        QVERIFY(flow->widget("bHelp")->isEnabled());
    }

    void answerComesThoughThePageWasLeft()
    {
        QVERIFY(flow->showCard("anna"));
        showHelp();
        flow->window->moveToSettingsPage(false);

        answer("- Czytnik Alfa");

        QCOMPARE(flow->page(), QString("pageSettings"));
        QVERIFY(text().endsWith("\n- Czytnik Alfa"));
    }

    void markupInTheAnswerBecomesNoLink_data()
    {
        QTest::addColumn<QString>("hostile");
        for (const char *hostile : { "<a href='clear_config'>[Odśwież]</a>", "<img src='file:///etc/passwd'>",
                                     "&lt;a href=x&gt;", "</html><a href=create_folder>x", "<!-- " })
            QTest::newRow(hostile) << hostile;
    }
    void markupInTheAnswerBecomesNoLink()
    {
        QFETCH(QString, hostile);
        showHelp();

        answer(hostile + "\nkoniec");

        QVERIFY(text().endsWith('\n' + hostile + "\nkoniec"));
        QCOMPARE(links(), QStringList { "[Aktywuj] create_folder" });
    }

    void wholeReportIsCopiedAndStaysSelected()
    {
        showHelp();
        answer("Czytnik Alfa: sprawny");
        QGuiApplication::clipboard()->clear();

        flow->button("bCopyRaport")->click();

        QCOMPARE(QGuiApplication::clipboard()->text(), report()->toPlainText());
        QVERIFY(QGuiApplication::clipboard()->text().endsWith("Czytnik Alfa: sprawny"));
        QVERIFY(report()->textCursor().hasSelection());
    }

    void visitRebuildsTheReport()
    {
        showHelp();
        flow->writeReadersConf("OMNIA=E100\r\n");

        showHelp();

        QVERIFY(text().contains("OMNIA=E100"));
    }

    void documentsOpenByKeyboard_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("file");
        QTest::newRow("manual") << "lGuide"
                                << "/statics/instrukcja.html";
        QTest::newRow("licence") << "lLicense"
                                 << "/Licenses/license.html";
        QTest::newRow("history of changes") << "lChangelog"
                                            << "/statics/historia_zmian.html";
    }
    void documentsOpenByKeyboard()
    {
        QFETCH(QString, label);
        QFETCH(QString, file);
        flow->openWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        showHelp();
        const OpenedUrls opened("file");
        QWidget *link = flow->widget(label.toUtf8());

        // One stop ahead of it, and then one Tab.
        QWidget *before = link->previousInFocusChain();
        while (before->focusPolicy() == Qt::NoFocus || !before->isVisible() || !before->isEnabled())
            before = before->previousInFocusChain();
        before->setFocus(Qt::TabFocusReason);
        QCoreApplication::processEvents();
        QTest::keyClick(before, Qt::Key_Tab);
        QCoreApplication::processEvents();
        QCOMPARE(QApplication::focusWidget(), link);
        QTest::keyClick(link, Qt::Key_Return);

        QCOMPARE(opened.urls.size(), 1);
        QCOMPARE(opened.urls[0].toLocalFile(), VELMOR_TEST_ROOT + file);
        QVERIFY(QFileInfo(opened.urls[0].toLocalFile()).isFile());
    }

    void tabsLeadThroughThePageInOrder()
    {
        flow->openWindow();
        flow->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        showHelp();
        flow->widget("bDiagnosticStart")->setEnabled(true);
        // Stops of its own inside the report are its links.
        const QStringList order { "lPukBlocked_4", "bRaport", "tDiagnosticsRaport", "bDiagnosticStart",
                                  "bCopyRaport",   "lGuide",  "lLicense",           "lChangelog" };
        QStringList reached;

        for (int i = 0; i < 3 * order.size() && reached.size() < order.size(); ++i) {
            const QString name = QApplication::focusWidget()->objectName();
            if (reached.isEmpty() || reached.last() != name)
                reached << name;
            QCoreApplication::processEvents();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }

        QCOMPARE(reached, order);
    }
};

VELMOR_TEST(TestWindowHelpPage)
#include "tst_window_help_page.moc"
