// Reading of a specimen card by the real window: time from loadAll to the home page, beside the delays of the library,
// and the longest time in which the window's thread did not come round.
//
// Prints rows "name | value | bar".

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
    std::printf("card read, no delay, median of %d | %.1f ms | 150 ms\n", rounds, times[rounds / 2]);
    std::printf("card read, no delay, slowest | %.1f ms | 150 ms\n", times.back());
    std::printf("longest stall of the window thread | %lld ms | 50 ms\n", static_cast<long long>(stall));
}

void measureWithDelay(Flow &flow, int delayMs)
{
    flow.world.setDelay(delayMs);
    const Read read = readCard(flow);
    flow.world.setDelay(0);
    const double home = read.callsToHomePage * double(delayMs);
    const double all = read.callsToPhoto * double(delayMs);
    std::printf("%d calls of %d ms, to the home page | %.0f ms = %.3f of the delays | 1.05\n", read.callsToHomePage,
                delayMs, read.toHomePage, read.toHomePage / home);
    std::printf("%d calls of %d ms, to the photo | %.0f ms = %.3f of the delays | 1.05\n", read.callsToPhoto, delayMs,
                read.toPhoto, read.toPhoto / all);
    std::printf("longest stall of the window thread, slow library | %lld ms | 50 ms\n",
                static_cast<long long>(read.stall));
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
