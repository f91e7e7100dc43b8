// Reading of a specimen card by the real window: time from loadAll to the home page, beside the delays of the library,
// and the longest time in which the window's thread did not come round.
//
// Prints rows "what | value | limit".

#include "support/flow.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace {

// How late a timer of the window's thread comes, at most.
class StallMeter : public QObject {
public:
    StallMeter()
    {
        timer.setTimerType(Qt::PreciseTimer);
        connect(&timer, &QTimer::timeout, this, [this] { longest = std::max(longest, clock.restart() - interval); });
    }
    void start()
    {
        longest = 0;
        clock.start();
        timer.start(interval);
    }
    qint64 stop()
    {
        timer.stop();
        return std::max<qint64>(longest, clock.elapsed() - interval);
    }

private:
    static constexpr int interval = 5;
    QTimer timer;
    QElapsedTimer clock;
    qint64 longest = 0;
};

struct Read {
    double toHomePage = 0;
    double toPhoto = 0;
    int callsToHomePage = 0;
    int callsToPhoto = 0;
    qint64 stall = 0;
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
    if (!QTest::qWaitFor([&] { return shown && !flow.loaderShown() && flow.photoArrived(); }, 60000))
        qFatal("the card was not read");
    read.toPhoto = clock.nsecsElapsed() / 1e6;
    read.stall = meter.stop();
    read.callsToPhoto = int(flow.world.trace().size());
    QObject::disconnect(connection);
    return read;
}

void measureWithoutDelay(Flow &flow)
{
    constexpr int rounds = 20;
    std::vector<double> times;
    qint64 stall = 0;
    for (int i = 0; i < rounds; ++i) {
        const Read read = readCard(flow);
        times.push_back(read.toHomePage);
        stall = std::max(stall, read.stall);
    }
    std::sort(times.begin(), times.end());
    std::printf("card to the home page, no delay, median of %d | %.1f ms | 100 ms\n", rounds, times[rounds / 2]);
    std::printf("the same, slowest | %.1f ms | 100 ms\n", times.back());
    std::printf("longest stall of the window, no delay | %lld ms | 16 ms, a frame\n", static_cast<long long>(stall));
}

void measureWithDelay(Flow &flow, int delayMs)
{
    constexpr int rounds = 3;
    flow.world.setDelay(delayMs);
    Read mean;
    for (int i = 0; i < rounds; ++i) {
        const Read read = readCard(flow);
        mean.toHomePage += read.toHomePage / rounds;
        mean.toPhoto += read.toPhoto / rounds;
        mean.callsToHomePage = read.callsToHomePage;
        mean.callsToPhoto = read.callsToPhoto;
        mean.stall = std::max(mean.stall, read.stall);
    }
    flow.world.setDelay(0);
    // What the card itself takes, a little more, and what a person does not notice.
    const auto limit = [delayMs](int calls) { return 1.03 * calls * delayMs + 100; };
    std::printf("card to the home page, %d calls of %d ms, mean of %d | %.0f ms | %.0f ms\n", mean.callsToHomePage,
                delayMs, rounds, mean.toHomePage, limit(mean.callsToHomePage));
    std::printf("card to the photo, %d calls of %d ms, mean of %d | %.0f ms | %.0f ms\n", mean.callsToPhoto, delayMs,
                rounds, mean.toPhoto, limit(mean.callsToPhoto));
    std::printf("longest stall of the window, slow card | %lld ms | 16 ms, a frame\n",
                static_cast<long long>(mean.stall));
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
