#include "home_cards.h"

#include "card/card_results.h"

#include <QRegularExpression>

namespace HomeCards {

QString accessibleText(const QString &text)
{
    static const QRegularExpression markup("<[^>]*>");
    return QString(text).remove(markup).replace("kan", "CAN");
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
