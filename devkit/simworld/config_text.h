#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// The text form of world.conf and card.conf: "key = value" lines under "[kind name]" lines, "#" at the start of a line
// for comments. A backslash in a value stands before n, r, t, s (a blank at either end) or another backslash.
namespace sim {

struct ConfigSection {
    std::string kind; // empty for the lines above the first section
    std::string name;
    std::vector<std::pair<std::string, std::string>> lines; // a key may stand on several

    std::vector<std::string> texts(const std::string &key) const;
    void addText(const std::string &key, const std::string &value) { lines.emplace_back(key, value); }
};

// The values of a section in either direction, so that one function names what a section holds. When it is read, a
// variable stays as it is where the key is missing or its value unreadable; of several lines the last counts.
class ConfigValues {
public:
    static ConfigValues of(const ConfigSection &section) { return { &section, nullptr }; }
    static ConfigValues into(ConfigSection &section) { return { nullptr, &section }; }

    void text(const std::string &key, std::string &value);
    void flag(const std::string &key, bool &value, const char *yes = "yes", const char *no = "no");
    template <class Number>
    void number(const std::string &key, Number &value)
    {
        long long wide = value;
        wideNumber(key, wide);
        value = static_cast<Number>(wide);
    }
    // Left out while empty, false or 0.
    void textIfGiven(const std::string &key, std::string &value);
    void flagIfSet(const std::string &key, bool &value);
    void bitsIfSet(const std::string &key, std::uint32_t &value); // written as "0x..."
    void bytesIfGiven(const std::string &key, std::string &value); // written as hexadecimal digits

private:
    ConfigValues(const ConfigSection *read, ConfigSection *written) : from(read), to(written) { }

    void wideNumber(const std::string &key, long long &value);
    bool exchange(const std::string &key, std::string &text);

    const ConfigSection *from; // one of the two is null
    ConfigSection *to;
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

// Splits a line at blanks. Quotes keep blanks together, also in the middle of a word; a doubled quote within them is
// one. False if a quote is not closed.
bool splitWords(const std::string &line, std::vector<std::string> &words);
// In quotes if splitWords would not give it back otherwise.
std::string quotedIfNeeded(const std::string &word);

} // namespace sim
