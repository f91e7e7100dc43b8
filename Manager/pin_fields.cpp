#include "pin_fields.h"

#include "field_style.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QStyle>

namespace {

void markRing(QWidget *field, bool inside)
{
    QWidget *ring = field ? field->parentWidget() : nullptr;
    if (!ring || ring->property("class") != "fieldRing")
        return;
    ring->setProperty("FocusInside", inside);
    ring->style()->unpolish(ring);
    ring->style()->polish(ring);
}

bool isComplete(const PinEntry &entry)
{
    if (entry.field->text().size() == entry.digits) {
        entry.hint->hide();
        return true;
    }
    if (entry.restyled)
        setFieldStyle(entry.field, true);
    showFieldHint(entry.hint, "blue", entry.hintText);
    return false;
}

} // namespace

void admitPin(QLineEdit *field, const QString &pattern)
{
    delete field->validator();
    field->setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), field));
}

void forgetEntry(QLineEdit *field)
{
    field->setText({});
}

void showFieldHint(QLabel *label, const QString &colour, const QString &text)
{
    label->setStyleSheet(label->styleSheet() + (colour == "red" ? " color:#EA0449;" : " color:#2B9EEB;"));
    label->setText(text);
    label->show();
}

void enableWhenComplete(QAbstractButton *button, const QList<PinEntry> &entries)
{
    button->setEnabled(false);
    bool complete = true;
    for (const PinEntry &entry : entries)
        complete = isComplete(entry) && complete;
    button->setEnabled(complete);
}

void markFocusInRings(QWidget *before, QWidget *now)
{
    markRing(before, false);
    markRing(now, true);
}
