#include "window.h"

// The page on which a PIN is changed, with the keyboard or on a reader's pinpad. Here so far: the emptying of its
// fields, which the home page needs on every entry.

#include "field_style.h"
#include "ui_window.h"

#include <QDebug>

void Window::moveToPinPage()
{
    pinStatus = containerTries.value(conteiner, 0);
    qDebug().noquote() << "Container: " << conteiner << " status: " << pinStatus << "triesLeftPUK: " << triesLeftPUK;
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
        field->clear();
        setFieldStyle(field, true);
    }
    // Only this page's hints go.
    if (!changing)
        return;
    for (QLabel *hint : { ui->lNewPinInfo, ui->lActualPinInfo, ui->lRepeatPinInfo })
        hint->hide();
}

void Window::changePin()
{
    if (busyFlag)
        return;
    qDebug().noquote() << "\nChange pin";
}

void Window::changePinFin(int res)
{
    qDebug().noquote() << "Change pin status: " << res;
    loaderHide();
}
