#include "window.h"

// Reader lists. They come from the resident Monitor or directly from the worker and meet in loadedReaders, which fills
// the combo box, tells whether the card on the screen is still the right one, and else has it read. The box doubles as
// the status line: a single sentence that begins with "brak" says why there is no card.

#include "app/app_lock.h"
#include "base/common.h"
#include "gui/popup.h"
#include "gui/spoken_focus.h"
#include "ipc/ipc.h"
#include "reader_box.h"
#include "reader_list.h"
#include "ui_window.h"

#include <QDebug>
#include <QTimer>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds focusDelay { 1000 };

} // namespace

bool Window::isReader() const
{
    return namesReader(ui->cbReaders->currentText());
}

void Window::updateReaderWidth()
{
    fitReaderBox(ui->cbReaders, ui->bReaderWarning);
}

void Window::enableReadersOnlyWithChoice()
{
    ui->cbReaders->setEnabled(ui->cbReaders->count() >= 2);
}

void Window::getReadersFromMonitor()
{
    qDebug().noquote() << "reader checked ";
    readersRequested = true;
    askMonitorForReaders();
}

void Window::loadedReaders(const QStringList &_readers, const QString &err, const QString &canAppStat)
{
    qDebug().noquote() << "Readers list: " << _readers;
    const QStringList names = readerNames(_readers);
    const QString previous = ui->cbReaders->currentText();
    if (isReader() && !names.contains(previous))
        disableHomePage();

    reader.clear();
    ui->cbReaders->clear();
    for (const QString &name : names) {
        if (name.size() > 1)
            ui->cbReaders->addItem(name);
    }
    qDebug().noquote() << "cbReaders->count() " << ui->cbReaders->count();
    if (!err.isEmpty()) {
        // readersRequested stays set, so that the next list reads the card.
        loaderReadersErr(err, canAppStat);
        return;
    }
    if (isPage(ui->pageHome)) {
        enableReadersOnlyWithChoice();
    } else {
        qDebug().noquote() << "Set home page";
        setHomeParams();
    }

    const int index = ui->cbReaders->findText(previous, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index >= 0)
        ui->cbReaders->setCurrentIndex(index);
    updateReaderWidth();
    reader = ui->cbReaders->currentText();
    qDebug().noquote() << "Current reader: " << reader;
    ui->lReaderDesc->setAccessibleName("Czytnik: " + reader);
    ui->warningFrame->hide();

    if (index >= 0 && !readersRequested)
        return; // the card on the screen is still the right one
    if (!readersRequested) {
        loadAll();
        return;
    }
    readersRequested = false;
    qDebug().noquote() << "Read data from Card";
    loaderShow("Trwa odczyt danych z karty", {}, false, true);
    emit selectDriverReader(reader);
}

void Window::loaderReadersErr(const QString &err, const QString &canAppStat)
{
    ui->bChangePinAuthenCert->setEnabled(false);
    ui->bChangePinAuthorCert->setEnabled(false);
    ui->bChangePinQualifiedCert->setEnabled(false);

    bool waitingForCan = false;
    if (isCanProblem(err) && Common::isAppRunning("Can", "velmor")) {
        ipc->msgToCan(IpcMsg { { "closePopup", "1" }, { "windowFocus", 1 } });
        waitingForCan = canAppStat != "canClosed";
    }
    const ReaderProblem problem = readerProblem(err, waitingForCan);
    ui->cbReaders->clear();
    ui->cbReaders->addItem(problem.item);
    updateReaderWidth();
    moveToDisconnectPage(problem.message, problem.hideReaders);
}

void Window::moveToDisconnectPage(const QString &message, bool hideReaders)
{
    // Before the test below, also on the pages that are left alone by it.
    ui->bWroc->hide();
    if (needsNoCard()) {
        if (!ui->loading->isHidden())
            loaderHide();
        qDebug().noquote() << "move to disconnect page aborted because current page is: " << ui->lMainTitle->text();
        return;
    }
    qDebug().noquote() << "move to disconnect page";
    leaveFocus(this);
    ui->cbReaders->setEnabled(false);
    ui->frameReaders->setVisible(!hideReaders);
    loaderHide();
    turnTo(ui->pageDisconected);
    disableHomePage();
    ui->lno_connection->show();
    ui->lDisconnect->show();
    setPageTitle("velmor Menedżer");
    const QString text = "Brak połączenia \n" + message;
    ui->lDisconnect->setText(text);
    ui->lDisconnect->setAccessibleName(Common::plainText(text));
    // Later, so that a screen reader announces it after the page has settled. By then the user may have gone on.
    QTimer::singleShot(focusDelay, this, [this] {
        if (isPage(ui->pageDisconected) && ui->loading->isHidden())
            ui->lDisconnect->setFocus();
    });
}

void Window::setHomeParams()
{
    qDebug().noquote() << "Set home page params";
    leaveFocus(this);
    ui->pagerBlockedPuk->setCurrentWidget(ui->pageValidPuk);
    // While the page that holds them is still shown, else they would keep what was typed.
    clearPinFields();
    enableReadersOnlyWithChoice();
    turnTo(ui->pageHome);
    ui->bWroc->hide();
    ui->bClose->show();
    updateReaderWidth();
    ui->cbReaders->show();
    ui->frameReaders->show();
    ui->lReaderDesc->show();
    setPageTitle("velmor Menedżer");
}

void Window::moveToHomePage()
{
    qDebug().noquote() << "Move to home page";
    ui->bSettings->setEnabled(true);
    ui->bHelp->setEnabled(true);
    if (newReaders && isReader()) {
        qDebug().noquote() << "new readers page refresh";
        // Without readersRequested: the card is read again only if its reader has gone.
        askMonitorForReaders();
    }
    newReaders = false;
    if (isReader()) {
        if (!isPage(ui->pageHome))
            setHomeParams();
        ui->widgetBlurICAO->setFocus();
        return;
    }
    qDebug().noquote() << "no reader go to disconnect page";
    getReadersFromMonitor();
}

void Window::checkAndMoveToHomePage()
{
    if (isReader()) {
        moveToHomePage();
        return;
    }
    newReaders = false;
    loadAll();
}

void Window::selectReader()
{
    const QString previous = reader;
    updateReaderWidth();
    reader = ui->cbReaders->currentText();
    checkReaderWarning(reader);
    if (reader == previous)
        return;
    qDebug().noquote() << "Reader changed to: " << reader;
    loadAll();
}

void Window::checkReaderWarning(const QString &readerName)
{
    const bool extendedApdu = Common::maxApduSize(readerName).contains('E');
    ui->warningFrame->setVisible(isReader() && !extendedApdu);
}

int Window::showReaderWarningPopup()
{
    // The tool tip of the box is never set, so the texts stand without a name; it is kept so.
    const QString name = ui->cbReaders->toolTip();
    qDebug().noquote() << "Reader: " + name + " does not support Extended APDU";
    const QString text = QString("Twój czytnik <b>%1</b> nie działa w pełni prawidłowo.<br>"
                                 "<b>Niektóre funkcje mogą działać bardzo wolno lub mogą być nie wspierane.</b><br><br>"
                                 "Upewnij się, czy masz zainstalowane poprawne sterowniki do obsługi czytnika oraz czy "
                                 "czytnik spełnia wymagania dla velmor (obsługa Extended APDU).")
                             .arg(name);
    return Popup::runModal(Popup::Warning, this, {}, text, QSize(500, 200), QDialogButtonBox::Ok);
}
