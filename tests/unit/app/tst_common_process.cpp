#include "support/testmain.h"

#include "app/process.h"
#include "base/own_environment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>

// Child programs that are started and forgotten: what the log tells of their start and end.
class TstCommonProcess : public QObject {
    Q_OBJECT

private slots:
    void startIsLoggedWithItsArguments_data();
    void startIsLoggedWithItsArguments();
    void argumentsArriveAsTheyAre();
    void environmentIsThatOfBefore();
    void endIsLoggedWithItsCode_data();
    void endIsLoggedWithItsCode();
    void crashIsLogged();
    void failedStartIsToldToNobody();
    void startDoesNotWait();
    void childOutlivesTheObjectThatStartedIt();

    void shellCallOfThePlatform_data();
    void shellCallOfThePlatform();
    void shellPassesArgumentsAsTheyAre_data();
    void shellPassesArgumentsAsTheyAre();
    void shellLetsNoOutputReachUs();
    void endOfAShellIsLogged();
};

namespace {

constexpr char childEnd[] = "--end"; // CODE TEXT: text to both outputs, then that code
constexpr char childCrash[] = "--crash"; // TEXT: text to standard error, then a kill
constexpr char childWrite[] = "--write"; // FILE ARGUMENTS...: a line for each argument
constexpr char childTell[] = "--tell"; // FILE NAME: a line with the variable's value
constexpr char childSleep[] = "--sleep"; // FILE: half a second, then the file
constexpr char childAwait[] = "--await"; // FILE: waits for FILE.gate, for five seconds at most, then the file

QString self()
{
    return QCoreApplication::applicationFilePath();
}

QString selfName()
{
    return QFileInfo(self()).fileName();
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray content = file.readAll();
    // Until its last line is there the child is still at work.
    return content.endsWith("end\n") ? QString::fromUtf8(content).split('\n') : QStringList();
}

bool gateOpens(const QString &path)
{
    for (int tries = 0; tries < 250; ++tries) {
        if (QFile::exists(path))
            return true;
        QThread::msleep(20);
    }
    return false;
}

QString freshPath()
{
    static int number = 0;
    return QDir::tempPath() + QString("/written_%1").arg(++number);
}

const QStringList oddArguments = { "plain", "two words", "",    "'",    "\"", "a'b'c",
                                   "$HOME", "`id`",      "a;b", "żółć", "*",  "\\" };

} // namespace

void TstCommonProcess::startIsLoggedWithItsArguments_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QStringList() << "()";
    QTest::newRow("one") << QStringList { "a" } << "(a)";
    QTest::newRow("three") << QStringList { "a", "b c", "d" } << "(a, b c, d)";
}

void TstCommonProcess::startIsLoggedWithItsArguments()
{
    QFETCH(QStringList, args);
    QFETCH(QString, expected);
    const LogCatcher log;
    CommonProcess process;

    process.start("/no/such/program", args);

    QCOMPARE(log.lines().first(), "run: /no/such/program " + expected);
}

void TstCommonProcess::argumentsArriveAsTheyAre()
{
    const QString path = freshPath();
    const LogCatcher log;
    CommonProcess process;

    process.start(self(), QStringList { childWrite, path } + oddArguments);

    QTRY_COMPARE(linesOf(path), oddArguments + QStringList({ "end", "" }));
    // Its end is not to be taken for that of the next test's process.
    QTRY_VERIFY(log.has("exit code:"));
}

// What the program has set for itself alone goes to no child.
void TstCommonProcess::environmentIsThatOfBefore()
{
    const QString path = freshPath();
    const LogCatcher log;
    qputenv("VELMOR_TEST_CHOSEN", "by the user");
    OwnEnvironment::set("VELMOR_TEST_CHOSEN", "by us");
    CommonProcess process;

    process.start(self(), { childTell, path, "VELMOR_TEST_CHOSEN" });
    OwnEnvironment::restore("VELMOR_TEST_CHOSEN");

    QTRY_COMPARE(linesOf(path), QStringList({ "by the user", "end", "" }));
    QTRY_VERIFY(log.has("exit code:"));
}

void TstCommonProcess::endIsLoggedWithItsCode_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");
    const QString name = selfName();
    QTest::newRow("well") << "0"
                          << "" << QStringList { name + " exit code: 0" };
    QTest::newRow("well, with words") << "0"
                                      << "words" << QStringList { name + " exit code: 0" };
    QTest::newRow("badly, silent") << "3"
                                   << "" << QStringList { name + " exit code: 3" };
    QTest::newRow("badly, with words") << "3"
                                       << "words" << QStringList { name + " exit code: 3", "words" };
}

void TstCommonProcess::endIsLoggedWithItsCode()
{
    QFETCH(QString, code);
    QFETCH(QString, text);
    QFETCH(QStringList, expected);
    const LogCatcher log;
    CommonProcess process;

    process.start(self(), { childEnd, code, text });

    QTRY_VERIFY(log.has("exit code:"));
    QCOMPARE(log.lines().mid(1), expected);
}

void TstCommonProcess::crashIsLogged()
{
#ifdef Q_OS_WIN
    QSKIP("A killed program cannot be told from one that ends here");
#else
    const LogCatcher log;
    CommonProcess process;

    process.start(self(), { childCrash, "last words" });

    QTRY_VERIFY(log.has("exit code:"));
    QCOMPARE(log.lines().mid(1),
             QStringList({ selfName() + " exit code: " + QString::number(SIGKILL), "crash", "last words" }));
#endif
}

void TstCommonProcess::failedStartIsToldToNobody()
{
    const LogCatcher log;
    CommonProcess process;

    process.start("/no/such/program");
    QTest::qWait(100);

    QCOMPARE(log.lines(), QStringList({ "run: /no/such/program ()" }));
}

void TstCommonProcess::startDoesNotWait()
{
    const QString path = freshPath();
    const LogCatcher log;
    CommonProcess process;

    // Whoever waits here for the child waits in vain: the child waits for the gate.
    process.start(self(), { childAwait, path });

    QVERIFY(!QFile::exists(path));
    QFile gate(path + ".gate");
    QVERIFY(gate.open(QIODevice::WriteOnly));
    QTRY_VERIFY(QFile::exists(path));
    QTRY_VERIFY(log.has("exit code:"));
}

void TstCommonProcess::childOutlivesTheObjectThatStartedIt()
{
    const QString path = freshPath();
    const LogCatcher log;

    CommonProcess().start(self(), { childSleep, path });

    QTRY_VERIFY(QFile::exists(path));
    QTRY_COMPARE(log.lines().last(), selfName() + " exit code: 0");
}

void TstCommonProcess::shellCallOfThePlatform_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QStringList>("expected");
#ifdef Q_OS_WIN
    QTest::newRow("none") << QStringList() << QStringList { "cmd.exe", "/c", "C:/a b/monitor.exe" };
    QTest::newRow("two") << QStringList { "a b", "c" }
                         << QStringList { "cmd.exe", "/c", "C:/a b/monitor.exe", "a b", "c" };
#else
    // A resident child must not hang on our pipe, so its output goes nowhere.
    QTest::newRow("none") << QStringList()
                          << QStringList { "/bin/sh", "-c", "exec 'C:/a b/monitor.exe' >/dev/null 2>&1" };
    QTest::newRow("two") << QStringList { "a b", "it's" }
                         << QStringList { "/bin/sh", "-c",
                                          "exec 'C:/a b/monitor.exe' 'a b' 'it'\\''s' >/dev/null 2>&1" };
#endif
}

void TstCommonProcess::shellCallOfThePlatform()
{
    QFETCH(QStringList, args);
    QFETCH(QStringList, expected);

    const ShellCall call = shellCall("C:/a b/monitor.exe", args);

    QCOMPARE(QStringList(call.program) + call.args, expected);
}

void TstCommonProcess::shellPassesArgumentsAsTheyAre_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("none") << QStringList();
    QTest::newRow("plain") << QStringList { "a", "b" };
#ifndef Q_OS_WIN
    QTest::newRow("odd") << oddArguments;
#endif
}

void TstCommonProcess::shellPassesArgumentsAsTheyAre()
{
    QFETCH(QStringList, args);
    const QString path = freshPath();
    const LogCatcher log;
    CommonProcess process;

    process.startShell(self(), QStringList { childWrite, path } + args);

    QTRY_COMPARE(linesOf(path), args + QStringList({ "end", "" }));
    QTRY_VERIFY(log.has("exit code:"));
#ifdef Q_OS_WIN
    QVERIFY(log.lines().first().startsWith("run: cmd.exe (/c, "));
#else
    QVERIFY(log.lines().first().startsWith("run: /bin/sh (-c, "));
#endif
}

void TstCommonProcess::shellLetsNoOutputReachUs()
{
#ifdef Q_OS_WIN
    QSKIP("cmd.exe passes the output on, as it always did");
#endif
    const LogCatcher log;
    CommonProcess process;

    process.startShell(self(), { childEnd, "3", "words" });

    QTRY_VERIFY(log.has("exit code: 3"));
    QVERIFY(!log.lines().contains("words"));
}

void TstCommonProcess::endOfAShellIsLogged()
{
    const LogCatcher log;
    CommonProcess process;

    process.startShell(self(), { childEnd, "0", "" });

#ifdef Q_OS_WIN
    QTRY_COMPARE(log.lines().last(), QString("cmd.exe exit code: 0"));
#else
    QTRY_COMPARE(log.lines().last(), QString("sh exit code: 0"));
#endif
}

// With an argument of its own the program is one of the children.
int main(int argc, char *argv[])
{
    const QByteArray call = argc > 1 ? argv[1] : "";
    if (call == childEnd && argc == 4) {
        std::fputs(argv[3], stdout);
        std::fputs(argv[3], stderr);
        return std::atoi(argv[2]);
    }
    if (call == childCrash && argc == 3) {
        std::fputs(argv[2], stderr);
#ifndef Q_OS_WIN
        std::raise(SIGKILL);
#endif
        return 1;
    }
    if (call == childWrite || call == childTell || call == childSleep || call == childAwait) {
        const QCoreApplication application(argc, argv);
        if (call == childSleep)
            QThread::msleep(500);
        if (call == childAwait && !gateOpens(application.arguments().at(2) + ".gate"))
            return 1;
        QFile file(application.arguments().at(2));
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        QStringList lines = application.arguments().mid(3);
        if (call == childTell)
            lines = QStringList(qEnvironmentVariable(qPrintable(lines.value(0))));
        file.write((lines + QStringList("end")).join('\n').toUtf8() + '\n');
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstCommonProcess test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_common_process.moc"
