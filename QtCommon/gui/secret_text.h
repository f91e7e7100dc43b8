#pragma once

class QLineEdit;

// What is typed into a field that hides its text. The toolkit hides it from the eye alone: it tells each change of the
// text to the accessibility bus, which every program of the user can listen to, and keeps each digit in the field's
// history of edits.

// From now on changes of a field whose echo mode is not Normal are told as bullets, one for each character. Whatever
// handler of accessibility events there was is called as before. Once a program; later calls change nothing.
void tellSecretsAsBullets();

// Makes room for what will be typed and its history, so that none of it is left behind where they grow. That takes a
// millisecond, so it is done with the first event that can bring a text.
void prepareSecret(QLineEdit *field);

// Empties a field, overwriting what was typed, in the text and in the history, where QLineEdit::clear() keeps both.
void forgetSecret(QLineEdit *field);
