#pragma once

#include <string>
#include <vector>

// The invented holders of the specimen cards. Texts are UTF-8.
namespace specimen {

enum class Hair { ShortParted, Cropped, Curly, Long, Bob, Bun, Bald };
enum class Clothes { RoundNeck, Shirt, Blouse, JacketAndTie, Turtleneck };

struct Look {
    unsigned skin; // 0xRRGGBB
    unsigned hairColour;
    Hair hair;
    unsigned eyes;
    Clothes clothes;
    unsigned clothesColour;
    unsigned accent; // collar, tie, earrings
    bool glasses;
    bool beard;
    bool moustache;
    bool earrings;
};

struct Names {
    std::string firstName;
    std::string secondName; // empty for none
    std::string surname;
    std::string familyName;
    std::string fatherName;
    std::string motherName;
};

// All dates are YYYYMMDD.
struct Birth {
    std::string birthDate;
    std::string birthPlace; // "<" for a blank, as on the card
    char sex; // 'F', 'M', or what else stands in the machine-readable zone
    std::string nationality; // three letters
    int peselSerial; // 0 to 999: the three digits before that of the sex
};

struct Document {
    std::string documentNumber; // nine characters
    std::string issueDate;
    std::string expiryDate;
    std::string authority;
};

struct Person : Names, Birth, Document {
    std::string id;
    Look look;

    std::string givenNames() const { return secondName.empty() ? firstName : firstName + " " + secondName; }
    std::string fullName() const { return givenNames() + " " + surname; }
};

const std::vector<Person> &people();
const Person &person(const std::string &id);

// Eleven digits: date of birth with the century in the month, serial, sex, check digit.
std::string pesel(const Person &person);

} // namespace specimen
