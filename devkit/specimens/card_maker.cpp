#include "specimens/card_maker.h"

#include "simworld/world_state.h"
#include "specimens/data_groups.h"
#include "specimens/portrait.h"

namespace specimen {

namespace {

// What the certificate of a container is called, and what it is for.
const struct Kind {
    const char *container;
    const char *label;
    const char *file;
    CertificateUse use;
} kinds[] = {
    { sim::Authentication, "Certyfikat identyfikacji i uwierzytelnienia", "authentication",
      CertificateUse::Authentication },
    { sim::Presence, "Certyfikat potwierdzenia obecności", "presence", CertificateUse::Authentication },
    { sim::Authorization, "Certyfikat podpisu osobistego", "authorization", CertificateUse::Signature },
    { sim::Qualified, "Certyfikat kwalifikowany", "qualified", CertificateUse::Signature },
};

const Kind &kindOf(const std::string &container)
{
    for (const Kind &kind : kinds) {
        if (container == kind.container)
            return kind;
    }
    return kinds[0];
}

} // namespace

CardMaker::CardMaker() :
    state({ "Wzorcowe Centrum Certyfikacji Dowodów", "Urząd Wzorów Dokumentów", "Wydział Dowodów Osobistych" }),
    qualified { Authority({ "Ostrel Podpis Kwalifikowany WZÓR", "Ostrel Certyfikacja WZÓR", "" }),
                Authority({ "Centrum Zaufania Kwarc WZÓR", "Kwarc i Synowie", "Usługi Zaufania" }),
                Authority({ "Pieczęć i Podpis WZÓR", "Spółdzielnia Pieczęć", "" }) }
{
}

bool CardMaker::isUsable() const
{
    return state.isUsable() && qualified[0].isUsable() && qualified[1].isUsable() && qualified[2].isUsable();
}

std::string CardMaker::portrait(const Person &person)
{
    std::string &known = portraits[person.id];
    if (known.empty())
        known = dg2(toJpeg(drawPortrait(person.look)).toStdString(), portraitWidth, portraitHeight);
    return known;
}

sim::Object CardMaker::dataObject(const std::string &label, const std::string &value)
{
    sim::Object object;
    object.label = label;
    object.value = value;
    object.file = label + ".bin";
    return object;
}

void CardMaker::addCertificate(sim::Card &card, const char *container, const Person &person, int authority)
{
    addCertificate(card, container, person, std::string(container) == sim::Qualified ? qualified[authority] : state);
}

void CardMaker::addCertificate(sim::Card &card, const char *container, const Person &person, const Authority &issuer)
{
    const Kind &kind = kindOf(container);
    std::vector<sim::Object> &objects = card.objects[container];
    const std::string number = std::to_string(objects.size() / 2 + 1);
    sim::Object certificate;
    certificate.objectClass = 1;
    certificate.label = kind.label;
    certificate.id = std::string(1, static_cast<char>(objects.size() / 2 + 1));
    certificate.file = kind.file + ("-" + number) + ".der";
    certificate.value = issuer.issue(person, kind.use, ++lastSerial);
    sim::Object key = certificate;
    key.objectClass = 3;
    key.file.clear();
    key.value.clear();
    key.isPrivate = std::string(container) == sim::Qualified; // the others can be seen without a PIN, as on many cards
    objects.push_back(certificate);
    objects.push_back(key);
}

sim::Card CardMaker::good(const std::string &name, const std::string &personId, const std::string &chip)
{
    const Person &holder = person(personId);
    sim::Card card;
    card.name = name;
    card.holder = holder.fullName();
    card.chip = chip;
    card.state = sim::freshCardState();
    for (const Kind &kind : kinds)
        addCertificate(card, kind.container, holder);
    card.objects[sim::Emrtd] = {
        dataObject("COM", com()),         dataObject("DG1", dg1(holder)),   dataObject("DG2", portrait(holder)),
        dataObject("DG11", dg11(holder)), dataObject("DG12", dg12(holder)), dataObject("DG13", dg13(holder))
    };
    return card;
}

} // namespace specimen
