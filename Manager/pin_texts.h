#pragma once

#include <QString>

// Words and colours of the PIN pages: what a result of the card means to the user, and what differs between a locked
// PIN and one that was never set. No widgets here. The texts differ from each other by single blanks, stops and
// hyphens; all of that is meant.
namespace PinTexts {

enum class Colour { Error, Success, Neutral };

// "#RRGGBB", the same in every theme.
QString colourValue(Colour colour);

// Key of the titles of the PIN pages and of the page with the result. Two of them end in a blank, which is meant.
enum TitleKey { ChangeTitle = 1, UnblockTitle = 2, FirstPinTitle = 3 };

QString pageTitle(int key); // empty for another key

// What one result of Pkcs11::changePIN or Pkcs11::unblockPIN is told as.
struct Outcome {
    int code;
    Colour colour;
    const char *log;
    const char *text;
    const char *firstPinText = nullptr; // instead of text while a first PIN is set
};

// Null for a code that shows nothing: the page stands.
const Outcome *changeOutcome(int code);
const Outcome *unblockOutcome(int code);

// The page for the PUK in its two uses.
struct PukPageWords {
    const char *mainTitle; // the page's own, without the blank of the result page's
    const char *details;
    Colour detailsColour;
    const char *button;
    const char *newPin;
    const char *repeatPin;
    const char *padNewPin;
    const char *padRepeatPin;
    const char *loader;
    TitleKey resultTitle;
};

const PukPageWords &unblockWords();
const PukPageWords &firstPinWords();

// "cztero", "sześcio", "ośmio" as the front of "...cyfrowy"; empty for another number.
QString digitWord(int digits);
// "PIN musi mieć 4 cyfry", "... 6 cyfr".
QString lengthHint(int digits);
QString triesLeft(int tries);

} // namespace PinTexts
