#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// One world, several processes: what one does, the others see, and nothing that two do at once gets lost.
class TstSimProcesses : public QObject {
    Q_OBJECT

private slots:
    void aPinCountedDownElsewhereIsCountedDownHere();
    void triesUsedAtTheSameTimeAllCount();
    void changesAtTheSameTimeAllArrive();
    void aFaultStrikesInOneProcessOnly();
    void releaseComesFromAnotherProcess();
    void deadProcessWaitsNoMore();
    void aFaultTakesTheProcessDown();

private:
    // This program once more, with another role.
    static void startChild(QProcess &child, const QStringList &role)
    {
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(), role);
    }

    static QByteArray finish(QProcess &child)
    {
        if (!child.waitForFinished(20000))
            qFatal("a child does not end");
        return child.readAllStandardOutput().trimmed();
    }

    SimFixture sim;
};

void TstSimProcesses::aPinCountedDownElsewhereIsCountedDownHere()
{
    sim.start("anna");
    QProcess child;

    startChild(child, { "--try-pin", "Authentication", "9999" });

    QCOMPARE(finish(child), QByteArray("a0"));
    QVERIFY(sim.flagsOf("Authentication") & CKF_USER_PIN_COUNT_LOW);
    QProcess right;
    startChild(right, { "--try-pin", "Authentication", "1234" });
    QCOMPARE(finish(right), QByteArray("0"));
    QVERIFY(!(sim.flagsOf("Authentication") & CKF_USER_PIN_COUNT_LOW));
}

void TstSimProcesses::triesUsedAtTheSameTimeAllCount()
{
    sim.start("anna");
    QProcess children[3];

    for (QProcess &child : children)
        startChild(child, { "--try-pin", "Qualified", "00000000" });
    for (QProcess &child : children)
        QCOMPARE(finish(child), QByteArray("a0"));

    QCOMPARE(sim.world.cardState("anna")->pins[sim::Qualified].tries, 0);
    QCOMPARE(sim.world.trace("C_Login").size(), std::size_t(3));
}

void TstSimProcesses::changesAtTheSameTimeAllArrive()
{
    sim.start("anna");
    std::vector<std::unique_ptr<QProcess>> children;

    for (int at = 0; at < 12; ++at) {
        children.push_back(std::make_unique<QProcess>());
        children.back()->start(SimFixture::velmorSim(), { "readers", "add", QString("Reader %1").arg(at) });
    }
    for (const auto &child : children)
        finish(*child);

    QCOMPARE(sim.world.readers().size(), std::size_t(13));
}

void TstSimProcesses::aFaultStrikesInOneProcessOnly()
{
    sim.start("anna");
    sim::Fault fault;
    fault.function = "C_Login";
    fault.result = CKR_DEVICE_ERROR;
    sim.world.addFault(fault);
    QProcess children[3];

    QStringList results;
    for (QProcess &child : children)
        startChild(child, { "--try-pin", "Authentication", "1234" });
    for (QProcess &child : children)
        results << finish(child);

    results.sort();
    QCOMPARE(results, QStringList({ "0", "0", "30" }));
}

void TstSimProcesses::releaseComesFromAnotherProcess()
{
    sim.start("anna");
    sim.world.block("C_Login");
    QProcess child;
    startChild(child, { "--try-pin", "Authentication", "1234" });
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    QCOMPARE(QProcess::execute(SimFixture::velmorSim(), { "release" }), 0);

    QCOMPARE(finish(child), QByteArray("0"));
}

void TstSimProcesses::deadProcessWaitsNoMore()
{
    sim.start("anna");
    sim.world.block("C_Login");
    QProcess child;
    startChild(child, { "--try-pin", "Authentication", "1234" });
    QTRY_COMPARE(sim.world.waitingCalls(), 1);

    child.kill();
    finish(child);

    QCOMPARE(sim.world.waitingCalls(), 0);
    QVERIFY(sim.world.setTries("anna", sim::Qualified, 1)); // and the lock is free
}

void TstSimProcesses::aFaultTakesTheProcessDown()
{
    sim.start("anna");
    sim::Fault fault;
    fault.function = "C_Login";
    fault.die = true;
    sim.world.addFault(fault);
    QProcess child;

    startChild(child, { "--try-pin", "Authentication", "1234" });

    QCOMPARE(finish(child), QByteArray());
    // On Windows nothing tells a process that was ended from one that has ended, but for its code.
    QVERIFY(child.exitStatus() == QProcess::CrashExit || child.exitCode() != 0);
    QVERIFY(sim.world.faults().empty());
    QCOMPARE(sim.world.fullTrace().back().function, std::string("C_Login"));
    QVERIFY(sim.world.fullTrace().back().waiting);
    QVERIFY(sim.world.setTries("anna", sim::Qualified, 1)); // and the lock is free
}

namespace {

// The other role: one login, whose result is printed.
int tryPin(const char *container, const char *pin)
{
    SimFixture sim;
    sim.p11->C_Initialize(nullptr);
    std::printf("%lx\n", static_cast<unsigned long>(sim.tryPin(container, CKU_USER, pin)));
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 4 && QByteArray(argv[1]) == "--try-pin")
        return tryPin(argv[2], argv[3]);
    TestHome home;
    QCoreApplication application(argc, argv);
    TstSimProcesses test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_sim_processes.moc"
