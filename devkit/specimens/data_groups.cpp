#include "specimens/data_groups.h"

#include <vector>

#include "simworld/config_text.h"

namespace specimen {

namespace {

std::string bytes(const std::string &hex)
{
    std::string out;
    sim::fromHex(hex, out);
    return out;
}

std::string bigEndian(unsigned long value, int size)
{
    std::string out;
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift & 0xFF);
    return out;
}

std::string padded(std::string text, std::size_t size)
{
    text.resize(size, '<');
    return text;
}

// Letters of the machine-readable zone: A to Z only, all else is a filler.
std::string transliterated(const std::string &text)
{
    static const struct {
        const char *letter;
        const char *plain;
    } rows[] = {
        { "Ą", "A" }, { "Ć", "C" }, { "Ę", "E" }, { "Ł", "L" }, { "Ń", "N" }, { "Ó", "O" }, { "Ś", "S" },
        { "Ź", "Z" }, { "Ż", "Z" }, { "ą", "A" }, { "ć", "C" }, { "ę", "E" }, { "ł", "L" }, { "ń", "N" },
        { "ó", "O" }, { "ś", "S" }, { "ź", "Z" }, { "ż", "Z" }, { "ë", "E" }, { "É", "E" }, { "é", "E" },
    };
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        bool found = false;
        for (const auto &row : rows) {
            const std::string letter = row.letter;
            if (text.compare(at, letter.size(), letter) != 0)
                continue;
            out += row.plain;
            at += letter.size();
            found = true;
            break;
        }
        if (found)
            continue;
        const char c = text[at++];
        if (c >= 'a' && c <= 'z')
            out += static_cast<char>(c - 'a' + 'A');
        else
            out += c >= 'A' && c <= 'Z' ? c : '<';
    }
    return out;
}

// Tag list and values of a data group; values that are empty stay out of both.
std::string listed(const std::vector<std::pair<std::string, std::string>> &values)
{
    std::string tags;
    std::string content;
    for (const auto &value : values) {
        if (value.second.empty())
            continue;
        tags += bytes(value.first);
        content += tlv(value.first, value.second);
    }
    return tlv("5C", tags) + content;
}

} // namespace

std::string tlv(const std::string &tag, const std::string &content)
{
    std::string length = bigEndian(content.size(), 1);
    if (content.size() > 0xFF)
        length = bytes("82") + bigEndian(content.size(), 2);
    else if (content.size() > 0x7F)
        length = bytes("81") + bigEndian(content.size(), 1);
    return bytes(tag) + length + content;
}

std::string tlvOfTwoByteLength(const std::string &tag, const std::string &content)
{
    return bytes(tag) + bytes("82") + bigEndian(content.size(), 2) + content;
}

char checkDigit(const std::string &text)
{
    static const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        const int value = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'Z' ? c - 'A' + 10 : 0;
        sum += value * weights[at % 3];
    }
    return static_cast<char>('0' + sum % 10);
}

std::string machineReadableZone(const Person &person)
{
    const std::string number = padded(person.documentNumber, 9);
    const std::string birth = person.birthDate.substr(2);
    const std::string expiry = person.expiryDate.substr(2);
    const std::string upper = number + checkDigit(number) + padded("", 15);
    const std::string birthAndCheck = birth + checkDigit(birth);
    const std::string expiryAndCheck = expiry + checkDigit(expiry);
    const std::string personal = padded(pesel(person), 11);
    const char composite = checkDigit(upper + birthAndCheck + expiryAndCheck + personal);
    const std::string names = transliterated(person.surname) + "<<" + transliterated(person.givenNames());
    return "I<POL" + upper + birthAndCheck + person.sex + expiryAndCheck + padded(person.nationality, 3) + personal
        + composite + padded(names, 30);
}

std::string dg1(const Person &person)
{
    return tlv("61", tlv("5F1F", machineReadableZone(person)));
}

// One face of ISO/IEC 19794-5 in the biometric template of the standard; the picture ends with the file.
std::string dg2(const std::string &jpeg, int width, int height)
{
    const std::string image = bytes("0000") // full frontal, JPEG
        + bigEndian(static_cast<unsigned long>(width), 2) + bigEndian(static_cast<unsigned long>(height), 2)
        + bytes("010200000000"); // sRGB, digital camera, no device, no quality
    const std::string face = std::string(16, '\0') + image + jpeg;
    const std::string faceRecord = bigEndian(face.size() + 4, 4) + face;
    const std::string record = std::string("FAC\0", 4) + std::string("010\0", 4) + bigEndian(faceRecord.size() + 14, 4)
        + bigEndian(1, 2) + faceRecord;
    const std::string header = tlv(
        "A1", tlv("80", bytes("0101")) + tlv("81", bytes("02")) + tlv("87", bytes("0101")) + tlv("88", bytes("0008")));
    const std::string instance = tlv("7F60", header + tlv("5F2E", record));
    return tlvOfTwoByteLength("75", tlv("7F61", tlv("02", bytes("01")) + instance));
}

std::string dg11(const Person &person)
{
    return tlv("6B",
               listed({ { "5F10", pesel(person) }, { "5F2B", person.birthDate }, { "5F11", person.birthPlace } }));
}

std::string dg12(const Person &person)
{
    return tlv("6C", listed({ { "5F19", person.authority }, { "5F26", person.issueDate } }));
}

std::string dg13(const Person &person)
{
    return tlv("6D",
               listed({ { "5F60", person.surname },
                        { "5F61", person.firstName },
                        { "5F62", person.secondName },
                        { "5F63", person.familyName },
                        { "5F64", person.fatherName },
                        { "5F65", person.motherName } }));
}

std::string com()
{
    return tlv("60", tlv("5F01", "0107") + tlv("5F36", "040000") + tlv("5C", bytes("61756B6C6D")));
}

} // namespace specimen
