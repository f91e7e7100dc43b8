#pragma once

#include "ipc/ipc.h"
#include "panel/panel_world.h"

#include <QWidget>

class App;
class QLabel;
class QTabWidget;

// The trainer's window beside the program: cards, codes, reader and lessons of the simulated world, for whoever does
// not use a command line. It knows nothing that the world does not tell it.
//
// Commands: windowFocus brings it to the front, close ends it.
class PanelWindow : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize designSize { 470, 670 };

    PanelWindow();
    // Hears the other programs of the family from now on; `app` holds the lock.
    void listen(App &app);

private:
    void receive(const IpcMsg &message);
    void tellCard();

    PanelWorld world;
    Ipc ipc;
    QTabWidget *pages;
    QLabel *status;
};
