#include "help_report.h"

#include "base/common.h"

#include "support/opened_urls.h"

// The links of the help page's report, and what text of others must not become.
class TestWindowHelpLinks : public QObject, private HelpReport {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { begin(); }
    void cleanup() { end(); }

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
        const OpenedUrls opened("file");
        LogCatcher log;

        click("open_folder");

        QCOMPARE(opened.urls, QList<QUrl> { QUrl::fromLocalFile(Os().logsDir()) });
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
        flow->widget("bDiagnosticStart")->setEnabled(true);
        LogCatcher log;

        click("clear_config");

        QCOMPARE(QFileInfo(Os().readersConfPath()).size(), 0);
        QCOMPARE(log.count("Clearing config file"), 1);
        const int heading = lines().indexOf("Zawartość pliku konfiguracyjnego: ");
        QVERIFY(heading > 0);
        QCOMPARE(lines()[heading + 1], QString("BRAK"));
        QVERIFY(!links().contains("[Wyczyść] clear_config"));
        // The new report waits for the Monitor as the first one did.
        QVERIFY(!flow->widget("bDiagnosticStart")->isEnabled());
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
};

VELMOR_TEST(TestWindowHelpLinks)
#include "tst_window_help_links.moc"
