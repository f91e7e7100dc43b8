#include "card_in_reader.h"

#include "card/card_results.h"
#include "card/card_tables.h"

namespace {

// Chips whose PUK is typed although the reader has a keypad: one always, one on the last try.
constexpr int chipWithoutPukOnPad = 16;
constexpr int chipWithoutLastPukOnPad = 4;

} // namespace

void CardInReader::forgetHolder()
{
    certs.clear();
    data.clearDg();
    // Only if no one else has it: else it would be a copy that is overwritten.
    if (photo.isDetached())
        photo.fill(0);
    photo = QImage();
}

bool CardInReader::pukIsBlocked() const
{
    // A PUK that is not set cannot be entered either.
    return pukTries == Tries::locked || pukTries == Tries::notSet;
}

bool CardInReader::pukGoesThroughPad() const
{
    return pinPad && chip != chipWithoutPukOnPad && !(chip == chipWithoutLastPukOnPad && pukTries == Tries::last);
}

bool CardInReader::firstPinIsOffered(const QString &conteiner) const
{
    return conteiner == Container::Qualified && words.value(conteiner).trimmed() == PinWord::first;
}
