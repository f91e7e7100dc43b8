// An idle program polls its inbox for a long time, with a message now and then, and must not grow: usage MINUTES.
// Part of ./dev check; too long for a test that one waits for.

#include "family_runs.h"

#include "support/proc_status.h"

namespace {

struct Size {
    long residentKiB = 0;
    int descriptors = 0;
};

Size sizeOf(qint64 process)
{
    Size size;
    const QString folder = QString("/proc/%1/").arg(process);
    // Of our own, without pages of files that the system brings and takes.
    size.residentKiB = numberInStatus(folder + "status", "RssAnon");
    size.descriptors = QDir(folder + "fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
    return size;
}

class Growth : public FamilyRuns {
public:
    int run(int minutes)
    {
        startMonitor();
        if (!QTest::qWaitFor([] { return runs("Monitor"); }, 20000))
            return complain("no Monitor");
        QProcess *manager = startManager({ "-p", "settings" });
        if (!QTest::qWaitFor([] { return runs("Manager"); }, 20000))
            return complain("no Manager");
        // Past the start, and past the first messages of their kind.
        pollFor(20);
        const Size before = sizeOf(manager->processId());
        pollFor(60 * minutes);
        const Size after = sizeOf(manager->processId());
        const bool alive = manager->state() == QProcess::Running && before.residentKiB > 0;
        endFamily();
        std::printf("%d minutes of polls: %ld KiB and %d descriptors, then %ld KiB and %d\n", minutes,
                    before.residentKiB, before.descriptors, after.residentKiB, after.descriptors);
        if (!alive)
            return complain("the program has ended");
        if (after.descriptors > before.descriptors)
            return complain("it holds more files than before");
        // What the toolkit's allocator may round up to.
        constexpr long allowedKiB = 256;
        return after.residentKiB > before.residentKiB + allowedKiB ? complain("it has grown") : 0;
    }

private:
    static int complain(const char *reason)
    {
        std::fprintf(stderr, "%s\n", reason);
        return 1;
    }

    // A message every second, of the kind that changes nothing.
    static void pollFor(int seconds)
    {
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < qint64(seconds) * 1000; QTest::qWait(1000))
            tell("velmor_manager", "isCard");
    }
};

} // namespace

int main(int argc, char *argv[])
{
    const int minutes = argc > 1 ? std::atoi(argv[1]) : 0;
    if (minutes <= 0) {
        std::fprintf(stderr, "usage: %s MINUTES\n", argv[0]);
        return 2;
    }
    const TestHome home;
    const QApplication application(argc, argv);
    return Growth().run(minutes);
}
