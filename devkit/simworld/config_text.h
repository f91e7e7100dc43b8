#pragma once

#include <string>
#include <utility>
#include <vector>

// The text form of world.conf and card.conf: "key = value" lines under "[kind name]" lines, "#" at the start of a line
// for comments. A backslash in a value stands before n, r, t, s (a blank at either end) or another backslash.
namespace sim {

class ConfigSection {
public:
    explicit ConfigSection(std::string kindOfSection = {}, std::string nameOfSection = {});

    std::string kind; // empty for the lines above the first section
    std::string name;

    bool has(const std::string &key) const { return find(key) != nullptr; }
    // A missing or unreadable value gives the one handed in.
    std::string text(const std::string &key, const std::string &otherwise = {}) const;
    long long number(const std::string &key, long long otherwise) const;
    bool flag(const std::string &key, bool otherwise) const;
    std::string bytes(const std::string &key) const; // written as hexadecimal digits

    void setText(const std::string &key, const std::string &value);
    void setNumber(const std::string &key, long long value);
    void setHexNumber(const std::string &key, unsigned long long value);
    void setFlag(const std::string &key, bool value);
    void setBytes(const std::string &key, const std::string &value);

    const std::vector<std::pair<std::string, std::string>> &entries() const { return lines; }

private:
    const std::string *find(const std::string &key) const;

    std::vector<std::pair<std::string, std::string>> lines;
};

// The first section is always there and holds what stands above all others. False with the line's number in `error`
// when a line is neither of the forms.
bool parseConfig(const std::string &text, std::vector<ConfigSection> &sections, std::string &error);
std::string writeConfig(const std::vector<ConfigSection> &sections, const std::string &comment = {});

// Whole-string conversions; decimal, or hexadecimal after "0x".
bool parseNumber(const std::string &text, long long &value);
std::string toHex(const std::string &bytes);
bool fromHex(const std::string &text, std::string &bytes);
std::string hexNumber(unsigned long long value); // "0x1f"
std::string trimmed(const std::string &text);

} // namespace sim
