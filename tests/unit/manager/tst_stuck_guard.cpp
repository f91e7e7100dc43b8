#include "stuck_guard.h"
#include "support/testmain.h"

#include "base/platform.h"
#include "platform/temporary_certificate.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr char childMode[] = "--guarded";
constexpr int longerThanItsPatience = 5800;
constexpr int endOfTheChild = 7;

// What the child does with a guard, before it stays for longer than the guard's patience and then ends with a code of
// its own.
void playWith(const QByteArray &part)
{
    static std::unique_ptr<StuckGuard> guard = std::make_unique<StuckGuard>();
    if (part == "never armed")
        return;
    guard->arm();
    if (part == "armed again") {
        QThread::msleep(longerThanItsPatience / 2);
        guard->arm();
    }
    if (part == "armed twice and destroyed")
        guard->arm();
    if (part.endsWith("destroyed"))
        guard.reset();
}

bool leaveACertificate()
{
    QFile file(TemporaryCertificate::path());
    return file.open(QIODevice::WriteOnly);
}

} // namespace

// What the guard does with the process that it is armed in.
class TestStuckGuard : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!Platform::threadsCanRefuseToEnd())
            QSKIP("Threads end when they are told to");
    }

    // All at once, since each takes as long as the guard's patience.
    void onlyAGuardThatIsArmedAndAliveEndsTheProcess()
    {
        const struct {
            const char *part;
            int code;
        } rows[] = {
            { "never armed", endOfTheChild },
            { "armed", 0 },
            { "armed again", 0 },
            { "destroyed", endOfTheChild },
            { "armed twice and destroyed", endOfTheChild },
        };
        std::vector<std::unique_ptr<QProcess>> children;
        for (const auto &row : rows) {
            children.push_back(std::make_unique<QProcess>());
            const QString folder = TestHome::path() + '/' + QString(row.part).replace(' ', '_');
            QVERIFY(QDir().mkpath(folder));
            auto environment = QProcessEnvironment::systemEnvironment();
            environment.insert("TMPDIR", folder);
            children.back()->setProcessEnvironment(environment);
            children.back()->start(QCoreApplication::applicationFilePath(), { childMode, row.part });
        }

        std::size_t i = 0;
        for (const auto &row : rows) {
            QProcess &child = *children.at(i++);
            QVERIFY2(child.waitForFinished(20000), row.part);
            QVERIFY2(child.exitStatus() == QProcess::NormalExit, row.part);
            QVERIFY2(child.exitCode() == row.code, qPrintable(QString("%1: %2").arg(row.part).arg(child.exitCode())));
            const QString certificate = child.processEnvironment().value("TMPDIR") + "/cert.cer";
            QVERIFY2(QFile::exists(certificate) == (row.code != 0), row.part);
        }
    }
};

int main(int argc, char *argv[])
{
    if (argc == 3 && qstrcmp(argv[1], childMode) == 0) {
        if (!leaveACertificate())
            return EXIT_FAILURE;
        playWith(argv[2]);
        QThread::msleep(longerThanItsPatience);
        return endOfTheChild;
    }
    TestHome home;
    QApplication application(argc, argv);
    TestStuckGuard test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_stuck_guard.moc"
