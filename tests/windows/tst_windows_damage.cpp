#include "desktop.h"
#include "pe_file.h"
#include "system/program_runs.h"

#include <QDirIterator>

#include "simworld/sim_world.h"

// An installation that lacks a file, or whose card library is none: the system's own message or the program's word in
// its log, and never a program that hangs.
class TestWindowsDamage : public QObject, private ProgramRuns {
    Q_OBJECT

private:
    static constexpr int patience = 60000;
    const QString root = TestHome::path() + "/damaged";
    const QString aside = root + "/aside";
    QString missing; // the file that is aside
    QStringList files;
    std::unique_ptr<sim::SimWorld> world;

    QString folder() const { return root + "/64/"; }
    QString library() const { return folder() + "velmor-pkcs11-64.dll"; }

    // Nothing but the system's folders to look for DLLs, as at a user's.
    static StringMap bareSurroundings()
    {
        return { { "PATH", "C:\\windows\\system32;C:\\windows" }, { "QT_PLUGIN_PATH", QString() } };
    }

    QProcess *start(const QStringList &args) { return startProgram(args, bareSurroundings(), programIn(root)); }

    bool isImported(const QString &file) const
    {
        QStringList queue { "Manager.exe" };
        QStringList seen = queue;
        while (!queue.isEmpty()) {
            for (const QString &name : PeFile(folder() + queue.takeFirst()).imports()) {
                if (files.contains(name) && !seen.contains(name)) {
                    seen << name;
                    queue << name;
                }
            }
        }
        return seen.contains(file);
    }

    static bool copyFile(const QString &from, const QString &to)
    {
        QFile::remove(to);
        return QFile::copy(from, to);
    }

private slots:
    void initTestCase()
    {
        const QDir installed(VELMOR_TEST_STAGE "/64");
        QVERIFY2(installed.exists(), "no installed tree; ./dev windows makes it");
        qputenv("VELMOR_SIM_CARDS", VELMOR_TEST_STAGE "/devkit/cards");
        QDirIterator it(installed.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString file = installed.relativeFilePath(it.next());
            QVERIFY(QDir().mkpath(QFileInfo(folder() + file).path()));
            QVERIFY(QFile::copy(installed.filePath(file), folder() + file));
            files << file;
        }
    }

    void init()
    {
        QDir().mkpath(logFolder());
        world = std::make_unique<sim::SimWorld>();
        QVERIFY2(world->reset(), world->error().c_str());
        QVERIFY2(world->insertCard("Czytnik Alfa", "anna"), world->error().c_str());
    }

    void cleanup()
    {
        killAll();
        if (!missing.isEmpty())
            QVERIFY(QFile::rename(aside, folder() + missing));
        missing.clear();
        world.reset();
        QDir(logFolder()).removeRecursively();
    }

    void missingFileIsToldByTheSystemOrDoneWithout_data()
    {
        QTest::addColumn<QString>("file");
        QDirIterator it(VELMOR_TEST_STAGE "/64", QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString file = QDir(VELMOR_TEST_STAGE "/64").relativeFilePath(it.next());
            if (file != "Manager.exe" && file != "velmor-pkcs11-64.dll")
                QTest::newRow(file.toLatin1().constData()) << file;
        }
    }
    void missingFileIsToldByTheSystemOrDoneWithout()
    {
        QFETCH(QString, file);
        const bool imported = isImported(file);
        QVERIFY(QFile::rename(folder() + file, aside));
        missing = file;

        QProcess *process = start({ "-r", "0:Czytnik Alfa||" });

        if (imported) {
            // Told by the loader, before the program's first own step.
            const Outcome outcome = outcomeOf(*process, patience);
            const bool isRefused = process->error() == QProcess::FailedToStart;
            QVERIFY2(isRefused || (outcome.code != 0 && outcome.code != -1000),
                     qPrintable(QString::number(outcome.code) + ' ' + process->errorString()));
            QVERIFY(!logHas("root:"));
        } else if (file == "platforms/qwindows.dll") {
            QTRY_VERIFY_WITH_TIMEOUT(Desktop::messageOf(process->processId()).contains("platform plugin"), patience);
            Desktop::confirmMessageOf(process->processId());
            const Outcome outcome = outcomeOf(*process, patience);
            QVERIFY2(outcome.code != 0 && outcome.code != -1000, qPrintable(QString::number(outcome.code)));
        } else {
            // Less to see, but the card is there.
            QTRY_VERIFY2_WITH_TIMEOUT(logHas("all certs loaded"), qPrintable(logText()), patience);
            QCOMPARE(process->state(), QProcess::Running);
        }
    }

    void cardLibraryThatIsNoneIsToldInTheLogAndTheWindowStays_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("logged");
        QFile noEntry(VELMOR_TEST_NO_ENTRY);
        QVERIFY(noEntry.open(QIODevice::ReadOnly));
        const QString cannotLoad = QString::fromUtf8("#2 Nie można załadować biblioteki: ");
        QTest::newRow("for 32 bits") << PeFile(VELMOR_TEST_STAGE "/64/velmor-pkcs11-64.dll").asX86() << cannotLoad;
        QTest::newRow("empty") << QByteArray() << cannotLoad;
        QTest::newRow("text") << QByteArray("this is no library\n").repeated(100) << cannotLoad;
        QTest::newRow("head only") << noEntry.peek(100) << cannotLoad;
        QTest::newRow("without C_GetFunctionList")
            << noEntry.readAll() << QString::fromUtf8("#3 Nie można załadować biblioteki: ");
    }
    void cardLibraryThatIsNoneIsToldInTheLogAndTheWindowStays()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, logged);
        QFile file(library());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
        file.close();

        QProcess *process = start({ "-r", "0:Czytnik Alfa||" });

        QTRY_VERIFY_WITH_TIMEOUT(logHas("reader checked"), patience);
        QVERIFY2(logHas("Pkcs11 err:  " + logged), qPrintable(logText()));
        QVERIFY(logHas("initialize failed !"));
        QCOMPARE(process->state(), QProcess::Running);
        QVERIFY(!Desktop::windowsOf(process->processId()).isEmpty());
        killAll();
        QVERIFY(copyFile(VELMOR_TEST_STAGE "/64/velmor-pkcs11-64.dll", library()));
    }
};

VELMOR_TEST(TestWindowsDamage)
#include "tst_windows_damage.moc"
