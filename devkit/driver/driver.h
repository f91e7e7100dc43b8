#pragma once

#include "simworld/sim_world.h"
#include "window.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

// The real window on a simulated world, with its widgets by the names of the form. What waits answers false when it has
// taken too long.
class Driver {
public:
    static constexpr int patience = 60000; // ms, for a busy machine too

    // Once a process, after the QApplication: version, resources, fonts.
    static void setUpApplication();
    // The user's table of readers.
    static QString readersConfPath();
    static void writeReadersConf(const QByteArray &content);

    sim::SimWorld world;
    std::unique_ptr<Window> window;

    template <typename T = QWidget>
    T *find(const char *name) const
    {
        T *widget = window->findChild<T *>(name);
        if (!widget)
            qFatal("the window has no %s", name);
        return widget;
    }
    QString page() const; // object name of the one shown in `pager`
    bool loaderShown() const { return !find("loading")->isHidden(); }
    bool photoArrived() const { return !find("bArrowICAO")->isHidden(); }

    static bool waitFor(const std::function<bool()> &condition);
    bool waitForPage(const QString &name) const; // and for the end of what runs
    // For the end of a card read, photo included.
    bool waitForCard() const;
    // Until so many calls of the library wait, for a release or for keys.
    bool waitForPad(int calls = 1) const;

    // False if a user could not click there.
    bool click(const char *button) const;

    void openWindow();
    // As a user does, but without waiting for half a second if nothing is left to do.
    void closeWindow();
    // Puts the card into the reader, lets `prepare` change the world, hands the window a list with the reader and waits
    // for the card.
    bool showCard(const std::string &card, const std::string &reader = "Czytnik Alfa",
                  const std::function<void(sim::SimWorld &world)> &prepare = {});
};
