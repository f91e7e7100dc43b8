#include "pin_fields.h"

#include "gui/secret_text.h"
#include "gui/spoken_focus.h"

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
    showFieldHint(entry.hint, PinTexts::Colour::Neutral, entry.hintText);
    return false;
}

} // namespace

void admitPin(QLineEdit *field, const QString &pattern)
{
    delete field->validator();
    field->setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), field));
}

void setFieldStyle(QLineEdit *lineEdit, bool good)
{
    static const QString border =
        "border-style: none;\nborder-radius:10px;padding: 10px;font-size: 16px;font-family: Poppins;";
    static const QString goodColours = "background: rgba(212, 214, 215, 70%);";
    static const QString badColours = "background:rgb(234,4,73,30%); color: rgb(234,4,73);";
    lineEdit->setStyleSheet(border + (good ? goodColours : badColours));
}

void showFieldHint(QLabel *label, PinTexts::Colour colour, const QString &text)
{
    const bool red = colour == PinTexts::Colour::Error;
    const QString value = PinTexts::colourValue(red ? colour : PinTexts::Colour::Neutral);
    label->setStyleSheet(label->styleSheet() + " color:" + value + ';');
    label->setText(text);
    label->show();
}

void setResultColour(QWidget *frame, PinTexts::Colour colour)
{
    // By name, or the colours would reach into each other's widgets.
    frame->setStyleSheet(
        QString("QFrame#pinChangedFrame { background: transparent; border: 2px solid %1; border-radius: 12px; }\n"
                "QLabel#lPinChanged { color: %1; }")
            .arg(PinTexts::colourValue(colour)));
}

void enableWhenComplete(QAbstractButton *button, const QList<PinEntry> &entries)
{
    button->setEnabled(false);
    bool complete = true;
    for (const PinEntry &entry : entries)
        complete = isComplete(entry) && complete;
    button->setEnabled(complete);
}

void PinForm::admit(const Rule &secretRule, const Rule &freshRule) const
{
    admitPin(secret, secretRule.pattern);
    admitPin(fresh, freshRule.pattern);
    admitPin(repeat, freshRule.pattern);
}

void PinForm::check(const Rule &secretRule, const Rule &freshRule) const
{
    enableWhenComplete(send,
                       {
                           { secret, secretHint, secretRule.digits, secretRule.hint, true },
                           // Never restyled while typing, unlike its neighbours.
                           { fresh, freshHint, freshRule.digits, freshRule.hint, false },
                           { repeat, repeatHint, freshRule.digits, freshRule.hint, true },
                       });
}

void PinForm::markRepetition(bool match) const
{
    setFieldStyle(repeat, match);
    if (match)
        return;
    showFieldHint(repeatHint, PinTexts::Colour::Error, "Niepoprawny PIN. Popraw PIN.");
    repeat->setAccessibleName("Powtórzony nowy PIN różni się");
    focusAloud(repeat);
}

void PinForm::clear() const
{
    for (QLineEdit *field : { fresh, secret, repeat }) {
        forgetSecret(field);
        setFieldStyle(field, true);
    }
}

void PinForm::forget() const
{
    for (QLineEdit *field : { secret, fresh, repeat })
        forgetSecret(field);
}

void PinForm::hideHints() const
{
    for (QLabel *hint : { secretHint, freshHint, repeatHint })
        hint->hide();
}

void markFocusInRings(QWidget *before, QWidget *now)
{
    markRing(before, false);
    markRing(now, true);
}
