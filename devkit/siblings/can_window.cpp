#include "siblings/can_window.h"

#include "app/app.h"
#include "siblings/sibling.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

CanWindow::CanWindow(App &app) : line(new QLineEdit), popup(new QMessageBox(this))
{
    setWindowTitle("velmor CAN");
    auto *label = new QLabel("&Wpisz numer CAN z przodu dowodu (6 cyfr):");
    label->setBuddy(line);
    line->setObjectName("lineCan");
    line->setValidator(new QRegularExpressionValidator(QRegularExpression("\\d{6}"), line));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Cancel)->setText("Anuluj");
    auto *layout = new QVBoxLayout(this);
    for (QWidget *widget : std::initializer_list<QWidget *> { label, line, buttons })
        layout->addWidget(widget);
    popup->setIcon(QMessageBox::Warning);
    popup->setWindowTitle(windowTitle());
    popup->setText("Niepoprawny numer CAN.");
    connect(buttons, &QDialogButtonBox::accepted, this, &CanWindow::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CanWindow::reject);

    ipc.useLock(app);
    connect(&ipc, &Ipc::received, this, &CanWindow::receive);
    connect(&watcher, &WorldWatcher::changed, this, &CanWindow::leaveIfNobodyWaits);
    connect(&watcher, &WorldWatcher::gone, this, [this] { done(Rejected); });
    ipc.start();
    tellMonitor("canOpened");
}

void CanWindow::receive(const IpcMsg &message)
{
    if (message.to() != ipc.name())
        return;
    for (const QByteArray &key : message.payloadKeys()) {
        if (key == "closePopup") {
            popup->hide();
        } else if (key == "windowFocus") {
            showNormal();
            activateWindow();
        } else if (key == "cancel") {
            reject();
        } else if (key == "close") {
            done(Rejected);
        }
    }
}

void CanWindow::tellMonitor(const char *status)
{
    ipc.msgToMonitor(IpcMsg { { "canAppStatus", status } });
}

void CanWindow::accept()
{
    const bool right = line->text() == Sibling::specimenCan;
    line->clear();
    if (!right) {
        popup->open();
        return;
    }
    openCards();
}

void CanWindow::openCards()
{
    for (const sim::Reader &reader : watcher.world().readers()) {
        if (reader.waitCan)
            watcher.world().setWaitCan(reader.name, false);
    }
}

void CanWindow::reject()
{
    tellMonitor("canClosed");
    QDialog::reject();
}

void CanWindow::leaveIfNobodyWaits()
{
    for (const sim::Reader &reader : watcher.world().readers()) {
        if (reader.waitCan && !reader.card.empty())
            return;
    }
    done(Accepted);
}
