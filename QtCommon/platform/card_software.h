#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>

// How card software is looked for on a computer and told in the system report.
namespace CardSoftware {

// Words in the names of card programs and drivers. Their blanks keep short ones from hitting the middle of others.
constexpr const char *vendorWords[] = {
    "XCA",    "HID ", "Identiv", "Smart card", "idProtect", "brevant",
    "Szafir", "KIR",  "Reiner",  "Omnikey",    "SCM ",      "acs ",
};

// An installed program by a word of its name, as the 64-bit or the 32-bit list of programs has it: `name`, `version`,
// `directory`, `appBits`; empty if none has the word.
using Program = QMap<QString, QString>;
using Lookup = std::function<Program(const QString &word, int bits)>;

// One line a program, sorted, without duplicates: several words may hit the same program.
QStringList lines(const Lookup &lookup);

QString line(const QString &name, const QString &version);
// `width` is a number of bits.
QString narrowLine(const QString &name, const QString &width, const QString &version);

} // namespace CardSoftware
