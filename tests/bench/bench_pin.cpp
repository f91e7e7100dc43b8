// PIN pages: how long the window's thread takes from an answer to the result page and from a digit to its effect, and
// what many operations in a row leave behind in memory.
//
//   bench_pin             prints rows "what | value | limit"
//   bench_pin grow        the same for memory alone, which takes minutes
//
// A fresh process each, since the hints' style sheets grow by design with every visit.

#include "support/pin_flow.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr double frameMs = 16.0;

struct Times {
    std::vector<double> elapsed;
    // Of this thread alone: what remains of it on a machine that has other work.
    std::vector<double> processor;
};

double processorMs()
{
#ifdef CLOCK_THREAD_CPUTIME_ID
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
#else
    return double(std::clock()) * 1e3 / CLOCKS_PER_SEC;
#endif
}

// Painted, as the user sees it.
void addPainted(Times &times, PinFlow &flow, const std::function<void()> &step)
{
    QElapsedTimer clock;
    clock.start();
    const double before = processorMs();
    step();
    QCoreApplication::sendPostedEvents();
    flow.window->repaint();
    times.processor.push_back(processorMs() - before);
    times.elapsed.push_back(clock.nsecsElapsed() / 1e6);
}

void print(const char *name, Times times)
{
    for (auto *list : { &times.elapsed, &times.processor })
        std::sort(list->begin(), list->end());
    const std::size_t middle = times.elapsed.size() / 2;
    std::printf("%s, median of %zu | %.1f ms, %.1f ms of processor | %.0f ms\n", name, times.elapsed.size(),
                times.elapsed[middle], times.processor[middle], frameMs);
    std::printf("%s, slowest | %.1f ms, %.1f ms of processor | %.0f ms\n", name, times.elapsed.back(),
                times.processor.back(), frameMs);
}

void measureResults(PinFlow &flow)
{
    Times times;
    for (const int code : { 0, -6, -8, -9, -11, 0, -6, -8, -9 }) {
        flow.openPinPage(sim::Authentication);
        flow.window->repaint();
        addPainted(times, flow, [&] { flow.window->changePinFin(code); });
        flow.click("bWrocPin");
        flow.window->repaint();
    }
    print("from the answer to the result page", times);
}

void measureDigits(PinFlow &flow)
{
    Times times;
    flow.openPinPage(sim::Qualified);
    flow.window->repaint();
    for (const char *name : { "lineActualPin", "lineNewPin", "lineRepeatPin" }) {
        flow.field(name)->setFocus();
        flow.window->repaint();
        for (int i = 0; i < 8; ++i)
            addPainted(times, flow, [&] { QTest::keyClick(flow.field(name), Qt::Key_4); });
    }
    if (!flow.button("bChangePin")->isEnabled())
        qFatal("the button is not on");
    print("from a digit to its effect", times);
    flow.click("bCancel");
}

// Bytes in use on the heap.
long long heap()
{
#ifdef __GLIBC__
    return static_cast<long long>(mallinfo2().uordblks);
#else
    return 0;
#endif
}

// The style sheets of the hints grow by design, as text and as what the toolkit makes of it: what is given back when
// they are emptied.
long long emptyHintStyles(PinFlow &flow)
{
    const long long full = heap();
    for (const char *name : { "lActualPinInfo", "lNewPinInfo", "lRepeatPinInfo", "lPinInfoPuk", "lNewPinInfoPuk",
                              "lRepeatPinInfoPuk", "lPukInfo", "lUnblockPinDetails" })
        flow.label(name)->setStyleSheet({});
    return full - heap();
}

void enter(PinFlow &flow, std::initializer_list<std::pair<const char *, QString>> entries)
{
    for (const auto &entry : entries)
        flow.field(entry.first)->insert(entry.second);
}

void grow(PinFlow &flow, const char *what, int rounds, const std::function<void(int round)> &operation)
{
    constexpr int warmUp = 50;
    long long before = 0;
    for (int round = 0; round < rounds; ++round) {
        if (round == warmUp) {
            emptyHintStyles(flow);
            before = heap();
        }
        operation(round);
        if (!flow.waitForPage("pageCorrectChange"))
            qFatal("no result in round %d", round);
        flow.click("bWrocPin");
        // The trace is the stand-in's, and not to be counted.
        if (round % 10 == 0)
            flow.world.clearTrace();
    }
    const double styles = emptyHintStyles(flow) / 1024.0;
    const double growth = (heap() - before) / 1024.0;
    std::printf("%d %s, growth of the heap after the first %d | %.0f KiB | 1024 KiB\n", rounds, what, warmUp, growth);
    std::printf("beside it, in the hints' style sheets | %.0f KiB | by design\n", styles);
}

void measureGrowth()
{
    const QString first = "1234";
    const QString second = "4826";
    PinFlow flow;
    if (!flow.start("anna"))
        qFatal("no card");
    grow(flow, "PIN changes", 500, [&](int round) {
        const QString &actual = round % 2 == 0 ? first : second;
        const QString &fresh = round % 2 == 0 ? second : first;
        flow.openPinPage(sim::Authentication);
        enter(flow, { { "lineActualPin", actual }, { "lineNewPin", fresh }, { "lineRepeatPin", fresh } });
        flow.click("bChangePin");
        if (round == 0 && !flow.loaderShown())
            qFatal("nothing was sent");
    });
    grow(flow, "unblocks", 200, [&](int) {
        flow.world.setTries("anna", sim::Authorization, 0);
        emit flow.window->getConteinersAndICAO("Czytnik Alfa");
        if (!QTest::qWaitFor([&] { return flow.button("bChangePinAuthorCert")->text().contains("Odblokuj"); }, 10000)
            || !flow.waitForWorker())
            qFatal("the lock was not seen");
        flow.openPinPage(sim::Authorization);
        enter(flow,
              { { "lineInsertPuk", PinFlow::puk }, { "lineNewPinPuk", "482615" }, { "lineRepeatPinPuk", "482615" } });
        flow.click("bChangePinPuk");
    });
}

} // namespace

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    Flow::setUpApplication();
    if (argc > 1 && std::strcmp(argv[1], "grow") == 0) {
        measureGrowth();
        return 0;
    }
    PinFlow flow;
    if (!flow.start("anna"))
        return 1;
    measureDigits(flow);
    measureResults(flow);
    return 0;
}
