// The settings page of somebody with many Firefox profiles: time until it is shown, and until they are connected, by
// each of the two mechanisms.
//
// Prints rows "what | value | limit".

#include "base/platform.h"
#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/flow.h"
#include "support/profile_folder.h"

#include <QCheckBox>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int profileCount = 50;
constexpr int rounds = 9;

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void makeProfiles(const QByteArray &version)
{
    for (int i = 0; i < profileCount; ++i) {
        const ProfileFolder files(Os().profilesRoot("Firefox") + QString("%1.default").arg(i), version);
        files.put("user.js", QByteArray("user_pref(\"some.preference\", 1);\r\n").repeated(100));
    }
}

double timeToPage(Flow &flow)
{
    QElapsedTimer clock;
    clock.start();
    flow.window->moveToSettingsPage(false);
    // With the boxes laid out and painted.
    QCoreApplication::processEvents();
    flow.window->grab();
    return clock.nsecsElapsed() / 1e6;
}

double timeToConnect(Flow &flow)
{
    flow.find<QCheckBox>("Firefox")->setChecked(true);
    QElapsedTimer clock;
    clock.start();
    flow.window->integrateApps2();
    const double time = clock.nsecsElapsed() / 1e6;
    if (!flow.label("lIntegration")->text().contains("Podłączono"))
        qFatal("nothing was connected");
    return time;
}

void measure(Flow &flow, const char *mechanism, const QByteArray &version)
{
    std::vector<double> shown;
    std::vector<double> connected;
    for (int round = 0; round < rounds; ++round) {
        makeProfiles(version);
        shown.push_back(timeToPage(flow));
        connected.push_back(timeToConnect(flow));
    }
    std::printf("settings page with %d profiles, %s, median of %d | %.1f ms | 200 ms\n", profileCount, mechanism,
                rounds, median(shown));
    std::printf("%d profiles connected, %s, median of %d | %.1f ms | 500 ms\n", profileCount, mechanism, rounds,
                median(connected));
}

} // namespace

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const FakePrograms programs;
    programs.install("bin/firefox");
    Flow::setUpApplication();
    Flow flow;
    flow.openWindow();
    measure(flow, "preference", "128.0");
    measure(flow, "entry", "70.0");
    return 0;
}
