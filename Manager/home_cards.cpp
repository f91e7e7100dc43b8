#include "home_cards.h"

#include <QRegularExpression>

namespace HomeCards {

const Texts (&texts())[4]
{
    static const Texts rows[4] = {
        { Authentication, "Certyfikat do \nidentyfikacji i uwierzytelniania",
          "Możesz potwierdzać swoją tożsamość w internecie (na przykład korzystać z e-usług) " },
        { Authorization, "Certyfikat do \npodpisu osobistego",
          "Możesz podpisywać dokumenty (służy jako elektroniczny podpis) " },
        { Presence, "Certyfikat do \npotwierdzania obecności",
          "Możesz potwierdzać swoją obecność (na przykład w placówce medycznej)" },
        { Qualified, "Certyfikat \nkwalifikowany", "Możesz dodawać certyfikaty kwalifikowane " },
    };
    return rows;
}

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

bool pinButtonEnabled(const QString &buttonText)
{
    const QString word = buttonText.trimmed();
    return !word.isEmpty() && word != "Nadaj PIN";
}

} // namespace HomeCards
