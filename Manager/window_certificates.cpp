#include "window.h"

// The certificates of one container, a card each, two beside each other. A card hands its certificate to the system's
// own window, which is another program: all that is known of it is the number of such windows. The loader covers the
// page until there is one more, or for half a minute at most.

#include "base/secret_string.h"
#include "card/card_tables.h"
#include "cert_widget.h"
#include "certificate_text.h"
#include "gui/spoken_focus.h"
#include "platform/os.h"
#include "ui_window.h"

#include <QDebug>
#include <QSslCertificate>
#include <QTimer>

#include <chrono>

namespace {

constexpr char openingText[] = "Trwa otwieranie certyfikatu";
constexpr std::chrono::milliseconds firstLook { 100 };
constexpr std::chrono::milliseconds secondLook { 1000 };
constexpr std::chrono::milliseconds pollInterval { 500 };

} // namespace

void Window::moveToCertInfoPage()
{
    enterPage(ui->pageCertInfo, "Szczegóły", containerTitle(conteiner));
    ui->bWroc->show();
    fillCertificates(conteiner);
}

void Window::fillCertificates(const QString &name)
{
    QTableWidget *table = ui->tableCert;
    table->clear();
    table->setFocusPolicy(Qt::NoFocus);
    QList<QSslCertificate> certificates;
    const QByteArrayList stored = card.certs.certs(CertStore::containerIndex(name));
    for (const QByteArray &der : stored)
        certificates += QSslCertificate::fromData(der, QSsl::Der);
    const int count = certificates.size();
    table->setColumnCount(count == 0 ? 0 : CertificateText::columns(count));
    table->setRowCount(CertificateText::rows(count));
    // Else the page would be empty, and not a word be said of it.
    const bool unreadable = count == 0 && !stored.isEmpty();
    ui->lCertUnreadable->setVisible(unreadable);
    if (unreadable)
        focusAloud(ui->lCertUnreadable);
    for (int i = 0; i < count; ++i) {
        const int row = i / table->columnCount();
        const int column = i % table->columnCount();
        auto *widget = new CertWidget(this, certificates[i], table, i == 0);
        table->setColumnWidth(column, widget->width());
        table->setRowHeight(row, widget->height());
        table->setCellWidget(row, column, widget);
        connect(widget, &CertWidget::reached, table,
                [table, row, column] { table->scrollTo(table->model()->index(row, column)); });
    }
}

void Window::openCertWin(const QSslCertificate &cert)
{
    qDebug().noquote() << "open cert win";
    if (cert.isNull())
        return;
    Os os;
    certWatch.begin(os.certWindowCount(), ui->pager->currentIndex(), focusWidget());
    QByteArray der = cert.toDer();
    os.certOpen(der);
    wipeSecret(der);
    QTimer::singleShot(firstLook, this, &Window::openCertWinShowLoader);
}

void Window::openCertWinShowLoader()
{
    // The user or the card can be elsewhere by now, where no loader is wanted.
    if (ui->pager->currentIndex() != certWatch.page() || certWatch.hasCome(Os().certWindowCount()))
        return;
    loaderShow(openingText);
    QTimer::singleShot(secondLook, this, &Window::openCertWinFin);
}

void Window::openCertWinFin()
{
    // The card can have gone meanwhile; a loader with another text is that of another task. On another page, though,
    // the loader of this one still covers all and has to go in the end.
    if (!busyFlag || ui->loadingDesc->text() != openingText)
        return;
    if (!certWatch.hasCome(Os().certWindowCount()) && certWatch.mayTryAgain()) {
        QTimer::singleShot(pollInterval, this, &Window::openCertWinFin);
        return;
    }
    loaderHide();
    if (QWidget *button = certWatch.button(); button && button->isVisible())
        button->setFocus();
}
