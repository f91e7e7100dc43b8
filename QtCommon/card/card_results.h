#pragma once

// What the operations of a card are told as, from the worker to the window: plain numbers and words.

// Results of the PIN operations; -2, -5, -7 and -10 are not used.
namespace CardResult {

constexpr int done = 0;
constexpr int failed = -1; // whatever has no number of its own
constexpr int noCard = -3;
constexpr int wrongPuk = -4;
constexpr int wrongPin = -6;
constexpr int cancelled = -8; // at the reader
constexpr int pinsDiffer = -9; // as the reader reports it
constexpr int aborted = -11;

} // namespace CardResult

// Tries of a PIN or of the PUK: so many are left, or one of the two states that are no count.
namespace Tries {

constexpr int locked = 0;
constexpr int last = 1;
constexpr int notSet = 4; // or to be changed

} // namespace Tries

// State of a container's PIN, in the words of its button. Empty where the container is missing.
namespace PinWord {

constexpr char change[] = "Zmień PIN";
constexpr char unblock[] = "Odblokuj PIN";
constexpr char first[] = "Nadaj PIN";

} // namespace PinWord
