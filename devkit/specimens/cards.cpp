#include "specimens/cards.h"

#include <algorithm>
#include <functional>

#include "simworld/world_state.h"
#include "specimens/card_maker.h"
#include "specimens/data_groups.h"

namespace specimen {

namespace {

using sim::Card;

// From this length on a DG13 needs a length of the long form, which the program refuses.
constexpr std::size_t longForm = 0x80 + 2;

using Change = std::function<void(Card &card, CardMaker &maker)>;

Change without(const std::string &label)
{
    return [label](Card &card, CardMaker &) {
        auto &objects = card.objects[sim::Emrtd];
        objects.erase(
            std::remove_if(objects.begin(), objects.end(), [&](const sim::Object &o) { return o.label == label; }),
            objects.end());
    };
}

Change locked(const std::vector<std::string> &containers, int pukTries = sim::maxTries)
{
    return [=](Card &card, CardMaker &) {
        for (const std::string &container : containers)
            card.state.pins[container].tries = 0;
        card.state.pukTries = pukTries;
    };
}

void replaceData(Card &card, const std::string &label, const std::string &value)
{
    for (sim::Object &object : card.objects[sim::Emrtd]) {
        if (object.label == label)
            object.value = value;
    }
}

void noData(Card &card, CardMaker &)
{
    card.objects.erase(sim::Emrtd);
}

void badPhoto(Card &card, CardMaker &)
{
    replaceData(card, "DG2", dg2("no picture in here", 0, 0));
}

// Names of a usual length, but a national data group that is as long as if there were more in it.
void longDg13(Card &card, CardMaker &)
{
    Person holder = person("anna");
    holder.familyName = "Zającówna-Krzemieniewska-Błogosławiona";
    holder.motherName = "Krystyna Bronisława Przemysława";
    replaceData(card, "DG13", dg13(holder));
}

void oneName(Card &card, CardMaker &)
{
    Person holder = person("bartlomiej");
    holder.secondName.clear();
    card.holder = holder.fullName();
    replaceData(card, "DG1", dg1(holder));
    replaceData(card, "DG13", dg13(holder));
}

void noCertificates(Card &card, CardMaker &)
{
    for (const char *container : { sim::Authentication, sim::Presence, sim::Authorization, sim::Qualified })
        card.objects.erase(container);
}

void threeQualified(Card &card, CardMaker &maker)
{
    maker.addCertificate(card, sim::Qualified, person("jan"), 1);
    maker.addCertificate(card, sim::Qualified, person("jan"), 2);
}

void twoAuthentication(Card &card, CardMaker &maker)
{
    maker.addCertificate(card, sim::Authentication, person("halina"));
}

// Objects that a reader must pass over, before and between the good ones.
void oddObjects(Card &card, CardMaker &)
{
    auto &data = card.objects[sim::Emrtd];
    data.insert(data.begin(), CardMaker::dataObject("", "no label"));
    data.front().file = "unlabelled.bin";
    data.insert(data.begin() + 2, CardMaker::dataObject("   ", "a label of blanks"));
    data[2].file = "blanks.bin";
    data.insert(data.begin() + 3, CardMaker::dataObject("EMPTY", ""));
    data.push_back(CardMaker::dataObject("PRIVATE", "found after login only"));
    data.back().isPrivate = true;
    sim::Object noValue = card.objects[sim::Qualified].front();
    noValue.file.clear();
    noValue.value.clear();
    card.objects[sim::Qualified].insert(card.objects[sim::Qualified].begin(), noValue);
}

// Changes the value of the last certificate of a container, whose signature then does not hold.
void damageLast(Card &card, const char *container, const std::string &from, const std::string &to)
{
    std::string &value = (card.objects[container].end() - 2)->value;
    const std::size_t at = value.find(from);
    if (at != std::string::npos)
        value.replace(at, from.size(), to);
}

void cutLast(Card &card, const char *container)
{
    std::string &value = (card.objects[container].end() - 2)->value;
    value.resize(value.size() / 2);
}

// Issuers without a name and with one of 10,000 bytes, a last day that is the last of all years and one that is no
// date, and certificates that are cut off.
void oddCertificates(Card &card, CardMaker &maker)
{
    cutLast(card, sim::Authentication);
    Person holder = person("zygmunt");
    maker.addCertificate(card, sim::Qualified, holder, Authority({ "", "Kwarc i Synowie", "Usługi Zaufania" }));
    maker.addCertificate(card, sim::Qualified, holder,
                         Authority({ "Centrum", "Urząd", std::string(10000, 'W').replace(5000, 1, " ") }));
    holder.expiryDate = "99991231";
    maker.addCertificate(card, sim::Qualified, holder);
    maker.addCertificate(card, sim::Qualified, holder, 1);
    damageLast(card, sim::Qualified, "99991231235959Z", "9999XX31235959Z");
    maker.addCertificate(card, sim::Qualified, holder, 2);
    cutLast(card, sim::Qualified);
}

void firstPin(Card &card, CardMaker &)
{
    card.objects.erase(sim::Qualified);
    card.state.pins[sim::Qualified].toBeChanged = true;
}

void notInitialized(Card &card, CardMaker &)
{
    card.objects.erase(sim::Qualified);
    card.state.pins[sim::Qualified].initialized = false;
}

void zaneta(Card &card, CardMaker &maker)
{
    firstPin(card, maker);
    card.state.pins[sim::Authorization].tries = 0;
}

void presenceOnly(Card &card, CardMaker &)
{
    auto &data = card.objects[sim::Emrtd];
    auto &presence = card.objects[sim::Presence];
    presence.insert(presence.end(), data.begin(), data.end());
    card.objects.erase(sim::Emrtd);
}

void foreign(Card &card, CardMaker &)
{
    card.supported = false;
    card.chip.clear();
    card.objects.clear();
    card.holder = "not one of our cards";
}

const std::vector<std::string> allPins { sim::Authentication, sim::Authorization, sim::Qualified };

const struct Variant {
    const char *name;
    const char *person;
    const char *chip;
    Change change = {}; // none: a good card
} variants[] = {
    { "anna", "anna", "VELMOR_2_2" },
    { "jan", "jan", "VELMOR_2_1" },
    { "ewa", "ewa", "VELMOR_2_0" },
    { "halina", "halina", "VELMOR_1_0" },
    { "bartlomiej", "bartlomiej", "VELMOR_2_2_TEST" },
    { "zaneta", "zaneta", "VELMOR_2_2", zaneta },
    { "no-dg13", "jan", "VELMOR_2_2", without("DG13") },
    { "long-dg13", "anna", "VELMOR_2_2", longDg13 },
    { "one-name", "bartlomiej", "VELMOR_2_2", oneName },
    { "no-dg11", "ewa", "VELMOR_2_2", without("DG11") },
    { "no-dg12", "halina", "VELMOR_2_2", without("DG12") },
    { "no-certificates", "zygmunt", "VELMOR_2_2", noCertificates },
    { "three-qualified", "jan", "VELMOR_2_2", threeQualified },
    { "two-authentication", "halina", "VELMOR_2_2", twoAuthentication },
    { "odd-objects", "bartlomiej", "VELMOR_2_2", oddObjects },
    { "odd-certificates", "zygmunt", "VELMOR_2_2", oddCertificates },
    { "first-pin", "ewa", "VELMOR_2_2", firstPin },
    { "not-initialized", "zygmunt", "VELMOR_2_2", notInitialized },
    { "locked-authentication", "anna", "VELMOR_2_2", locked({ sim::Authentication }) },
    { "locked-authorization", "jan", "VELMOR_2_2", locked({ sim::Authorization }) },
    { "locked-qualified", "halina", "VELMOR_2_2", locked({ sim::Qualified }) },
    { "locked-pins", "bartlomiej", "VELMOR_2_2", locked(allPins) },
    { "locked-puk", "zygmunt", "VELMOR_2_2", locked(allPins, 0) },
    { "presence-only", "zygmunt", "VELMOR_2_2", presenceOnly },
    { "no-photo", "ewa", "VELMOR_2_2", without("DG2") },
    { "bad-photo", "anna", "VELMOR_2_2", badPhoto },
    { "no-data", "jan", "VELMOR_2_2", noData },
    { "long-names", "longest", "VELMOR_2_2" },
    { "foreigner", "foreigner", "VELMOR_2_2" },
    { "foreign", "anna", "", foreign },
};

// What the program expects of a card must hold for each of ours, or it shows something other than its name says.
std::string complaint(const Card &card)
{
    for (const auto &row : card.objects) {
        for (const sim::Object &object : row.second) {
            if (object.objectClass == 1 && object.value.empty() && !object.file.empty())
                return "no certificate for " + row.first;
            if (object.label == "DG13" && (object.value.size() >= longForm) != (card.name == "long-dg13"))
                return "a DG13 of " + std::to_string(object.value.size()) + " bytes";
        }
    }
    return {};
}

} // namespace

std::vector<Card> makeCards(std::string &error)
{
    CardMaker maker;
    std::vector<Card> cards;
    if (!maker.isUsable())
        error = "no key for the authority";
    for (const Variant &variant : variants) {
        if (!error.empty())
            return {};
        Card card = maker.good(variant.name, variant.person, variant.chip);
        if (variant.change)
            variant.change(card, maker);
        const std::string wrong = complaint(card);
        if (!wrong.empty())
            error = card.name + ": " + wrong;
        cards.push_back(card);
    }
    return error.empty() ? cards : std::vector<Card>();
}

} // namespace specimen
