#include "simworld/command_faults.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "simworld/cryptoki_names.h"
#include "simworld/world_state.h"

namespace sim {

namespace {

// A value as the text of a word.
template <class Value>
struct Codec {
    std::function<bool(const std::string &text, Value &value)> parse;
    std::function<std::string(const Value &value)> show;
};

template <class Number>
Codec<Number> number(long long least = std::numeric_limits<long long>::min(),
                     long long most = std::numeric_limits<long long>::max())
{
    const auto parse = [=](const std::string &text, Number &value) {
        long long parsed = 0;
        const bool good = parseNumber(text, parsed) && parsed >= least && parsed <= most;
        value = static_cast<Number>(parsed);
        return good;
    };
    return { parse, [](Number value) { return std::to_string(value); } };
}

Codec<std::string> text(bool mayBeEmpty)
{
    const auto parse = [=](const std::string &text, std::string &value) {
        return !(value = text).empty() || mayBeEmpty;
    };
    return { parse, [](const std::string &value) { return value; } };
}

bool parseNth(const std::string &text, int &nth)
{
    nth = 0;
    return text == "every" || number<int>(1).parse(text, nth);
}

std::string showNth(int nth)
{
    return nth == 0 ? "every" : std::to_string(nth);
}

bool parseBuffer(const std::string &text, Fault::Buffer &buffer)
{
    buffer = text == "null" ? Fault::Buffer::Null : Fault::Buffer::Given;
    return text == "null" || text == "given";
}

std::string showBuffer(Fault::Buffer buffer)
{
    return buffer == Fault::Buffer::Null ? "null" : "given";
}

const Codec<int> nth { parseNth, showNth };
const Codec<unsigned long> attribute { parseAttribute, attributeName };
const Codec<Fault::Buffer> buffer { parseBuffer, showBuffer };
const Codec<unsigned long> result { parseResult, resultName };
const Codec<std::string> bytes { fromHex, toHex };
const Codec<std::uint32_t> bits { number<std::uint32_t>(0).parse, hexNumber };
const Codec<bool> single { [](const std::string &text, bool &on) { return on = text.empty(); },
                           [](bool) { return std::string(); } };

struct Field {
    const char *form; // the name before "="; a single word without
    const char *help;
    std::function<bool(Fault &fault, const std::string &text)> set;
    std::function<std::optional<std::string>(const Fault &fault)> show; // none if the field is not in use
};

template <class Value>
Field field(std::optional<Value> Fault::*member, const Codec<Value> &codec, const char *form, const char *help)
{
    return {
        form, help, [=](Fault &fault, const std::string &text) { return codec.parse(text, (fault.*member).emplace()); },
        [=](const Fault &fault) { return fault.*member ? std::optional(codec.show(*(fault.*member))) : std::nullopt; }
    };
}

// In use unless it has the value that means nothing.
template <class Value>
Field field(Value Fault::*member, const Codec<Value> &codec, const char *form, const char *help,
            const Value &nothing = Value())
{
    return { form, help, [=](Fault &fault, const std::string &text) { return codec.parse(text, fault.*member); },
             [=](const Fault &fault) {
                 return fault.*member != nothing ? std::optional(codec.show(fault.*member)) : std::nullopt;
             } };
}

const Field fields[] = {
    field(&Fault::nth, nth, "nth=N|every", "the N-th such call from now on (1 if not given), or every one", -1),
    field(&Fault::reader, text(true), "reader=NAME", "only calls on this reader"),
    field(&Fault::container, text(true), "container=NAME", "only calls on this token"),
    field(&Fault::attribute, attribute, "attribute=CLASS|LABEL|VALUE|0x...",
          "only C_GetAttributeValue of this attribute"),
    field(&Fault::buffer, buffer, "buffer=null|given", "only calls that ask for a size, or that bring a buffer"),
    field(&Fault::delayMs, number<int>(0, longestDelayMs), "delay=MS", "takes so much longer"),
    field(&Fault::block, single, "block", "waits for \"velmor-sim release\""),
    field(&Fault::die, single, "die", "the process ends at once, as after a crash"),
    field(&Fault::removeReader, text(false), "remove-reader=NAME", "the reader goes in the middle of the call"),
    field(&Fault::removeCard, text(false), "remove-card=READER", "the card goes in the middle of the call"),
    field(&Fault::result, result, "result=CKR_...|0x...", "returns this instead of working"),
    field(&Fault::afterWork, single, "after", "returns the result after having worked"),
    field(&Fault::description, bytes, "description=HEX", "C_GetSlotInfo: the bytes of the slot description"),
    field(&Fault::label, bytes, "label=HEX", "C_GetTokenInfo: the bytes of the label"),
    field(&Fault::flags, bits, "flags=0x...", "C_GetSlotInfo, C_GetTokenInfo: the flags"),
    field(&Fault::count, number<long long>(), "count=N", "C_GetSlotList, C_FindObjects: the number reported"),
    field(&Fault::length, number<long long>(), "length=N", "C_GetAttributeValue: the length reported, -1 for none"),
};

// "nth" of "nth=N|every", "block" of "block".
std::string nameIn(const std::string &form)
{
    return form.substr(0, form.find('='));
}

const struct {
    const char *word;
    PadAnswer::Kind kind;
    std::size_t least; // words after the first
    std::size_t most;
} padRows[] = {
    { "enter", PadAnswer::Kind::Enter, 1, 3 },   { "first", PadAnswer::Kind::Enter, 2, 2 },
    { "cancel", PadAnswer::Kind::Cancel, 0, 0 }, { "mismatch", PadAnswer::Kind::Mismatch, 0, 0 },
    { "reject", PadAnswer::Kind::Reject, 0, 0 }, { "result", PadAnswer::Kind::Result, 1, 1 },
};

} // namespace

bool parseFault(const std::vector<std::string> &words, Fault &fault, std::string &error)
{
    fault = Fault();
    fault.function = words.empty() ? std::string() : words[0];
    for (std::size_t at = 1; at < words.size(); ++at) {
        const std::size_t equals = words[at].find('=');
        const auto row = std::find_if(std::begin(fields), std::end(fields),
                                      [&](const Field &field) { return nameIn(field.form) == nameIn(words[at]); });
        if (row == std::end(fields)) {
            error = "a fault has no \"" + nameIn(words[at]) + "\"";
            return false;
        }
        if (!row->set(fault, equals == std::string::npos ? std::string() : words[at].substr(equals + 1))) {
            error = std::string("it is: ") + row->form;
            return false;
        }
    }
    return true;
}

std::string describeFault(const Fault &fault)
{
    std::string out = fault.function;
    for (const Field &field : fields) {
        const bool hasValue = std::string(field.form) != nameIn(field.form);
        if (const auto shown = field.show(fault))
            out += " " + nameIn(field.form) + (hasValue ? "=" + quotedIfNeeded(*shown) : "");
    }
    return out;
}

std::string faultHelp()
{
    std::string out = "fault FUNCTION [KEY=VALUE ...], where FUNCTION is a C_ function or \"*\" for all\n";
    for (const Field &field : fields)
        out += std::string("  ") + field.form + "\n      " + field.help + "\n";
    return out;
}

bool parsePad(const std::vector<std::string> &words, PadAnswer &answer)
{
    for (const auto &row : padRows) {
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

std::string describePad(const PadAnswer &answer)
{
    const auto row =
        std::find_if(std::begin(padRows), std::end(padRows), [&](const auto &r) { return r.kind == answer.kind; });
    std::string word = row->word;
    if (answer.kind == PadAnswer::Kind::Result)
        return word + " " + resultName(answer.result);
    if (answer.kind != PadAnswer::Kind::Enter)
        return word;
    return word + " " + quotedIfNeeded(answer.secret) + " " + quotedIfNeeded(answer.newSecret) + " "
        + quotedIfNeeded(answer.repeat);
}

} // namespace sim
