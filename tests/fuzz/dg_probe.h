#pragma once

#include "card/card-parser.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstddef>

// Gives one file to a parser as each of the five data groups, calls every accessor and looks at what comes out.
namespace DgProbe {

inline constexpr int longestValue = 127; // of a length in the short form
inline constexpr int longestAddition = 9; // "MĘŻCZYZNA"
inline constexpr int longestDateInWords = 40;

struct Results {
    QByteArray photo;
    QStringList texts;
};

struct Text {
    const char *name;
    int longest;
    QString (*read)(DGParser &);
};

inline const Text texts[] = {
    { "documentNumber", 9, [](DGParser &parser) { return parser.documentNumber(); } },
    { "expiryDate, short", 10, [](DGParser &parser) { return parser.expiryDate(false); } },
    { "expiryDate, long", longestDateInWords, [](DGParser &parser) { return parser.expiryDate(true); } },
    { "sex", 9, [](DGParser &parser) { return parser.sex(); } },
    { "nationality", 7, [](DGParser &parser) { return parser.nationality(); } },
    { "personalNumber", longestValue, [](DGParser &parser) { return parser.personalNumber(); } },
    { "birthDate", 10, [](DGParser &parser) { return parser.birthDate(); } },
    { "birthPlace", longestValue, [](DGParser &parser) { return parser.birthPlace(); } },
    { "issueDate", 10, [](DGParser &parser) { return parser.issueDate(); } },
    { "issuingAuthority", longestValue, [](DGParser &parser) { return parser.issuingAuthority(); } },
    { "familyName", longestValue, [](DGParser &parser) { return parser.familyName(); } },
    { "fatherName", longestValue, [](DGParser &parser) { return parser.fatherName(); } },
    { "motherName", longestValue, [](DGParser &parser) { return parser.motherName(); } },
    { "surname", longestValue, [](DGParser &parser) { return parser.surname(); } },
    { "firstName", longestValue, [](DGParser &parser) { return parser.firstName(); } },
    { "secondName", longestValue, [](DGParser &parser) { return parser.secondName(); } },
    { "firstNames", 2 * longestValue + 1, [](DGParser &parser) { return parser.firstNames(); } },
};

inline Results read(const char *data, int size)
{
    const QByteArray file = QByteArray::fromRawData(data, size);
    DGParser parser;
    for (const char *group : { "DG1", "DG2", "DG11", "DG12", "DG13" })
        parser.loadDg(group, file);

    Results results;
    results.photo = parser.photo();
    for (const Text &text : texts)
        results.texts << text.read(parser);
    return results;
}

inline QString complaintAbout(const Results &results, const QByteArray &file)
{
    int index = 0;
    for (const Text &text : texts) {
        const int length = results.texts.at(index++).size();
        if (length > text.longest)
            return QString("%1 has %2 characters").arg(text.name).arg(length);
        if (length > file.size() + longestAddition && text.longest != longestDateInWords)
            return QString("%1 has %2 characters, out of %3 bytes").arg(text.name).arg(length).arg(file.size());
    }
    if (!results.photo.isEmpty()) {
        const int marker = file.indexOf("\xFF\xD8");
        if (marker < 0 || !file.mid(marker).startsWith(results.photo))
            return QString("the picture is no part of the file");
        const int outerEnd = static_cast<uchar>(file.at(2)) * 256 + static_cast<uchar>(file.at(3)) + 4;
        if (marker + results.photo.size() > outerEnd)
            return QString("the picture goes on behind the end of the group");
    }
    return {};
}

// Names what is wrong with the results: a text longer than its field can be, or longer than the file with the words and
// points that the parser adds; a picture that is no part of the file, or goes on behind its announced end. Empty if all
// is well. The file is read in place, from exactly these bytes, so that a sanitizer sees each step outside.
inline QString complaint(const char *data, std::size_t size)
{
    const int length = static_cast<int>(size);
    return complaintAbout(read(data, length), QByteArray::fromRawData(data, length));
}

// The same, and also whether the results depend on the bytes that happen to stand around the file in memory.
inline QString complaintInAnySurroundings(const QByteArray &file)
{
    // What stands around goes on with a tag and a length, or with nothing that the parser knows.
    constexpr int around = 300;
    const QByteArray tags = QByteArray::fromHex("5F615F62FFD80541").repeated(around / 8);
    const QByteArray before = tags + file + tags;
    const QByteArray after = QByteArray(tags.size(), '\0') + file + QByteArray(tags.size(), '\0');
    const Results results = read(before.constData() + tags.size(), file.size());
    const Results others = read(after.constData() + tags.size(), file.size());

    if (results.texts != others.texts || results.photo != others.photo)
        return QString("the results depend on bytes outside the file");
    return complaintAbout(results, file);
}

} // namespace DgProbe
