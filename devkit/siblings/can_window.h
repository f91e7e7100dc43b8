#pragma once

#include "ipc/ipc.h"
#include "siblings/world_watcher.h"

#include <QDialog>

class App;
class QLineEdit;
class QMessageBox;

// The stand-in of Can: a small window that asks for the CAN of the card that waits for it and opens the simulated card.
// It goes when no card waits any more. The Monitor is told that it is there, and that the user has closed it.
//
// Commands: closePopup, windowFocus as Manager sends them; close ends it; cancel, which only the stand-in knows, is the
// user's.
class CanWindow : public QDialog {
    Q_OBJECT

public:
    explicit CanWindow(App &app);

    // The user's answer; a wrong one opens a pop-up.
    void accept() override;
    void reject() override;

private:
    void receive(const IpcMsg &message);
    void leaveIfNobodyWaits();
    void tellMonitor(const char *status);
    void openCards();

    WorldWatcher watcher;
    Ipc ipc;
    QLineEdit *line;
    QMessageBox *popup;
};
