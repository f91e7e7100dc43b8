#pragma once

#include <QList>
#include <QString>

class QAbstractButton;
class QLabel;
class QLineEdit;
class QWidget;

// What the six fields for a PIN or PUK have in common.

// Admits what a pattern of card_tables.h matches, at typing time and for every way in: keys, clipboard, input methods.
// Only the ten digits of ASCII are digits here.
void admitPin(QLineEdit *field, const QString &pattern);

// Empties a field and its history of edits, which QLineEdit::clear() would keep.
void forgetEntry(QLineEdit *field);

// A hint below a field, in "red" or, for any other word, in blue. The colour is appended to the label's own style
// sheet, which therefore grows at each call; this is meant.
void showFieldHint(QLabel *label, const QString &colour, const QString &text);

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

// The frame around a field marks its focus, since the field's own style beats the theme's.
void markFocusInRings(QWidget *before, QWidget *now);
