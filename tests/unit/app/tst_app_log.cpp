#include "support/testmain.h"

#include "app/app.h"
#include "app/app_log.h"
#include "base/common.h"
#include "base/platform.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include <cstdio>
#include <memory>
#include <optional>

// The file log, which its user switches on by making a folder, and the lines on standard output.
class TstAppLog : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void folderLiesWithTheStateOfTheUser();
    void folderIsFreshForThreeDays_data();
    void folderIsFreshForThreeDays();
    void lineNamesItsSource_data();
    void lineNamesItsSource();

    void withoutTheFolderNothingIsWritten();
    void withTheFolderALineIsWritten();
    void folderOfTodayIsFresh();
#ifdef Q_OS_LINUX
    void newFilesDoNotMoveTheTimeOfTheFolder();
#endif
    void fileInPlaceOfTheFolderIsNone();
    void everySetUpBeginsANewFile();
    void nameOfTheFileIsFolded_data();
    void nameOfTheFileIsFolded();
    void everyLevelIsWrittenAlike();
    void linesAreAppended();
    void lineThatCannotBeWrittenIsLost();
    void linesOfTwoThreadsStayWhole();
    void standardOutputHasTestLinesOnly();
    void lineOnStandardOutputIsThereAtOnce();
    void timeOnStandardOutputRunsFromTheLastRestart();

private:
    static QString logFile()
    {
        return Platform::logsDir("velmor") + "/velmor_manager.log";
    }
    static QStringList linesWritten();
};

namespace {

constexpr char childLog[] = "--log";
constexpr char childWait[] = "--log-and-wait";

// A line without its time.
QString withoutTime(const QString &line)
{
    static const QRegularExpression time("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} ");
    return time.match(line).hasMatch() ? QString(line).remove(time) : "no time: " + line;
}

void logAs(const char *file, const QString &message, QtMsgType type = QtDebugMsg)
{
    App::messageHandler(type, QMessageLogContext(file, 42, "function", "default"), message);
}

} // namespace

QStringList TstAppLog::linesWritten()
{
    QFile file(logFile());
    if (!file.open(QIODevice::ReadOnly))
        return { "no file" };
    // Lines end as the platform's text files do.
    QStringList lines = QString::fromLocal8Bit(file.readAll()).remove('\r').split('\n');
    if (lines.takeLast() != "")
        return { "the last line has no end" };
    return lines;
}

void TstAppLog::init()
{
    QVERIFY(QDir().mkpath(Platform::logsDir("velmor")));
}

void TstAppLog::cleanup()
{
    QDir(Platform::logsDir("velmor")).removeRecursively();
    QFile::remove(Platform::logsDir("velmor"));
}

void TstAppLog::folderLiesWithTheStateOfTheUser()
{
#ifdef Q_OS_WIN
    QCOMPARE(Platform::logsDir("velmor"), QString("C:\\tmp\\velmor"));
#else
    const QString state = qEnvironmentVariable("XDG_STATE_HOME");
    QCOMPARE(Platform::logsDir("velmor"), state + "/velmor");

    qunsetenv("XDG_STATE_HOME");
    const QString folder = Platform::logsDir("velmor");
    qputenv("XDG_STATE_HOME", state.toLocal8Bit());

    QCOMPARE(folder, QDir::homePath() + "/.local/state/velmor");
#endif
}

void TstAppLog::folderIsFreshForThreeDays_data()
{
    QTest::addColumn<quint64>("now");
    QTest::addColumn<quint64>("created");
    QTest::addColumn<bool>("expected");
    constexpr quint64 now = 1700000000;
    QTest::newRow("just made") << now << now << true;
    QTest::newRow("a second old") << now << now - 1 << true;
    QTest::newRow("a second before three days") << now << now - 259199 << true;
    QTest::newRow("exactly three days") << now << now - 259200 << true;
    QTest::newRow("a second more") << now << now - 259201 << false;
    QTest::newRow("of 1970") << now << quint64(0) << false;
    // The age is unsigned, so a folder from the future is a very old one.
    QTest::newRow("from the future") << now << now + 1 << false;
    QTest::newRow("clock of 1970") << quint64(0) << quint64(0) << true;
    QTest::newRow("clock of 1970, folder of today") << quint64(0) << now << false;
}

void TstAppLog::folderIsFreshForThreeDays()
{
    QFETCH(quint64, now);
    QFETCH(quint64, created);

    QTEST(AppLog::isFresh(now, created), "expected");
}

void TstAppLog::lineNamesItsSource_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("expected");
    // The name in 15 columns, of which it fills 14 at most, then a blank.
    QTest::newRow("plain") << QByteArray("window.cpp") << "window          load All";
    QTest::newRow("with folders") << QByteArray("Manager/window.cpp") << "window          load All";
    QTest::newRow("absolute") << QByteArray("/src/QtCommon/app/app.cpp") << "app             load All";
    QTest::newRow("14 characters") << QByteArray("window_readers.cpp") << "window_readers  load All";
    QTest::newRow("with an x") << QByteArray("gui/box_shadow.cpp") << "box_shadow      load All";
    QTest::newRow("longer") << QByteArray("window_personal_data.cpp") << "window_persona  load All";
    QTest::newRow("header") << QByteArray("gui/popup.h") << "popup.h         load All";
    QTest::newRow("script") << QByteArray("qrc:/qml/main.qml") << "main.qml        load All";
    QTest::newRow("script in a folder") << QByteArray("qrc:/qml/pages/a.qml") << "a.qml           load All";
    QTest::newRow("folder of scripts") << QByteArray("pages/qml/") << "pages           load All";
    QTest::newRow("everywhere in the name") << QByteArray("a.cpp.cppb.cpp") << "ab              load All";
    QTest::newRow("empty") << QByteArray("") << "common          load All";
    QTest::newRow("folder only") << QByteArray("Manager/") << "common          load All";
    QTest::newRow("none") << QByteArray() << "common          load All";
}

void TstAppLog::lineNamesItsSource()
{
    QFETCH(QByteArray, file);

    QTEST(AppLog::compose(file.isNull() ? nullptr : file.constData(), "load All"), "expected");
}

void TstAppLog::withoutTheFolderNothingIsWritten()
{
    // Also when a set-up before found it.
    AppLog::setUp("velmor Manager");
    QVERIFY(QDir(Platform::logsDir("velmor")).removeRecursively());

    AppLog::setUp("velmor Manager");
    logAs("window.cpp", "load All");

    QVERIFY(!QFile::exists(Platform::logsDir("velmor")));
    // A folder that is made later counts from the next start on.
    QVERIFY(QDir().mkpath(Platform::logsDir("velmor")));
    logAs("window.cpp", "load All");
    QVERIFY(!QFile::exists(logFile()));
}

void TstAppLog::withTheFolderALineIsWritten()
{
    AppLog::setUp("velmor Manager");
    const QDateTime before = QDateTime::currentDateTime();
    logAs("Manager/window.cpp", "load All");
    const QDateTime after = QDateTime::currentDateTime();

    const QStringList lines = linesWritten();
    QCOMPARE(lines.size(), 1);
    QCOMPARE(withoutTime(lines.first()), QString("window          load All"));
    const QDateTime time = QDateTime::fromString(lines.first().left(23), Qt::ISODateWithMs);
    QVERIFY2(time >= before && time <= after, qPrintable(lines.first()));
}

void TstAppLog::folderOfTodayIsFresh()
{
    const std::optional<quint64> created = Platform::folderCreated(Platform::logsDir("velmor"));
    const auto now = static_cast<quint64>(QDateTime::currentSecsSinceEpoch());

    QVERIFY(created.has_value());
    // The clock of the file system may be a moment behind or before.
    QVERIFY(*created + 60 > now && *created < now + 60);
    QVERIFY(!Platform::folderCreated(Platform::logsDir("velmor") + "/missing").has_value());
}

#ifdef Q_OS_LINUX
// The change time moves with every new file.
void TstAppLog::newFilesDoNotMoveTheTimeOfTheFolder()
{
    const QString folder = Platform::logsDir("velmor");
    const std::optional<quint64> created = Platform::folderCreated(folder);
    QProcess stat;
    stat.start("stat", { "-c", "%W", folder });
    QVERIFY(stat.waitForFinished());
    if (stat.readAllStandardOutput().toLongLong() == 0)
        QSKIP("The file system keeps no times of creation");
    const auto changed = [&folder] {
        writeFileBytes(folder + "/of-today", "x");
        QFile::remove(folder + "/of-today");
        return QFileInfo(folder).metadataChangeTime().toSecsSinceEpoch();
    };
    const qint64 before = changed();

    QTRY_VERIFY(changed() > before);

    QCOMPARE(Platform::folderCreated(folder), created);
}
#endif

void TstAppLog::fileInPlaceOfTheFolderIsNone()
{
    QVERIFY(QDir(Platform::logsDir("velmor")).removeRecursively());
    QFile file(Platform::logsDir("velmor"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    AppLog::setUp("velmor Manager");
    logAs("window.cpp", "load All");

    QCOMPARE(QFileInfo(Platform::logsDir("velmor")).size(), qint64(0));
}

void TstAppLog::everySetUpBeginsANewFile()
{
    AppLog::setUp("velmor Manager");
    logAs("window.cpp", "of the first run");

    AppLog::setUp("velmor Manager");
    QVERIFY(!QFile::exists(logFile()));
    logAs("window.cpp", "of the second run");

    QCOMPARE(linesWritten().size(), 1);
    QCOMPARE(withoutTime(linesWritten().first()), QString("window          of the second run"));
}

void TstAppLog::nameOfTheFileIsFolded_data()
{
    QTest::addColumn<QString>("logName");
    QTest::addColumn<QString>("expected");
    QTest::newRow("of this program") << "velmor Manager"
                                     << "velmor_manager.log";
    QTest::newRow("Polish letters") << "Velmor Menedżer ŁÓDŹ"
                                    << "velmor_menedzer_lodz.log";
    QTest::newRow("blanks") << " a  b "
                            << "_a__b_.log";
}

void TstAppLog::nameOfTheFileIsFolded()
{
    QFETCH(QString, logName);

    AppLog::setUp(logName);
    logAs("window.cpp", "load All");

    QTEST(QDir(Platform::logsDir("velmor")).entryList(QDir::Files).join(';'), "expected");
}

void TstAppLog::everyLevelIsWrittenAlike()
{
    AppLog::setUp("velmor Manager");

    for (const QtMsgType type : { QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg, QtFatalMsg })
        logAs("window.cpp", "a line", type);

    QStringList lines;
    for (const QString &written : linesWritten())
        lines << withoutTime(written);
    const QString line = "window          a line";
    QCOMPARE(lines, QStringList({ line, line, line, line, line }));
}

void TstAppLog::linesAreAppended()
{
    AppLog::setUp("velmor Manager");
    logAs("window.cpp", "first");
    // Each line opens the file anew: what another hand writes meanwhile stays.
    QFile other(logFile());
    QVERIFY(other.open(QIODevice::Append));
    other.write("between\n");
    other.close();

    logAs("window.cpp", "zażółć 100% %s");

    const QStringList lines = linesWritten();
    QCOMPARE(lines.size(), 3);
    QCOMPARE(withoutTime(lines.at(0)), QString("window          first"));
    QCOMPARE(lines.at(1), QString("between"));
    QCOMPARE(withoutTime(lines.at(2)),
             "window          " + QString::fromLocal8Bit(QString("zażółć 100% %s").toLocal8Bit()));
}

void TstAppLog::lineThatCannotBeWrittenIsLost()
{
    AppLog::setUp("velmor Manager");
    QVERIFY(QDir(Platform::logsDir("velmor")).removeRecursively());

    logAs("window.cpp", "lost");
    QVERIFY(QDir().mkpath(Platform::logsDir("velmor")));
    logAs("window.cpp", "kept");

    QCOMPARE(linesWritten().size(), 1);
    QCOMPARE(withoutTime(linesWritten().first()), QString("window          kept"));
}

void TstAppLog::linesOfTwoThreadsStayWhole()
{
    constexpr int each = 300;
    AppLog::setUp("velmor Manager");
    const QString text(200, 'x');
    const std::unique_ptr<QThread> worker(QThread::create([&] {
        for (int line = 0; line < each; ++line)
            logAs("thproxy.cpp", text);
    }));

    worker->start();
    for (int line = 0; line < each; ++line)
        logAs("window.cpp", text);
    QVERIFY(worker->wait());

    const QStringList lines = linesWritten();
    QMap<QString, int> counts;
    for (const QString &line : lines)
        ++counts[withoutTime(line)];
    // Wine looks where a file ends and writes there, in two steps; there a line can come to lie on another.
    const bool inOneStep = !QLibrary::resolve("ntdll", "wine_get_version");
    QVERIFY2(!inOneStep || counts.size() == 2, qPrintable(counts.keys().join('\n')));
    for (const char *source : { "window          ", "thproxy         " }) {
        const int count = counts.value(QString(source) + text);
        QVERIFY2(inOneStep ? count == each : count > each * 9 / 10, qPrintable(QString::number(count)));
    }
}

void TstAppLog::standardOutputHasTestLinesOnly()
{
    QProcess program;

    program.start(QCoreApplication::applicationFilePath(), { childLog });
    QVERIFY(program.waitForFinished());

    const QStringList lines = QString::fromLocal8Bit(program.readAllStandardOutput()).remove('\r').split('\n');
    QCOMPARE(lines.size(), 3);
    const QRegularExpression whole("^\\d{9} window          in \\[test\\] mode$");
    QVERIFY2(whole.match(lines.at(0)).hasMatch(), qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1).mid(10), QString("window          [test]"));
    QCOMPARE(lines.at(2), QString());
}

// Whoever reads the other end of a pipe waits for it.
void TstAppLog::lineOnStandardOutputIsThereAtOnce()
{
    QProcess program;

    program.start(QCoreApplication::applicationFilePath(), { childWait });

    QVERIFY(program.waitForReadyRead());
    QVERIFY(program.readAllStandardOutput().contains("[test] waits"));
    QCOMPARE(program.state(), QProcess::Running);
    program.closeWriteChannel();
    QVERIFY(program.waitForFinished());
}

void TstAppLog::timeOnStandardOutputRunsFromTheLastRestart()
{
    QProcess program;

    program.start(QCoreApplication::applicationFilePath(), { childLog });
    QVERIFY(program.waitForFinished());

    // The child waits 300 ms before its first line and restarts the clock before its last.
    const QList<QByteArray> lines = program.readAllStandardOutput().split('\n');
    QVERIFY2(lines.at(0).left(9).toInt() >= 300, lines.at(0).constData());
    QVERIFY2(lines.at(1).left(9).toInt() < 300, lines.at(1).constData());
}

// With an argument of its own the program only logs a few lines.
int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], childWait) == 0) {
        AppLog::restartTimer();
        logAs("window.cpp", "[test] waits");
        // Until the parent lets go.
        return std::getchar() == EOF ? 0 : 1;
    }
    if (argc == 2 && qstrcmp(argv[1], childLog) == 0) {
        AppLog::restartTimer();
        logAs("window.cpp", "an ordinary line");
        QThread::msleep(300);
        logAs("window.cpp", "in [test] mode");
        logAs("window.cpp", "[TEST] test");
        AppLog::restartTimer();
        logAs("window.cpp", "[test]");
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstAppLog test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_app_log.moc"
