#include "simworld/command_faults.h"

#include "simworld/config_text.h"
#include "simworld/cryptoki_names.h"

namespace sim {

namespace {

bool number(const std::string &text, long long least, long long &value)
{
    return parseNumber(text, value) && value >= least;
}

bool milliseconds(const std::string &text, int &value)
{
    long long parsed = 0;
    if (!number(text, 0, parsed) || parsed > 600000)
        return false;
    value = static_cast<int>(parsed);
    return true;
}

bool setNth(Fault &fault, const std::string &value)
{
    long long parsed = 0;
    if (value == "every")
        fault.nth = 0;
    else if (number(value, 1, parsed))
        fault.nth = static_cast<int>(parsed);
    else
        return false;
    return true;
}

bool setReader(Fault &fault, const std::string &value)
{
    fault.reader = value;
    return true;
}

bool setContainer(Fault &fault, const std::string &value)
{
    fault.container = value;
    return true;
}

bool setAttribute(Fault &fault, const std::string &value)
{
    return parseAttribute(value, fault.attribute.emplace());
}

bool setBuffer(Fault &fault, const std::string &value)
{
    fault.buffer = value == "null" ? Fault::Buffer::Null : Fault::Buffer::Given;
    return value == "null" || value == "given";
}

bool setDelay(Fault &fault, const std::string &value)
{
    return milliseconds(value, fault.delayMs);
}

bool setBlock(Fault &fault, const std::string &value)
{
    fault.block = true;
    return value.empty();
}

bool setRemoveReader(Fault &fault, const std::string &value)
{
    fault.removeReader = value;
    return !value.empty();
}

bool setRemoveCard(Fault &fault, const std::string &value)
{
    fault.removeCard = value;
    return !value.empty();
}

bool setResult(Fault &fault, const std::string &value)
{
    return parseResult(value, fault.result.emplace());
}

bool setAfter(Fault &fault, const std::string &value)
{
    fault.afterWork = true;
    return value.empty();
}

bool setDescription(Fault &fault, const std::string &value)
{
    return fromHex(value, fault.description.emplace());
}

bool setLabel(Fault &fault, const std::string &value)
{
    return fromHex(value, fault.label.emplace());
}

bool setFlags(Fault &fault, const std::string &value)
{
    long long parsed = 0;
    if (!number(value, 0, parsed))
        return false;
    fault.flags = static_cast<std::uint32_t>(parsed);
    return true;
}

bool setCount(Fault &fault, const std::string &value)
{
    return number(value, 0, fault.count.emplace());
}

bool setLength(Fault &fault, const std::string &value)
{
    return number(value, -1, fault.length.emplace());
}

const struct Key {
    const char *name;
    bool (*set)(Fault &fault, const std::string &value);
    const char *form;
    const char *help;
} keys[] = {
    { "nth", setNth, "nth=N|every", "the N-th such call from now on (1 if not given), or every one" },
    { "reader", setReader, "reader=NAME", "only calls on this reader" },
    { "container", setContainer, "container=NAME", "only calls on this token" },
    { "attribute", setAttribute, "attribute=CLASS|LABEL|VALUE|0x...", "only C_GetAttributeValue of this attribute" },
    { "buffer", setBuffer, "buffer=null|given", "only calls that ask for a size, or that bring a buffer" },
    { "delay", setDelay, "delay=MS", "takes so much longer" },
    { "block", setBlock, "block", "waits for \"velmor-sim release\"" },
    { "remove-reader", setRemoveReader, "remove-reader=NAME", "the reader goes in the middle of the call" },
    { "remove-card", setRemoveCard, "remove-card=READER", "the card goes in the middle of the call" },
    { "result", setResult, "result=CKR_...|0x...", "returns this instead of working" },
    { "after", setAfter, "after", "returns the result after having worked" },
    { "description", setDescription, "description=HEX", "C_GetSlotInfo: the bytes of the slot description" },
    { "label", setLabel, "label=HEX", "C_GetTokenInfo: the bytes of the label" },
    { "flags", setFlags, "flags=0x...", "C_GetSlotInfo, C_GetTokenInfo: the flags" },
    { "count", setCount, "count=N", "C_GetSlotList, C_FindObjects: the number reported" },
    { "length", setLength, "length=N", "C_GetAttributeValue: the length reported, -1 for none" },
};

const Key *findKey(const std::string &name)
{
    for (const Key &key : keys) {
        if (name == key.name)
            return &key;
    }
    return nullptr;
}

std::string shown(const std::string &key, const std::string &value)
{
    if (value.empty())
        return {};
    return " " + key + "=" + (value.find(' ') == std::string::npos ? value : "\"" + value + "\"");
}

} // namespace

bool parseFault(const std::vector<std::string> &words, Fault &fault, std::string &error)
{
    fault = Fault();
    fault.function = words.empty() ? std::string() : words[0];
    for (std::size_t at = 1; at < words.size(); ++at) {
        const std::size_t equals = words[at].find('=');
        const std::string name = words[at].substr(0, equals);
        const Key *key = findKey(name);
        if (!key) {
            error = "a fault has no \"" + name + "\"";
            return false;
        }
        if (!key->set(fault, equals == std::string::npos ? std::string() : words[at].substr(equals + 1))) {
            error = std::string("it is: ") + key->form;
            return false;
        }
    }
    return true;
}

std::string describeFault(const Fault &fault)
{
    std::string out = fault.function + shown("nth", fault.nth == 0 ? "every" : std::to_string(fault.nth));
    out += shown("reader", fault.reader) + shown("container", fault.container);
    if (fault.attribute)
        out += shown("attribute", attributeName(*fault.attribute));
    if (fault.buffer != Fault::Buffer::Any)
        out += shown("buffer", fault.buffer == Fault::Buffer::Null ? "null" : "given");
    if (fault.delayMs > 0)
        out += shown("delay", std::to_string(fault.delayMs));
    out += fault.block ? " block" : "";
    out += shown("remove-reader", fault.removeReader) + shown("remove-card", fault.removeCard);
    if (fault.result)
        out += shown("result", resultName(*fault.result));
    out += fault.afterWork ? " after" : "";
    if (fault.description)
        out += shown("description", toHex(*fault.description));
    if (fault.label)
        out += shown("label", toHex(*fault.label));
    if (fault.flags)
        out += shown("flags", hexNumber(*fault.flags));
    if (fault.count)
        out += shown("count", std::to_string(*fault.count));
    if (fault.length)
        out += shown("length", std::to_string(*fault.length));
    return out;
}

std::string faultHelp()
{
    std::string out = "fault FUNCTION [KEY=VALUE ...], where FUNCTION is a C_ function or \"*\" for all\n";
    for (const Key &key : keys)
        out += std::string("  ") + key.form + "\n      " + key.help + "\n";
    return out;
}

bool parsePad(const std::vector<std::string> &words, PadAnswer &answer)
{
    static const struct {
        const char *word;
        PadAnswer::Kind kind;
        std::size_t least; // words after the first
        std::size_t most;
    } rows[] = {
        { "enter", PadAnswer::Kind::Enter, 1, 3 },   { "first", PadAnswer::Kind::Enter, 2, 2 },
        { "cancel", PadAnswer::Kind::Cancel, 0, 0 }, { "mismatch", PadAnswer::Kind::Mismatch, 0, 0 },
        { "reject", PadAnswer::Kind::Reject, 0, 0 }, { "result", PadAnswer::Kind::Result, 1, 1 },
    };
    for (const auto &row : rows) {
        const std::size_t count = words.empty() ? 0 : words.size() - 1;
        if (words.empty() || words[0] != row.word || count < row.least || count > row.most)
            continue;
        answer = PadAnswer();
        answer.kind = row.kind;
        if (row.kind == PadAnswer::Kind::Result)
            return parseResult(words[1], answer.result);
        std::string *const parts[] = { &answer.secret, &answer.newSecret, &answer.repeat };
        for (std::size_t at = 0; at < count; ++at)
            *parts[at] = words[at + 1];
        return true;
    }
    return false;
}

} // namespace sim
