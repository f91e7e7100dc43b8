#pragma once

#include <QString>

// What a screen reader is told of the home page's tiles, and when their PIN buttons work. No widgets here.
namespace HomeCards {

// For a screen reader: no markup, and "kan" spelt as the abbreviation again. It also changes names that hold "kan",
// which is known and kept.
QString accessibleText(const QString &text);

// The holder's tile in one sentence. The caller wipes it.
QString holderText(const QString &number, const QString &expiry, const QString &names, const QString &surname);

// "Certyfikat kwalifikowany masz N ...", in the singular for one.
QString qualifiedCountText(int count);

// Whether the status word of the card lets a PIN button of Authentication or Authorization be pressed.
bool pinButtonEnabled(const QString &word);

} // namespace HomeCards
