#include "desktop.h"
#include "system/program_runs.h"

#include "simworld/sim_world.h"

// The installed program on the screen of a Windows user: what it shows, in folders with names of every kind, and what
// it does where nobody listens to its output.
class TestWindowsProgram : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    static constexpr int patience = 60000;
    std::unique_ptr<sim::SimWorld> world;

    static QString installed() { return programIn(VELMOR_TEST_STAGE); }

    // A process without any of the three standard handles, as a double click starts it.
    struct Clicked {
        explicit Clicked(const QString &options)
        {
            QString line = '"' + QDir::toNativeSeparators(installed()) + "\" " + options;
            STARTUPINFOW start = {};
            start.cb = sizeof start;
            started = CreateProcessW(nullptr, reinterpret_cast<wchar_t *>(line.data()), nullptr, nullptr, FALSE,
                                     DETACHED_PROCESS, nullptr, nullptr, &start, &process);
        }
        ~Clicked()
        {
            TerminateProcess(process.hProcess, 99);
            CloseHandle(process.hProcess);
            CloseHandle(process.hThread);
        }
        Clicked(const Clicked &) = delete;
        Clicked &operator=(const Clicked &) = delete;

        qint64 id() const { return process.dwProcessId; }
        bool runs() const { return WaitForSingleObject(process.hProcess, 0) == WAIT_TIMEOUT; }
        DWORD code() const
        {
            DWORD value = 0;
            GetExitCodeProcess(process.hProcess, &value);
            return value;
        }

        bool started = false;
        PROCESS_INFORMATION process = {};
    };

    static HWND windowOf(const QProcess *process)
    {
        for (HWND window : Desktop::windowsOf(process->processId())) {
            RECT box = {};
            GetWindowRect(window, &box);
            if (box.right - box.left > 800)
                return window;
        }
        return nullptr;
    }

    // At the place where the form has it, once the window shows the page behind it.
    static void pressTheCross(const QProcess *process)
    {
        QTRY_VERIFY_WITH_TIMEOUT(windowOf(process), patience);
        QTest::qWait(500);
        Desktop::click(windowOf(process), 883, 40);
    }

    // The picture of a window once it no longer changes.
    static QImage settledPicture(HWND window)
    {
        QImage before;
        QImage now = Desktop::pictureOf(window);
        QDeadlineTimer deadline(patience);
        while (now != before && !deadline.hasExpired()) {
            QTest::qWait(500);
            before = now;
            now = Desktop::pictureOf(window);
        }
        return now;
    }

    static void keep(const QImage &picture, const QString &name)
    {
        QDir().mkpath(VELMOR_TEST_PICTURES);
        QVERIFY(picture.save(QStringLiteral(VELMOR_TEST_PICTURES "/") + name + ".png"));
    }

    // Mean difference of two pictures in a channel of a pixel, from 0 to 255.
    static double difference(const QImage &one, const QImage &other)
    {
        double sum = 0;
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x) {
                const QColor a = one.pixelColor(x, y);
                const QColor b = other.pixelColor(x, y);
                sum += qAbs(a.red() - b.red()) + qAbs(a.green() - b.green()) + qAbs(a.blue() - b.blue());
            }
        }
        return sum / (3.0 * one.width() * one.height());
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(installed()), "no installed tree; ./dev windows makes it");
        qputenv("VELMOR_SIM_CARDS", VELMOR_TEST_STAGE "/devkit/cards");
    }

    void init()
    {
        QDir().mkpath(logFolder());
        world = std::make_unique<sim::SimWorld>();
        QVERIFY2(world->reset(), world->error().c_str());
        QVERIFY2(world->insertCard("Czytnik Żółty", "zaneta"), world->error().c_str());
    }

    void cleanup()
    {
        killAll();
        world->release();
        world.reset();
        QDir(logFolder()).removeRecursively();
    }

    // Letters stand on whole pixels here and between them there, so that lines of text differ in length; all else is
    // the same, and letters of another font or size would differ by far more.
    void homePageLooksAsItDoesOnLinux()
    {
        const QImage wanted(QStringLiteral(VELMOR_TEST_PICTURES "/linux/home-zaneta-light-96.png"));
        if (wanted.isNull())
            QSKIP("no picture to compare with; ./dev windows makes it");
        QVERIFY(world->reset());
        QVERIFY(world->insertCard("OMNIA Smart 3121", "zaneta"));

        QProcess *process = startProgram({ "-r", "0:OMNIA Smart 3121||" }, {}, installed());
        QTRY_VERIFY_WITH_TIMEOUT(logHas("all certs loaded"), patience);
        QTRY_VERIFY_WITH_TIMEOUT(windowOf(process), patience);
        const QImage picture = settledPicture(windowOf(process));
        keep(picture, "home");

        QCOMPARE(picture.size(), wanted.size());
        const QRect inside(20, 0, 900, 697);
        const QRect photo(90, 152, 108, 136);
        const double everywhere = difference(picture.copy(inside), wanted.copy(inside));
        const double inThePhoto = difference(picture.copy(photo), wanted.copy(photo));
        QVERIFY2(everywhere < 6.0, qPrintable(QString::number(everywhere)));
        QVERIFY2(inThePhoto < 1.0, qPrintable(QString::number(inThePhoto)));
    }

    void pagesOfTheOptions_data()
    {
        QTest::addColumn<QString>("page");
        QTest::newRow("settings") << "settings";
        QTest::newRow("help") << "help";
    }
    void pagesOfTheOptions()
    {
        QFETCH(QString, page);

        QProcess *process = startProgram({ "-p", page }, {}, installed());
        QTRY_VERIFY_WITH_TIMEOUT(logHas("show " + page), patience);
        QTRY_VERIFY_WITH_TIMEOUT(windowOf(process), patience);

        const QImage picture = settledPicture(windowOf(process));
        keep(picture, page);
        QCOMPARE(picture.size(), QSize(940, 717));
    }

    void everyLetterOfAFolderIsFine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks") << "Program Files";
        QTest::newRow("Polish") << QString::fromUtf8("Zażółć gęślą jaźń");
        QTest::newRow("shell signs") << "a & b (c) %TEMP% ^";
    }
    void everyLetterOfAFolderIsFine()
    {
        QFETCH(QString, name);
        const QString root = TestHome::path() + '/' + name;
        QVERIFY(copyTree(VELMOR_TEST_STAGE "/64", root + "/64"));

        startProgram({ "-r", "0:Czytnik Żółty||" }, {}, programIn(root));

        QTRY_VERIFY_WITH_TIMEOUT(logHas("all certs loaded"), patience);
        const QString shown = QFileInfo(root).canonicalFilePath();
        QVERIFY2(logHas("root:  " + shown) || logHas("root: " + shown), qPrintable(logText()));
        const QString library = QDir::toNativeSeparators(shown) + "\\64\\velmor-pkcs11-64.dll";
        QVERIFY2(logHas("Loading:  " + library), qPrintable(logText()));
        killAll();
        QVERIFY(QDir(root).removeRecursively());
    }

    void optionsWithoutAListenerShowAMessage_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("code");
        QTest::newRow("version") << "-v"
                                 << "Manager 4.3.5" << 0;
        QTest::newRow("unknown") << "--nonsense"
                                 << "nonsense" << 1;
    }
    void optionsWithoutAListenerShowAMessage()
    {
        QFETCH(QString, option);
        QFETCH(QString, message);
        QFETCH(int, code);

        const Clicked program(option);
        QVERIFY(program.started);
        QTRY_VERIFY_WITH_TIMEOUT(Desktop::messageOf(program.id()).contains(message), patience);
        QVERIFY(program.runs());

        Desktop::confirmMessageOf(program.id());
        QTRY_VERIFY_WITH_TIMEOUT(!program.runs(), patience);
        QCOMPARE(program.code(), static_cast<DWORD>(code));
    }

    void probeNeedsNoListener()
    {
        const Clicked program("-t");

        QTRY_VERIFY_WITH_TIMEOUT(!program.runs(), patience);

        QCOMPARE(program.code(), DWORD(0));
    }

    void crossEndsTheProgramAndTheNextStartFindsNoLock()
    {
        QProcess *process = startProgram({ "-r", "0:Czytnik Żółty||" }, {}, installed());
        QTRY_VERIFY_WITH_TIMEOUT(logHas("all certs loaded"), patience);

        pressTheCross(process);

        QCOMPARE(outcomeOf(*process).code, 0);
        for (const char *text : { "quitClicked", "threads closed", "app destruct" })
            QVERIFY2(logHas(text), text);
        QVERIFY(!logHas("terminateTheards()"));
        startProgram({}, {}, installed());
        QTRY_VERIFY_WITH_TIMEOUT(logHas("shm lock created"), patience);
    }

    void workerThatNeverAnswersIsTerminatedAndTheProgramEnds()
    {
        world->block("C_GetSlotList");
        QProcess *process = startProgram({ "-r", "0:Czytnik Żółty||" }, {}, installed());
        QTRY_COMPARE_WITH_TIMEOUT(world->waitingCalls(), 1, patience);

        pressTheCross(process);

        QCOMPARE(outcomeOf(*process).code, 0);
        QVERIFY2(logHas("terminateTheards()"), qPrintable(logText()));
        QVERIFY2(logHas("app destruct"), qPrintable(logText()));
    }

    void altF4EndsTheProgram()
    {
        QProcess *process = startProgram({ "-p", "help" }, {}, installed());
        QTRY_VERIFY_WITH_TIMEOUT(windowOf(process), patience);

        PostMessageW(windowOf(process), WM_SYSCOMMAND, SC_CLOSE, 0);

        QCOMPARE(outcomeOf(*process).code, 0);
    }

private:
    static bool copyTree(const QString &from, const QString &to)
    {
        bool done = QDir().mkpath(to);
        for (const QFileInfo &entry : QDir(from).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            const QString target = to + '/' + entry.fileName();
            done = (entry.isDir() ? copyTree(entry.filePath(), target) : QFile::copy(entry.filePath(), target)) && done;
        }
        return done;
    }
};

VELMOR_TEST(TestWindowsProgram)
#include "tst_windows_program.moc"
