#pragma once

#include <QMetaType>
#include <QtGlobal>

#include <algorithm>
#include <iterator>

// What each result of a card is told as after a change of a PIN and after an unblock: the words and colours, once for
// the tests of the table and of the page.
struct PinResult {
    const char *name;
    int code;
    const char *colour;
    const char *log;
    const char *text;
    const char *firstPinText = nullptr; // instead of text while a first PIN is set
};

namespace pin_results {

inline constexpr char red[] = "#EA0449", green[] = "#6EBB6E", blue[] = "#2B9EEB";
inline constexpr char wrongPin[] = "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN";
inline constexpr char wrongPuk[] = "Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.";
inline constexpr char wrongPukForFirstPin[] = "Niepoprawne nadanie PIN-u.\nNiepoprawny PUK.";

inline constexpr PinResult ofAChange[] = {
    { "done", 0, green, "Pin changed correctly", "PIN został zmieniony" },
    { "aborted", -11, red, "changePinFin() -- Operation rejected", "Zmiana PIN-u przerwana" },
    { "PINs differ", -9, red, "changePinFin() -- Pins Don't Match", "Podane PINy różnią się" },
    { "cancelled", -8, blue, "changePinFin() -- Operation canceled", "Zmiana PIN-u anulowana" },
    { "wrong PIN", -6, red, "changePinFin() -- Incorrect Actual Pin", wrongPin },
    { "other failure", -1, red, "changePinFin() -- Incorrect Actual Pin", wrongPin },
};

inline constexpr PinResult ofAnUnblock[] = {
    { "done", 0, green, "unblockPinFin() -- PIN unblocked correctly", "PIN został odblokowany", "PIN został nadany" },
    { "aborted", -11, blue, "unblockPinFin() -- Operation rejected", "Odblokowanie PIN-u anulowane",
      "Kontener został aktywowany.\nNadawanie PIN-u przerwane.\nOdblokuj PIN ponownie." },
    { "PINs differ", -9, red, "unblockPinFin() -- Pins Don't Match", "Podane PINy różnią się",
      "Podane PINy różnią się" },
    { "cancelled", -8, blue, "unblockPinFin() -- Operation canceled", "Odblokowanie PIN-u anulowane",
      "Nadawanie PIN-u anulowane" },
    { "wrong PUK", -4, red, "unblockPinFin() -- Incorrect PUK", wrongPuk, wrongPukForFirstPin },
    { "other failure", -1, red, "unblockPinFin() -- Incorrect PUK", wrongPuk, wrongPukForFirstPin },
};

template <std::size_t N>
const PinResult &find(const PinResult (&rows)[N], int code)
{
    const auto row =
        std::find_if(std::begin(rows), std::end(rows), [code](const PinResult &r) { return r.code == code; });
    if (row == std::end(rows))
        qFatal("no such result: %d", code);
    return *row;
}

} // namespace pin_results

Q_DECLARE_METATYPE(PinResult)
