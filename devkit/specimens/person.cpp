#include "specimens/person.h"

#include <algorithm>
#include <cstdio>

namespace specimen {

// Names, birth, document, the name of the row, looks. Nobody of these names and numbers exists.
const std::vector<Person> &people()
{
    static const std::vector<Person> rows {
        { { "Anna", "Maria", "Wiśniewska", "Zając", "Tadeusz", "Krystyna" },
          { "19870423", "KRAKÓW", 'F', "POL", 412 },
          { "CAA100017", "20231017", "20331017", "PREZYDENT MIASTA KRAKOWA" },
          "anna",
          { 0xF2C9A8, 0x5A3825, Hair::Long, 0x5B7F5E, Clothes::Blouse, 0x3E6C8F, 0xF4F1EA, false, false, false,
            true } },
        { { "Jan", "Stanisław", "Dąbrowski", "Dąbrowski", "Józef", "Łucja" },
          { "19791102", "GDAŃSK", 'M', "POL", 237 },
          { "CAB200028", "20230612", "20330612", "PREZYDENT MIASTA GDAŃSKA" },
          "jan",
          { 0xE9BC98, 0x3A2A20, Hair::ShortParted, 0x6A4A34, Clothes::JacketAndTie, 0x39424E, 0x9E1B32, true, true,
            true, false } },
        { { "Ewa", "Ida", "Łoś", "Łoś", "Jan", "Ula" },
          { "20010214", "ŁÓDŹ", 'F', "POL", 58 },
          { "CAC300039", "20240105", "20340105", "PREZYDENT MIASTA ŁODZI" },
          "ewa",
          { 0xF6D3B5, 0xC98B3C, Hair::Bob, 0x4F7FA8, Clothes::RoundNeck, 0x8C5A86, 0xE8C15A, false, false, false,
            false } },
        { { "Halina", "Jadwiga", "Gżegżółka", "Pączek", "Wacław", "Bronisława" },
          { "19480730", "BIELSKO-BIAŁA", 'F', "POL", 741 },
          { "CAD400040", "20230301", "20330301", "PREZYDENT MIASTA BIELSKA-BIAŁEJ" },
          "halina",
          { 0xF0CBB0, 0xC9CCD0, Hair::Bun, 0x6F8797, Clothes::Turtleneck, 0x5F7F6B, 0xD9D3C4, true, false, false,
            true } },
        { { "Bartłomiej", "Świętosław", "Brzęczyszczykiewicz", "Brzęczyszczykiewicz", "Ścibor", "Żywia" },
          { "19940909", "SZCZEBRZESZYN", 'M', "POL", 903 },
          { "CAE500051", "20230920", "20330920", "BURMISTRZ SZCZEBRZESZYNA" },
          "bartlomiej",
          { 0xE3B08A, 0x2B1D16, Hair::Curly, 0x5A3D2B, Clothes::Shirt, 0x6F93B5, 0xFFFFFF, false, false, false,
            false } },
        { { "Żaneta", "Józefina", "Święcicka-Łącka", "Jaźwińska", "Grzegorz", "Małgorzata" },
          { "19901205", "ZAKOPANE", 'F', "POL", 625 },
          { "ABA123456", "20231017", "20331017", "BURMISTRZ MIASTA ZAKOPANE" },
          "zaneta",
          { 0xF4CDAF, 0x8A4B2A, Hair::Long, 0x6B5A3E, Clothes::RoundNeck, 0x7A8C99, 0xF0EFEB, false, false, false,
            false } },
        { { "Maksymiliana", "Konstancja", "Krzyżanowska-Błogosławieństwska-Zawadzka", "Źdźbłowska", "Jan", "Ewa" },
          { "19830808", "KĘDZIERZYN-KOŹLE<PRZY<UJŚCIU<KŁODNICY", 'F', "POL", 318 },
          { "CAF600062", "20230808", "20330808", "PREZYDENT MIASTA KĘDZIERZYN-KOŹLE, WYDZIAŁ SPRAW OBYWATELSKICH" },
          "longest",
          { 0xC68E63, 0x1E1512, Hair::Curly, 0x3C291E, Clothes::Blouse, 0xB0563F, 0xF3E3C8, false, false, false,
            true } },
        { { "Samir", "Noël", "Adeyemi", "Adeyemi", "Tunde", "Élise" },
          { "19960117", "LYON", 'X', "FRA", 164 },
          { "CAG700073", "20240220", "20290220", "WOJEWODA MAZOWIECKI" },
          "foreigner",
          { 0x8D5A3B, 0x17110E, Hair::Cropped, 0x2F1F16, Clothes::Turtleneck, 0xC8A24A, 0x2E2E2E, false, true, false,
            false } },
        { { "Zygmunt", "Alojzy", "Ćwikła", "Ćwikła", "Roch", "Róża" },
          { "19551120", "ŻYWIEC", 'M', "POL", 519 },
          { "CAH800084", "20230502", "20330502", "BURMISTRZ ŻYWCA" },
          "zygmunt",
          { 0xEDC2A2, 0x9A9DA0, Hair::Bald, 0x5F7C8A, Clothes::Shirt, 0xD8DEE3, 0xB9C4CC, true, false, true, false } },
    };
    return rows;
}

const Person &person(const std::string &id)
{
    const auto found = std::find_if(people().begin(), people().end(), [&](const Person &row) { return row.id == id; });
    return found == people().end() ? people().front() : *found;
}

std::string pesel(const Person &person)
{
    static const struct {
        const char *century;
        int added; // to the month
    } centuries[] = { { "18", 80 }, { "19", 0 }, { "20", 20 }, { "21", 40 }, { "22", 60 } };
    int month = std::stoi(person.birthDate.substr(4, 2));
    for (const auto &row : centuries)
        month += person.birthDate.compare(0, 2, row.century) == 0 ? row.added : 0;
    char digits[16];
    std::snprintf(digits, sizeof digits, "%s%02d%s%03d%d", person.birthDate.substr(2, 2).c_str(), month % 100,
                  person.birthDate.substr(6, 2).c_str(), person.peselSerial % 1000, person.sex == 'F' ? 2 : 3);
    static const int weights[] = { 1, 3, 7, 9, 1, 3, 7, 9, 1, 3 };
    int sum = 0;
    for (int at = 0; at < 10; ++at)
        sum += weights[at] * (digits[at] - '0');
    return std::string(digits) + static_cast<char>('0' + (10 - sum % 10) % 10);
}

} // namespace specimen
