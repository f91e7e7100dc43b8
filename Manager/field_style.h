#pragma once

class QLineEdit;

// The look of a PIN or PUK field: neutral, or bad after a refused entry. Set on the field itself, so it is the same in
// every theme.
void setFieldStyle(QLineEdit *lineEdit, bool good);
