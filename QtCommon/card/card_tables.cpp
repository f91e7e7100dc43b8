#include "card/card_tables.h"

#include <algorithm>
#include <iterator>

namespace {

const std::vector<CardContainer> containerTable = {
    { Container::Authentication, "Certyfikat do identyfikacji i uwierzytelniania" },
    { Container::Authorization, "Certyfikat do podpisu osobistego" },
    { Container::Presence, "Certyfikat do potwierdzania obecności" },
    { Container::Qualified, "Certyfikat kwalifikowany" },
};

const std::vector<PinContainer> pinTable = {
    { Container::Authentication, 4, "\\d{4}" },
    { Container::Authorization, 6, "\\d{6}" },
    { Container::Qualified, 8, "\\d{8}" },
};

const std::vector<ChipContainer> chipContainerTable = {
    { 1,
      Container::Authentication,
      0,
      "pl,Podaj PIN (4-cyfrowy) do identyfikacji i uwierzytelnienia;"
      "pl-PL,Podaj PIN (4-cyfrowy) do identyfikacji i uwierzytelnienia",
      {} },
    { 2, Container::Presence, 7, "", {} },
    { 3,
      Container::Authorization,
      1,
      "pl,Podaj PIN (6-cyfrowy) do podpisu osobistego;pl-PL,Podaj PIN (6-cyfrowy) do podpisu osobistego",
      {} },
    { 4,
      Container::Qualified,
      3,
      "pl,Podaj PIN (8-cyfrowy) do podpisu kwalifikowanego;pl-PL,Podaj PIN (8-cyfrowy) do podpisu kwalifikowanego",
      {} },
};

template <typename Row>
const Row *rowOf(const std::vector<Row> &table, const QString &name)
{
    const auto row =
        std::find_if(table.begin(), table.end(), [&name](const Row &candidate) { return candidate.name == name; });
    return row == table.end() ? nullptr : &*row;
}

// An ATR of ISO 7816-3 for protocol T=1 with the given historical bytes, at most 15: TS, T0, TD1, the bytes, check
// byte. These are specimens: nothing compares them with a card.
std::vector<quint8> specimenAtr(const std::string &historical)
{
    std::vector<quint8> atr { 0x3B, static_cast<quint8>(0x80 | historical.size()), 0x01 };
    std::copy(historical.begin(), historical.end(), std::back_inserter(atr));
    quint8 check = 0;
    std::for_each(atr.begin() + 1, atr.end(), [&check](quint8 byte) { check ^= byte; });
    atr.push_back(check);
    return atr;
}

CardChip chip(const char *name, quint32 slotFlag, quint32 chipBit, quint32 chipType)
{
    const std::vector<quint8> atr = specimenAtr(name);
    return { slotFlag,
             atr,
             std::vector<quint8>(atr.size(), 0xFF),
             name,
             "AID.20_",
             true,
             false,
             true,
             chipBit,
             chipType,
             -1,
             -1,
             chipContainerTable,
             -1,
             Container::Qualified };
}

// Two rows share a chipType and the values do not ascend; both are meant.
const std::vector<CardChip> chipTable = {
    chip("VELMOR_1_0", 0x2000, 2, 2),     chip("VELMOR_2_0", 0x40000, 64, 4),
    chip("VELMOR_2_1", 0x80000, 128, 16), chip("VELMOR_2_2_TEST", 0x100000, 256, 8),
    chip("VELMOR_2_2", 0x200000, 512, 8),
};

} // namespace

const std::vector<CardContainer> &cardContainers()
{
    return containerTable;
}

const std::vector<PinContainer> &pinContainers()
{
    return pinTable;
}

const PinContainer *pinContainer(const QString &conteiner)
{
    return rowOf(pinTable, conteiner);
}

QString containerTitle(const QString &conteiner)
{
    const CardContainer *row = rowOf(containerTable, conteiner);
    return row ? row->role : QString();
}

int pinDigits(const QString &conteiner)
{
    const PinContainer *row = pinContainer(conteiner);
    return row ? row->digits : 0;
}

std::vector<CardChip> cardChips()
{
    return chipTable;
}
