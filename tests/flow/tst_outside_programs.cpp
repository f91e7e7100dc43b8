#include "base/own_environment.h"

#include "support/flow.h"
#include "support/opened_urls.h"

#include <QTextBrowser>
#include <QUrl>

// What the desktop opens for the user gets nothing that the program has set in its environment for itself: it would be
// drawn at the wrong size, without fonts, or fill the small folder of the segments.
class TestOutsidePrograms : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

private slots:
    void initTestCase()
    {
        qunsetenv("QT_SCREEN_SCALE_FACTORS");
        Flow::setUpApplication();
        OwnEnvironment::set("QT_SCREEN_SCALE_FACTORS", "2");
    }
    void init()
    {
        flow = std::make_unique<Flow>();
        flow->openWindow();
    }
    void cleanup() { flow.reset(); }

    void openedProgramsGetNothingOfOurs_data()
    {
        QTest::addColumn<QByteArray>("opener");
        QTest::addColumn<QString>("address");
        for (const char *label : { "lGuide", "lLicense", "lChangelog" })
            QTest::newRow(label) << QByteArray(label) << "file:///";
        QTest::newRow("help website") << QByteArray("bRaport") << "https://pomoc.velmor.example/";
        QTest::newRow("log folder") << QByteArray("tDiagnosticsRaport") << "file:///";
        for (const char *label : { "lPukBlocked_2", "lPukBlocked" })
            QTest::newRow(label) << QByteArray(label) << "https://www.velmor.example/nowy-dowod";
    }
    void openedProgramsGetNothingOfOurs()
    {
        QFETCH(QByteArray, opener);
        QFETCH(QString, address);
        QCOMPARE(qgetenv("QT_QPA_FONTDIR"), QByteArray(":/"));
        const QByteArray folder = qgetenv("TMPDIR");
        OwnEnvironment::set("TMPDIR", folder + "/");
        OpenedUrls desktop(QUrl(address).scheme());

        if (const auto *label = qobject_cast<QLabel *>(flow->widget(opener.constData()))) {
            // Else the toolkit would open the address itself.
            QVERIFY(!label->openExternalLinks());
            emit flow->label(opener.constData())->linkActivated(address);
        } else if (opener == "bRaport") {
            flow->button("bRaport")->click();
        } else {
            emit flow->find<QTextBrowser>("tDiagnosticsRaport")->anchorClicked(QUrl("open_folder"));
        }

        QCOMPARE(desktop.urls.size(), 1);
        QVERIFY2(desktop.urls.first().toString().startsWith(address), qPrintable(desktop.urls.first().toString()));
        QVERIFY(!desktop.environment.contains("QT_SCREEN_SCALE_FACTORS"));
        QVERIFY(!desktop.environment.contains("QT_QPA_FONTDIR"));
        QCOMPARE(desktop.environment.value("TMPDIR").toLocal8Bit(), folder);
        // The program goes on with its own.
        QCOMPARE(qgetenv("QT_SCREEN_SCALE_FACTORS"), QByteArray("2"));
        QCOMPARE(qgetenv("TMPDIR"), folder + "/");
        OwnEnvironment::restore("TMPDIR");
    }
};

VELMOR_TEST(TestOutsidePrograms)
#include "tst_outside_programs.moc"
