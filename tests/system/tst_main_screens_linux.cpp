#include "system/program_runs.h"

#include <QStandardPaths>

// The factor that the program chooses, on a display of twice the density: the window has to find room in it.
class TestMainScreens : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    // Without -noreset the display begins anew when the first application goes, and the next may find it away.
    class Display {
    public:
        explicit Display(const QString &screen)
        {
            server.start(
                "Xvfb",
                { "-displayfd", "1", "-screen", "0", screen + "x24", "-dpi", "192", "-nolisten", "tcp", "-noreset" });
            while (!server.canReadLine() && server.waitForReadyRead())
                continue;
            name = ':' + QString::fromLatin1(server.readLine().trimmed());
        }
        ~Display()
        {
            server.terminate();
            server.waitForFinished();
        }
        Display(const Display &) = delete;
        Display &operator=(const Display &) = delete;

        QString name;

    private:
        QProcess server;
    };

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable("Xvfb").isEmpty())
            QSKIP("no Xvfb");
        QVERIFY(QDir().mkpath(logFolder()));
    }
    void cleanup() { QFile::remove(logPath()); }

    void windowIsDrawnTwiceAsLargeWhereItFits_data()
    {
        QTest::addColumn<QString>("screen");
        QTest::addColumn<int>("factor");
        QTest::newRow("it just fits") << "1800x1394" << 2;
        QTest::newRow("too low") << "1800x1393" << 1;
        QTest::newRow("too narrow") << "1792x1394" << 1;
    }
    void windowIsDrawnTwiceAsLargeWhereItFits()
    {
        QFETCH(QString, screen);
        QFETCH(int, factor);

        const Display display(screen);

        const Outcome outcome = runToEnd(
            { "-v" }, { { "QT_QPA_PLATFORM", "xcb" }, { "QT_FONT_DPI", QString() }, { "DISPLAY", display.name } });

        QCOMPARE(outcome.code, 0);
        QVERIFY2(logHas(QString("Scale factors:   %1").arg(factor)), qPrintable(logText()));
    }

    // It takes them out of its arguments, and the lasting application finds them in its own.
    void optionsOfTheToolkitReachBothApplications()
    {
        const Outcome outcome = runToEnd({ "-platform", "offscreen", "-v" }, { { "QT_QPA_PLATFORM", "not-there" } });

        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.output.trimmed(), QByteArray("Manager 4.3.5"));
        QVERIFY2(logHas("Scale factors:"), qPrintable(logText()));
    }

    // Every argument is looked at, the program's own name as well.
    void nameThatIsTheProbesOptionCounts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("chosen");
        QTest::newRow("the option") << "-t" << false;
        QTest::newRow("another") << "Manager" << true;
    }
    void nameThatIsTheProbesOptionCounts()
    {
        QFETCH(QString, name);
        QFETCH(bool, chosen);

        const Outcome outcome = runToEnd({ "-c", "exec -a \"$1\" \"$0\" -v", program(), name }, {}, "bash");

        QCOMPARE(outcome.code, 0);
        QCOMPARE(logHas("Scale factors:"), chosen);
    }
};

VELMOR_TEST(TestMainScreens)
#include "tst_main_screens_linux.moc"
