#include "support/flow.h"

#include "base/common.h"
#include "base/ipc_msg.h"
#include "platform/os.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QTextBlock>
#include <QTextBrowser>

// The help page: what it shows and offers, and what its links do.
class TestHelpPage : public QObject {
    Q_OBJECT

public slots:
    void takeUrl(const QUrl &url) { opened << url; }

private:
    std::unique_ptr<Flow> flow;
    QList<QUrl> opened;

    QTextBrowser *report() const { return flow->find<QTextBrowser>("tDiagnosticsRaport"); }
    QString text() const { return report()->toPlainText().replace(QChar::Nbsp, ' '); }
    QStringList lines() const { return text().split('\n'); }

    void showHelp()
    {
        if (!flow->window)
            flow->openWindow();
        flow->window->moveToHelpPage();
    }
    void click(const char *link) { emit report()->anchorClicked(QUrl(link)); }

    // As the Monitor sends it.
    void answer(const QString &text) const
    {
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "diagnoseReaders", text.toUtf8() } });
    }

    // Words of the report that lead somewhere, with their addresses.
    QStringList links() const
    {
        QStringList found;
        for (QTextBlock block = report()->document()->begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                const QTextCharFormat format = part.fragment().charFormat();
                if (!format.anchorHref().isEmpty())
                    found << part.fragment().text() + " " + format.anchorHref();
            }
        }
        return found;
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup()
    {
        flow.reset();
        QDir(Os().logsDir()).removeRecursively();
    }

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

    void freshReportOffersToActivateTheLogAlone()
    {
        showHelp();

        QCOMPARE(links(), QStringList { "[Aktywuj] create_folder" });
        QVERIFY(lines().contains("Zbieranie logów: nieaktywne  [Aktywuj]"));
    }

    void activatingTheLogMakesItsFolder()
    {
        showHelp();
        LogCatcher log;

        click("create_folder");

        QVERIFY(QFileInfo(Os().logsDir()).isDir());
        QCOMPARE(log.count("Creating logs directory"), 1);
        QVERIFY(lines().contains("Katalog z logami: " + Os().logsDir() + " [Otwórz]"));
        QVERIFY(text().contains("Zbieranie logów: aktywne (Uruchom ponownie aplikację)"));
        QVERIFY(!text().contains("Aktywuj"));
        QVERIFY(!text().contains("nieaktywne"));
        QCOMPARE(links(), QStringList { "[Otwórz] open_folder" });
    }

    void everyMentionOfTheFolderLeadsThereOnceItIsMade()
    {
        const QString folder = Os().logsDir();
        flow->writeReadersConf(folder.toUtf8() + "=100\r\n");
        showHelp();
        QCOMPARE(text().count(folder), 2);

        click("create_folder");

        QCOMPARE(text().count(folder + " [Otwórz]"), 2);
        QVERIFY(lines().contains(folder + " [Otwórz]=100"));
        QCOMPARE(links().count("[Otwórz] open_folder"), 2);
    }

    void noteAfterActivatingIsRed()
    {
        showHelp();

        click("create_folder");

        const QTextCursor note = report()->document()->find("(Uruchom ponownie aplikację)");
        QVERIFY(!note.isNull());
        QCOMPARE(note.charFormat().foreground().color(), QColor("red"));
        QVERIFY(note.charFormat().anchorHref().isEmpty());
    }

    void diagnosisOfTheReadersOutlivesTheActivation()
    {
        showHelp();
        answer("Czytnik Alfa: sprawny");

        click("create_folder");

        QVERIFY(text().endsWith("Czytnik Alfa: sprawny"));
    }

    void refreshAfterActivatingShowsTheUsualForm()
    {
        showHelp();
        click("create_folder");

        flow->window->getSystemInfo();

        QVERIFY(lines().contains("Katalog z logami: " + Os().logsDir() + "  [Otwórz]"));
        QVERIFY(lines().contains("Zbieranie logów: aktywne"));
        QVERIFY(!text().contains("Uruchom ponownie"));
        QCOMPARE(links(), QStringList { "[Otwórz] open_folder" });
    }

    void folderThatCannotBeMadeChangesNothing()
    {
        const QString folder = Os().logsDir();
        QDir().mkpath(QFileInfo(folder).path());
        QVERIFY(writeFileBytes(folder, "in the way"));
        showHelp();
        const QString before = report()->toHtml();

        click("create_folder");

        QCOMPARE(report()->toHtml(), before);
        QVERIFY(QFile::remove(folder));
    }

    void logFolderOpensInTheSystem()
    {
        QVERIFY(QDir().mkpath(Os().logsDir()));
        showHelp();
        opened.clear();
        QDesktopServices::setUrlHandler("file", this, "takeUrl");
        LogCatcher log;

        click("open_folder");

        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(opened, QList<QUrl> { QUrl::fromLocalFile(Os().logsDir()) });
        QCOMPARE(log.count("Opening logs folder"), 1);
    }

    void logFolderThatDoesNotOpenIsLogged()
    {
        showHelp();
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", "/nowhere");
        LogCatcher log;

        click("open_folder");

        qputenv("PATH", path);
        QCOMPARE(log.count("Opening logs folder failed"), 1);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void clearLinkIsOfferedForContentAlone_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("offered");
        QTest::newRow("content") << QByteArray("OMNIA=E100\r\n") << true;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("only blanks") << QByteArray(" \r\n\t\r\n") << false;
    }
    void clearLinkIsOfferedForContentAlone()
    {
        QFETCH(QByteArray, content);
        flow->writeReadersConf(content);

        showHelp();

        QTEST(links().contains("[Wyczyść] clear_config"), "offered");
    }

    void clearingTheConfigurationFileRebuildsTheReport()
    {
        flow->writeReadersConf("OMNIA=E100\r\nAlfa=200\r\n");
        showHelp();
        QVERIFY(text().contains("OMNIA=E100"));
        LogCatcher log;

        click("clear_config");

        QCOMPARE(QFileInfo(Os().readersConfPath()).size(), 0);
        QCOMPARE(log.count("Clearing config file"), 1);
        const int heading = lines().indexOf("Zawartość pliku konfiguracyjnego: ");
        QVERIFY(heading > 0);
        QCOMPARE(lines()[heading + 1], QString("BRAK"));
        QVERIFY(!links().contains("[Wyczyść] clear_config"));
    }

    void configurationFileThatCannotBeClearedIsLogged()
    {
        flow->writeReadersConf("OMNIA=E100\r\n");
        showHelp();
        const QString before = report()->toHtml();
        // A folder in its place can be made for any user, a write protection would not stop all of them.
        QVERIFY(QFile::remove(Os().readersConfPath()));
        QVERIFY(QDir().mkpath(Os().readersConfPath()));
        LogCatcher log;

        click("clear_config");

        QCOMPARE(log.count("Clearing config file - failed!"), 1);
        QCOMPARE(report()->toHtml(), before);
        QVERIFY(QDir().rmdir(Os().readersConfPath()));
    }

    void otherLinksAreIgnored_data()
    {
        QTest::addColumn<QString>("link");
        for (const char *link : { "https://pomoc.velmor.example/", "open_folder/", "OPEN_FOLDER", "", "file:///etc" })
            QTest::newRow(link) << link;
    }
    void otherLinksAreIgnored()
    {
        QFETCH(QString, link);
        showHelp();
        const QString before = report()->toHtml();
        LogCatcher log;

        click(link.toUtf8());

        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(report()->toHtml(), before);
    }

    void markupInTheConfigurationFileBecomesNoLink()
    {
        const QString hostile = "<a href='http://x.example'>tu</a>";
        flow->writeReadersConf(hostile.toUtf8() + "=E\r\n");

        showHelp();

        QVERIFY(text().contains(hostile));
        QCOMPARE(links(), QStringList({ "[Aktywuj] create_folder", "[Wyczyść] clear_config" }));
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

    void refreshTakesTheOldAnswerAwayAndWaitsAgain()
    {
        showHelp();
        answer("- Czytnik Alfa");

        flow->button("bDiagnosticStart")->click();

        QVERIFY(!text().contains("- Czytnik Alfa"));
        QVERIFY(!flow->widget("bDiagnosticStart")->isEnabled());
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
        opened.clear();
        QDesktopServices::setUrlHandler("file", this, "takeUrl");
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

        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0].toLocalFile(), VELMOR_TEST_ROOT + file);
        QVERIFY(QFileInfo(opened[0].toLocalFile()).isFile());
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

VELMOR_TEST_MAIN(TestHelpPage)
#include "tst_help_page.moc"
