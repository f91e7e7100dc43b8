#include "window.h"

// The page on which a PIN is changed, with the keyboard or on a reader's pinpad, and the result page of all PIN
// operations. The page is entered from the home page; a PIN that cannot be changed leads on to the page for the PUK. On
// a pinpad reader the request is sent at once and the user can leave through the reader only.

#include "base/common.h"
#include "card/card_tables.h"
#include "field_style.h"
#include "gui/spoken_focus.h"
#include "pin_fields.h"
#include "pin_texts.h"
#include "ui_window.h"

#include <QDebug>
#include <QRegularExpressionValidator>

#include <algorithm>
#include <iterator>

namespace {

bool isDigits(QString text)
{
    int position = 0;
    return QRegularExpressionValidator(QRegularExpression("\\d*")).validate(text, position) == QValidator::Acceptable;
}

} // namespace

QString Window::pinPattern() const
{
    const PinContainer *row = pinContainer(conteiner);
    return row ? row->pattern : QString();
}

QString Window::pinLengthHint() const
{
    return PinTexts::lengthHint(pinDigits.value(conteiner));
}

void Window::moveToPinPage()
{
    ui->lineActualPin->setFocus();
    for (QLineEdit *field : { ui->lineActualPin, ui->lineNewPin, ui->lineRepeatPin })
        admitPin(field, pinPattern());
    ui->cbReaders->setEnabled(false);
    pinStatus = containerTries.value(conteiner, 0);
    qDebug().noquote() << "Container: " << conteiner << " status: " << pinStatus << "triesLeftPUK: " << triesLeftPUK;
    if (pinStatus == 0 || pinStatus == 4)
        leavePinPageForPuk();
    else
        showPinPage();
    chooseKeyboardOrPad();
}

void Window::leavePinPageForPuk()
{
    if (triesLeftPUK == 0) {
        moveToBlockedPukPage();
        return;
    }
    moveToUnblockPinPage();
    qDebug().noquote() << " No more tries left : " << conteiner << " [ moveToPinPage() ]";
}

void Window::showPinPage()
{
    ui->pager->setCurrentWidget(ui->pageChangePin);
    ui->lTryNumDesc->show();
    setPageTitle(pageTitles.value(PinTexts::ChangeTitle), containerTitles.value(conteiner));
    updateTriesLabels();
    if (pinPad)
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
    const QString word = PinTexts::digitWord(pinDigits.value(conteiner));
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
    for (QLabel *hint : { ui->lActualPinInfo, ui->lNewPinInfo, ui->lRepeatPinInfo })
        showFieldHint(hint, "blue", pinLengthHint());
    const QString word = PinTexts::digitWord(pinDigits.value(conteiner));
    ui->lineActualPin->setAccessibleName(Common::plainText(ui->lMainTitle->text() + ui->lSubTitle->text()
                                                           + " Wprowadź aktualny " + word + " cyfrowy PIN."));
    ui->lineActualPin->setAccessibleDescription(PinTexts::triesLeft(pinStatus));
    ui->lineNewPin->setAccessibleDescription("Wprowadź nowy " + word + "cyfrowy PIN.");
    ui->lineRepeatPin->setAccessibleName({});
    ui->lineRepeatPin->setAccessibleDescription("Powtórz nowy PIN.");
    ui->lineActualPin->setFocus();
}

void Window::chooseKeyboardOrPad()
{
    ui->pagerPinPadOrApp->setCurrentWidget(pinPad ? ui->pagePinPad : ui->pageApp);
    ui->pagerPinOrPinPadPuk->setCurrentWidget(pukGoesThroughPad() ? ui->pagePinPadUnblock : ui->pageAppUnblock);
}

void Window::disableEnableChangePin()
{
    const int digits = pinDigits.value(conteiner);
    enableWhenComplete(ui->bChangePin,
                       {
                           { ui->lineActualPin, ui->lActualPinInfo, digits, pinLengthHint(), true },
                           // Never restyled while typing, unlike its neighbours.
                           { ui->lineNewPin, ui->lNewPinInfo, digits, pinLengthHint(), false },
                           { ui->lineRepeatPin, ui->lRepeatPinInfo, digits, pinLengthHint(), true },
                       });
}

void Window::clearPinFields()
{
    const bool changing = isPage(ui->pageChangePin);
    QList<QLineEdit *> fields;
    if (changing)
        fields = { ui->lineNewPin, ui->lineActualPin, ui->lineRepeatPin };
    else if (isPage(ui->pageUnblockPin))
        fields = { ui->lineNewPinPuk, ui->lineRepeatPinPuk, ui->lineInsertPuk };
    for (QLineEdit *field : fields) {
        forgetEntry(field);
        setFieldStyle(field, true);
    }
    // Only this page's hints go.
    if (!changing)
        return;
    for (QLabel *hint : { ui->lNewPinInfo, ui->lActualPinInfo, ui->lRepeatPinInfo })
        hint->hide();
}

// On whichever page they are: from the settings and the help nobody comes back to what was typed, and after a success
// nothing that an earlier operation has left is of use.
void Window::forgetPinEntries()
{
    for (QLineEdit *field : { ui->lineActualPin, ui->lineNewPin, ui->lineRepeatPin, ui->lineInsertPuk,
                              ui->lineNewPinPuk, ui->lineRepeatPinPuk })
        forgetEntry(field);
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
    forgetEntry(ui->lineRepeatPin);
    emit changePinSig(reader, conteiner, actual, fresh);
}

bool Window::validateTwoPins(int page, const QString &pin, const QString &repeat)
{
    const struct {
        int page;
        QLabel *newPinHint;
        QLineEdit *repeatField;
        QLabel *repeatHint;
    } rows[] = {
        { ChangePage, ui->lNewPinInfo, ui->lineRepeatPin, ui->lRepeatPinInfo },
        { UnblockPage, ui->lNewPinInfoPuk, ui->lineRepeatPinPuk, ui->lRepeatPinInfoPuk },
    };
    const auto *row = std::find_if(std::begin(rows), std::end(rows), [page](const auto &r) { return r.page == page; });
    const bool known = row != std::end(rows);

    const bool digits = isDigits(pin);
    if (digits) {
        ui->lNewPinInfo->hide();
        ui->lNewPinInfoPuk->hide();
    } else if (known) {
        row->newPinHint->show();
    } else {
        qDebug().noquote() << "Wrong page in validating new and repeat pin";
    }

    const bool match = !pin.isEmpty() && pin == repeat;
    if (!pin.isEmpty())
        qDebug().noquote() << (match ? "New and repeat pins match" : "New and repeat pins dont match");
    if (!known)
        return digits && match;
    setFieldStyle(row->repeatField, match);
    if (!match) {
        showFieldHint(row->repeatHint, "red", "Niepoprawny PIN. Popraw PIN.");
        row->repeatField->setAccessibleName("Powtórzony nowy PIN różni się");
        focusAloud(row->repeatField);
    }
    return digits && match;
}

void Window::changePinFin(int res)
{
    qDebug().noquote() << "Change pin status: " << res;
    loaderHide();
    const PinTexts::Outcome *outcome = PinTexts::changeOutcome(res);
    if (!outcome) {
        qDebug().noquote() << "changePinFin() not supported return from changePIN";
        busyFlag = false;
        return;
    }
    qDebug().noquote() << outcome->log;
    if (res == 0) {
        clearPinFields();
        forgetPinEntries();
    }
    if ((res == -6 || res == -1) && !pinMayBeTriedAgain())
        return;
    showResultPage(outcome->text, outcome->colour, PinTexts::ChangeTitle);
    busyFlag = false;
}

// False if the entry has locked the PIN; the page for the PUK then follows at once, with no result page between.
bool Window::pinMayBeTriedAgain()
{
    // In this order: the emptying takes the bad look away again, and the hint.
    setFieldStyle(ui->lineActualPin, false);
    clearPinFields();
    showFieldHint(ui->lActualPinInfo, "red", "Niepoprawny PIN. Popraw PIN");
    // Fresh already: the worker sends the tries before the result.
    pinStatus = containerTries.value(conteiner, 0);
    if (pinStatus > 0) {
        updateTriesLabels();
        return true;
    }
    qDebug().noquote() << "move to unblock PinPage";
    ui->cbReaders->setEnabled(false);
    moveToUnblockPinPage();
    busyFlag = false;
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
    // By name, or the colours would reach into each other's widgets.
    ui->pinChangedFrame->setStyleSheet(
        QString("QFrame#pinChangedFrame { background: transparent; border: 2px solid %1; border-radius: 12px; }\n"
                "QLabel#lPinChanged { color: %1; }")
            .arg(PinTexts::colourValue(colour)));
    const QString title = pageTitles.value(titleKey);
    const QString subtitle = containerTitles.value(conteiner);
    setPageTitle(title, subtitle);
    if (colour == PinTexts::Colour::Error) {
        if (titleKey == PinTexts::ChangeTitle)
            updateTriesLabels();
        else if (titleKey == PinTexts::UnblockTitle || titleKey == PinTexts::FirstPinTitle)
            updatePukTriesLabels();
        else
            setPageTitle(title, subtitle);
    }
    ui->pager->setCurrentWidget(ui->pageCorrectChange);
    ui->lPinChanged->setAccessibleName(Common::plainText(text));
    focusAloud(ui->lPinChanged);
}
