#include "window.h"

// What other programs of the family tell this one, and the update that goes through them. A command is a payload key of
// a message; a message may carry several, treated in the order of the map. Nothing is ever answered: what there is to
// say to the Monitor is a new message. The state of an update comes through the settings store, which others write.

#include "base/settings.h"
#include "gui/spoken_focus.h"
#include "ipc/ipc.h"
#include "reader_list.h"
#include "ui_window.h"

#include <QDebug>

#include <functional>

namespace {

QString textOf(const IpcMsg &message, const char *key)
{
    return QString::fromUtf8(message.param(key));
}

} // namespace

void Window::recvIpcMsg(const IpcMsg &m)
{
    const auto ignore = [](const IpcMsg &) {};
    const QMap<QByteArray, std::function<void(const IpcMsg &)>> commands {
        { "canAppStatus", ignore }, // read together with `readers`
        { "checkForUpdate", [this](const IpcMsg &) { checkForUpdate(); } },
        { "diagnoseReaders", [this](const IpcMsg &message) { ipcDiagnoseReaders(message); } },
        { "help",
          [this](const IpcMsg &) {
              moveToHelpPage(); // asks for the system report itself
              showWndw();
          } },
        { "isCard", ignore },
        { "isPACE", ignore },
        { "isr", ignore },
        { "readers", [this](const IpcMsg &message) { ipcReaders(message); } },
        { "settings",
          [this](const IpcMsg &) {
              moveToSettingsPage(false);
              showWndw();
          } },
        { "windowFocus", [this](const IpcMsg &) { ipcWindowFocus(); } },
    };
    if (m.to() != ipc->name())
        return;
    if (heldMessages && !m.payloadKeys().contains("close")) {
        heldMessages->append(m);
        return;
    }
    IpcMsg answer;
    answer.setEncryptionId(m.encryptionId());
    for (const QByteArray &key : m.payloadKeys()) {
        if (key == "close") {
            qDebug().noquote() << "Close from ipc";
            closeWithTheards();
            return;
        }
        const auto command = commands.find(key);
        if (command == commands.end())
            qDebug().noquote() << "unknown ipc " << IpcMsg::keyForLog(key);
        else
            (*command)(m);
    }
    // No command of today fills it.
    if (answer.hasPayload() && m.wantsReply())
        ipc->sendResponse(m, answer);
}

void Window::ipcWindowFocus()
{
    if (ui->bWroc->isHidden() && needsNoCard()) {
        newReaders = true;
        moveToHomePage();
    }
    showWndw();
}

ReaderPage Window::readerPage() const
{
    if (needsNoCard())
        return ReaderPage::NeedsNoCard;
    if (isPage(ui->pageNoElectricLayer))
        return ReaderPage::NoElectricLayer;
    return isPage(ui->pageHome) || isPage(ui->pageDisconected) ? ReaderPage::ShowsList : ReaderPage::Busy;
}

void Window::ipcReaders(const IpcMsg &m)
{
    const QString value = textOf(m, "readers");
    const ReaderList list = parseReaders(value);
    switch (readersRule(value, ui->cbReaders->currentText(), readerPage())) {
    case ReadersRule::Reload:
        qDebug().noquote() << "load new readers";
        loadAll();
        break;
    case ReadersRule::Note:
        // The user is busy on another page; the list is asked for again on the way home.
        qDebug().noquote() << "New reders detected | current page: " << ui->lMainTitle->text() << ui->lSubTitle->text();
        newReaders = true;
        ui->bWroc->show();
        break;
    case ReadersRule::Take:
        qDebug().noquote() << "Loading readers from ipc:";
        loadedReaders(list.names, list.error, textOf(m, "canAppStatus"));
    }
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
    ui->bUpdate->setText("Aktualizuję");
    // Told before the buttons go off, and the focus with them.
    focusAloud(ui->bUpdate);
    leaveFocus(this);
    ui->bUpdateArrow->setEnabled(false);
    ui->bUpdate->setEnabled(false);
}
