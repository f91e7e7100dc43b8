// velmor-tour: walks the real window through its states on a simulated card and leaves a picture of each, and a contact
// sheet of all.
//
//   velmor-tour FOLDER [PREFIX | =NAME ...]
//
// One run takes the pictures of one theme at one density: the theme comes from VELMOR_TOUR_THEME (light, dark, hc), the
// density from QT_SCALE_FACTOR. With further arguments, only the states that they name or whose names begin so. The
// names of the files end in theme and density.

#include "states.h"

#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"
#include "base/settings.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace {

// A home of its own: neither settings nor cards of whoever takes the pictures are read or changed.
void useOwnHome(const QString &home)
{
    for (const char *variable :
         { "HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "TMPDIR", "APPDATA", "VELMOR_SIM_WORLD" }) {
        const QString folder = home + '/' + QString(variable).toLower();
        QDir().mkpath(folder);
        qputenv(variable, folder.toLocal8Bit());
    }
}

void setUpApplication()
{
    Driver::setUpApplication();
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::PreferAntialias);
    QApplication::setFont(font);
    QApplication::setQuitOnLastWindowClosed(false);
}

bool visit(Tour &tour, const State &state)
{
    const bool entered = tour.begin(state.card, state.prepare) && (!state.enter || state.enter(tour));
    if (!entered)
        std::fprintf(stderr, "not reached: %s\n", state.name);
    // The picture shows how far it came.
    const bool taken = tour.take(state.name);
    tour.end();
    return entered && taken;
}

bool isWanted(const QString &state, const QStringList &words)
{
    return words.isEmpty() || words.contains('=' + state)
        || std::any_of(words.begin(), words.end(), [&state](const QString &word) { return state.startsWith(word); });
}

// The windows have started the Monitor, which outlives them and would keep its files in a home that goes.
void endMonitor()
{
    const auto runs = [] { return Common::isAppRunning("Monitor", Common::productName().toLatin1()); };
    if (!runs())
        return;
    QProcess::execute(QCoreApplication::applicationDirPath() + "/velmor-sim",
                      { "send", "velmor_monitor", "close", "1" });
    constexpr int patience = 100;
    for (int i = 0; i < patience && runs(); ++i)
        QThread::msleep(20);
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    useOwnHome(home.path());
    const QString theme = qEnvironmentVariable("VELMOR_TOUR_THEME", "light");
    App::instance()->init("Menedżer", QDir::cleanPath(Common::installRoot()), "x86_64", "Manager");
    Settings::instance()->setValue(SettingsKey::theme, theme);
    Platform::choosePlatformPlugin();
    QApplication application(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: velmor-tour FOLDER [PREFIX | =NAME ...]\n");
        return 2;
    }
    QDir().mkpath(args[1]);
    setUpApplication();

    const QScreen *screen = QGuiApplication::primaryScreen();
    const int density = qRound(screen->logicalDotsPerInch() * screen->devicePixelRatio());
    Tour tour(args[1], QString("-%1-%2").arg(theme).arg(density));
    bool done = true;
    for (const State &state : allStates()) {
        if (isWanted(state.name, args.mid(2)))
            done = visit(tour, state) && done;
    }
    done = tour.contactSheet() && done;
    endMonitor();
    return done ? 0 : 1;
}
