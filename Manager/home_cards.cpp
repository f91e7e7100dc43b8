#include "home_cards.h"

#include "card/card_results.h"

#include <QRegularExpression>

namespace HomeCards {

namespace {

// More than the fixed words of the holder's text have.
constexpr int holderTextRoom = 128;

} // namespace

QString accessibleText(const QString &text)
{
    static const QRegularExpression markup("<[^>]*>");
    return QString(text).remove(markup).replace("kan", "CAN");
}

QString holderText(const QString &number, const QString &expiry, const QString &names, const QString &surname)
{
    QString text;
    // A text that grows moves, and leaves what it was behind.
    text.reserve(holderTextRoom + number.size() + expiry.size() + names.size() + surname.size());
    text += "Twoje dane z velmor: zdjęcie seria i numer dowodu: ";
    text += number;
    text += " data ważności ";
    text += expiry;
    text += " imiona: ";
    text += names;
    text += " nazwisko: ";
    text += surname;
    return text;
}

QString qualifiedCountText(int count)
{
    return "Certyfikat kwalifikowany masz " + QString::number(count)
        + (count == 1 ? " certyfikat kwalifikowany" : " certyfikaty kwalifikowane");
}

bool pinButtonEnabled(const QString &word)
{
    const QString trimmed = word.trimmed();
    return !trimmed.isEmpty() && trimmed != PinWord::first;
}

} // namespace HomeCards
