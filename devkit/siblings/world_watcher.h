#pragma once

#include "simworld/sim_world.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

// Tells when the simulated world has changed, by the events of its folder; one change may be told twice.
class WorldWatcher : public QObject {
    Q_OBJECT

public:
    // Makes the folder if there is none yet.
    explicit WorldWatcher(QObject *parent = nullptr);

    sim::SimWorld &world() { return simWorld; }

signals:
    void changed();
    // Nobody can use this world any more; a test has tidied up, say.
    void gone();

private:
    void look();

    sim::SimWorld simWorld;
    QString folder;
    QFileSystemWatcher watcher;
    QTimer afterwards;
};
