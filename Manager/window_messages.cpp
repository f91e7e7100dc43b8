#include "window.h"

// What other programs of the family tell this one, and the update that goes through them. A command is a payload key of
// a message; a message may carry several, treated in the order of the map. Nothing is ever answered: what there is to
// say to the Monitor is a new message. The state of an update comes through the settings store, which others write.

#include "base/settings.h"
#include "ipc/ipc.h"
#include "reader_list.h"
#include "ui_window.h"

#include <QDebug>

namespace {

QString textOf(const IpcMsg &message, const char *key)
{
    return QString::fromUtf8(message.param(key));
}

} // namespace

void Window::recvIpcMsg(const IpcMsg &m)
{
    static const QMap<QByteArray, void (Window::*)(const IpcMsg &)> commands {
        { "canAppStatus", &Window::ipcIgnored }, // read together with `readers`
        { "checkForUpdate", &Window::ipcCheckForUpdate },
        { "diagnoseReaders", &Window::ipcDiagnoseReaders },
        { "help", &Window::ipcHelp },
        { "isCard", &Window::ipcIgnored },
        { "isPACE", &Window::ipcIgnored },
        { "isr", &Window::ipcIgnored },
        { "readers", &Window::ipcReaders },
        { "settings", &Window::ipcSettings },
        { "windowFocus", &Window::ipcWindowFocus },
    };
    if (m.to() != ipc->name())
        return;
    IpcMsg answer;
    answer.setEncryptionId(m.encryptionId());
    for (const QByteArray &key : m.payloadKeys()) {
        if (key == "close") {
            qDebug().noquote() << "Close from ipc";
            closeWithTheards();
            return;
        }
        const auto command = commands.find(key);
        if (command != commands.end())
            (this->**command)(m);
        else
            qDebug().noquote() << "unknown ipc " << key;
    }
    // No command of today fills it.
    if (answer.hasPayload() && m.wantsReply())
        ipc->sendResponse(m, answer);
}

void Window::ipcIgnored(const IpcMsg &m)
{
    Q_UNUSED(m)
}

void Window::ipcWindowFocus(const IpcMsg &m)
{
    Q_UNUSED(m)
    if (ui->bWroc->isHidden() && (isPage(ui->pageSettings) || isPage(ui->pageHelp))) {
        newReaders = true;
        moveToHomePage();
    }
    showWndw();
}

void Window::ipcSettings(const IpcMsg &m)
{
    Q_UNUSED(m)
    moveToSettingsPage(false);
    showWndw();
}

void Window::ipcHelp(const IpcMsg &m)
{
    Q_UNUSED(m)
    // Asks for the system report itself.
    moveToHelpPage();
    showWndw();
}

// Whether the card on the screen, if there is one, is no longer the right one.
bool Window::readersNeedReload(const QString &value, const QStringList &names, const QString &err) const
{
    if (!err.isEmpty() || isPage(ui->pageSettings) || isPage(ui->pageHelp))
        return false;
    if (!value.isEmpty() && !isReader())
        return true;
    if ((!value.isEmpty() || isReader()) && !names.contains(ui->cbReaders->currentText()))
        return true;
    return isPage(ui->pageNoElectricLayer);
}

void Window::ipcReaders(const IpcMsg &m)
{
    const QString value = textOf(m, "readers");
    const ReaderList list = parseReaders(value);
    // Names are compared as they are shown, without the mark of a container.
    if (readersNeedReload(value, readerNames(list.names), list.error)) {
        qDebug().noquote() << "load new readers";
        loadAll();
        return;
    }
    if (list.error.isEmpty() && !isPage(ui->pageHome) && !isPage(ui->pageDisconected)) {
        // The user is busy on another page; the list is asked for again on the way home.
        qDebug().noquote() << "New reders detected | current page: " << ui->lMainTitle->text() << ui->lSubTitle->text();
        newReaders = true;
        ui->bWroc->show();
        return;
    }
    qDebug().noquote() << "Loading readers from ipc:";
    loadedReaders(list.names, list.error, textOf(m, "canAppStatus"));
}

void Window::ipcDiagnoseReaders(const IpcMsg &m)
{
    appendDiagnosis(textOf(m, "diagnoseReaders"));
}

void Window::ipcCheckForUpdate(const IpcMsg &m)
{
    Q_UNUSED(m)
    checkForUpdate();
}

void Window::askMonitorForReaders()
{
    ipc->msgToMonitor(IpcMsg { { "getReadersWithPace", 1 } });
}

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
    // The state may have changed since the button was shown.
    checkForUpdate();
    if (ui->bUpdateArrow->isHidden())
        return;
    ipc->msgToMonitor(IpcMsg { { "updateApp", "true" } });
    ui->bUpdateArrow->setEnabled(false);
    ui->bUpdate->setEnabled(false);
    ui->bUpdate->setText("Aktualizuję");
}
