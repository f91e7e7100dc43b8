#pragma once

#include "siblings/world_watcher.h"
#include "simworld/sim_world.h"

#include <QObject>
#include <QString>
#include <QTimer>

// The simulated world as the panel works on it: one of its readers, and the card in that. Each change is one of
// SimWorld's own; whatever else changes the world is seen as well.
class PanelWorld : public QObject {
    Q_OBJECT

public:
    PanelWorld();

    sim::SimWorld &sim() { return watcher.world(); }

    // The chosen one, else the first; without a name if there is none.
    sim::Reader reader() const;
    std::vector<sim::Reader> readers() const { return watcher.world().readers(); }
    void choose(const QString &readerName);

    // Takes the card out of whichever reader it is in, or puts it into the chosen one in the place of the card there. A
    // reader is made if there is none.
    void toggleCard(const std::string &card);
    // Told to whoever looks: the outcome of a change of `sim()`, true for done.
    void tell(bool done);

signals:
    // Anything may be different; it can be told more than once for one change.
    void changed();
    // The world refused a change, with the reason as the library has it.
    void refused(const QString &reason);
    // Nobody can use this world any more.
    void gone();

private:
    void followKeypad();
    bool takeOut(const std::string &card);

    mutable WorldWatcher watcher;
    std::string chosen;
    // Calls that wait for keys are no change of the world, so they are looked for, and only while there is a keypad.
    QTimer look;
    int waiting = 0;
};
