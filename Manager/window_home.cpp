#include "window.h"

// The home page: one tile for the holder with the photo, one for each container of the card. What the tiles show is set
// where the card is read; here are their buttons and states. The status words of the card decide which PIN buttons can
// be pressed, the counts of certificates which tiles.

#include "card/card_tables.h"
#include "gui/gui_base.h"
#include "gui/hover_parameter.h"
#include "gui/kept_icon.h"
#include "home_cards.h"
#include "ui_window.h"

#include <QPixmap>

#include <array>

namespace {

struct Tile {
    CertStore::Index index;
    QWidget *tile;
    QPushButton *arrow;
    void (Window::*openCertificates)();
};

struct PinButton {
    const char *conteiner;
    QPushButton *button;
    void (Window::*openPin)();
    // For a screen reader, behind the status word; Qualified gets its own with the count of its certificates.
    const char *spoken;
};

std::array<Tile, 4> tilesOf(const Ui::Window &ui)
{
    return { {
        { CertStore::Authentication, ui.authenticationCert, ui.bArrowAuthenCert,
          &Window::chooseAuthenticationCertInfo },
        { CertStore::Authorization, ui.authorizationCert, ui.bArrowAuthorCert, &Window::chooseAuthorizationCertInfo },
        { CertStore::Presence, ui.presenceCert, ui.bArrowPresenceCert, &Window::choosePresenceCertInfo },
        { CertStore::Qualified, ui.qualifiedCert, ui.bArrowQualifiedCert, &Window::chooseQualifiedCertInfo },
    } };
}

std::array<PinButton, 3> pinButtonsOf(const Ui::Window &ui)
{
    return { {
        { Container::Authentication, ui.bChangePinAuthenCert, &Window::chooseAuthenticationCertPIN,
          ": certyfikat do identyfikacji i uwierzytelniania" },
        { Container::Authorization, ui.bChangePinAuthorCert, &Window::chooseAuthorizationCertPIN,
          ": certyfikat do podpisu osobistego" },
        { Container::Qualified, ui.bChangePinQualifiedCert, &Window::chooseQualifiedCertPIN, nullptr },
    } };
}

// Room for the key that the style sheet draws.
void setCardButtonText(QPushButton *button, const QString &text)
{
    button->setText(QString(7, ' ') + text);
}

} // namespace

void Window::connectHomePage()
{
    for (const Tile &row : tilesOf(*ui)) {
        connect(row.arrow, &QAbstractButton::clicked, this, row.openCertificates);
        row.tile->installEventFilter(hover);
    }
    for (const PinButton &row : pinButtonsOf(*ui))
        connect(row.button, &QAbstractButton::clicked, this, row.openPin);
    connect(ui->bArrowICAO, &QAbstractButton::clicked, this, &Window::moveToAllDataPage);
    ui->icao->installEventFilter(hover);
    connect(hover, &HoverParameter::moveToPage, this, &Window::moveToCertInfoPage);
}

void Window::choosePin(const QString &name)
{
    if (busyFlag)
        return;
    conteiner = name;
    moveToPinPage();
}

void Window::chooseCertificates(const QString &name)
{
    conteiner = name;
    moveToCertInfoPage();
}

void Window::chooseAuthenticationCertPIN()
{
    choosePin(Container::Authentication);
}

void Window::chooseAuthorizationCertPIN()
{
    choosePin(Container::Authorization);
}

void Window::chooseQualifiedCertPIN()
{
    choosePin(Container::Qualified);
}

void Window::chooseAuthenticationCertInfo()
{
    chooseCertificates(Container::Authentication);
}

void Window::chooseAuthorizationCertInfo()
{
    chooseCertificates(Container::Authorization);
}

void Window::choosePresenceCertInfo()
{
    chooseCertificates(Container::Presence);
}

void Window::chooseQualifiedCertInfo()
{
    chooseCertificates(Container::Qualified);
}

void Window::setPinButtonsEnabled(bool status)
{
    for (const PinButton &row : pinButtonsOf(*ui))
        row.button->setEnabled(status);
}

void Window::showPinWords()
{
    for (const PinButton &row : pinButtonsOf(*ui)) {
        const QString word = card.words.value(row.conteiner);
        setCardButtonText(row.button, word);
        // In step with what is written on it.
        if (row.spoken)
            row.button->setAccessibleName(word.isEmpty() ? QString() : word + row.spoken);
    }
}

void Window::updatePukTriesLabels()
{
    if (card.pukTries <= 0)
        return;
    const QString text = PinTexts::triesLeft(card.pukTries);
    ui->lTryNumDescPUK->setText(text);
    ui->lTryNumDescPUKpinpad->setText(text);
}

void Window::updateHomeCards()
{
    // Overrides what refreshCertsStatus decided of Qualified, so a tile that was disabled there comes back at the next
    // hide of the loader.
    for (const Tile &row : tilesOf(*ui))
        row.tile->setEnabled(card.certs.hasContainer(row.index));
    describeQualifiedTile();
    for (const Tile &row : tilesOf(*ui))
        hover->clear(row.tile);
}

void Window::describeQualifiedTile()
{
    const bool present = card.certs.hasContainer(CertStore::Qualified);
    const QString buttonText = HomeCards::accessibleText(ui->bChangePinQualifiedCert->text());
    ui->lNumOfQualifiedCerts->setVisible(present);
    if (present) {
        const int count = card.certs.qualifiedCount();
        ui->lNumOfQualifiedCerts->setText(QString::number(count));
        ui->labelTitleQualifiedCert->setAccessibleName(HomeCards::qualifiedCountText(count));
        ui->bChangePinQualifiedCert->setAccessibleName(buttonText);
    } else {
        ui->bChangePinQualifiedCert->setAccessibleName(buttonText + " dla kontenera certyfikatów kwalifikowanych");
    }
}

void Window::showPhotoIn(QLabel *label)
{
    const qreal ratio = label->devicePixelRatioF();
    if (card.photo.isNull()) {
        label->setPixmap(keptIcon(guiBase->picture("no_photo.svg")).pixmap(label->windowHandle(), label->size()));
        return;
    }
    // In the screen's own pixels, so that the photo stays sharp on a dense screen.
    QPixmap picture = QPixmap::fromImage(
        card.photo.scaled(label->size() * ratio, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation));
    picture.setDevicePixelRatio(ratio);
    label->setPixmap(picture);
}
