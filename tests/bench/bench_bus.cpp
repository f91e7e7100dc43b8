// The bus between processes, and what an idle program costs: latency of a message, a burst of four senders, the way of
// a card from the simulated world to the home page, processor time and wake-ups while nothing happens, reading of
// hostile texts.
//
// Prints rows "what | value | limit". Called with a word, it plays a sender of one of the measurements.

#include "app/app.h"
#include "app/app_lock.h"
#include "ipc/ipc.h"

#include "support/flow.h"
#include "support/proc_status.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numeric>

namespace {

constexpr char ownAddress[] = "velmor_bench";

// The same clock in all processes of a machine.
double nowMs()
{
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

double rank(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    const auto place = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size()))) - 1;
    return values.at(place);
}

QProcess *startSender(const QStringList &args)
{
    auto *process = new QProcess(QCoreApplication::instance());
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(QCoreApplication::applicationFilePath(), args);
    return process;
}

// An inbox, and what came with the time of its coming.
class Receiver {
public:
    struct Heard {
        IpcMsg message;
        double at;
    };

    Receiver()
    {
        ipc.setName(ownAddress);
        QObject::connect(&ipc, &Ipc::received, [this](const IpcMsg &message) {
            heard.push_back({ message, nowMs() });
        });
        ipc.start();
    }
    bool waitFor(std::size_t count, int patience)
    {
        return QTest::qWaitFor([&] { return heard.size() >= count; }, patience);
    }

    Ipc ipc;
    std::vector<Heard> heard;
};

// Sender: `count` messages with the time of their sending, at random moments of the receiver's poll.
int sendTimes(int count)
{
    Ipc ipc;
    ipc.setName("velmor_sender");
    for (int i = 0; i < count; ++i) {
        QThread::msleep(130 + QRandomGenerator::global()->bounded(100));
        ipc.send(IpcMsg { { "to", ownAddress }, { "at", QByteArray::number(nowMs(), 'f', 3) } });
    }
    return 0;
}

void measureLatency()
{
    constexpr int count = 100;
    Receiver receiver;
    startSender({ "times", QString::number(count) });
    if (!receiver.waitFor(count, 120000))
        qFatal("messages were lost");
    std::vector<double> times;
    for (const Receiver::Heard &heard : receiver.heard)
        times.push_back(heard.at - heard.message.param("at").toDouble());
    std::printf("latency of a message, median of %d | %.1f ms | 55 ms\n", count, rank(times, 0.5));
    std::printf("latency of a message, 99 of 100 | %.1f ms | 110 ms\n", rank(times, 0.99));
}

// Sender: numbered messages, each again until it is taken. The answer is how often that was needed.
int sendBurst(const QByteArray &name, int count)
{
    Ipc ipc;
    ipc.setName(name);
    int again = 0;
    for (int i = 0; i < count; ++i) {
        while (!ipc.send(IpcMsg { { "to", ownAddress }, { "number", i } }))
            ++again;
    }
    return again;
}

void measureBurst()
{
    constexpr int senders = 4;
    constexpr int each = 25;
    Receiver receiver;
    std::vector<QProcess *> processes;
    for (int i = 0; i < senders; ++i)
        processes.push_back(startSender({ "burst", "velmor_s" + QString::number(i), QString::number(each) }));
    if (!receiver.waitFor(1, 20000))
        qFatal("no sender came");
    receiver.waitFor(senders * each, 60000);
    const double seconds = (receiver.heard.back().at - receiver.heard.front().at) / 1000;
    int again = 0;
    for (QProcess *process : processes) {
        process->waitForFinished();
        again += process->exitCode();
    }
    QSet<QByteArray> different;
    for (const Receiver::Heard &heard : receiver.heard)
        different << heard.message.from() + heard.message.param("number");
    std::printf("burst of 100 messages from four senders | %.2f a second | at least 9\n",
                static_cast<double>(receiver.heard.size() - 1) / seconds);
    std::printf("of these lost, though taken | %d | 0\n", senders * each - int(different.size()));
    std::printf("sent again after the sender had given up | %d |\n", again);
}

// A program of the family that is started and stopped with this object.
class Program {
public:
    explicit Program(const QString &path, const QStringList &args = {})
    {
        process.start(path, args);
        process.waitForStarted();
    }
    ~Program()
    {
        process.kill();
        process.waitForFinished();
    }
    qint64 id() const { return process.processId(); }

private:
    QProcess process;
};

QString sibling(const char *name)
{
    return QString(VELMOR_TEST_FAMILY) + '/' + name;
}

bool waitUntilRuns(const char *id)
{
    return QTest::qWaitFor([id] { return Common::isAppRunning(id, "velmor"); }, 20000);
}

// From the change in the simulated world to the drawn home page, the Monitor and both polls between.
void measureCard()
{
    constexpr int rounds = 20;
    App::instance()->lock();
    const Program monitor(sibling("velmor_monitor"));
    if (!waitUntilRuns("Monitor"))
        qFatal("no Monitor");
    std::vector<double> times;
    std::vector<double> pushes;
    {
        Flow flow;
        if (!flow.showCard("anna"))
            qFatal("the card was not read");
        double readBegan = 0;
        double shown = 0;
        QObject::connect(flow.window.get(), &Window::getReaders, [&] { readBegan = nowMs(); });
        // Sent when the certificates are there; the page is drawn when the event loop has come round.
        QObject::connect(flow.window.get(), &Window::getPhoto, flow.window.get(),
                         [&] { QTimer::singleShot(0, flow.window.get(), [&] { shown = nowMs(); }); });
        for (int i = 0; i < rounds; ++i) {
            flow.world.removeCard("Czytnik Alfa");
            if (!QTest::qWaitFor([&] { return flow.page() == "pageDisconected"; }, 20000))
                qFatal("the card did not go");
            QTest::qWait(QRandomGenerator::global()->bounded(100));
            shown = 0;
            const double begin = nowMs();
            flow.world.insertCard("Czytnik Alfa", "anna");
            if (!QTest::qWaitFor([&] { return shown > 0 && flow.photoArrived(); }, 20000))
                qFatal("the card was not read");
            times.push_back(shown - begin);
            pushes.push_back(readBegan - begin);
        }
    }
    App::instance()->unlock();
    const auto mean = [](const std::vector<double> &values) {
        return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    };
    // Half a poll of the Monitor and half of one of the window are a hundred milliseconds.
    const double own = mean(times) - mean(pushes);
    std::printf("card put on until the window hears of it, mean of %d | %.0f ms | 100 ms, two half polls\n", rounds,
                mean(pushes));
    std::printf("card put on to home page drawn, mean | %.0f ms | %.0f ms\n", mean(times), 1.03 * own + 100);
    std::printf("card put on to home page drawn, slowest | %.0f ms |\n", rank(times, 1));
}

#ifdef Q_OS_LINUX
struct Usage {
    double cpuSeconds = 0;
    long wakeUps = 0;
};

// Of all threads: a wake-up is a return from a wait of the thread's own.
Usage usageOf(qint64 process)
{
    Usage usage;
    const QString tasks = QString("/proc/%1/task").arg(process);
    for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile stat(tasks + '/' + task + "/schedstat");
        if (stat.open(QIODevice::ReadOnly))
            usage.cpuSeconds += stat.readAll().split(' ').first().toDouble() / 1e9;
        usage.wakeUps += numberInStatus(tasks + '/' + task + "/status", "voluntary_ctxt_switches");
    }
    return usage;
}

void measureIdle(const char *name, const QStringList &args)
{
    constexpr int settling = 3000;
    constexpr int seconds = 15;
    const Program monitor(sibling("velmor_monitor"));
    const Program manager(sibling("bin/Manager"), args);
    const Program empty(QCoreApplication::applicationFilePath(), { "look" });
    if (!waitUntilRuns("Manager"))
        qFatal("no Manager");
    QTest::qWait(settling);
    const Usage before = usageOf(manager.id());
    const Usage emptyBefore = usageOf(empty.id());
    QThread::sleep(seconds);
    const Usage after = usageOf(manager.id());
    const Usage emptyAfter = usageOf(empty.id());
    std::printf("idle program on the %s, of one core | %.2f %% | 0.15 %%\n", name,
                100 * (after.cpuSeconds - before.cpuSeconds) / seconds);
    std::printf("an empty window that looks as often, beside it | %.2f %% |\n",
                100 * (emptyAfter.cpuSeconds - emptyBefore.cpuSeconds) / seconds);
    std::printf("idle program on the %s, wake-ups | %.1f a second | 10 a second\n", name,
                static_cast<double>(after.wakeUps - before.wakeUps) / seconds);
}
#endif

// What it costs to look into an inbox that is not there.
int lookOften(int argc, char *argv[])
{
    constexpr int pollInterval = 100;
    const QApplication application(argc, argv);
    QWidget window;
    window.show();
    const std::function<void()> look = [&] { QTimer::singleShot(pollInterval, &window, look); };
    look();
    return QApplication::exec();
}

void measureReading()
{
    constexpr int mib = 1024 * 1024;
    QByteArray different;
    for (int i = 0; different.size() < mib; ++i)
        different += '<' + QByteArray::number(i) + '>';
    const struct {
        const char *name;
        QByteArray text;
    } texts[] = {
        { "\"<\"", QByteArray(mib, '<') },
        { "\"<\" and one \">\"", QByteArray(mib - 1, '<') + '>' },
        { "nested \"<a>\"", QByteArray("<a>").repeated(mib / 3) },
        { "nested tags, all different", different },
        { "the same and a closing tag of another", different + "</x>" },
        { "\"</a>\"", QByteArray("</a>").repeated(mib / 4) },
        { "\"</\" and one \">\"", QByteArray("</").repeated(mib / 2) + '>' },
    };
    for (const auto &row : texts) {
        double best = 1e9;
        for (int round = 0; round < 5; ++round) {
            const double begin = nowMs();
            const IpcMsg message(row.text);
            best = std::min(best, nowMs() - begin);
        }
        std::printf("reading 1 MiB of %s | %.1f ms | 100 ms\n", row.name, best);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 3 && !qstrcmp(argv[1], "times"))
        return sendTimes(atoi(argv[2]));
    if (argc == 4 && !qstrcmp(argv[1], "burst"))
        return sendBurst(argv[2], atoi(argv[3]));
    if (argc == 2 && !qstrcmp(argv[1], "look"))
        return lookOften(argc, argv);
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Flow::setUpApplication();
    measureReading();
    measureLatency();
    measureBurst();
    measureCard();
#ifdef Q_OS_LINUX
    measureIdle("settings page", { "-p", "settings" });
    sim::SimWorld world;
    world.reset();
    world.insertCard("Czytnik Alfa", "anna");
    measureIdle("home page", { "-r", "0:Czytnik Alfa||" });
#endif
    return 0;
}
