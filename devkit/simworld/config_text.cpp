#include "simworld/config_text.h"

#include <cstdio>
#include <cstdlib>

namespace sim {

namespace {

constexpr const char *blanks = " \t\r\n";

const struct {
    char letter;
    char meaning;
} escapes[] = { { 'n', '\n' }, { 'r', '\r' }, { 't', '\t' }, { 's', ' ' }, { '\\', '\\' } };

std::string escaped(const std::string &value)
{
    std::string out;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const char c = value[at];
        const bool edgeBlank = c == ' ' && (at == 0 || at + 1 == value.size());
        const char *found = nullptr;
        for (const auto &row : escapes) {
            if (row.meaning == c && (c != ' ' || edgeBlank))
                found = &row.letter;
        }
        if (found) {
            out += '\\';
            out += *found;
        } else {
            out += c;
        }
    }
    return out;
}

std::string unescaped(const std::string &value)
{
    std::string out;
    for (std::size_t at = 0; at < value.size(); ++at) {
        char c = value[at];
        if (c == '\\' && at + 1 < value.size()) {
            for (const auto &row : escapes) {
                if (row.letter == value[at + 1]) {
                    c = row.meaning;
                    ++at;
                    break;
                }
            }
        }
        out += c;
    }
    return out;
}

} // namespace

std::string trimmed(const std::string &text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool parseNumber(const std::string &text, long long &value)
{
    if (text.empty())
        return false;
    const std::size_t digits = text[0] == '-' ? 1 : 0;
    const bool hex = text.compare(digits, 2, "0x") == 0;
    char *end = nullptr;
    value = std::strtoll(text.c_str(), &end, hex ? 16 : 10);
    return end != text.c_str() && *end == '\0';
}

std::string hexNumber(unsigned long long value)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "0x%llx", value);
    return buffer;
}

std::string toHex(const std::string &bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const unsigned char c : bytes) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

bool fromHex(const std::string &text, std::string &bytes)
{
    bytes.clear();
    if (text.size() % 2 != 0)
        return false;
    for (std::size_t at = 0; at < text.size(); at += 2) {
        unsigned value = 0;
        if (text.find_first_not_of("0123456789abcdefABCDEF", at) < at + 2)
            return false;
        std::sscanf(text.c_str() + at, "%2x", &value);
        bytes += static_cast<char>(value);
    }
    return true;
}

bool splitWords(const std::string &line, std::vector<std::string> &words)
{
    words.clear();
    bool quoted = false;
    bool inWord = false;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char c = line[at];
        if (!quoted && (c == ' ' || c == '\t' || c == '\r' || c == '\n')) {
            inWord = false;
            continue;
        }
        if (!inWord)
            words.emplace_back();
        inWord = true;
        const bool doubled = quoted && line.compare(at, 2, "\"\"") == 0;
        if (c != '"' || doubled)
            words.back() += c;
        else
            quoted = !quoted;
        at += doubled ? 1 : 0;
    }
    return !quoted;
}

std::string quotedIfNeeded(const std::string &word)
{
    if (!word.empty() && word.find_first_of(" \t\r\n\"") == std::string::npos)
        return word;
    std::string out = "\"";
    for (const char c : word)
        out.append(c == '"' ? 2 : 1, c);
    return out + '"';
}

std::vector<std::string> ConfigSection::texts(const std::string &key) const
{
    std::vector<std::string> out;
    for (const auto &line : lines) {
        if (line.first == key)
            out.push_back(line.second);
    }
    return out;
}

// True if the text has been read.
bool ConfigValues::exchange(const std::string &key, std::string &text)
{
    if (to) {
        to->addText(key, text);
        return false;
    }
    const std::vector<std::string> found = from ? from->texts(key) : std::vector<std::string>();
    if (!found.empty())
        text = found.back();
    return !found.empty();
}

void ConfigValues::text(const std::string &key, std::string &value)
{
    exchange(key, value);
}

void ConfigValues::textIfGiven(const std::string &key, std::string &value)
{
    if (from || !value.empty())
        exchange(key, value);
}

void ConfigValues::flag(const std::string &key, bool &value, const char *yes, const char *no)
{
    std::string word = value ? yes : no;
    if (exchange(key, word))
        value = word == "yes" || word == "on" || word == "true" || word == "1";
}

void ConfigValues::flagIfSet(const std::string &key, bool &value)
{
    if (from || value)
        flag(key, value);
}

void ConfigValues::wideNumber(const std::string &key, long long &value)
{
    std::string digits = std::to_string(value);
    long long read = 0;
    if (exchange(key, digits) && parseNumber(digits, read))
        value = read;
}

void ConfigValues::bitsIfSet(const std::string &key, std::uint32_t &value)
{
    std::string digits = hexNumber(value);
    long long read = 0;
    if ((from || value) && exchange(key, digits) && parseNumber(digits, read))
        value = static_cast<std::uint32_t>(read);
}

void ConfigValues::bytesIfGiven(const std::string &key, std::string &value)
{
    std::string digits = toHex(value);
    textIfGiven(key, digits);
    std::string read;
    if (fromHex(digits, read))
        value = read;
}

bool parseConfig(const std::string &text, std::vector<ConfigSection> &sections, std::string &error)
{
    sections.assign(1, ConfigSection());
    int number = 0;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string line = trimmed(text.substr(start, end - start));
        start = end + 1;
        ++number;
        if (line.empty() || line[0] == '#')
            continue;
        if (line.front() == '[' && line.back() == ']') {
            const std::string head = trimmed(line.substr(1, line.size() - 2));
            const std::size_t gap = head.find(' ');
            sections.push_back({ head.substr(0, gap),
                                 gap == std::string::npos ? std::string() : unescaped(trimmed(head.substr(gap))),
                                 {} });
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0) {
            error = "line " + std::to_string(number) + " is neither \"key = value\" nor \"[section]\"";
            return false;
        }
        sections.back().addText(trimmed(line.substr(0, equals)), unescaped(trimmed(line.substr(equals + 1))));
    }
    return true;
}

std::string writeConfig(const std::vector<ConfigSection> &sections, const std::string &comment)
{
    std::string out = comment.empty() ? std::string() : "# " + comment + "\n";
    for (const ConfigSection &section : sections) {
        if (!section.kind.empty())
            out += "\n[" + section.kind + (section.name.empty() ? "" : " " + escaped(section.name)) + "]\n";
        for (const auto &line : section.lines)
            out += line.first + " = " + escaped(line.second) + "\n";
    }
    return out;
}

} // namespace sim
