#pragma once

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

// The vocabulary of the card that everything above the Cryptoki library shares. Nothing here talks to a card; the
// tables are built before main and never change.

// Names of a card's containers, as they stand in token labels: exact, case-sensitive, looked for as a substring.
namespace Container {

constexpr const char *Authentication = "Authentication";
constexpr const char *Authorization = "Authorization";
constexpr const char *Presence = "Presence";
constexpr const char *Qualified = "Qualified";
// Holds the data groups of ICAO 9303; a token of the card, but none of its four containers.
constexpr const char *Emrtd = "eMRTD";

} // namespace Container

struct CardContainer {
    QString name;
    QString role; // in the user's words
};

// A container whose PIN a user can set. Presence has none and is no row here.
struct PinContainer {
    QString name;
    int digits;
    QString pattern; // for a QRegularExpressionValidator
};

// All four, in the order Authentication, Authorization, Presence, Qualified.
const std::vector<CardContainer> &cardContainers();
const std::vector<PinContainer> &pinContainers();

// The row of that name; null if the container has no PIN of its own.
const PinContainer *pinContainer(const QString &conteiner);

// Words and digits by a container's name; empty and 0 for a name that the tables do not hold.
QString containerTitle(const QString &conteiner);
int pinDigits(const QString &conteiner);

// The PUK belongs to the card and has eight digits, whatever the container.
constexpr const char *pukPattern = "\\d{8}";
constexpr int pukDigits = 8;

// One object read from a token.
struct pkcsDataObj {
    QString name; // CKA_LABEL without trailing white space
    QByteArray value; // CKA_VALUE: DER, or a data group as it stands on the card
};

struct ChipContainer {
    qint32 id;
    std::string label;
    qint32 containerOrdinal;
    std::string pinPrompt; // "language tag,text" entries separated by ";", UTF-8; empty if there is no PIN
    std::vector<std::string> unused; // always empty
};

// One known chip. The program reads slotFlag and chipType only; the other fields are what the card's maker says of the
// chip, carried as data. Those named flag and number have no known meaning.
struct CardChip {
    quint32 slotFlag; // bit of CK_SLOT_INFO.flags that marks the chip
    std::vector<quint8> atr;
    std::vector<quint8> atrMask;
    std::string name;
    std::string aidLabel;
    bool flag1;
    bool flag2;
    bool flag3;
    quint32 chipBit;
    quint32 chipType; // what Reader::cardChipType returns
    qint32 number1;
    qint32 number2;
    std::vector<ChipContainer> containers;
    qint32 number3;
    std::string qualifiedLabel;
};

// A copy of the whole table, in the order in which a chip is looked for.
std::vector<CardChip> cardChips();
