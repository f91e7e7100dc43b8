#include "cert_widget.h"

#include "certificate_text.h"
#include "tile_shadow.h"
#include "ui_thecertitem.h"
#include "window.h"

#include <QApplication>
#include <QFocusEvent>
#include <QTimer>

#include <chrono>

namespace {

constexpr int shadowBlur = 15;
constexpr std::chrono::milliseconds focusDelay { 100 };

} // namespace

CertWidget::CertWidget(Window *certWindow, const QSslCertificate &cert, QWidget *parent, bool focusFirst) :
    QWidget(parent), ui(new Ui::TheCertItem), window(certWindow)
{
    ui->setupUi(this);
    if (!window) {
        ui->detailsCert->hide();
        return;
    }
    certificate = cert;
    addTileShadow(ui->detailsCert, shadowBlur, 1);
    if (certificate.isNull()) {
        ui->detailsCert->hide();
        return;
    }
    showTexts();
    watchFocus();
    connect(ui->bDetailsCert, &QAbstractButton::clicked, this, &CertWidget::openCertDetails);
    ui->detailsCert->show();
    if (focusFirst)
        QTimer::singleShot(focusDelay, ui->lOrganizationName, [label = ui->lOrganizationName] { label->setFocus(); });
}

CertWidget::~CertWidget() = default;

void CertWidget::showTexts()
{
    ui->lOrganizationName->setText(CertificateText::issuer(certificate));
    ui->lValidFromVal->setText(CertificateText::longDate(certificate.effectiveDate()));
    ui->lValidToVal->setText(CertificateText::longDate(certificate.expiryDate()));
    ui->lOrganizationName->setAccessibleName(ui->lOrganizationName->text());
    ui->ValidFromFrame->setAccessibleName(ui->lValidFromDesc->text() + ' ' + ui->lValidFromVal->text());
    ui->ValidToFrame->setAccessibleName(ui->lValidToDesc->text() + ' ' + ui->lValidToVal->text());
}

void CertWidget::watchFocus()
{
    for (QWidget *child : std::initializer_list<QWidget *> { ui->lOrganizationName, ui->ValidFromFrame,
                                                             ui->ValidToFrame, ui->bDetailsCert })
        child->installEventFilter(this);
}

bool CertWidget::eventFilter(QObject *watched, QEvent *event)
{
    // Not by the mouse: the card would be moved away from under it in the middle of a click.
    if (event->type() == QEvent::FocusIn && static_cast<QFocusEvent *>(event)->reason() != Qt::MouseFocusReason)
        emit reached();
    return QWidget::eventFilter(watched, event);
}

void CertWidget::openCertDetails()
{
    // A double click opens one window, and so does a key that is held down.
    const bool again = lastClick.isValid() && lastClick.elapsed() < QApplication::doubleClickInterval();
    lastClick.start();
    if (again)
        return;
    window->openCertWin(certificate);
}
