#pragma once

#include "simworld/world_types.h"

#include <QImage>
#include <QString>

// What the panel says of cards, in Polish.
namespace CardWords {

// What the four secrets are called, in the order in which they are shown. The container of the PUK's is empty.
struct Secret {
    const char *container;
    const char *name;
};
inline constexpr Secret secrets[] = {
    { sim::Authentication, "Uwierzytelnianie" },
    { sim::Authorization, "Podpis osobisty" },
    { sim::Qualified, "Podpis kwalifikowany" },
    { "", "PUK" },
};

// Whose card it is.
QString holder(const sim::Card &card);

// What is different from a card on which all is well, one sentence each; a few words if nothing is. `card` with values.
QString state(const sim::Card &card, const sim::CardState &now);

// "3 próby", "2 próby", "1 próba", "zablokowany".
QString tries(int count);

// The portrait among the card's data, null if there is none or it cannot be read; likewise.
QImage portrait(const sim::Card &card);

} // namespace CardWords
