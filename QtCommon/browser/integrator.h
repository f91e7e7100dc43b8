#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>

class App;
class Os;
class Profile;
class QLayout;
class QVBoxLayout;
class QWidget;
struct OsInfo;

// Connects the card's Cryptoki module to browsers and takes it away again: one check box an application that can take
// it, one report an application on what was done. Files are edited on the caller's thread, which waits for them. One
// object for the life of the window: what it knows is looked up anew by each checksCreate.
class Integrator {
public:
    // Neither is owned. `osInfo` is only kept for those who hand it in.
    Integrator(App *app, OsInfo *osInfo);
    ~Integrator();
    Integrator(const Integrator &) = delete;
    Integrator &operator=(const Integrator &) = delete;

    // Fills the layout with a box for each application, ticked where the module is connected, or with a label if there
    // is none. `previous`, which may be null, comes before the first in the order of the Tab key. The answer is the
    // number of applications.
    int checksCreate(QLayout *layout, QWidget *previous);

    // Connects what is ticked and disconnects what is not, whether it was so before or not; see resultText.
    void checksSubmit(QVBoxLayout *layout);

    // Deletes everything in the layout.
    static void checksClear(QLayout *layout);

    // What the last checksSubmit did, as rich text; empty if there was nothing to do.
    QString resultText() const { return result; }

    // One application, with its report as rich text.
    QString integrate(const QString &app);
    QString disintegrate(const QString &app);

    // Whether all its profiles are connected, and there is one.
    bool isIntegrated(const QString &app) const;

    // Look up anew what can be connected. The answers are the numbers of all applications and of all profiles known.
    int findApps();
    int findProfiles(const QString &app);
    bool profileExist(const QString &app) const;

private:
    void prepareSharedDatabase(const QString &app);
    bool integrateProfile(Profile &profile) const;

    App *app;
    [[maybe_unused]] OsInfo *osInfo;
    std::unique_ptr<Os> os;
    QStringList apps;
    QString pkcsI386;
    QString pkcsX8664;
    // By folder. One that is gone from the disk stays known.
    QMap<QString, std::shared_ptr<Profile>> profiles;
    QString result;
};
