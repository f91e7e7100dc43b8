#include "window.h"

// The settings page: browsers on the left, two further options on the right. Every entry rebuilds it from what is
// stored, so a change that was not confirmed with its own button is gone when the page is left.

#include "base/settings.h"
#include "ui_window.h"

#include <QDebug>

void Window::moveToSettingsPage(bool standalone)
{
    ui->bSettings->setEnabled(false);
    ui->cbReaders->setEnabled(false);
    ui->frameReaders->hide();
    setPageTitle("Ustawienia");
    qDebug().noquote() << "show settings";
    reloadSettingPage();
    ui->pager->setCurrentWidget(ui->pageSettings);
    if (!standalone)
        ui->bWroc->setVisible(isReader());
    ui->bIntegrate->setEnabled(integrationAppsCount >= 1);
    ui->bSettings->setEnabled(true);
}

void Window::reloadSettingPage()
{
    ui->cbCANStorage->setChecked(settings->value(SettingsKey::hideCheckboxCanRemember).toBool());
    ui->cbCSPChoose->setChecked(settings->value(SettingsKey::useCspForRsa).toBool());
}
