#pragma once

#include "simworld/world_types.h"
#include "specimens/person.h"

#include <QString>

#include <vector>

// Specimens that differ in a number alone, and carry it in every text: names, places, document, certificates.
class NumberedCards {
public:
    explicit NumberedCards(int count);

    const std::vector<sim::Card> &cards() const { return made; }
    static std::string name(int number);

    // The numbers of all the cards of which the text tells, each once.
    QList<int> tellsOf(const QString &text) const;

private:
    static specimen::Person holder(int number);

    std::vector<sim::Card> made;
    QStringList personalNumbers;
};
