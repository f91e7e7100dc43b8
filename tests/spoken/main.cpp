#include "support/flow.h"

#include <QProcess>
#include <QStandardPaths>

#include <cstdio>

// PROGRAM TEST [ARGUMENT OF QTTEST ...], in a desktop of its own: a display, a message bus, a bus of the accessibility.
namespace {

bool hasAll()
{
    for (const char *tool : { "dbus-run-session", "xvfb-run", "xdotool" }) {
        if (QStandardPaths::findExecutable(tool).isEmpty()) {
            std::fprintf(stderr, "skipped: no %s\n", tool);
            return false;
        }
    }
    const char *imports = "import gi; gi.require_version('Atspi', '2.0'); from gi.repository import Atspi";
    const bool modules = QProcess::execute("/usr/bin/python3", { "-c", imports }) == 0;
    if (!modules)
        std::fprintf(stderr, "skipped: no python3-gi or gir1.2-atspi-2.0\n");
    return modules;
}

int runInDesktop(int argc, char *argv[])
{
    if (!hasAll())
        return 0;
    const QTemporaryDir runtime; // where the buses have their sockets
    qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    qputenv("QT_ACCESSIBILITY", "1");
    QStringList command;
    for (int i = 0; i < argc; ++i)
        command << QString::fromLocal8Bit(argv[i]);
    return QProcess::execute(VELMOR_TEST_SOURCE_DIR "/tests/system/screen_reader/session", command);
}

} // namespace

int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("VELMOR_TEST_DISPLAY"))
        return runInDesktop(argc, argv);
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QStringList arguments = QCoreApplication::arguments();
    const QByteArray name = arguments.size() > 1 ? arguments.takeAt(1).toLatin1() : QByteArray();
    const std::unique_ptr<QObject> test = TestCase::make(name);
    if (!test) {
        std::fprintf(stderr, "no test '%s' here\n", name.constData());
        return 2;
    }
    // The program's own log would hide what the story tells; the driver, though, has to see it.
    arguments << "-silent";
    Flow::setUpApplication();
    return QTest::qExec(test.get(), arguments);
}
