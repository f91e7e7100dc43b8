// velmor-tour: walks the real window through its states on a simulated card and leaves a picture of each.
//
//   velmor-tour FOLDER [home]
//
// One run takes the pictures of one theme at one density: the theme comes from VELMOR_TOUR_THEME (light, dark, hc), the
// density from QT_SCALE_FACTOR. With "home", only the home pages of three cards. The names of the files end in both.

#include "app/app.h"
#include "base/common.h"
#include "base/settings.h"
#include "shared.h"
#include "simworld/sim_world.h"
#include "window.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QPainter>
#include <QScreen>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <chrono>
#include <cstdio>
#include <functional>

namespace {

constexpr int patienceMs = 15000;
const QColor desktop(0xCD, 0xD2, 0xD5);
constexpr char readerName[] = "OMNIA Smart 3121";

class Tour {
public:
    Tour(QString folder, QString suffix) : target(std::move(folder)), ending(std::move(suffix)) { }

    int homePages();
    int everything();

private:
    bool waitFor(const std::function<bool()> &condition);
    template <typename T = QWidget>
    T *find(const char *name)
    {
        return window->findChild<T *>(name);
    }
    bool showCard(const char *card);
    void openWindow();
    void closeWindow();
    bool take(const QString &name);
    bool takeWidget(QWidget *widget, const QString &name);
    bool homePage(const char *card);
    bool tileHovered();
    bool noCard();
    bool noElectronicLayer();
    bool settingsPage();
    bool loaderPage();
    bool readerWarning();

    QString target;
    QString ending;
    sim::SimWorld world;
    std::unique_ptr<Window> window;
};

bool Tour::waitFor(const std::function<bool()> &condition)
{
    QDeadlineTimer deadline(patienceMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    // What was laid out or repolished on the way.
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    return true;
}

void Tour::openWindow()
{
    window = std::make_unique<Window>();
    window->show();
    waitFor([this] { return window->isVisible(); });
}

void Tour::closeWindow()
{
    window->quitClicked();
    waitFor([this] { return !window->isVisible(); });
    window.reset();
}

bool Tour::showCard(const char *card)
{
    world.reset();
    world.insertCard(readerName, card);
    openWindow();
    window->loadedReaders({ readerName });
    return waitFor([this] {
        return find("loading")->isHidden()
            && (!find("bArrowICAO")->isHidden()
                || find<QStackedWidget>("pager")->currentWidget()->objectName() == "pageNoElectricLayer");
    });
}

bool Tour::takeWidget(QWidget *widget, const QString &name)
{
    const QPixmap grabbed = widget->grab();
    QImage picture(grabbed.size(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(grabbed.devicePixelRatio());
    picture.fill(desktop);
    QPainter(&picture).drawPixmap(0, 0, grabbed);
    const QString path = QDir(target).filePath(name + ending + ".png");
    if (picture.save(path))
        return true;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    return false;
}

bool Tour::take(const QString &name)
{
    return takeWidget(window.get(), name);
}

bool Tour::homePage(const char *card)
{
    const bool done = showCard(card) && take(QString("home-") + card);
    closeWindow();
    return done;
}

bool Tour::tileHovered()
{
    bool done = showCard("three-qualified");
    QWidget *tile = find("authorizationCert");
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(tile, &enter);
    done =
        waitFor([tile] { return tile->property("MouseOver").toBool(); }) && take("home-hover-three-qualified") && done;
    closeWindow();
    return done;
}

bool Tour::noCard()
{
    bool done = showCard("anna");
    window->loadedReaders({}, "NO_CARD");
    done = waitFor([] { return true; }) && take("no-card") && done;
    closeWindow();
    return done;
}

bool Tour::noElectronicLayer()
{
    const bool done = showCard("no-certificates") && take("no-electronic-layer");
    closeWindow();
    return done;
}

bool Tour::settingsPage()
{
    bool done = showCard("anna");
    window->moveToSettingsPage(false);
    done = waitFor([] { return true; }) && take("settings") && done;
    closeWindow();
    return done;
}

bool Tour::loaderPage()
{
    bool done = showCard("anna");
    world.setDelay(40);
    window->loadAll();
    QDeadlineTimer some(300);
    waitFor([&] { return some.hasExpired(); });
    done = take("loader") && done;
    world.setDelay(0);
    closeWindow();
    return done;
}

bool Tour::readerWarning()
{
    openWindow();
    bool done = false;
    QTimer::singleShot(400, window.get(), [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        done = dialog && takeWidget(dialog, "reader-warning");
        emit window->closePopups();
    });
    QMetaObject::invokeMethod(window.get(), "showReaderWarningPopup");
    closeWindow();
    return done;
}

int Tour::homePages()
{
    bool done = true;
    for (const char *card : { "anna", "jan", "zaneta" })
        done = homePage(card) && done;
    return done ? 0 : 1;
}

int Tour::everything()
{
    bool done = homePages() == 0;
    for (const char *card : { "bartlomiej", "long-names", "no-photo", "no-dg13", "locked-pins" })
        done = homePage(card) && done;
    for (bool (Tour::*step)() : { &Tour::tileHovered, &Tour::noCard, &Tour::noElectronicLayer, &Tour::settingsPage,
                                  &Tour::loaderPage, &Tour::readerWarning })
        done = (this->*step)() && done;
    return done ? 0 : 1;
}

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

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    useOwnHome(home.path());
    const QString theme = qEnvironmentVariable("VELMOR_TOUR_THEME", "light");
    App::instance()->init("Menedżer", QDir::cleanPath(Common::installRoot()), "x86_64", "Manager");
    Settings::instance()->setValue(SettingsKey::theme, theme);
    QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion("4.3.5");
    const QStringList args = QCoreApplication::arguments();
    if (args.size() < 2 || args.size() > 3 || (args.size() == 3 && args[2] != "home")) {
        std::fprintf(stderr, "usage: velmor-tour FOLDER [home]\n");
        return 2;
    }
    QDir().mkpath(args[1]);
    Shared::loadResources();
    App::instance()->initQApp();
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::PreferAntialias);
    QApplication::setFont(font);

    const int density = qRound(96 * QGuiApplication::primaryScreen()->devicePixelRatio());
    const QString ending = QString("-%1-%2").arg(theme).arg(density);
    QApplication::setQuitOnLastWindowClosed(false);
    Tour tour(args[1], ending);
    return args.size() == 3 ? tour.homePages() : tour.everything();
}
