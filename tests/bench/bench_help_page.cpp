// The help page: time from the request to the painted page with its report, without a Monitor.
//
// Prints rows "what | value | limit".

#include "support/flow.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Flow::setUpApplication();
    Flow flow;
    if (!flow.showCard("anna"))
        return 1;

    constexpr int rounds = 20;
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        flow.find<QStackedWidget>("pager")->setCurrentWidget(flow.widget("pageHome"));
        QCoreApplication::processEvents();
        QElapsedTimer clock;
        clock.start();
        flow.window->moveToHelpPage();
        flow.window->repaint();
        times.push_back(clock.nsecsElapsed() / 1e6);
    }
    const double first = times.front();
    std::sort(times.begin(), times.end());
    std::printf("help page with its report, the first time | %.1f ms | 300 ms\n", first);
    std::printf("help page with its report, median of %d | %.1f ms | 300 ms\n", rounds, times[rounds / 2]);
    std::printf("help page with its report, slowest | %.1f ms | 300 ms\n", times.back());
    return 0;
}
