#include "window.h"

// The page on which a locked PIN gets a new value with the PUK, and on which Qualified gets its first PIN: one page,
// two sets of words, and the card decides what is done. It is entered through the page of the PIN change only. A
// blocked PUK ends the road on a page of its own.

#include "base/common.h"
#include "base/secret_string.h"
#include "card/card_results.h"
#include "card/card_tables.h"
#include "gui/secret_text.h"
#include "gui/spoken_focus.h"
#include "ui_window.h"

#include <QDebug>
#include <QTimer>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds padDelay { 1000 };
PinForm::Rule pukRule()
{
    return { pukDigits, pukPattern, "PUK musi mieć 8 cyfr" };
}

} // namespace

// On the page, what counts is its title: the button on the home page may have got another word meanwhile.
const PinTexts::PukPageWords &Window::pukPageWords() const
{
    const bool firstPin = ui->lMainTitle->text() == PinTexts::firstPinWords().mainTitle;
    return firstPin ? PinTexts::firstPinWords() : PinTexts::unblockWords();
}

void Window::moveToUnblockPinPage()
{
    unblockForm.admit(pukRule(), pinRule());
    setPukPageWords();
    qDebug().noquote() << "Unblock or set PIN of " << conteiner << " [ moveToUnblockPinPage() ]";
    ui->cbReaders->setEnabled(false);
    pinStatus = card.triesOf(conteiner);
    qDebug().noquote() << "UnblockPinPage Container: " << conteiner << " status: " << pinStatus;
    if (pinStatus != Tries::locked && pinStatus != Tries::notSet)
        return;
    if (card.pukIsBlocked()) {
        moveToBlockedPukPage();
        return;
    }
    const auto &words = card.firstPinIsOffered(conteiner) ? PinTexts::firstPinWords() : PinTexts::unblockWords();
    enterPage(ui->pageUnblockPin, words.mainTitle, containerTitle(conteiner));
    updatePukTriesLabels();
    if (card.pukGoesThroughPad()) {
        qDebug().noquote() << "Using PINPAD for unblocking PIN [ moveToUnblockPinPage() ]";
        ui->lPukInfoPinPad_4->setText(pinRule().hint);
        // Nothing cancels it, whatever the window shows by then; this is meant.
        QTimer::singleShot(padDelay, this, &Window::waitToUnblockPin);
    } else {
        // In this order, unlike on the page of the change.
        disableEnableUnblockPin();
        clearPinFields();
    }
    describePukPage();
}

void Window::setPukPageWords()
{
    const auto &words = card.firstPinIsOffered(conteiner) ? PinTexts::firstPinWords() : PinTexts::unblockWords();
    showFieldHint(ui->lUnblockPinDetails, words.detailsColour, words.details);
    ui->bChangePinPuk->setText(words.button);
    // Qualified with a PIN that is only locked keeps the words of the visit before; this is meant.
    if (conteiner == Container::Qualified && !card.firstPinIsOffered(conteiner))
        return;
    ui->lNewPin_2->setText(words.newPin);
    ui->lRepeatPin_2->setText(words.repeatPin);
    ui->lPukInfoPinPad_3->setText(words.padNewPin);
    ui->lPukInfoPinPad_5->setText(words.padRepeatPin);
}

void Window::describePukPage()
{
    ui->lineInsertPuk->setAccessibleName("Wprowadź ośmiocyfrowy PUK");
    ui->lineInsertPuk->setAccessibleDescription(PinTexts::triesLeft(card.pukTries));
    const QString word = PinTexts::digitWord(pinDigits(conteiner));
    ui->lineNewPinPuk->setAccessibleName(ui->lNewPin_2->text());
    ui->lineNewPinPuk->setAccessibleDescription("Wprowadź nowy " + word + "cyfrowy PIN.");
    // A repetition that was wrong at the visit before is named so still.
    ui->lineRepeatPinPuk->setAccessibleName(ui->lRepeatPin_2->text());
    ui->lineRepeatPinPuk->setAccessibleDescription("Powtórz nowy PIN.");
    ui->lUnblockPinDetails->setAccessibleName(Common::plainText(
        ui->lMainTitle->text() + ' ' + ui->lSubTitle->text() + ", " + ui->lUnblockPinDetails->text().replace(".", ", ")
        + "Masz " + QString::number(card.pukTries)
        + " próby na prawidłowe wpisanie, trzykrotne wpisanie nieprawidłowego PUK-u zablokuje dowód, numer PUK "
          "znajdziesz w dokumentach które dostałeś/aś w urzędzie podczas odbierania dowodu osobistego"));
    ui->lUnblockPinDetails->setFocus();
}

void Window::waitToUnblockPin()
{
    const QWidget *before = focusWidget();
    {
        // From one that goes off the focus would go to the next, which is about to go off too.
        const FocusPause pause;
        ui->bWroc->hide();
        ui->bSettings->setEnabled(false);
        ui->bHelp->setEnabled(false);
        ui->cbReaders->setEnabled(false);
    }
    if (QWidget *focus = focusWidget(); focus && focus != before)
        focusAloud(focus);
    if (card.pukIsBlocked()) {
        moveToBlockedPukPage();
        qDebug().noquote() << "PUK is blocked! tries left=" << card.pukTries;
        return;
    }
    emit unblockPinSig(reader, conteiner, {}, {});
}

void Window::unblockPinPad()
{
    waitToUnblockPin();
}

void Window::disableEnableUnblockPin()
{
    // Three tries whatever is left; the true number stands below it.
    showFieldHint(ui->lPukInfo, PinTexts::Colour::Neutral,
                  "Masz 3 próby na prawidłowe wpisanie. <b> 3-krotne wpisanie nieprawidłowego PUK-u zablokuje "
                  "dowód.</b><br> Numer PUK znajdziesz w dokumentach, które dostałeś/aś w urzędzie podczas odbierania "
                  "dowodu osobistego.");
    unblockForm.check(pukRule(), pinRule());
}

void Window::unblockPin()
{
    if (busyFlag)
        return;
    qDebug().noquote() << "\nUnblock pin";
    busyFlag = true;
    const QString puk = ui->lineInsertPuk->text();
    const QString fresh = ui->lineNewPinPuk->text();
    if (card.pukIsBlocked()) {
        moveToBlockedPukPage();
        qDebug().noquote() << "PUK is blocked! tries left=" << card.pukTries;
        busyFlag = false;
        return;
    }
    if (!validateTwoPins(UnblockPage, fresh, ui->lineRepeatPinPuk->text())) {
        qDebug().noquote() << "Wrong validation of new and repeat pins (unblock PIN)";
        busyFlag = false;
        return;
    }
    forgetSecret(ui->lineRepeatPinPuk);
    qDebug().noquote() << "New and repeat pins meet criterias (unblock PIN) ";
    loaderShow(pukPageWords().loader, {}, true, false);
    // As with a change, wiped by whoever is done last.
    QString sentPuk = joinSecrets({ puk });
    QString sentFresh = joinSecrets({ fresh });
    emit unblockPinSig(reader, conteiner, sentPuk, sentFresh);
    wipeSecret(sentPuk);
    wipeSecret(sentFresh);
}

void Window::unblockPinFin(int res)
{
    loaderHide();
    qDebug().noquote() << "unblock Pin fin code: " << res;
    const PinTexts::Outcome *outcome = PinTexts::unblockOutcome(res);
    if (!outcome) {
        qDebug().noquote() << "changePinFin() not supported return from unblocking PIN";
        return;
    }
    qDebug().noquote() << outcome->log;
    if (res == CardResult::done) {
        setFieldStyle(ui->lineInsertPuk, true);
        clearPinFields();
        forgetPinEntries();
    }
    if (res == CardResult::wrongPuk || res == CardResult::failed) {
        showFieldHint(ui->lPinInfoPuk, PinTexts::Colour::Error, "Niepoprawny PUK. Popraw PUK.");
        if (card.pukIsBlocked()) {
            qDebug().noquote() << "PUK is blocked!";
            moveToBlockedPukPage();
            return;
        }
    }
    const PinTexts::TitleKey titleKey = pukPageWords().resultTitle;
    showResultPage(titleKey == PinTexts::FirstPinTitle ? outcome->firstPinText : outcome->text, outcome->colour,
                   titleKey);
}

void Window::moveToBlockedPukPage()
{
    setPageTitle(PinTexts::pageTitle(PinTexts::UnblockTitle), containerTitle(conteiner));
    turnTo(ui->pageBlockedPuk_2);
    ui->lPukBlocked_2->setAccessibleName(
        Common::plainText(ui->lMainTitle->text() + ui->lSubTitle->text()
                          + ", twój velmor został zablokowany, dowodu nie da się odblokować, dowiedz się jak uzyskać "
                            "nowy dowód osobisty"));
    ui->lPukBlocked_2->setFocus();
}
