#include "window.h"

// The home page: one tile for the holder with the photo, one for each container of the card. Four answers of the worker
// fill it in a fixed chain; the status words of the card decide which PIN buttons can be pressed, the counts of
// certificates which tiles. The photo comes last, since it takes longest to read.

#include "base/common.h"
#include "gui/anim_widget.h"
#include "gui/hover_parameter.h"
#include "gui/spoken_focus.h"
#include "home_cards.h"
#include "photo_decoder.h"
#include "ui_window.h"

#include <QDebug>
#include <QIcon>
#include <QPixmap>
#include <QSslCertificate>

// Answers of the worker still arrive after a list without a reader; what they bring of the holder must not come back.
bool Window::cardHasGone() const
{
    return !isReader();
}

void Window::chooseContainer(const QString &name)
{
    conteiner = name;
}

void Window::chooseAuthenticationCertPIN()
{
    if (busyFlag)
        return;
    chooseContainer("Authentication");
    moveToPinPage();
}

void Window::chooseAuthorizationCertPIN()
{
    if (busyFlag)
        return;
    chooseContainer("Authorization");
    moveToPinPage();
}

void Window::chooseQualifiedCertPIN()
{
    if (busyFlag)
        return;
    chooseContainer("Qualified");
    moveToPinPage();
}

void Window::chooseAuthenticationCertInfo()
{
    chooseContainer("Authentication");
    moveToCertInfoPage();
}

void Window::chooseAuthorizationCertInfo()
{
    chooseContainer("Authorization");
    moveToCertInfoPage();
}

void Window::choosePresenceCertInfo()
{
    chooseContainer("Presence");
    moveToCertInfoPage();
}

void Window::chooseQualifiedCertInfo()
{
    chooseContainer("Qualified");
    moveToCertInfoPage();
}

void Window::setPinButtonsEnabled(bool status)
{
    for (QPushButton *button : { ui->bChangePinAuthenCert, ui->bChangePinAuthorCert, ui->bChangePinQualifiedCert })
        button->setEnabled(status);
}

void Window::loadedCertsCount(int auth, int author, int pres, int qual)
{
    qDebug().noquote() << "certs counters loaded";
    if (cardHasGone())
        return;
    // Late answers about another card may have come since it was emptied.
    clearPerson();
    certStore.setCounts(auth, author, pres, qual);
    ui->bArrowICAO->hide();
    ui->bChangePinAuthenCert->setEnabled(certStore.hasContainer(HomeCards::Authentication));
    ui->bChangePinAuthorCert->setEnabled(certStore.hasContainer(HomeCards::Authorization));
    ui->bChangePinQualifiedCert->setEnabled(true);
    if (auth == 0 && author == 0 && pres == 0 && qual == 0) {
        showNoElectricLayer();
        return;
    }
    const QString title = "Trwa odczyt danych ICAO";
    ui->loadingDesc->setText(title);
    ui->loadingDesc->setAccessibleName(title);
    focusAloud(ui->loadingDesc);
    emit getConteinersAndICAO(reader);
}

void Window::showNoElectricLayer()
{
    ui->pager->setCurrentWidget(ui->pageNoElectricLayer);
    loaderHide();
    ui->lPukBlocked_3->setAccessibleName("Twój dowód nie ma warstwy elektronicznej");
    ui->lPukBlocked_3->setFocus();
}

void Window::loadedConteinersAndICAO(const QString &authen, const QString &author, const QString &quali, int tl_authen,
                                     int tl_athor, int tl_pres, int tl_qual, bool _pinPad, int _typeOfChip,
                                     const QByteArray &dg1, const QByteArray &dg11, const QByteArray &dg12,
                                     const QByteArray &dg13)
{
    if (cardHasGone())
        return;
    dgParser.clearDg();
    dgParser.loadDg("DG1", dg1);
    dgParser.loadDg("DG11", dg11);
    dgParser.loadDg("DG12", dg12);
    dgParser.loadDg("DG13", dg13);
    if (certStore.hasContainer(HomeCards::Presence)) {
        ui->lNumIdVal->setText(dgParser.documentNumber());
        ui->lExpDateVal->setText(dgParser.expiryDate(true));
        const bool named = !dg13.isEmpty();
        // A DG13 that is there but cannot be read gives the one blank between two empty names.
        ui->lCommonNameVal->setText(named ? dgParser.firstName() + ' ' + dgParser.secondName() : QString());
        ui->lsurnameVal->setText(named ? dgParser.surname() : QString());
    }
    refreshCertsStatus(authen, author, quali, tl_authen, tl_athor, tl_pres, tl_qual);
    pinPad = _pinPad;
    typeOfChipValue = _typeOfChip;
    emit getCerts(reader, certStore.hasContainer(HomeCards::Authentication),
                  certStore.hasContainer(HomeCards::Presence), certStore.hasContainer(HomeCards::Authorization),
                  certStore.hasContainer(HomeCards::Qualified));
}

void Window::loadedCerts(const QByteArray &authen, const QByteArray &presence, const QByteArray &author,
                         const QByteArrayList &qual)
{
    qDebug().noquote() << "all certs loaded";
    if (cardHasGone())
        return;
    certStore.setCerts(HomeCards::Authentication, authen);
    if (!presence.isEmpty()) {
        certStore.setCerts(HomeCards::Presence, presence);
        if (ui->lCommonNameVal->text().isEmpty() || ui->lsurnameVal->text().isEmpty())
            fillNamesFromCertificate(presence);
    }
    setLabelElided(ui->lsurnameVal, ui->lsurnameVal->text());
    certStore.setCerts(HomeCards::Authorization, author);
    certStore.setQualifiedCerts(qual);
    loaderHide();
    ui->lPhoto->setStyleSheet(ui->lPhoto->styleSheet() + " border-color: rgb(189,189,189);");
    photo = QImage();
    ui->lPhoto->clear();
    photoLoader->start();
    emit getPhoto(reader);
}

// For a card whose DG13 could not be read.
void Window::fillNamesFromCertificate(const QByteArray &der)
{
    const QList<QSslCertificate> certificates = QSslCertificate::fromData(der, QSsl::Der);
    if (certificates.isEmpty())
        return;
    const QString surname = certificates.first().subjectInfo("SN").join(' ');
    QString name = certificates.first().subjectInfo("CN").join(' ');
    name.chop(surname.size());
    ui->lsurnameVal->setText(surname);
    setLabelElided(ui->lCommonNameVal, name.trimmed());
}

void Window::loadedPhoto(const QByteArray &dg2)
{
    if (cardHasGone()) {
        photoLoader->stop();
        return;
    }
    dgParser.loadDg("DG2", dg2);
    photo = decodedPhoto(dgParser.photo());
    if (photo.isNull())
        ui->lPhoto->setStyleSheet(ui->lPhoto->styleSheet() + " border: 1px solid rgb(76,83,88);");
    showPhotoIn(ui->lPhoto);
    photoLoader->stop();
    ui->bArrowICAO->show();
    ui->widgetBlurICAO->setAccessibleName(
        HomeCards::accessibleText("Twoje dane z velmor: zdjęcie seria i numer dowodu: " + ui->lNumIdVal->text()
                                  + " data ważności " + ui->lExpDateVal->text() + " imiona: "
                                  + ui->lCommonNameVal->text() + " nazwisko: " + ui->lsurnameVal->text()));
    if (isPage(ui->pageAllData))
        showPhotoIn(ui->lPhotoLarge);
    // On a slow card the user may have gone on meanwhile, and what is typed there must not go astray.
    if (isPage(ui->pageHome))
        focusAloud(ui->widgetBlurICAO);
    checkReaderWarning(ui->cbReaders->currentText());
}

void Window::showPhotoIn(QLabel *label)
{
    const qreal ratio = label->devicePixelRatioF();
    if (photo.isNull()) {
        label->setPixmap(QIcon(":/images/no_photo.svg").pixmap(label->windowHandle(), label->size()));
        return;
    }
    // In the screen's own pixels, so that the photo stays sharp on a dense screen.
    QPixmap picture = QPixmap::fromImage(
        photo.scaled(label->size() * ratio, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation));
    picture.setDevicePixelRatio(ratio);
    label->setPixmap(picture);
}

void Window::setCardButtonText(QPushButton *button, const QString &text)
{
    // Room for the key that the style sheet draws.
    button->setText(QString(7, ' ') + text);
}

void Window::refreshCertsStatus(const QString &authen, const QString &author, const QString &quali, int tl_authen,
                                int tl_athor, int tl_pres, int tl_qual)
{
    qDebug().noquote() << "Refresh certs status";
    setCardButtonText(ui->bChangePinAuthenCert, authen);
    setCardButtonText(ui->bChangePinAuthorCert, author);
    setCardButtonText(ui->bChangePinQualifiedCert, quali);
    // In step with what is written on them; Qualified gets its name with the count of its certificates.
    if (!authen.isEmpty())
        ui->bChangePinAuthenCert->setAccessibleName(authen + ": certyfikat do identyfikacji i uwierzytelniania");
    if (!author.isEmpty())
        ui->bChangePinAuthorCert->setAccessibleName(author + ": certyfikat do podpisu osobistego");
    ui->bChangePinAuthenCert->setEnabled(HomeCards::pinButtonEnabled(ui->bChangePinAuthenCert->text()));
    ui->bChangePinAuthorCert->setEnabled(HomeCards::pinButtonEnabled(ui->bChangePinAuthorCert->text()));
    // The button of Qualified stays as it is: its first PIN is set with the PUK, from this button.
    ui->qualifiedCert->setEnabled(ui->bChangePinQualifiedCert->text().trimmed() == "Zmień PIN"
                                  && certStore.hasContainer(HomeCards::Qualified));
    containerTries["Authentication"] = tl_authen;
    containerTries["Authorization"] = tl_athor;
    containerTries["Qualified"] = tl_qual;
    // Presence has no PIN: its place in the answer carries the tries of the PUK.
    triesLeftPUK = tl_pres;
    updatePukTriesLabels();
}

void Window::updatePukTriesLabels()
{
    if (triesLeftPUK <= 0)
        return;
    const QString text = "Pozostało prób: " + QString::number(triesLeftPUK);
    ui->lTryNumDescPUK->setText(text);
    ui->lTryNumDescPUKpinpad->setText(text);
}

void Window::updateHomeCards()
{
    ui->authenticationCert->setEnabled(certStore.hasContainer(HomeCards::Authentication));
    ui->authorizationCert->setEnabled(certStore.hasContainer(HomeCards::Authorization));
    ui->presenceCert->setEnabled(certStore.hasContainer(HomeCards::Presence));
    updateQualifiedCard();
    for (QWidget *tile : { ui->authenticationCert, ui->authorizationCert, ui->presenceCert, ui->qualifiedCert })
        hover->clear(tile);
}

void Window::updateQualifiedCard()
{
    const bool present = certStore.hasContainer(HomeCards::Qualified);
    const QString buttonText = HomeCards::accessibleText(ui->bChangePinQualifiedCert->text());
    // Overrides what refreshCertsStatus decided, so a tile that was disabled there comes back at the next hide of the
    // loader.
    ui->qualifiedCert->setEnabled(present);
    ui->lNumOfQualifiedCerts->setVisible(present);
    if (present) {
        const int count = certStore.qualifiedCount();
        ui->lNumOfQualifiedCerts->setText(QString::number(count));
        ui->labelTitleQualifiedCert->setAccessibleName(HomeCards::qualifiedCountText(count));
        ui->bChangePinQualifiedCert->setAccessibleName(buttonText);
    } else {
        ui->bChangePinQualifiedCert->setAccessibleName(buttonText + " dla kontenera certyfikatów kwalifikowanych");
    }
}
