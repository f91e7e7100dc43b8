#include "panel/card_words.h"

#include "card/card-parser.h"

#include <QStringList>

#include <algorithm>

namespace CardWords {

namespace {

bool hasCertificate(const sim::Card &card)
{
    constexpr unsigned long certificate = 1;
    return std::any_of(card.objects.begin(), card.objects.end(), [](const auto &row) {
        return std::any_of(row.second.begin(), row.second.end(),
                           [](const sim::Object &object) { return object.objectClass == certificate; });
    });
}

QString sentence(const char *beginning, const QStringList &names)
{
    return names.isEmpty() ? QString() : QString("%1: %2.").arg(beginning, names.join(", "));
}

} // namespace

QString holder(const sim::Card &card)
{
    return card.supported ? QString::fromStdString(card.holder) : QStringLiteral("Obca karta");
}

QString state(const sim::Card &card, const sim::CardState &now)
{
    if (!card.supported)
        return "To nie jest dowód velmor.";
    QStringList locked;
    QStringList lastTry;
    QStringList unset;
    for (const Secret &secret : secrets) {
        const bool isPuk = *secret.container == '\0';
        const sim::PinState pin = isPuk ? sim::PinState() : now.pins.at(secret.container);
        const int left = isPuk ? now.pukTries : pin.tries;
        const QString name = isPuk ? QString(secret.name) : QString(secret.name).toLower();
        if (!pin.initialized || pin.toBeChanged)
            unset << name;
        else if (left == 0)
            locked << name;
        else if (left == 1)
            lastTry << name;
    }
    QStringList sentences { sentence("Zablokowane", locked), sentence("Ostatnia próba", lastTry),
                            sentence("Bez PIN-u", unset) };
    if (!hasCertificate(card))
        sentences.prepend("Bez warstwy elektronicznej.");
    sentences.removeAll(QString());
    return sentences.isEmpty() ? QStringLiteral("Wszystkie kody działają.") : sentences.join(' ');
}

QString tries(int count)
{
    if (count == 0)
        return "zablokowany";
    return count == 1 ? QStringLiteral("1 próba") : QString("%1 próby").arg(count);
}

QImage portrait(const sim::Card &card)
{
    for (const auto &row : card.objects) {
        for (const sim::Object &object : row.second) {
            if (object.label != "DG2")
                continue;
            DGParser parser;
            parser.loadDg("DG2", QByteArray::fromStdString(object.value));
            return QImage::fromData(parser.photo());
        }
    }
    return {};
}

} // namespace CardWords
