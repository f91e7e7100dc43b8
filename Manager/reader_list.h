#pragma once

#include <QString>
#include <QStringList>

// The reader list text of the message `readers` and of the option -r: entries "number:name" joined by "||", or one word
// that says why there is none. A list always holds at least one "||".
struct ReaderList {
    QStringList names;
    QString error;
};

// Entries are handed on as they stand behind their first ":", empty ones included.
ReaderList parseReaders(const QString &text);

// Each entry cut to the reader's name.
QStringList readerNames(QStringList entries);

// Whether the combo box text names a usable reader. The box doubles as the status line, whose sentences begin with
// "brak".
bool namesReader(const QString &comboText);

// What a list that comes by itself makes the window do: read the readers anew, for the card on the screen, if there is
// one, is no longer the right one; note that there is a list and go on; or take it.
enum class ReadersRule { Reload, Note, Take };
// The pages as far as they matter to a list: home and the one without a card, the one of a document without a chip,
// settings and help, all others.
enum class ReaderPage { ShowsList, NoElectricLayer, NeedsNoCard, Busy };
// `value` is the text of the message, `comboText` that of the box.
ReadersRule readersRule(const QString &value, const QString &comboText, ReaderPage page);

// What the user sees when no card can be read.
struct ReaderProblem {
    QString item;
    QString message;
    bool hideReaders;
};

// `waitingForCan` is whether the program that asks for the CAN runs and has not been closed by the user; it counts only
// for words other than the three known ones.
ReaderProblem readerProblem(const QString &error, bool waitingForCan);

// Whether the word is none of the three that have a text of their own: a card that cannot be reached without its CAN.
bool isCanProblem(const QString &error);
