#pragma once

#include "pin_texts.h"

#include <QList>
#include <QString>

class QAbstractButton;
class QLabel;
class QLineEdit;
class QWidget;

// What the six fields for a PIN or PUK have in common, and the two forms that they make.

// Admits what a pattern of card_tables.h matches, at typing time and for every way in: keys, clipboard, input methods.
// Only the ten digits of ASCII are digits here.
void admitPin(QLineEdit *field, const QString &pattern);

// The look of a field: neutral, or bad after a refused entry. Set on the field itself, so it is the same in every
// theme.
void setFieldStyle(QLineEdit *lineEdit, bool good);

// A hint below a field, red as an error or, in any other colour, blue. The colour is appended to the label's own style
// sheet, which therefore grows at each call; this is meant.
void showFieldHint(QLabel *label, PinTexts::Colour colour, const QString &text);

// Frame and text of the page with the result of a PIN operation.
void setResultColour(QWidget *frame, PinTexts::Colour colour);

// One field with its hint, as the pages check them at every edit.
struct PinEntry {
    QLineEdit *field;
    QLabel *hint;
    int digits;
    QString hintText;
    bool restyled; // the look of an incomplete field is made good again while typing
};

// Shows the hint of each incomplete field and enables the button when there is none. Length is the only test here; the
// card is the judge of the rest.
void enableWhenComplete(QAbstractButton *button, const QList<PinEntry> &entries);

// What is typed on one page: a PIN or the PUK that is there, a new PIN, the new PIN again.
struct PinForm {
    // How many digits an entry has, what may be typed, and what is said while it is too short.
    struct Rule {
        int digits;
        QString pattern;
        QString hint;
    };

    QLineEdit *secret;
    QLabel *secretHint;
    QLineEdit *fresh;
    QLabel *freshHint;
    QLineEdit *repeat;
    QLabel *repeatHint;
    QAbstractButton *send;

    void admit(const Rule &secretRule, const Rule &freshRule) const;
    void check(const Rule &secretRule, const Rule &freshRule) const;
    // Tells whether the new PIN was repeated well, by look, hint and focus.
    void markRepetition(bool match) const;
    // Empty, and with the look of new fields.
    void clear() const;
    void forget() const;
    void hideHints() const;
};

// The frame around a field marks its focus, since the field's own style beats the theme's.
void markFocusInRings(QWidget *before, QWidget *now);
