#include "support/testmain.h"

#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"
#include "platform/os.h"
#include "platform/sys_info.h"

// The plain report: its sections, their order and ends.
class TstSysInfo : public QObject {
    Q_OBJECT

private:
    static constexpr char wholePattern[] = "{version}{system}{logs}{config}{screens}{browsers}{readers}";

    static QString logsDir() { return Os().logsDir(); }
    static void writeConf(const QByteArray &content)
    {
        const QString path = Os().readersConfPath();
        QDir().mkpath(QFileInfo(path).path());
        QVERIFY(writeFileBytes(path, content));
    }
    static QString info(const QString &pattern) { return SysInfo().info("/opt/velmor", pattern); }

private slots:
    void cleanup()
    {
        QDir(logsDir()).removeRecursively();
        QFile::remove(Os().readersConfPath());
    }

    void linesOfTheWholeReportStandInTheirOrder()
    {
        const QStringList lines = info(wholePattern).replace("{screens}", "\n\nMonitory:\nekran").split('\n');

        const QStringList fixed { "Wersja aplikacji: 4.3.5.23",
                                  "Katalog: /opt/velmor",
                                  "System: *",
                                  "Architektura: *",
                                  "Katalog z logami: " + logsDir(),
                                  "Zbieranie logów: nieaktywne",
                                  "",
                                  "Zawartość pliku konfiguracyjnego: ",
                                  "BRAK",
                                  "",
                                  "Monitory:",
                                  "ekran",
                                  "",
                                  "Przeglądarki: ",
                                  "*" };
        QVERIFY(lines.size() > fixed.size());
        for (int i = 0; i < fixed.size(); ++i) {
            if (fixed[i].endsWith('*'))
                QVERIFY2(lines[i].startsWith(Common::chopSuffix(fixed[i], "*")), qPrintable(lines[i]));
            else
                QCOMPARE(lines[i], fixed[i]);
        }
        const int software = lines.indexOf("Programy/sterowniki do obsługi kart: ");
        const int devices = lines.indexOf("Czytniki w systemie: ");
        QVERIFY(software >= fixed.size());
        QCOMPARE(lines[software - 1], QString());
        QVERIFY(devices > software + 1);
        QCOMPARE(lines[devices - 1], QString());
        QCOMPARE(lines[software - 2].isEmpty(), false);
        QVERIFY(lines.size() > devices + 1);
    }

    void sectionEndsAsTold_data()
    {
        QTest::addColumn<QString>("marker");
        QTest::addColumn<QString>("section");
        QTest::newRow("version") << "{version}"
                                 << "Wersja aplikacji: 4.3.5.23\n";
        QTest::newRow("system") << "{system}"
                                << "Katalog: /opt/velmor\nSystem: " + Os().systemDescription() + "\n";
        QTest::newRow("logs") << "{logs}"
                              << "Katalog z logami: " + logsDir() + "\nZbieranie logów: nieaktywne";
        QTest::newRow("config") << "{config}"
                                << "\n\nZawartość pliku konfiguracyjnego: \nBRAK";
        QTest::newRow("browsers") << "{browsers}"
                                  << "\n\nPrzeglądarki: \n" + SysInfo::browserLines(Os().browserVersions());
        QTest::newRow("readers") << "{readers}"
                                 << "\n\nProgramy/sterowniki do obsługi kart: \n"
                + SysInfo::softwareLines(Os().cardSoftware(), Os().signatureAppVersion(64),
                                         Os().signatureAppVersion(32))
                + "\n\nCzytniki w systemie: \n" + SysInfo::listOrNone(Os().readerDevices());
        QTest::newRow("unknown") << "{other}"
                                 << "{other}";
        QTest::newRow("screens") << "{screens}"
                                 << "{screens}";
    }
    void sectionEndsAsTold()
    {
        QFETCH(QString, marker);
        QTEST(info("<" + marker + ">").mid(1).chopped(1), "section");
    }

    void reportIsTrimmed()
    {
        QCOMPARE(info("{config}"), QString("Zawartość pliku konfiguracyjnego: \nBRAK"));
        QCOMPARE(info("\n {version}\n"), QString("Wersja aplikacji: 4.3.5.23"));
        QCOMPARE(info(""), QString());
    }

    void markerThatStandsTwiceIsFilledTwice()
    {
        QCOMPARE(info("{version}{version}"), QString("Wersja aplikacji: 4.3.5.23\nWersja aplikacji: 4.3.5.23"));
    }

    void withoutAFolderTheOneOfTheProgramIsTold()
    {
        QVERIFY(
            SysInfo()
                .info({}, "{system}")
                .startsWith("Katalog: " + QFileInfo(QCoreApplication::applicationFilePath()).path() + "\nSystem: "));
    }

    void systemIsToldInTwoLines()
    {
        const QStringList lines = Os().systemDescription().split('\n');

        QCOMPARE(lines.size(), 2);
        QVERIFY(!lines[0].contains("Microsoft "));
#ifdef Q_OS_LINUX
        QCOMPARE(lines[0], QSysInfo::prettyProductName() + ' ' + QSysInfo::kernelVersion());
#endif
        QCOMPARE(lines[1], "Architektura: " + QSysInfo::currentCpuArchitecture() + ", " + QSysInfo::buildAbi());
    }

    void stateOfTheLogIsToldByItsFolder()
    {
        QVERIFY(info("{logs}").endsWith("\nZbieranie logów: nieaktywne"));

        QVERIFY(QDir().mkpath(logsDir()));

        QVERIFY(info("{logs}").endsWith("\nZbieranie logów: aktywne"));
    }

    void fileInPlaceOfTheLogFolderIsNoLog()
    {
        QVERIFY(QDir().mkpath(QFileInfo(logsDir()).path()));
        QVERIFY(writeFileBytes(logsDir(), "in the way"));

        QVERIFY(info("{logs}").endsWith("\nZbieranie logów: nieaktywne"));
        QVERIFY(QFile::remove(logsDir()));
    }

    void contentOfTheConfigurationFileIsTrimmed_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("shown");
        QTest::newRow("empty") << QByteArray("") << "BRAK";
        QTest::newRow("only blanks") << QByteArray(" \t\r\n \r\n") << "BRAK";
        QTest::newRow("one line") << QByteArray("OMNIA=E100\r\n") << "OMNIA=E100";
        QTest::newRow("two lines") << QByteArray("\r\nOMNIA=E100\r\nAlfa=200\r\n") << "OMNIA=E100\r\nAlfa=200";
        QTest::newRow("Polish letters") << QByteArray("Żółty=1") << "Żółty=1";
    }
    void contentOfTheConfigurationFileIsTrimmed()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, shown);
        writeConf(content);
        QCOMPARE(info("{config}"), "Zawartość pliku konfiguracyjnego: \n" + shown);
    }

    // What is filled after the configuration is filled in it as well.
    void markersAreFilledInTheirOrder()
    {
        writeConf("{readers}{browsers}{version}=1\r\n");

        const QString text = info("{version}{config}");

        QVERIFY2(text.startsWith("Wersja aplikacji: 4.3.5.23\n\n\nZawartość pliku konfiguracyjnego: \n\n\n"
                                 "Programy/sterowniki do obsługi kart: \n"),
                 qPrintable(text));
        QVERIFY(text.contains("\n\nCzytniki w systemie: \n"));
        QVERIFY2(text.endsWith("{browsers}{version}=1"), qPrintable(text));
    }

    void missingConfigurationFileIsNone()
    {
        QCOMPARE(info("{config}"), QString("Zawartość pliku konfiguracyjnego: \nBRAK"));
    }

    void browsersAreToldInOrderOfTheirLabels()
    {
        QCOMPARE(
            SysInfo::browserLines({ { "Microsoft Edge", "119" }, { "Firefox (32-bit)", "2" }, { "Firefox", "1" } }),
            QString("Firefox: 1\nFirefox (32-bit): 2\nMicrosoft Edge: 119"));
        QCOMPARE(SysInfo::browserLines({}), QString("BRAK"));
    }

    void signatureProgramsAreSortedAmongTheSoftware_data()
    {
        QTest::addColumn<QStringList>("software");
        QTest::addColumn<QString>("wide");
        QTest::addColumn<QString>("narrow");
        QTest::addColumn<QString>("shown");
        QTest::newRow("none") << QStringList() << ""
                              << ""
                              << "BRAK";
        QTest::newRow("64 bits") << QStringList() << "7"
                                 << ""
                                 << "Velmor podpis elektroniczny Ver: 7";
        QTest::newRow("32 bits") << QStringList() << ""
                                 << "6"
                                 << "Velmor podpis elektroniczny (32-bit) Ver: 6";
        QTest::newRow("among others") << QStringList({ "XCA Ver: 2", "acs Ver: 1", "Szafir Ver: 3" }) << "7"
                                      << "6"
                                      << "Szafir Ver: 3\nVelmor podpis elektroniczny (32-bit) Ver: 6\n"
                                         "Velmor podpis elektroniczny Ver: 7\nXCA Ver: 2\nacs Ver: 1";
    }
    void signatureProgramsAreSortedAmongTheSoftware()
    {
        QFETCH(QStringList, software);
        QFETCH(QString, wide);
        QFETCH(QString, narrow);
        QTEST(SysInfo::softwareLines(software, wide, narrow), "shown");
    }

    void devicesAreALineEach()
    {
        QCOMPARE(SysInfo::listOrNone({ "Czytnik Alfa", "Czytnik Beta" }), QString("Czytnik Alfa\nCzytnik Beta"));
        QCOMPARE(SysInfo::listOrNone({}), QString("BRAK"));
        QCOMPARE(SysInfo::listOrNone({ " ", "" }), QString("BRAK"));
    }

    void pathsAreThoseOfTheProgram()
    {
        QCOMPARE(logsDir(), Platform::logsDir("velmor"));
        QCOMPARE(Os().readersConfPath(), Platform::readersConfPath("velmor"));
        QCOMPARE(QFileInfo(Os().programPath()), QFileInfo(QCoreApplication::applicationFilePath()));
        QCOMPARE(QFileInfo(Os().programPathLatin1()), QFileInfo(QCoreApplication::applicationFilePath()));
    }

    void textsGoThroughTheTranslation()
    {
        struct Shouter : QTranslator {
            QString translate(const char *context, const char *source, const char *, int) const override
            {
                return QByteArray(context) == "SysInfo" ? QString(source).toUpper() : QString();
            }
            bool isEmpty() const override { return false; }
        } shouter;
        QCoreApplication::installTranslator(&shouter);

        QCOMPARE(info("{config}"), QString("ZAWARTOŚĆ PLIKU KONFIGURACYJNEGO: \nBRAK"));
        QCoreApplication::removeTranslator(&shouter);
    }
};

VELMOR_TEST(TstSysInfo)
#include "tst_sys_info.moc"
