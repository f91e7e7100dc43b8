// Reading of a specimen card by the real window: time from loadAll to the home page, beside the delays of the library,
// and the longest time in which the window's thread did not come round.
//
// Prints rows "what | value | limit".

#include "host_time.h"
#include "support/flow.h"

#include <QElapsedTimer>
#include <QEventLoop>

#include <algorithm>
#include <cstdio>

namespace {

// Milliseconds.
struct Stalls {
    double own = 0;
    // Longer ones while the host had a processor: they come to a thread that sleeps, too.
    double ofTheHost = 0;
};

// How late a timer of the window's thread comes, at most.
class StallMeter : public QObject {
public:
    StallMeter()
    {
        timer.setTimerType(Qt::PreciseTimer);
        connect(&timer, &QTimer::timeout, this, &StallMeter::come);
    }
    void start()
    {
        longest = {};
        takenBefore = takenByTheHost();
        clock.start();
        timer.start(interval);
    }
    Stalls stop()
    {
        timer.stop();
        come();
        return longest;
    }

private:
    void come()
    {
        const double late = clock.nsecsElapsed() / 1e6 - interval;
        const long long taken = takenByTheHost();
        double &kind = taken == takenBefore ? longest.own : longest.ofTheHost;
        kind = std::max(kind, late);
        takenBefore = taken;
        clock.start();
    }

    static constexpr int interval = 5;
    QTimer timer;
    QElapsedTimer clock;
    long long takenBefore = 0;
    Stalls longest;
};

// In a loop of events as the program's own. QTest::qWaitFor sleeps for ten milliseconds between its rounds, which are
// stalls of its own, and let answers and repaints wait until they come in one.
bool waitInLoop(const std::function<bool()> &come)
{
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (come())
            loop.quit();
    });
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    look.start(1);
    loop.exec();
    return come();
}

struct Read {
    double toHomePage = 0;
    double toPhoto = 0;
    int callsToHomePage = 0;
    int callsToPhoto = 0;
    Stalls stall;
};

Read readCard(Flow &flow)
{
    Read read;
    StallMeter meter;
    QElapsedTimer clock;
    // The certificates are the last answer before the home page is drawn; the loader goes in the same moment.
    bool shown = false;
    const auto connection = QObject::connect(flow.window.get(), &Window::getPhoto, [&] {
        read.toHomePage = clock.nsecsElapsed() / 1e6;
        read.callsToHomePage = int(flow.world.trace().size());
        shown = true;
    });
    flow.world.clearTrace();
    meter.start();
    clock.start();
    flow.window->loadAll();
    if (!waitInLoop([&] { return shown && !flow.loaderShown() && flow.photoArrived(); }))
        qFatal("the card was not read");
    read.toPhoto = clock.nsecsElapsed() / 1e6;
    read.stall = meter.stop();
    read.callsToPhoto = int(flow.world.trace().size());
    QObject::disconnect(connection);
    return read;
}

void printStalls(const char *when, const std::vector<Stalls> &stalls)
{
    std::vector<double> own;
    double ofTheHost = 0;
    for (const Stalls &read : stalls) {
        own.push_back(read.own);
        ofTheHost = std::max(ofTheHost, read.ofTheHost);
    }
    std::sort(own.begin(), own.end());
    const auto print = [when](const QString &which, double value, const char *limit) {
        std::printf("longest stall of the window, %s, %s | %.1f ms | %s\n", when, qPrintable(which), value, limit);
    };
    print(QString("median of %1 reads").arg(own.size()), own[own.size() / 2], "16 ms, a frame");
    print("worst read", own.back(), "16 ms, a frame");
    if (ofTheHost > own.back())
        print("the host busy", ofTheHost, "");
}

void measureWithoutDelay(Flow &flow)
{
    constexpr int rounds = 20;
    std::vector<double> times;
    std::vector<Stalls> stalls;
    for (int i = 0; i < rounds; ++i) {
        const Read read = readCard(flow);
        times.push_back(read.toHomePage);
        stalls.push_back(read.stall);
    }
    std::sort(times.begin(), times.end());
    std::printf("card to the home page, no delay, median of %d | %.1f ms | 100 ms\n", rounds, times[rounds / 2]);
    std::printf("the same, slowest | %.1f ms | 100 ms\n", times.back());
    printStalls("no delay", stalls);
}

void measureWithDelay(Flow &flow, int delayMs)
{
    constexpr int rounds = 5;
    flow.world.setDelay(delayMs);
    std::vector<Stalls> stalls;
    Read mean;
    for (int i = 0; i < rounds; ++i) {
        const Read read = readCard(flow);
        mean.toHomePage += read.toHomePage / rounds;
        mean.toPhoto += read.toPhoto / rounds;
        mean.callsToHomePage = read.callsToHomePage;
        mean.callsToPhoto = read.callsToPhoto;
        stalls.push_back(read.stall);
    }
    flow.world.setDelay(0);
    // What the card itself takes, a little more, and what a person does not notice.
    const auto limit = [delayMs](int calls) { return 1.03 * calls * delayMs + 100; };
    std::printf("card to the home page, %d calls of %d ms, mean of %d | %.0f ms | %.0f ms\n", mean.callsToHomePage,
                delayMs, rounds, mean.toHomePage, limit(mean.callsToHomePage));
    std::printf("card to the photo, %d calls of %d ms, mean of %d | %.0f ms | %.0f ms\n", mean.callsToPhoto, delayMs,
                rounds, mean.toPhoto, limit(mean.callsToPhoto));
    printStalls("slow card", stalls);
}

} // namespace

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Flow::setUpApplication();
    Flow flow;
    if (!flow.showCard("anna"))
        return 1;
    measureWithoutDelay(flow);
    measureWithDelay(flow, 20);
    return 0;
}
