#include "endurance/numbered_cards.h"

#include "specimens/card_maker.h"
#include "specimens/data_groups.h"

#include <QRegularExpression>

namespace {

std::string digits(int number)
{
    return QString("%1").arg(number, 3, 10, QChar('0')).toStdString();
}

void replaceData(sim::Card &card, const std::string &label, const std::string &value)
{
    for (sim::Object &object : card.objects[sim::Emrtd]) {
        if (object.label == label)
            object.value = value;
    }
}

} // namespace

std::string NumberedCards::name(int number)
{
    return "card-" + digits(number);
}

specimen::Person NumberedCards::holder(int number)
{
    const std::string sign = digits(number);
    specimen::Person person = specimen::person(number % 2 ? "anna" : "jan");
    person.firstName = "Imi" + sign;
    person.secondName = "Dru" + sign;
    person.surname = "Nazw" + sign;
    person.familyName = "Rod" + sign;
    person.fatherName = "Oj" + sign;
    person.motherName = "Mat" + sign;
    person.birthPlace = "MIASTO" + sign;
    person.authority = "URZ" + sign;
    person.documentNumber = "CAA000" + sign;
    person.peselSerial = number;
    return person;
}

NumberedCards::NumberedCards(int count)
{
    specimen::CardMaker maker;
    for (int number = 0; number < count; ++number) {
        const specimen::Person person = holder(number);
        sim::Card card = maker.good(name(number), number % 2 ? "anna" : "jan");
        card.holder = person.fullName();
        card.objects[sim::Authentication].clear();
        for (const char *container : { sim::Authentication, sim::Presence, sim::Authorization, sim::Qualified }) {
            card.objects.erase(container);
            maker.addCertificate(card, container, person);
        }
        // So that what hangs on the card's kind changes as well.
        if (number % 3 == 0)
            maker.addCertificate(card, sim::Qualified, person, 1);
        if (number % 5 == 0)
            card.objects.erase(sim::Qualified);
        replaceData(card, "DG1", specimen::dg1(person));
        replaceData(card, "DG11", specimen::dg11(person));
        replaceData(card, "DG12", specimen::dg12(person));
        replaceData(card, "DG13", specimen::dg13(person));
        personalNumbers << QString::fromStdString(specimen::pesel(person));
        made.push_back(card);
    }
}

QList<int> NumberedCards::tellsOf(const QString &text) const
{
    static const QRegularExpression mark("(?:Imi|Dru|Nazw|Rod|Oj|Mat|MIASTO|URZ|CAA000)(\\d{3})|(\\d{11})",
                                         QRegularExpression::CaseInsensitiveOption);
    QList<int> numbers;
    for (auto match = mark.globalMatch(text); match.hasNext();) {
        const QRegularExpressionMatch one = match.next();
        const int number =
            one.captured(1).isEmpty() ? personalNumbers.indexOf(one.captured(2)) : one.captured(1).toInt();
        if (!numbers.contains(number))
            numbers << number;
    }
    return numbers;
}
