#include "personal_data.h"

#include "card/card-parser.h"

namespace PersonalData {

namespace {

constexpr int rowHeight = 30;
constexpr int lineGap = 10;

} // namespace

QVector<Row> rows(const DGParser &parser, const HomeTexts &home)
{
    constexpr bool cut = true;
    constexpr bool whole = false;
    const QString sex = parser.sex();
    return {
        { First, "nameFrame_2", "lnameVal_2", home.names, cut, "Imiona: " },
        { First, "surnameFrame_2", "lsurnameVal_2", home.surname, cut, "Nazwisko: " },
        { First, "familyNameFrame", "lfamilyNameVal", parser.familyName(), cut, "Nazwisko rodowe: " },
        { First, "fatherNameFrame", "lfatherNameVal", parser.fatherName(), cut, "Imię ojca: " },
        { First, "motherNameFrame", "lmotherNameVal", parser.motherName(), cut, "Imię matki: " },
        { Second, "brthDateFrame", "lbrthDateVal", parser.birthDate(), whole, "Data urodzenia: " },
        { Second, "birthPlaceFrame", "lbirthPlaceVal", parser.birthPlace(), cut, "Miejsce urodzenia: " },
        { Second, "sexFrame", "lsexVal", sex, whole, "Płeć: ", spokenSex(sex) },
        { Second, "peselFrame", "lpeselVal", parser.personalNumber(), whole, "Pesel: " },
        { Second, "nationalityFrame", "lnationalityVal", parser.nationality(), cut, "Obywatelstwo: " },
        { Third, "numIdFrame_2", "lnumIdVal_2", home.documentNumber, whole, "Seria i numer dowodu: " },
        { Third, "expDateFrame_2", "lexpDateVal_2", parser.expiryDate(false), whole, "Data ważności: " },
        { Third, "issueDateFrame", "lissueDateVal", parser.issueDate(), whole, "Data wydania: " },
        { Third, "issuingAuthorityFrame", "lissuingAuthVal", parser.issuingAuthority(), cut, "Organ wydający: " },
    };
}

QString spokenSex(const QString &shown)
{
    return shown == "F" || shown == "K" ? "kobieta" : "mężczyzna";
}

int blockHeight(int rowCount)
{
    return rowHeight * rowCount;
}

int lineBelowBlock(int top, int height)
{
    return top + height + lineGap;
}

int topBelowLine(int line)
{
    return line + lineGap;
}

} // namespace PersonalData
