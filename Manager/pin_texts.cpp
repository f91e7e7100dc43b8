#include "pin_texts.h"

#include "card/card_results.h"

#include <QMap>

#include <algorithm>
#include <iterator>

namespace PinTexts {

namespace {

template <std::size_t N>
const Outcome *find(const Outcome (&rows)[N], int code)
{
    const auto row =
        std::find_if(std::begin(rows), std::end(rows), [code](const Outcome &r) { return r.code == code; });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

QString colourValue(Colour colour)
{
    switch (colour) {
    case Colour::Error:
        return "#EA0449";
    case Colour::Success:
        return "#6EBB6E";
    case Colour::Neutral:
        break;
    }
    return "#2B9EEB";
}

QString pageTitle(int key)
{
    static const QMap<int, QString> titles {
        { ChangeTitle, "Zmiana PIN-u" },
        { UnblockTitle, "Odblokowanie PIN-u " },
        { FirstPinTitle, "Nadawanie PIN-u " },
    };
    return titles.value(key);
}

const Outcome *changeOutcome(int code)
{
    constexpr const char *wrongPin = "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN";
    // The last is any failure without a code of its own, a lost session too; it is told as a wrong PIN.
    static const Outcome rows[] = {
        { CardResult::done, Colour::Success, "Pin changed correctly", "PIN został zmieniony" },
        { CardResult::aborted, Colour::Error, "changePinFin() -- Operation rejected", "Zmiana PIN-u przerwana" },
        { CardResult::pinsDiffer, Colour::Error, "changePinFin() -- Pins Don't Match", "Podane PINy różnią się" },
        { CardResult::cancelled, Colour::Neutral, "changePinFin() -- Operation canceled", "Zmiana PIN-u anulowana" },
        { CardResult::wrongPin, Colour::Error, "changePinFin() -- Incorrect Actual Pin", wrongPin },
        { CardResult::failed, Colour::Error, "changePinFin() -- Incorrect Actual Pin", wrongPin },
    };
    return find(rows, code);
}

const Outcome *unblockOutcome(int code)
{
    constexpr const char *wrongPuk = "Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.";
    constexpr const char *wrongPukForFirstPin = "Niepoprawne nadanie PIN-u.\nNiepoprawny PUK.";
    // An abort reads like a cancellation here and is no error, unlike in a change.
    static const Outcome rows[] = {
        { CardResult::done, Colour::Success, "unblockPinFin() -- PIN unblocked correctly", "PIN został odblokowany",
          "PIN został nadany" },
        { CardResult::aborted, Colour::Neutral, "unblockPinFin() -- Operation rejected", "Odblokowanie PIN-u anulowane",
          "Kontener został aktywowany.\nNadawanie PIN-u przerwane.\nOdblokuj PIN ponownie." },
        { CardResult::pinsDiffer, Colour::Error, "unblockPinFin() -- Pins Don't Match", "Podane PINy różnią się",
          "Podane PINy różnią się" },
        { CardResult::cancelled, Colour::Neutral, "unblockPinFin() -- Operation canceled",
          "Odblokowanie PIN-u anulowane", "Nadawanie PIN-u anulowane" },
        { CardResult::wrongPuk, Colour::Error, "unblockPinFin() -- Incorrect PUK", wrongPuk, wrongPukForFirstPin },
        { CardResult::failed, Colour::Error, "unblockPinFin() -- Incorrect PUK", wrongPuk, wrongPukForFirstPin },
    };
    return find(rows, code);
}

const PukPageWords &unblockWords()
{
    static const PukPageWords words {
        "Odblokowanie PIN-u",
        "PIN jest zablokowany. Użyj numeru PUK do nadania nowego PIN-u.",
        Colour::Error,
        PinWord::change,
        "Nowy PIN",
        "Powtórz nowy PIN",
        "2. Podaj nowy PIN",
        "3. Powtórz nowy PIN",
        "Odblokowywanie PIN-u \n Proszę czekać",
        UnblockTitle,
    };
    return words;
}

const PukPageWords &firstPinWords()
{
    static const PukPageWords words {
        "Nadawanie PIN-u",
        "Twój dowód nie ma nadanego PIN-u. Wpisz PUK i nadaj PIN.",
        Colour::Neutral,
        PinWord::first,
        "PIN",
        "Powtórz PIN",
        "2. Podaj PIN",
        "3. Powtórz PIN",
        "Nadawanie PIN-u \n Proszę czekać",
        FirstPinTitle,
    };
    return words;
}

QString digitWord(int digits)
{
    static const QMap<int, QString> words { { 4, "cztero" }, { 6, "sześcio" }, { 8, "ośmio" } };
    return words.value(digits);
}

QString lengthHint(int digits)
{
    return "PIN musi mieć " + QString::number(digits) + (digits == 4 ? " cyfry" : " cyfr");
}

QString triesLeft(int tries)
{
    return "Pozostało prób: " + QString::number(tries);
}

} // namespace PinTexts
