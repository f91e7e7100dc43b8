#pragma once

#include <QString>

// Fixed words of the home page's tiles, and what a screen reader is told of them. No widgets here.
namespace HomeCards {

// Index of a container in CertStore.
enum Container { Authentication = 0, Authorization = 1, Presence = 2, Qualified = 3 };

struct Texts {
    Container container;
    const char *title;
    const char *text;
};

// In the order of CertStore's indexes.
const Texts (&texts())[4];

// For a screen reader: no markup, and "kan" spelt as the abbreviation again. It also changes names that hold "kan",
// which is known and kept.
QString accessibleText(const QString &text);

// "Certyfikat kwalifikowany masz N ...", in the singular for one.
QString qualifiedCountText(int count);

// Whether the status word of the card lets a PIN button of Authentication or Authorization be pressed.
bool pinButtonEnabled(const QString &buttonText);

} // namespace HomeCards
