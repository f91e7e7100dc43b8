#include "window.h"

// The settings page: browsers on the left, two further options on the right. Every entry rebuilds it from what is
// stored, so a change that was not confirmed with its own button is gone when the page is left. Both buttons end on the
// page with the result, which leads back.

#include "base/common.h"
#include "base/crypto.h"
#include "base/settings.h"
#include "browser/integrator.h"
#include "gui/spoken_focus.h"
#include "ui_window.h"

#include <QDebug>
#include <QTimer>

#include <chrono>

namespace {

// Until the loader is on the screen, since the edits block this thread.
constexpr std::chrono::milliseconds paintingTime { 500 };

// Under a changed option it may no longer be asked for.
void forgetRememberedCan(Settings &settings)
{
    const QByteArray key = Crypto::deriveKey(settings.value(SettingsKey::guid).toByteArray());
    const QByteArray code = Crypto::encryptValue({}, key);
    settings.setValue(SettingsKey::rememberedCan, code);
    if (Common::isDev())
        qDebug().noquote() << "code " << code;
}

} // namespace

void Window::moveToSettingsPage(bool standalone)
{
    if (heldMessages)
        return;
    leaveFocus(this);
    ui->bSettings->setEnabled(false);
    ui->frameReaders->hide();
    forgetPinEntries();
    qDebug().noquote() << "show settings";
    reloadSettingPage();
    enterPage(ui->pageSettings, "Ustawienia");
    forgetResult();
    if (!standalone)
        ui->bWroc->setVisible(isReader());
    ui->bIntegrate->setEnabled(integrationAppsCount >= 1);
    ui->bSettings->setEnabled(true);
    // Else it would stay on the other button of the footer.
    focusAloud(ui->pageSettings);
}

void Window::reloadSettingPage()
{
    ui->cbCANStorage->setChecked(settings->value(SettingsKey::hideCheckboxCanRemember).toBool());
    ui->cbCSPChoose->setChecked(settings->value(SettingsKey::useCspForRsa).toBool());
    Integrator::checksClear(ui->layoutChecks);
    integrationAppsCount = integrator->checksCreate(ui->layoutChecks, ui->lDesc2);
}

// What the page of the last result keeps for a screen reader. Else the next result, which is shown without a word about
// either, would be told by the name of this one, and with the focus on the button behind it.
void Window::forgetResult()
{
    ui->lIntegration->setAccessibleName({});
    ui->bIntegrationFinnish->clearFocus();
}

void Window::integrateApps()
{
    const bool empty = ui->layoutChecks->isEmpty();
    qDebug().noquote() << "empty checks " << empty;
    if (empty)
        return;
    loaderShow("Proszę czekać...");
    // The page would be built anew, and the ticks that are to be carried out with it.
    heldMessages.emplace();
    ui->bSettings->setEnabled(false);
    ui->bHelp->setEnabled(false);
    QTimer::singleShot(paintingTime, this, &Window::integrateApps2);
}

void Window::integrateApps2()
{
    integrator->checksSubmit(ui->layoutChecks);
    integrationEnds();
    const QList<IpcMsg> held = heldMessages.value_or(QList<IpcMsg>());
    heldMessages.reset();
    for (const IpcMsg &message : held)
        recvIpcMsg(message);
}

void Window::integrationEnds()
{
    ui->lchange_card->hide();
    loaderHide();
    turnTo(ui->pageIntegration);
    const QString text = integrator->resultText();
    if (text.isEmpty())
        return;
    ui->lIntegration->setText(text);
    ui->lIntegration->setAccessibleName(Common::plainText(text));
    ui->lIntegration->setFocus();
}

void Window::setOtherOptions()
{
    const bool hideCan = ui->cbCANStorage->isChecked();
    const bool useCsp = ui->cbCSPChoose->isChecked();
    const bool cspChanged = useCsp != settings->value(SettingsKey::useCspForRsa).toBool();
    ui->lchange_card->hide();
    ui->bWroc->hide();
    QString text = "Ustawienia pozostały bez zmian";
    if (cspChanged || hideCan != settings->value(SettingsKey::hideCheckboxCanRemember).toBool()) {
        text = "Ustawienia zostały zapisane";
        if (cspChanged) {
            ui->lchange_card->show();
            // The breaks make room for the picture, which stands between the two sentences.
            text += "<br/><br/><br/><br/><br/>Zdejmij i przyłóż ponownie velmor do czytnika";
        }
        settings->setValue(SettingsKey::hideCheckboxCanRemember, hideCan);
        settings->setValue(SettingsKey::useCspForRsa, useCsp);
        forgetRememberedCan(*settings);
    }
    // The name for a screen reader and the focus stay as they are, unlike after the edits.
    ui->lIntegration->setText(text);
    {
        const FocusPause pause;
        ui->pager->setCurrentWidget(ui->pageIntegration);
    }
    if (QWidget *focus = focusWidget())
        focusAloud(focus);
}
