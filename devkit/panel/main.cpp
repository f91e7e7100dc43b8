// velmor-panel: the trainer's window of the demonstration.
#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"
#include "gui/gui_base.h"
#include "panel/panel_window.h"
#include "shared.h"

#include <QApplication>
#include <QScreen>

#include <memory>

namespace {

constexpr char architecture[] = "x86_64";

// As the program chooses them, before the lasting application.
void chooseScaleFactors(char *program)
{
    int count = 1;
    char *arguments[] = { program, nullptr };
    const QApplication probe(count, arguments);
    GuiBase::calcScaleFactorEnv(PanelWindow::designSize);
}

void raiseRunningPanel()
{
    Ipc ipc;
    ipc.setName("velmor_panel_start");
    ipc.send(IpcMsg { { "to", App::instance()->key() }, { "windowFocus", 1 } });
}

// At the edge of the screen: the program stands in the middle.
void placeAside(QWidget &window)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    window.move(screen.right() - window.frameGeometry().width(),
                screen.top() + (screen.height() - window.height()) / 2);
}

} // namespace

int main(int argc, char *argv[])
{
    Platform::distrustCurrentFolder();
    Platform::usePrivateTempDir("velmor");
    Platform::avoidOpenGl();
    App *app = App::instance();
    app->init("Panel", Common::installRoot(), architecture, "Panel");
    if (qEnvironmentVariableIsEmpty("QT_SCREEN_SCALE_FACTORS"))
        chooseScaleFactors(argv[0]);
    Platform::choosePlatformPlugin();
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    const QApplication application(argc, argv);
    Shared::loadResources();
    app->initQApp();
    if (!app->lock()) {
        raiseRunningPanel();
        return 1;
    }
    PanelWindow window;
    window.listen(*app);
    window.show();
    placeAside(window);
    return QApplication::exec();
}
