#include "support/testmain.h"

#include "base/common.h"
#include "gui/sys_info_gui.h"
#include "platform/os.h"

#include <QScreen>
#include <QTextBlock>
#include <QTextDocument>

// The rich report: breaks, screens, the three links, and that nothing else becomes one.
class TstSysInfoGui : public QObject {
    Q_OBJECT

private:
    static QString rich(const QString &report, const QString &logsDir = "/logi", const QString &screens = {})
    {
        return SysInfoGui::richText(report, screens, logsDir);
    }

private slots:
    void linesEndInBreaks() { QCOMPARE(rich("a\n\nb"), QString("a<br><br>b")); }

    void inactiveLogCanBeActivated()
    {
        QCOMPARE(rich("Katalog z logami: /logi\nZbieranie logów: nieaktywne"),
                 QString("Katalog z logami: /logi<br>Zbieranie logów: nieaktywne"
                         "&nbsp;&nbsp;<a href='create_folder'>[Aktywuj]</a>"));
    }

    void everyMentionOfAnExistingLogFolderCanBeOpened()
    {
        QCOMPARE(rich("Katalog z logami: /logi\nZbieranie logów: aktywne\n/logi"),
                 QString("Katalog z logami: /logi&nbsp;&nbsp;<a href='open_folder'>[Otwórz]</a>"
                         "<br>Zbieranie logów: aktywne<br>"
                         "/logi&nbsp;&nbsp;<a href='open_folder'>[Otwórz]</a>"));
    }

    void logFolderWithMarkupInItsNameCanBeOpened()
    {
        QCOMPARE(rich("/a&<b>\nZbieranie logów: aktywne", "/a&<b>"),
                 QString("/a&amp;&lt;b&gt;&nbsp;&nbsp;<a href='open_folder'>[Otwórz]</a><br>Zbieranie logów: aktywne"));
    }

    void reportWithoutTheLineOnLogsHasNoLinkOnThem() { QCOMPARE(rich("/logi"), QString("/logi")); }

    void configurationFileWithContentCanBeCleared()
    {
        QCOMPARE(rich("Zawartość pliku konfiguracyjnego: \nOMNIA=E\n\nx"),
                 QString("Zawartość pliku konfiguracyjnego: &nbsp;&nbsp;<a href='clear_config'>[Wyczyść]</a>"
                         "<br>OMNIA=E<br><br>x"));
    }

    // What the report says of an empty one may be the beginning of a line.
    void configurationFileThatBeginsLikeAnEmptyOneCanBeCleared()
    {
        QCOMPARE(rich("Zawartość pliku konfiguracyjnego: \nBRAKUJE=E\n\nx"),
                 QString("Zawartość pliku konfiguracyjnego: &nbsp;&nbsp;<a href='clear_config'>[Wyczyść]</a>"
                         "<br>BRAKUJE=E<br><br>x"));
    }

    void emptyConfigurationFileCannotBeCleared()
    {
        const QString report = "Zawartość pliku konfiguracyjnego: \nBRAK\n\nx";
        QCOMPARE(rich(report), QString(report).replace("\n", "<br>"));
    }

    void screenIsToldWithSizeScaleAndDensity_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<qreal>("dotsPerInch");
        QTest::addColumn<qreal>("ratio");
        QTest::addColumn<QString>("entry");
        QTest::newRow("plain") << QSize(1920, 1080) << 96.0 << 1.0 << "1) 1920x1080 skala=1, gęstość pikseli=1";
        QTest::newRow("scaled") << QSize(2560, 1440) << 120.0 << 1.5 << "1) 2560x1440 skala=1.25, gęstość pikseli=1.5";
        QTest::newRow("three digits") << QSize(800, 600) << 100.0 << 1.3333
                                      << "1) 800x600 skala=1.04, gęstość pikseli=1.33";
    }
    void screenIsToldWithSizeScaleAndDensity()
    {
        QFETCH(QSize, size);
        QFETCH(qreal, dotsPerInch);
        QFETCH(qreal, ratio);
        QFETCH(QString, entry);
        QCOMPARE(SysInfoGui::screensSection({ { size, dotsPerInch, ratio } }), "\n\nMonitory:\n" + entry);
    }

    void screensAreNumberedWithABreakBetweenThem()
    {
        QCOMPARE(rich("a{screens}\n\nb", {},
                      SysInfoGui::screensSection({ { { 1920, 1080 }, 96, 1 }, { { 1280, 1024 }, 96, 1 } })),
                 QString("a<br><br>Monitory:<br>1) 1920x1080 skala=1, gęstość pikseli=1<br>"
                         "2) 1280x1024 skala=1, gęstość pikseli=1<br><br>b"));
    }

    void templateWithoutScreensHasNone()
    {
        QCOMPARE(SysInfoGui().info("/", "{version}"), QString("Wersja aplikacji: 4.3.5.23"));
    }

    void screensOfTheMachineAreTold()
    {
        QStringList entries;
        for (const QScreen *screen : QGuiApplication::screens())
            entries << QString("%1) %2x%3 skala=%4, gęstość pikseli=%5")
                           .arg(entries.size() + 1)
                           .arg(screen->geometry().width())
                           .arg(screen->geometry().height())
                           .arg(screen->logicalDotsPerInch() / 96)
                           .arg(screen->devicePixelRatio());

        QCOMPARE(SysInfoGui().info("/", "{screens}"), "<br><br>Monitory:<br>" + entries.join("<br>"));
    }

    void textOfOthersBecomesNoLink_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : { "<a href='http://x.example'>x</a>", "<A HREF=create_folder>[Aktywuj]</A>",
                                  "<img src='file:///etc/passwd'>", "<style>a{}</style>", "&lt;a href='x'&gt;", "<!--",
                                  "<br", "a & b < c > d", "<table><tr><td>" })
            QTest::newRow(text) << text;
    }
    void textOfOthersBecomesNoLink()
    {
        QFETCH(QString, text);
        QTextDocument report;
        report.setHtml(rich("Wersja aplikacji: 4.3.5.23\n" + text + "\nkoniec"));

        QCOMPARE(report.toPlainText(), "Wersja aplikacji: 4.3.5.23\n" + text + "\nkoniec");
        for (QTextBlock block = report.begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                QVERIFY(!part.fragment().charFormat().isAnchor());
                QVERIFY(!part.fragment().charFormat().isImageFormat());
            }
        }
    }

    void escapedTextKeepsItsLines() { QCOMPARE(SysInfoGui::escaped("a<b>\nc&d"), QString("a&lt;b&gt;<br>c&amp;d")); }

    void activatedLogAsksForAStartAndCanBeOpened_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << "/logi"
                               << "/logi";
        QTest::newRow("markup in its name") << "/a&<b>"
                                            << "/a&amp;&lt;b&gt;";
    }
    void activatedLogAsksForAStartAndCanBeOpened()
    {
        QFETCH(QString, folder);
        QFETCH(QString, shown);
        const QString before = rich("Katalog z logami: " + folder + "\nZbieranie logów: nieaktywne\nx", folder);

        QCOMPARE(SysInfoGui::withLogsActive(before, folder),
                 "Katalog z logami: " + shown
                     + " <a href='open_folder'>[Otwórz]</a><br>"
                       "Zbieranie logów: aktywne <a style='color:red;'>(Uruchom ponownie aplikację)</a>"
                       "&nbsp;&nbsp;<a href='create_folder'></a><br>x");
    }

    void textsGoThroughTheTranslation()
    {
        struct Translator : QTranslator {
            QString translate(const char *context, const char *source, const char *, int) const override
            {
                return QByteArray(context) == "SysInfoGui" && QByteArray(source) == "Architektura" ? "Bauart"
                                                                                                   : QString();
            }
            bool isEmpty() const override { return false; }
        } translator;
        QCoreApplication::installTranslator(&translator);

        QCOMPARE(rich("Architektura: x86_64"), QString("Bauart: x86_64"));
        QCoreApplication::removeTranslator(&translator);
    }
};

VELMOR_TEST(TstSysInfoGui)
#include "tst_sys_info_gui.moc"
