#include "home_cards.h"

#include "base/secret_string.h"
#include "card/card_results.h"

#include <QRegularExpression>

namespace HomeCards {

QString accessibleText(const QString &text)
{
    static const QRegularExpression markup("<[^>]*>");
    return QString(text).remove(markup).replace("kan", "CAN");
}

QString holderText(const QString &number, const QString &expiry, const QString &names, const QString &surname)
{
    return joinSecrets({ u"Twoje dane z velmor: zdjęcie seria i numer dowodu: ", number, u" data ważności ", expiry,
                         u" imiona: ", names, u" nazwisko: ", surname });
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
