#pragma once

#include "simworld/sim_world.h"
#include "window.h"

#include <QPixmap>
#include <QStackedWidget>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

// The real window on a simulated card, brought into one state after the other to leave a picture of each.
class Tour {
public:
    static constexpr char reader[] = "OMNIA Smart 3121";

    // `suffix` is added to the names of the pictures: theme and density.
    Tour(QString folder, QString suffix) : target(std::move(folder)), ending(std::move(suffix)) { }

    sim::SimWorld world;
    std::unique_ptr<Window> window;

    template <typename T = QWidget>
    T *find(const char *name)
    {
        T *widget = window->findChild<T *>(name);
        if (!widget)
            qFatal("the window has no %s", name);
        return widget;
    }

    // Runs the event loop until the condition holds, and then until everything is laid out. False when it took too
    // long.
    bool waitFor(const std::function<bool()> &condition);
    // Lets the event loop run for so long.
    void pause(int milliseconds);
    bool waitForPage(const char *page);
    // A click as the mouse makes it; false if the button cannot be clicked.
    bool click(const char *button);

    // A window with this card read, photo included; with no name, one that has just been opened. `prepare` comes
    // between the insertion and the reading.
    bool showCard(const QString &card, void (*prepare)(sim::SimWorld &world) = nullptr);
    void closeWindow();

    // For a state that is a dialog: calls `open`, which runs the dialog, keeps its picture for take and closes it.
    bool showDialog(const std::function<void()> &open);

    // Leaves the picture of the window, or of the dialog that was shown last.
    bool take(const QString &name);

    // All pictures of this run on one.
    bool contactSheet() const;

private:
    QString target;
    QString ending;
    QPixmap dialog;
    QStringList pictures;
};
