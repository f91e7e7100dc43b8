#pragma once

#include "program_runs.h"

#include "app/app_lock.h"
#include "ipc/ipc.h"

#include "simworld/sim_world.h"

// The programs of the family as processes: an installation with all of them, and their ends with the test's.
class FamilyRuns : public ProgramRuns {
public:
    static constexpr int patience = 15000;
    sim::SimWorld world;

    void beginFamily()
    {
        QDir().mkpath(logFolder());
        QVERIFY2(world.reset(), world.error().c_str());
    }

    // With a card on the screen, so away from the opening page.
    void startWithCard(const char *reader)
    {
        QVERIFY(world.insertCard(reader, "anna"));
        startManager({ "-r", QString("0:%1||").arg(reader) });
        QTRY_VERIFY_WITH_TIMEOUT(logHas("all certs loaded"), patience);
    }

    static QString siblingPath(const QString &name)
    {
#ifdef Q_OS_WIN
        const QString folder = "/64/";
#else
        const QString folder = "/";
#endif
        return VELMOR_TEST_FAMILY + folder + name + Platform::programSuffix();
    }

    QProcess *startManager(const QStringList &args = {})
    {
        return startProgram(args, {}, programIn(VELMOR_TEST_FAMILY));
    }
    QProcess *startMonitor()
    {
        return startProgram({}, {}, siblingPath("velmor_monitor"));
    }

    static bool runs(const char *id)
    {
        return Common::isAppRunning(id, "velmor");
    }

    static int countInLog(const QString &text)
    {
        return logLines().filter(text).size();
    }

    // By hand, as from a sibling.
    static bool tell(const QByteArray &to, const QByteArray &key, const QByteArray &value = "1")
    {
        Ipc ipc;
        ipc.setName("velmor_test");
        return ipc.send(IpcMsg { { "to", to }, { key, value } });
    }

    void endFamily()
    {
        killAll();
        for (const char *id : { "Monitor", "Can" }) {
            if (runs(id))
                tell(segmentKey(id), "close");
        }
        if (!QTest::qWaitFor([] { return !runs("Monitor") && !runs("Can"); }, 10000))
            qFatal("a sibling stays");
        // What a killed instance left.
        CommonAppLock left("velmor_manager");
        left.isHeld();
        QDir(logFolder()).removeRecursively();
    }
};
