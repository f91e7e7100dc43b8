#include "window.h"

// The page on which a PIN is changed, with the keyboard or on a reader's pinpad, and the result page of all PIN
// operations. The page is entered from the home page; a PIN that cannot be changed leads on to the page for the PUK. On
// a pinpad reader the request is sent at once and the user can leave through the reader only.

#include "base/common.h"
#include "base/secret_string.h"
#include "card/card_results.h"
#include "card/card_tables.h"
#include "gui/secret_text.h"
#include "gui/spoken_focus.h"
#include "ui_window.h"

#include <QDebug>
#include <QRegularExpressionValidator>

namespace {

bool isDigits(QString text)
{
    int position = 0;
    return QRegularExpressionValidator(QRegularExpression("\\d*")).validate(text, position) == QValidator::Acceptable;
}

} // namespace

PinForm::Rule Window::pinRule() const
{
    const PinContainer *row = pinContainer(conteiner);
    return row ? PinForm::Rule { row->digits, row->pattern, PinTexts::lengthHint(row->digits) } : PinForm::Rule {};
}

void Window::moveToPinPage()
{
    {
        // Not yet shown, and on a page for the PUK or the pinpad never.
        const FocusPause pause;
        ui->lineActualPin->setFocus();
    }
    changeForm.admit(pinRule(), pinRule());
    ui->cbReaders->setEnabled(false);
    pinStatus = card.triesOf(conteiner);
    qDebug().noquote() << "Container: " << conteiner << " status: " << pinStatus << "triesLeftPUK: " << card.pukTries;
    if (pinStatus == Tries::locked || pinStatus == Tries::notSet)
        leavePinPageForPuk();
    else
        showPinPage();
    chooseKeyboardOrPad();
}

void Window::leavePinPageForPuk()
{
    if (card.pukTries == Tries::locked) {
        moveToBlockedPukPage();
        return;
    }
    moveToUnblockPinPage();
    qDebug().noquote() << " No more tries left : " << conteiner << " [ moveToPinPage() ]";
}

void Window::showPinPage()
{
    enterPage(ui->pageChangePin, PinTexts::pageTitle(PinTexts::ChangeTitle), containerTitle(conteiner));
    ui->lTryNumDesc->show();
    updateTriesLabels();
    if (card.pinPad)
        changePinOnPad();
    else
        preparePinFields();
}

void Window::changePinOnPad()
{
    qDebug().noquote() << "Using PINPAD for changing PIN [moveToPinPage() ]";
    // From here the user leaves through the reader only.
    ui->bWroc->hide();
    ui->bSettings->setEnabled(false);
    ui->bHelp->setEnabled(false);
    const QString word = PinTexts::digitWord(pinDigits(conteiner));
    const QString steps = ui->lTryNumDesc_2->text().replace('(', ' ').replace(')', ' ');
    ui->lTryNumDesc_2->setAccessibleName(Common::plainText(
        ui->lMainTitle->text() + ui->lSubTitle->text() + steps + ", Pozostało prób: " + QString::number(pinStatus)
        + ", postępuj zgodnie z komunikatami na czytniku, podaj aktualny " + word
        + "cyfrowy PIN następnie powtórz aktualny PIN następnie podaj nowy " + word
        + "cyfrowy PIN następnie powtórz nowy PIN, " + ui->lCancelDesc->text()));
    focusAloud(ui->lTryNumDesc_2);
    emit changePinSig(reader, conteiner, {}, {});
}

void Window::preparePinFields()
{
    clearPinFields();
    disableEnableChangePin();
    for (QLabel *hint : { changeForm.secretHint, changeForm.freshHint, changeForm.repeatHint })
        showFieldHint(hint, PinTexts::Colour::Neutral, pinRule().hint);
    const QString word = PinTexts::digitWord(pinDigits(conteiner));
    ui->lineActualPin->setAccessibleName(Common::plainText(ui->lMainTitle->text() + ui->lSubTitle->text()
                                                           + " Wprowadź aktualny " + word + " cyfrowy PIN."));
    ui->lineActualPin->setAccessibleDescription(PinTexts::triesLeft(pinStatus));
    ui->lineNewPin->setAccessibleDescription("Wprowadź nowy " + word + "cyfrowy PIN.");
    ui->lineRepeatPin->setAccessibleName({});
    ui->lineRepeatPin->setAccessibleDescription("Powtórz nowy PIN.");
    focusAloud(ui->lineActualPin);
}

void Window::chooseKeyboardOrPad()
{
    ui->pagerPinPadOrApp->setCurrentWidget(card.pinPad ? ui->pagePinPad : ui->pageApp);
    ui->pagerPinOrPinPadPuk->setCurrentWidget(card.pukGoesThroughPad() ? ui->pagePinPadUnblock : ui->pageAppUnblock);
}

void Window::disableEnableChangePin()
{
    changeForm.check(pinRule(), pinRule());
}

void Window::clearPinFields()
{
    if (isPage(ui->pageChangePin)) {
        changeForm.clear();
        // Only this page's hints go.
        changeForm.hideHints();
    } else if (isPage(ui->pageUnblockPin)) {
        unblockForm.clear();
    }
}

// On whichever page they are: from the settings and the help nobody comes back to what was typed, and after a success
// nothing that an earlier operation has left is of use.
void Window::forgetPinEntries()
{
    changeForm.forget();
    unblockForm.forget();
}

void Window::changePin()
{
    if (busyFlag)
        return;
    qDebug().noquote() << "\nChange pin";
    busyFlag = true;
    const QString actual = ui->lineActualPin->text();
    const QString fresh = ui->lineNewPin->text();
    if (!validateTwoPins(ChangePage, fresh, ui->lineRepeatPin->text())) {
        qDebug().noquote() << "Wrong validation of new and repeat pins (change PIN)";
        busyFlag = false;
        return;
    }
    qDebug().noquote() << "New and repeat pins meet criterias (change PIN) ";
    loaderShow("Zmiana PIN-u \n Proszę czekać", {}, false, false);
    // A repeated press finds nothing to send.
    forgetSecret(ui->lineRepeatPin);
    // Copies, wiped by whoever is done last: the worker, or the window where the card was quicker.
    QString sentActual = joinSecrets({ actual });
    QString sentFresh = joinSecrets({ fresh });
    emit changePinSig(reader, conteiner, sentActual, sentFresh);
    wipeSecret(sentActual);
    wipeSecret(sentFresh);
}

bool Window::validateTwoPins(int page, const QString &pin, const QString &repeat)
{
    const PinForm *form = page == ChangePage ? &changeForm : page == UnblockPage ? &unblockForm : nullptr;
    const bool digits = isDigits(pin);
    if (digits) {
        changeForm.freshHint->hide();
        unblockForm.freshHint->hide();
    } else if (form) {
        form->freshHint->show();
    } else {
        qDebug().noquote() << "Wrong page in validating new and repeat pin";
    }
    const bool match = !pin.isEmpty() && pin == repeat;
    if (!pin.isEmpty())
        qDebug().noquote() << (match ? "New and repeat pins match" : "New and repeat pins dont match");
    if (form)
        form->markRepetition(match);
    return digits && match;
}

void Window::changePinFin(int res)
{
    qDebug().noquote() << "Change pin status: " << res;
    loaderHide();
    const PinTexts::Outcome *outcome = PinTexts::changeOutcome(res);
    if (!outcome) {
        qDebug().noquote() << "changePinFin() not supported return from changePIN";
        return;
    }
    qDebug().noquote() << outcome->log;
    if (res == CardResult::done) {
        clearPinFields();
        forgetPinEntries();
    }
    if ((res == CardResult::wrongPin || res == CardResult::failed) && !pinMayBeTriedAgain())
        return;
    showResultPage(outcome->text, outcome->colour, PinTexts::ChangeTitle);
}

// False if the entry has locked the PIN; the page for the PUK then follows at once, with no result page between.
bool Window::pinMayBeTriedAgain()
{
    // In this order: the emptying takes the bad look away again, and the hint.
    setFieldStyle(ui->lineActualPin, false);
    clearPinFields();
    showFieldHint(ui->lActualPinInfo, PinTexts::Colour::Error, "Niepoprawny PIN. Popraw PIN");
    // Fresh already: the worker sends the tries before the result.
    pinStatus = card.triesOf(conteiner);
    if (pinStatus > Tries::locked) {
        updateTriesLabels();
        return true;
    }
    qDebug().noquote() << "move to unblock PinPage";
    ui->cbReaders->setEnabled(false);
    moveToUnblockPinPage();
    return false;
}

void Window::updateTriesLabels()
{
    ui->lTryNumDesc->setText(PinTexts::triesLeft(pinStatus));
    ui->lTryNumDescpinpad->setText(PinTexts::triesLeft(pinStatus));
}

void Window::showResultPage(const QString &text, PinTexts::Colour colour, int titleKey)
{
    ui->cbReaders->setEnabled(false);
    ui->lPinChanged->setText(text);
    setResultColour(ui->pinChangedFrame, colour);
    const QString title = PinTexts::pageTitle(titleKey);
    const QString subtitle = containerTitle(conteiner);
    setPageTitle(title, subtitle);
    if (colour == PinTexts::Colour::Error) {
        if (titleKey == PinTexts::ChangeTitle)
            updateTriesLabels();
        else if (titleKey == PinTexts::UnblockTitle || titleKey == PinTexts::FirstPinTitle)
            updatePukTriesLabels();
        else
            setPageTitle(title, subtitle);
    }
    turnTo(ui->pageCorrectChange);
    ui->lPinChanged->setAccessibleName(Common::plainText(text));
    focusAloud(ui->lPinChanged);
}
