#include "browser/integrator.h"

#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"
#include "browser/integrator_checks.h"
#include "browser/profile_sql.h"
#include "platform/os.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDebug>
#include <QDir>

namespace {

// The row of the browsers that share one database in the home folder.
constexpr char chromiumFamily[] = "Chrome, Chromium, Edge";
constexpr char sharedDatabase[] = "/.pki/nssdb";

// The module's certificates are public: slots that NSS asks for them without a PIN.
QString slotParameters()
{
    return QString("slotParams={0xffffffff=? 0x0=? 0x1=? 0x2=? 0x3=? 0x4=? 0x5=? 0x6=? 0x7=? 0x8=? 0x9=? 0xa=? 0xb=? "
                   "0xc=? 0xd=? 0xe=? 0xf=?}")
        .replace("?", "[slotFlags=PublicCerts]");
}

QString changedReport(const QString &what, const QString &app)
{
    return what + " moduł obsługujący kartę " + App::productName() + "<br/> w programie \"" + app
        + "\".<br/>Zmiany będą widoczne po ponownym uruchomieniu przeglądarki.";
}

QString unchangedReport(const QString &app)
{
    return "Ustawienia pozostały bez zmian dla aplikacji \"" + app + "\"";
}

QString noProfileReport(const QString &app)
{
    return "<span style=\"color:#EA0449;\">Nie udało się odnaleźć profilu aplikacji, uruchom aplikacje \"" + app
        + "\" i spróbuj ponownie.</span>";
}

} // namespace

Integrator::Integrator(App *_app, OsInfo *_osInfo) : app(_app), osInfo(_osInfo), os(std::make_unique<Os>()) { }

Integrator::~Integrator() = default;

int Integrator::checksCreate(QLayout *layout, QWidget *previous)
{
    pkcsI386 = app->pkcsLibPath("i386");
    pkcsX8664 = app->pkcsLibPath("x86_64");
    qDebug().noquote() << "pkcs-i386:" << pkcsI386;
    qDebug().noquote() << "pkcs-x86_64:" << pkcsX8664;
    findApps();
    for (const QString &name : qAsConst(apps))
        findProfiles(name);
    addApplicationChecks(
        layout, apps, [this](const QString &name) { return isIntegrated(name); }, previous);
    qDebug().noquote() << "create checks fin";
    return apps.size();
}

void Integrator::checksSubmit(QVBoxLayout *layout)
{
    qDebug().noquote() << "submit checks";
    result.clear();
    struct Box {
        QString name;
        bool ticked;
    };
    // Taken down first: a dialog runs the event loop, in which the page may be rebuilt.
    QVector<Box> boxes;
    for (int i = 0; i < layout->count(); ++i) {
        if (const auto *check = qobject_cast<QCheckBox *>(layout->itemAt(i)->widget()))
            boxes << Box { check->objectName(), check->isChecked() };
    }
    for (const Box &box : qAsConst(boxes))
        result += "<span>" + (box.ticked ? integrate(box.name) : disintegrate(box.name)) + "</span><br/><br/>";
}

void Integrator::checksClear(QLayout *layout)
{
    while (QLayoutItem *item = layout->takeAt(0)) {
        if (item->layout())
            checksClear(item->layout());
        delete item->widget();
        delete item;
    }
}

QString Integrator::integrate(const QString &name)
{
    qDebug().noquote() << "integrate: " << name;
    if (name.contains("Chrom"))
        prepareSharedDatabase(name);
    if (!profileExist(name))
        return noProfileReport(name);
    bool changed = false;
    const auto known = profiles; // a dialog runs the event loop, in which the page may be rebuilt
    for (const auto &profile : known) {
        if (profile->appName() == name)
            changed = integrateProfile(*profile) || changed;
    }
    // The full stop here, and none below, is meant.
    return changed ? changedReport("Podłączono", name) : unchangedReport(name) + ".";
}

QString Integrator::disintegrate(const QString &name)
{
    qDebug().noquote() << "disintegrate: " << name;
    bool changed = false;
    const auto known = profiles; // see integrate
    for (const auto &profile : known) {
        bool connected = false;
        if (profile->appName() != name)
            continue;
        profile->checkIntegrate(connected);
        if (connected)
            changed = profile->disintegrate() || changed;
    }
    return changed ? changedReport("Odłączono", name) : unchangedReport(name);
}

bool Integrator::isIntegrated(const QString &name) const
{
    if (!profileExist(name))
        return false;
    for (const auto &profile : profiles) {
        bool connected = false;
        if (profile->appName() != name)
            continue;
        profile->checkIntegrate(connected);
        if (!connected)
            return false;
    }
    return true;
}

int Integrator::findApps()
{
    apps.clear();
    if (!os->which("Firefox").isEmpty())
        apps << "Firefox";
    if (Platform::word() == "lin")
        apps << chromiumFamily;
    qDebug().noquote() << "applications that can be integrated: " << apps.join(", ");
    return apps.size();
}

int Integrator::findProfiles(const QString &name)
{
    const QStringList directories = os->profileDirs(name);
    for (const QString &directory : directories) {
        const auto profile = std::make_shared<ProfileSql>();
        if (!profile->load(name, directory, pkcsI386, pkcsX8664))
            continue;
        profiles[directory] = profile;
        qDebug().noquote() << "profile" << sliceText(directory, "$/$", directory) << "is" << profile->typeName()
                           << ", app: " << name << profile->majorVersion();
    }
    return profiles.size();
}

bool Integrator::profileExist(const QString &name) const
{
    for (const auto &profile : profiles) {
        if (profile->appName() == name) {
            qDebug().noquote() << name;
            return true;
        }
    }
    return false;
}

void Integrator::prepareSharedDatabase(const QString &name)
{
    qDebug().noquote() << "Integration Chrome ";
    const auto profile = std::make_shared<ProfileSql>();
    const QString directory = QDir::homePath() + sharedDatabase;
    profile->dirPrepare(directory);
    // Whether it can be worked on is told by the entry itself.
    profile->load(name, directory, pkcsI386, pkcsX8664);
    profiles[directory] = profile;
}

bool Integrator::integrateProfile(Profile &profile) const
{
    // Left by former versions of this program. Of any application, not of Firefox alone: it is meant.
    if (profile.majorVersion() > Profile::lastVersionWithEntry)
        profile.moduleRemove();
    const QString name = App::productName() + QString(" (%1 bits)").arg(profile.width());
    bool connected = false;
    profile.checkIntegrate(connected);
    return !connected && profile.integrate(name, slotParameters());
}
