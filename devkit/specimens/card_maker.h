#pragma once

#include <map>
#include <string>

#include "simworld/world_types.h"
#include "specimens/authority.h"
#include "specimens/person.h"

namespace specimen {

// Makes complete, faultless cards and hands out the parts for others.
class CardMaker {
public:
    CardMaker();

    bool isUsable() const;
    sim::Card good(const std::string &name, const std::string &personId, const std::string &chip = "VELMOR_2_2");

    // A certificate and its private key. `authority` 0 to 2 for qualified ones of different issuers.
    void addCertificate(sim::Card &card, const char *container, const Person &person, int authority = 0);
    void addCertificate(sim::Card &card, const char *container, const Person &person, const Authority &issuer);
    static sim::Object dataObject(const std::string &label, const std::string &value);

private:
    std::string portrait(const Person &person);

    Authority state; // issues what comes with the card
    Authority qualified[3];
    std::map<std::string, std::string> portraits; // by person
    long lastSerial = 0x5A000000;
};

} // namespace specimen
