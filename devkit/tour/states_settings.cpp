#include "states.h"

#include "base/ipc_msg.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QStringList>

// The settings page on a computer where Firefox is installed and has two profiles, and the page with its results.
namespace {

constexpr char otherBrowsers[] = "Chrome, Chromium, Edge";

bool put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size();
}

// An own PATH, so that the pictures do not depend on what is installed.
bool installFirefox()
{
    const QString folder = QDir::homePath() + "/programs";
    qputenv("PATH", QFile::encodeName(folder));
    return put(folder + "/firefox", {})
        && QFile::setPermissions(folder + "/firefox", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool makeProfiles(bool connected)
{
    bool done = true;
    for (const char *name : { "a.default", "b.default" }) {
        const QString folder = QDir::homePath() + "/.mozilla/firefox/" + name;
        done = put(folder + "/pkcs11.txt", "name=\r\n")
            && put(folder + "/compatibility.ini", "[Compatibility]\nLastVersion=128.0\n") && done;
        QFile::remove(folder + "/user.js");
        if (connected)
            done = put(folder + "/user.js", "user_pref(\"security.osclientcerts.autoload\", true);\r\n") && done;
    }
    return done;
}

bool openSettings(Tour &tour)
{
    tour.window->moveToSettingsPage(false);
    return tour.waitForPage("pageSettings");
}

bool submit(Tour &tour, const QStringList &ticked)
{
    if (!openSettings(tour))
        return false;
    for (auto *box : tour.find("settingsBrowserFrame")->findChildren<QCheckBox *>())
        box->setChecked(ticked.contains(box->objectName()));
    return tour.open("bIntegrate", "pageIntegration");
}

bool submitOptions(Tour &tour, const QStringList &changed)
{
    if (!openSettings(tour))
        return false;
    for (const QString &name : changed)
        tour.find<QCheckBox>(name.toLatin1())->toggle();
    return tour.open("bCANSettings", "pageIntegration");
}

bool settings(Tour &tour)
{
    if (!installFirefox() || !makeProfiles(true) || !openSettings(tour))
        return false;
    tour.find<QCheckBox>("Firefox")->setFocus(Qt::TabFocusReason);
    return true;
}

// As it stands on Windows, where the other browsers need nothing.
bool withoutOtherBrowsers(Tour &tour)
{
    delete tour.find<QCheckBox>(otherBrowsers);
    return true;
}

bool settingsOfWindows(Tour &tour)
{
    return settings(tour) && withoutOtherBrowsers(tour);
}

// The page with which the program opens, once the Monitor has told of a reader with a card.
bool start(Tour &tour)
{
    if (!installFirefox() || !makeProfiles(false))
        return false;
    tour.window->reloadSettingPage();
    tour.window->recvIpcMsg(
        IpcMsg { { "to", "velmor_manager" }, { "readers", QByteArray("0:") + Tour::reader + "||" } });
    return tour.page() == "pageSettings" && !tour.find("bWroc")->isHidden();
}

bool startOfWindows(Tour &tour)
{
    return start(tour) && withoutOtherBrowsers(tour);
}

bool connectedAll(Tour &tour)
{
    return installFirefox() && makeProfiles(false) && submit(tour, { "Firefox", otherBrowsers });
}

bool disconnectedOne(Tour &tour)
{
    return installFirefox() && makeProfiles(true) && submit(tour, {});
}

bool noProfile(Tour &tour)
{
    return installFirefox() && submit(tour, { "Firefox" });
}

bool optionsUnchanged(Tour &tour)
{
    return submitOptions(tour, {});
}

bool optionsSaved(Tour &tour)
{
    return submitOptions(tour, { "cbCANStorage" });
}

bool takeCardOff(Tour &tour)
{
    return submitOptions(tour, { "cbCSPChoose" });
}

} // namespace

QVector<State> settingsStates()
{
    return {
        // First, since a window knows the profiles that were there when it was opened.
        { "settings-no-profile", "anna", noProfile },
        { "settings", "anna", settings },
        { "settings-connected", "anna", connectedAll },
        { "settings-disconnected", "anna", disconnectedOne },
        { "settings-options-unchanged", "anna", optionsUnchanged },
        { "settings-options-saved", "anna", optionsSaved },
        { "settings-take-card-off", "anna", takeCardOff },
        { "manual-start", "", start },
        { "manual-start-windows", "", startOfWindows },
        { "manual-settings-windows", "anna", settingsOfWindows },
    };
}
