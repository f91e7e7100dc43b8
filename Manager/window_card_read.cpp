#include "window.h"

// The reading of a card, from a reader list to the photo, and what of it goes when. Each request is sent from the
// answer to the one before: readers, reader selected, certificates counted, PIN states with the data groups,
// certificates, photo. The photo comes last, since it takes longest to read; by then the home page is shown. Answers
// still arrive after a list without a reader; what they bring of the holder must not come back, so they are dropped.

#include "app/app_log.h"
#include "base/common.h"
#include "base/secret_string.h"
#include "card/card_results.h"
#include "card/card_tables.h"
#include "certificate_text.h"
#include "gui/anim_widget.h"
#include "gui/spoken_focus.h"
#include "home_cards.h"
#include "photo_decoder.h"
#include "platform/temporary_certificate.h"
#include "ui_window.h"

#include <QDebug>
#include <QSslCertificate>

namespace {

// Flags of a reader worth listing: a card is present, and the Monitor has read it.
constexpr int tokenPresent = 1;
constexpr int notReadByTheMonitor = 256;

// Taken out first: so the last to hold it is who overwrites it.
void forgetText(QLabel *label)
{
    QString text = label->text();
    label->clear();
    wipeSecret(text);
    QString tip = label->toolTip();
    label->setToolTip({});
    wipeSecret(tip);
}

void forgetSpoken(QWidget *widget)
{
    QString name = widget->accessibleName();
    widget->setAccessibleName({});
    wipeSecret(name);
}

} // namespace

// isReader() alone is false also for a reader that has "brak" in its name.
bool Window::cardHasGone() const
{
    return reader.isEmpty() && !isReader();
}

void Window::loadAll()
{
    clearPerson();
    AppLog::restartTimer();
    qDebug().noquote() << "load All";
    // Hidden before it is shown: hiding is what switches the tiles off.
    loaderHide();
    loaderShow("Trwa łączenie z czytnikami");
    qDebug().noquote() << "load readers";
    readersRequested = true;
    emit getReaders(tokenPresent, notReadByTheMonitor);
}

void Window::getReadersFin(bool success, const QStringList &readers)
{
    if (success && readers.isEmpty())
        getReadersFromMonitor();
    else
        loadedReaders(readers);
}

void Window::loadedReaderSelected(bool res)
{
    if (res) {
        emit getCertsCount(reader);
        return;
    }
    qDebug().noquote() << "reader is not initialized";
    getReadersFromMonitor();
}

void Window::loadedCertsCount(int auth, int author, int pres, int qual)
{
    qDebug().noquote() << "certs counters loaded";
    if (cardHasGone())
        return;
    // Late answers about another card may have come since it was emptied.
    clearPerson();
    card.certs.setCounts(auth, author, pres, qual);
    ui->bArrowICAO->hide();
    ui->bChangePinAuthenCert->setEnabled(card.certs.hasContainer(CertStore::Authentication));
    ui->bChangePinAuthorCert->setEnabled(card.certs.hasContainer(CertStore::Authorization));
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
    turnTo(ui->pageNoElectricLayer);
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
    card.data.clearDg();
    card.data.loadDg("DG1", dg1);
    card.data.loadDg("DG11", dg11);
    card.data.loadDg("DG12", dg12);
    card.data.loadDg("DG13", dg13);
    if (card.certs.hasContainer(CertStore::Presence)) {
        ui->lNumIdVal->setText(card.data.documentNumber());
        ui->lExpDateVal->setText(card.data.expiryDate(true));
        const bool named = !dg13.isEmpty();
        // A DG13 that is there but cannot be read gives the one blank.
        ui->lCommonNameVal->setText(named ? card.data.firstNames() : QString());
        ui->lsurnameVal->setText(named ? card.data.surname() : QString());
    }
    refreshCertsStatus(authen, author, quali, tl_authen, tl_athor, tl_pres, tl_qual);
    card.pinPad = _pinPad;
    card.chip = _typeOfChip;
    emit getCerts(reader, card.certs.hasContainer(CertStore::Authentication),
                  card.certs.hasContainer(CertStore::Presence), card.certs.hasContainer(CertStore::Authorization),
                  card.certs.hasContainer(CertStore::Qualified));
}

// Also after each PIN operation.
void Window::refreshCertsStatus(const QString &authen, const QString &author, const QString &quali, int tl_authen,
                                int tl_athor, int tl_pres, int tl_qual)
{
    qDebug().noquote() << "Refresh certs status";
    card.words = { { Container::Authentication, authen },
                   { Container::Authorization, author },
                   { Container::Qualified, quali } };
    showPinWords();
    ui->bChangePinAuthenCert->setEnabled(HomeCards::pinButtonEnabled(authen));
    ui->bChangePinAuthorCert->setEnabled(HomeCards::pinButtonEnabled(author));
    // The button of Qualified stays as it is: its first PIN is set with the PUK, from this button.
    ui->qualifiedCert->setEnabled(quali.trimmed() == PinWord::change && card.certs.hasContainer(CertStore::Qualified));
    card.tries = { { Container::Authentication, tl_authen },
                   { Container::Authorization, tl_athor },
                   { Container::Qualified, tl_qual } };
    // Presence has no PIN: its place in the answer carries the tries of the PUK.
    card.pukTries = tl_pres;
    updatePukTriesLabels();
}

void Window::loadedCerts(const QByteArray &authen, const QByteArray &presence, const QByteArray &author,
                         const QByteArrayList &qual)
{
    qDebug().noquote() << "all certs loaded";
    if (cardHasGone())
        return;
    card.certs.setCerts(CertStore::Authentication, authen);
    if (!presence.isEmpty()) {
        card.certs.setCerts(CertStore::Presence, presence);
        if (ui->lCommonNameVal->text().isEmpty() || ui->lsurnameVal->text().isEmpty())
            fillNamesFromCertificate(presence);
    }
    setLabelElided(ui->lsurnameVal, ui->lsurnameVal->text());
    card.certs.setCerts(CertStore::Authorization, author);
    card.certs.setQualifiedCerts(qual);
    loaderHide();
    // The photo may take long; it brings the tile its name for a screen reader.
    if (isPage(ui->pageHome))
        ui->widgetBlurICAO->setFocus();
    ui->lPhoto->setStyleSheet(ui->lPhoto->styleSheet() + " border-color: rgb(189,189,189);");
    card.photo = QImage();
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
    const CertificateText::Holder holder = CertificateText::holder(certificates.first());
    ui->lsurnameVal->setText(holder.surname);
    setLabelElided(ui->lCommonNameVal, holder.names);
}

void Window::loadedPhoto(const QByteArray &dg2)
{
    if (cardHasGone()) {
        photoLoader->stop();
        return;
    }
    card.data.loadDg("DG2", dg2);
    QByteArray picture = card.data.photo();
    card.photo = decodedPhoto(picture);
    wipeSecret(picture);
    if (card.photo.isNull())
        ui->lPhoto->setStyleSheet(ui->lPhoto->styleSheet() + " border: 1px solid rgb(76,83,88);");
    showPhotoIn(ui->lPhoto);
    photoLoader->stop();
    ui->bArrowICAO->show();
    QString spoken = HomeCards::holderText(ui->lNumIdVal->text(), ui->lExpDateVal->text(), ui->lCommonNameVal->text(),
                                           ui->lsurnameVal->text());
    ui->widgetBlurICAO->setAccessibleName(HomeCards::accessibleText(spoken));
    wipeSecret(spoken);
    if (isPage(ui->pageAllData))
        showPhotoIn(ui->lPhotoLarge);
    // On a slow card the user may have gone on meanwhile, and what is typed there must not go astray.
    if (isPage(ui->pageHome) && ui->loading->isHidden())
        focusAloud(ui->widgetBlurICAO);
    checkReaderWarning(ui->cbReaders->currentText());
}

// Nothing personal stays on the screen or in memory after the card has gone.
void Window::disableHomePage()
{
    qDebug().noquote() << "Disable home page";
    clearPerson();
    forgetPinEntries();
    showPhotoIn(ui->lPhoto);
    showPhotoIn(ui->lPhotoLarge);
}

void Window::clearPerson()
{
    for (QLabel *label : { ui->lNumIdVal, ui->lCommonNameVal, ui->lsurnameVal, ui->lExpDateVal })
        forgetText(label);
    card.forgetHolder();
    ui->lPhoto->clear();
    ui->lPhotoLarge->clear();
    for (QLabel *label : ui->pageAllData->findChildren<QLabel *>()) {
        if (!label->objectName().contains("Val"))
            continue;
        forgetText(label);
        forgetSpoken(label->parentWidget());
    }
    forgetSpoken(ui->widgetBlurICAO);
    ui->lNumOfQualifiedCerts->clear();
    ui->labelTitleQualifiedCert->setAccessibleName({});
    ui->tableCert->clear();
    TemporaryCertificate::removeFile();
}
