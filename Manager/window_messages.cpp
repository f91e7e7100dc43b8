#include "window.h"

// What other programs of the family tell this one. The state of an update comes through the settings store, which they
// write.

#include "base/settings.h"
#include "ui_window.h"

#include <QDebug>

void Window::checkForUpdate()
{
    qDebug().noquote() << "Checking for Kzr update";
    ui->bUpdate->setText("Aktualizuj");
    settings->sync();
    const bool available = settings->value(SettingsKey::updateAvailable).toString() == "true";
    const bool inProgress = settings->value(SettingsKey::updateInProgress).toString() == "true";
    for (QPushButton *button : { ui->bUpdateArrow, ui->bUpdate }) {
        button->setVisible(available);
        button->setEnabled(!inProgress);
    }
}

void Window::updateApp()
{
    qDebug().noquote() << "Update Kzr clicked";
    checkForUpdate();
}
