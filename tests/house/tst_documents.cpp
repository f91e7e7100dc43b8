#include "support/testmain.h"

#include "app/app.h"
#include "app/version.h"
#include "base/common.h"
#include "base/platform.h"

#include <QDirIterator>
#include <QImageReader>
#include <QProcess>
#include <QRegularExpression>

#include <openssl/opensslv.h>

// The documents that are installed with the program: valid, whole, and readable without the net.
class TstDocuments : public QObject {
    Q_OBJECT

private:
    static QString manual() { return App::instance()->manualPath(); }
    static QString changelog() { return App::instance()->changelogPath(); }
    static QString license() { return App::instance()->licensePath(); }

    static QStringList captured(const QString &text, const QString &pattern)
    {
        QStringList found;
        auto match = QRegularExpression(pattern).globalMatch(text);
        while (match.hasNext())
            found << match.next().captured(1);
        return found;
    }
    static QStringList links(const QString &text) { return captured(text, "(?:href|src)=\"([^\"]*)\""); }

    static void addDocuments()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("manual") << manual();
        QTest::newRow("history of changes") << changelog();
        QTest::newRow("licence") << license();
    }

private slots:
    void initTestCase() { App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager"); }

    void manualAndHistoryTellTheVersion()
    {
        const QStringList told = captured(readFileText(manual()), "<p>Wersja aplikacji: ([^<]*)</p>");
        const QStringList versions = captured(readFileText(changelog()), "<h2>Wersja ([^<]*)</h2>");

        QCOMPARE(told, QStringList { Version::shortText });
        QVERIFY(!versions.isEmpty());
        QCOMPARE(versions.first(), QString(Version::shortText));
    }

    void everyCommandStandsAmongTheMessages()
    {
        const QString source = VELMOR_TEST_SOURCE_DIR;
        const QString messages = readFileText(source + "/docs/messages.md");
        const QString commands = messages.section("\n## Commands to Manager\n", 1).section("\n## ", 0, 0);
        QStringList told;
        for (const QString &cell : captured(commands, "(?m)^\\|([^|]*)\\|"))
            told += captured(cell, "`(\\w+)`");
        const QString table =
            readFileText(source + "/Manager/window_messages.cpp").section(" commands {\n", 1).section("\n    };", 0, 0);
        QStringList known = captured(table, "(?m)^        \\{ \"(\\w+)\",");

        // Not in the table of the source: it ends the reading of the message.
        known << "close";
        told.sort();
        known.sort();
        QVERIFY(known.size() > 1);
        QCOMPARE(told, known);
    }

    void documentIsValid_data() { addDocuments(); }
    void documentIsValid()
    {
        QFETCH(QString, path);
        const QString checker = QStandardPaths::findExecutable("tidy");
        if (checker.isEmpty() && Platform::word() == "win")
            QSKIP("checked where the package is");
        QVERIFY2(!checker.isEmpty(), "tidy is not installed");
        QProcess tidy;
        tidy.setProcessChannelMode(QProcess::MergedChannels);
        tidy.start(checker, { "-quiet", "-errors", "-utf8", path });

        QVERIFY(tidy.waitForFinished());
        QCOMPARE(QString::fromUtf8(tidy.readAll()), QString());
        QCOMPARE(tidy.exitCode(), 0);
    }

    void checkerFindsWhatIsWrong()
    {
        const QString checker = QStandardPaths::findExecutable("tidy");
        if (checker.isEmpty())
            QSKIP("no tidy here");
        const QString path = TestHome::path() + "/wrong.html";
        QVERIFY(writeFileBytes(path, readFileText(manual()).replace("</section>", "</div>").toUtf8()));
        QProcess tidy;
        tidy.start(checker, { "-quiet", "-errors", "-utf8", path });

        QVERIFY(tidy.waitForFinished());
        QVERIFY(tidy.exitCode() != 0);
    }

    void documentIsPolishAndTitled_data() { addDocuments(); }
    void documentIsPolishAndTitled()
    {
        QFETCH(QString, path);
        const QString text = readFileText(path);

        QVERIFY(text.contains("<html lang=\"pl\">"));
        QVERIFY(text.contains("<meta charset=\"utf-8\">"));
        QCOMPARE(captured(text, "<title>(velmor [^<]+)</title>").size(), 1);
        QCOMPARE(text.count("<h1>"), 1);
    }

    void documentNeedsNothingFromTheNet_data() { addDocuments(); }
    void documentNeedsNothingFromTheNet()
    {
        QFETCH(QString, path);
        const QString text = readFileText(path);
        QVERIFY(!links(text).isEmpty());
        for (const QString &link : links(text)) {
            // A link begins with neither a scheme nor a host.
            QVERIFY2(!link.contains(QRegularExpression("^([a-z]+:|/)")), qPrintable(link));
        }
        QVERIFY(!text.contains("<script"));
        const QString style = readFileText(QFileInfo(path).path() + "/styl.css");
        QVERIFY(!style.isEmpty());
        QVERIFY(!style.contains("url("));
        QVERIFY(!style.contains("@import"));
    }

    void everyLinkLeadsSomewhere_data() { addDocuments(); }
    void everyLinkLeadsSomewhere()
    {
        QFETCH(QString, path);
        const QString text = readFileText(path);
        const QDir folder = QFileInfo(path).dir();
        for (const QString &link : links(text)) {
            if (link.startsWith('#'))
                QVERIFY2(text.contains("id=\"" + link.mid(1) + '"'), qPrintable(link));
            else
                QVERIFY2(QFileInfo(folder.filePath(link)).isFile(), qPrintable(link));
        }
    }

    void everySectionOfTheManualIsInItsContents()
    {
        const QString text = readFileText(manual());
        const QStringList sections = captured(text, "<section id=\"([^\"]+)\"");

        QCOMPARE(captured(text, "<li><a href=\"#([^\"]+)\"").mid(0, sections.size()), sections);
        QVERIFY(sections.size() > 10);
    }

    void picturesAreWholeAndDescribed()
    {
        const QString text = readFileText(manual());
        const QStringList pictures = captured(text, "<img src=\"([^\"]+)\"");
        QVERIFY(!pictures.isEmpty());
        QCOMPARE(captured(text, "<img [^>]*alt=\"([^\"]{20,})\"").size(), pictures.size());
        for (const QString &picture : pictures) {
            QImageReader reader(QFileInfo(manual()).dir().filePath(picture));
            const QImage image = reader.read();
            QVERIFY2(!image.isNull(), qPrintable(picture + ": " + reader.errorString()));
            // The size that the page leaves room for.
            const QString size = QString("width=\"%1\" height=\"%2\"").arg(image.width()).arg(image.height());
            QVERIFY2(text.contains("<img src=\"" + picture + "\" " + size), qPrintable(picture + " is " + size));
        }
    }

    void manualTellsWhatTheProgramShows_data()
    {
        QTest::addColumn<QString>("widget");
        for (const char *widget : { "bRaport", "bDiagnosticStart", "bChangePin", "bSettings", "bHelp", "bIntegrate",
                                    "cbCANStorage", "lReaderDesc", "bReaderWarning", "lPukBlocked_3" })
            QTest::newRow(widget) << widget;
    }
    void manualTellsWhatTheProgramShows()
    {
        QFETCH(QString, widget);
        const QString form = readFileText(VELMOR_TEST_SOURCE_DIR "/forms/window.ui");
        const QString shown = captured(form.mid(form.indexOf("name=\"" + widget + "\"")),
                                       "<property name=\"text\">\\s*<string>([^<]*)</string>")
                                  .value(0);

        QVERIFY(!shown.isEmpty());
        QVERIFY2(readFileText(manual()).contains(shown), qPrintable(shown));
    }

    // What the manual puts into quotes is written on a control, or told by the program, in the very words.
    void everythingThatTheManualQuotesIsInTheProgram()
    {
        const QString source = VELMOR_TEST_SOURCE_DIR;
        QString shown;
        for (const char *folder : { "/forms", "/Manager", "/QtCommon", "/Shared" }) {
            QDirIterator files(source + folder, { "*.ui", "*.cpp", "*.h" }, QDir::Files, QDirIterator::Subdirectories);
            while (files.hasNext())
                shown += readFileText(files.next());
        }
        // Line ends of forms and of literals, and literals of several lines.
        shown.replace("\\n", " ").remove(QRegularExpression("\"\\s*\"")).replace("&#10;", " ");
        shown = shown.simplified();

        const QStringList quoted = captured(readFileText(manual()).simplified(), "„([^”]+)”");
        QVERIFY(quoted.size() > 15);
        for (const QString &words : quoted) {
            // A title in front of names is put together when it is shown.
            for (const QString &part : words.split(": "))
                QVERIFY2(shown.contains(part), qPrintable(words));
        }
    }

    // The first page is that of the settings, and its way out is there once a card can be read.
    void manualTellsTheStartAsItIs()
    {
        const QString text = readFileText(manual()).simplified();
        const int start = text.indexOf("<section id=\"pierwszy-raz\">");
        const QString section = text.mid(start, text.indexOf("</section>", start) - start);
        QVERIFY(section.contains("Otworzy się na stronie z ustawieniami."));
        QVERIFY(section.indexOf("manual-start-light") < section.indexOf("no-card-light"));
        QCOMPARE(text.contains("Chrome, Chromium, Edge” po ponownym uruchomieniu"), Platform::word() == "lin");
    }

    void manualWarnsOfFilesWithOtherLineEnds()
    {
        const QString text = readFileText(manual());
        const int warning = text.indexOf("Zanim połączysz albo odłączysz przeglądarkę, zrób kopię");
        QVERIFY(warning > 0);
        for (const char *word : { "LF", "user.js", "pkcs11.txt", "opróżnić" })
            QVERIFY2(text.indexOf(word, warning) > 0, word);
    }

    void licenceNamesEverythingThatIsShipped()
    {
        const QString text = readFileText(license());
        // Component with its version as #, authors, licence and its texts, row by row.
        QStringList table {
            "Qt #: Core, Gui, Widgets, Network|The Qt Company Ltd. i inni|GNU LGPL 3|Qt LGPL-3 GPL-3 GPL-2",
            "Qt #: Svg|The Qt Company Ltd. i inni|GNU LGPL 3|QtSvg",
            "Qt #: polskie tłumaczenie|The Qt Company Ltd. i inni|GNU GPL 3 wraz z wyjątkiem The Qt Company 1.0|"
            "QtTranslations",
            "OpenSSL #|The OpenSSL Project Authors|Apache License 2.0|OpenSSL Apache-2.0",
            "Krój pisma Poppins, pakiet @expo-google-fonts/poppins@#|The Poppins Project Authors|"
            "SIL Open Font License 1.1|Poppins",
        };
        if (Platform::word() == "win")
            table
                << "MinGW-w64 #: biblioteki uruchomieniowe, winpthreads|mingw-w64 project|ZPL 2.1, MIT i BSD|MinGW-w64"
                << "GCC #: libgcc, libstdc++|Free Software Foundation, Inc.|"
                   "GNU GPL 3 wraz z wyjątkiem dla bibliotek uruchomieniowych|GCC GPL-3";
        QStringList rowsOfThePage;
        QSet<QString> notices;
        for (const QString &row : captured(text, "(?s)<tr><td>(.*?)</td></tr>")) {
            QStringList columns = row.split(QRegularExpression("</td>\\s*<td>"));
            QCOMPARE(columns.size(), 4);
            columns[0].replace(QRegularExpression("\\d+(\\.\\d+)+[\\w.+~-]*"), "#");
            const QStringList links = captured(columns[3], "href=\"([^\"]*)\\.txt\"");
            columns[3] = links.join(' ');
            rowsOfThePage << columns.join('|');
            for (const QString &link : links)
                notices << link + ".txt";
        }
        QCOMPARE(rowsOfThePage, table);
        if (Platform::word() == "win")
            notices << "sysroot.txt";
        // Nothing is told of that is not there, and nothing is there that is not told of.
        const QStringList files = QDir(QFileInfo(license()).path()).entryList({ "*.txt" });
        QCOMPARE(QSet<QString>(files.begin(), files.end()), notices);
        const struct {
            const char *component;
            const char *notice;
            const char *words;
        } rows[] = {
            { "Qt " QT_VERSION_STR ": Core", "Qt.txt", "Qt Company" },
            { "LGPL 3", "LGPL-3.txt", "GNU LESSER GENERAL PUBLIC LICENSE" },
            { "GPL 3", "GPL-3.txt", "GNU GENERAL PUBLIC LICENSE" },
            { "Qt " QT_VERSION_STR ": Svg", "QtSvg.txt", "Qt Company" },
            { "GPL 3 wraz z wyjątkiem The Qt Company 1.0", "QtTranslations.txt", "GPL-3 with Qt-1.0 exception" },
            { "OpenSSL " OPENSSL_VERSION_STR, "OpenSSL.txt", "Apache" },
            { "Apache License 2.0", "Apache-2.0.txt", "Apache License" },
            { "Poppins, pakiet @expo-google-fonts/poppins@", "Poppins.txt", "SIL OPEN FONT LICENSE" },
        };
        for (const auto &row : rows) {
            QVERIFY2(text.contains(row.component), row.component);
            QVERIFY2(text.contains('"' + QString(row.notice) + '"'), row.notice);
            QVERIFY2(readFileText(QFileInfo(license()).path() + '/' + row.notice).contains(row.words), row.notice);
        }
        const bool onWindows = Platform::word() == "win";
        QCOMPARE(text.contains("MinGW-w64.txt"), onWindows);
        QCOMPARE(text.contains("ZPL 2.1"), onWindows);
        // How the toolkit's libraries were made, which its licence gives a right to.
        QCOMPARE(text.contains("\"sysroot.txt\""), onWindows);
        QVERIFY(!text.contains(QRegularExpression("@\\w+@|\\$\\{")));
        // Each source with the version that was built from, and a version in each row.
        QCOMPARE(captured(text, "<code>(qt[a-z]+-opensource-src)</code> \\d[\\w.+~-]+").size(), 3);
        QCOMPARE(captured(text, "<tr><td>([^<]*\\d\\.\\d[^<]*)</td>").size(), text.count("<tr><td>"));
    }
};

VELMOR_TEST(TstDocuments)
#include "tst_documents.moc"
