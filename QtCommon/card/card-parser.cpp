#include "card/card-parser.h"

#include "base/secret_string.h"

#include <QDate>
#include <QDebug>
#include <QLocale>
#include <QTextCodec>

#include <algorithm>

namespace {

const QString dg1 = QStringLiteral("DG1");
const QString dg2 = QStringLiteral("DG2");
const QString dg11 = QStringLiteral("DG11");
const QString dg12 = QStringLiteral("DG12");
const QString dg13 = QStringLiteral("DG13");

// Fields of DG1, counted from the first byte of the file, so the five header bytes are part of the count. None of them
// is checked: another layout is read wrongly without notice.
struct Field {
    int from;
    int length;
};
constexpr Field documentNumberField = { 10, 9 };
constexpr Field sexField = { 42, 1 };
constexpr Field expiryDateField = { 43, 6 };
constexpr Field nationalityField = { 50, 3 };
constexpr Field personalNumberField = { 53, 11 };
constexpr Field birthDateField = { 53, 6 }; // the first digits of the personal number

const QByteArray personalNumberTag = QByteArrayLiteral("\x5F\x10");
const QByteArray birthPlaceTag = QByteArrayLiteral("\x5F\x11");
const QByteArray birthDateTag = QByteArrayLiteral("\x5F\x2B");
const QByteArray issuingAuthorityTag = QByteArrayLiteral("\x5F\x19");
const QByteArray issueDateTag = QByteArrayLiteral("\x5F\x26");
const QByteArray familyNameTag = QByteArrayLiteral("\x5F\x63");
const QByteArray fatherNameTag = QByteArrayLiteral("\x5F\x64");
const QByteArray motherNameTag = QByteArrayLiteral("\x5F\x65");

constexpr int utf8Mib = 106;
constexpr int dg2HeaderSize = 4;

// The month of a personal number carries the century in its tens digit.
struct Century {
    char digit;
    char monthDigit;
    const char *prefix;
};
// clang-format off
constexpr Century centuries[] = {
    { '8', '0', "18" },
    { '9', '1', "18" },
    { '0', '0', "19" },
    { '1', '1', "19" },
    { '2', '0', "20" },
    { '3', '1', "20" },
    { '4', '0', "21" },
    { '5', '1', "21" },
    { '6', '0', "22" },
    { '7', '1', "22" },
};
// clang-format on

// A missing byte reads as zero.
uchar byteAt(const QByteArray &data, int position)
{
    return position >= 0 && position < data.size() ? static_cast<uchar>(data.at(position)) : 0;
}

// Only the short form of a length is known. 0x80 and above therefore come out negative on every platform, which makes
// an empty value or ends the run: a negative count must never reach QByteArray::mid, where it means "all the rest".
int lengthAt(const QByteArray &data, int position)
{
    return static_cast<signed char>(byteAt(data, position));
}

// Texts outside the names of DG13 end at a zero byte; this constructor does that. A copy of a part of a file is
// overwritten, the file itself is not.
QString textOf(QByteArray bytes)
{
    QString text(bytes);
    wipeSecret(bytes);
    return text;
}

// Decodes the name whose length byte stands at `position` and moves `position` behind it. False, with everything left
// as it was, if the file ends before the name does.
bool takeName(const QByteArray &data, int *position, QString *name)
{
    const int length = lengthAt(data, *position);
    const int from = *position + 1;
    if (length < 0 || data.size() < from + length)
        return false;
    *name = QTextCodec::codecForMib(utf8Mib)->toUnicode(data.constData() + from, length);
    *position = from + length;
    return true;
}

} // namespace

void DGParser::loadDg(const QString &name, const QByteArray &data)
{
    qDebug().noquote() << "loadDG:" << name << "size: " << data.size();
    if (data.isEmpty())
        return;
    wipeSecret(dataGroups[name]);
    dataGroups.insert(name, data);
}

void DGParser::clearDg()
{
    wipeSecrets(dataGroups);
    dataGroups.clear();
    forgetNames();
    qDebug().noquote() << "clear DG data";
}

QByteArray DGParser::photo() const
{
    const QByteArray file = dataGroups.value(dg2);
    if (file.isEmpty()) {
        qDebug().noquote() << "Byte array of DG2 is empty";
        return {};
    }
    qDebug().noquote() << "Photo size:" << file.size();
    if (byteAt(file, 1) != 0x82) {
        // What it means is a length form that is not supported; the words stay.
        qDebug().noquote() << "actual size is less than 0";
        return {};
    }
    const int outerEnd = byteAt(file, 2) * 256 + byteAt(file, 3) + dg2HeaderSize;
    const int image = file.indexOf(QByteArray::fromHex("FFD8"));
    if (image < 0) {
        // Meant: logged where nothing was found, and only there.
        qDebug().noquote() << "photo loaded";
        return {};
    }
    return outerEnd > image ? file.mid(image, outerEnd - image) : QByteArray();
}

QString DGParser::documentNumber() const
{
    // Not dgBytes: in a file of less than 19 characters the last nine of them are taken.
    QString file = textOf(dataGroups.value(dg1));
    const int end = std::min(documentNumberField.from + documentNumberField.length, file.size());
    const int from = std::max(end - documentNumberField.length, 0);
    QString number = file.mid(from, end - from).remove(QLatin1Char('<'));
    wipeSecret(file);
    return number;
}

QString DGParser::expiryDate(bool longForm) const
{
    const QString date = QStringLiteral("20") + textOf(dgBytes(dg1, expiryDateField.from, expiryDateField.length));
    if (!longForm)
        return formatDate(date);
    const QDate expiry(date.mid(0, 4).toInt(), date.mid(4, 2).toInt(), date.mid(6, 2).toInt());
    return QLocale::system().toString(expiry, QStringLiteral("dd MMMM yyyy"));
}

QString DGParser::sex() const
{
    const QByteArray letter = dgBytes(dg1, sexField.from, sexField.length);
    if (letter == "F")
        return QStringLiteral("KOBIETA");
    if (letter == "M")
        return QStringLiteral("MĘŻCZYZNA");
    return textOf(letter);
}

QString DGParser::nationality() const
{
    const QByteArray country = dgBytes(dg1, nationalityField.from, nationalityField.length);
    return country == "POL" ? QStringLiteral("POLSKIE") : textOf(country);
}

QString DGParser::personalNumber() const
{
    const QString number = dgTlvValue(dg11, personalNumberTag);
    return number.isEmpty() ? textOf(dgBytes(dg1, personalNumberField.from, personalNumberField.length)) : number;
}

QString DGParser::birthDate() const
{
    const QString fullDate = dgTlvValue(dg11, birthDateTag);
    if (fullDate.size() == 8)
        return formatDate(fullDate);

    QString date = textOf(dgBytes(dg1, birthDateField.from, birthDateField.length));
    for (const Century &century : centuries) {
        if (date.size() > 2 && date.at(2) == QLatin1Char(century.digit)) {
            date[2] = QLatin1Char(century.monthDigit);
            return formatDate(QLatin1String(century.prefix) + date);
        }
    }
    return formatDate(QStringLiteral("00") + date);
}

QString DGParser::birthPlace() const
{
    return dgTlvValue(dg11, birthPlaceTag).replace(QLatin1Char('<'), QLatin1Char(' '));
}

QString DGParser::issueDate() const
{
    return formatDate(dgTlvValue(dg12, issueDateTag));
}

QString DGParser::issuingAuthority() const
{
    return dgTlvValue(dg12, issuingAuthorityTag);
}

QString DGParser::familyName() const
{
    return dgTlvValue(dg13, familyNameTag);
}

QString DGParser::fatherName() const
{
    return dgTlvValue(dg13, fatherNameTag);
}

QString DGParser::motherName() const
{
    return dgTlvValue(dg13, motherNameTag);
}

QString DGParser::surname()
{
    parseDg13();
    return surnameCache;
}

QString DGParser::firstName()
{
    parseDg13();
    return firstNameCache;
}

QString DGParser::secondName()
{
    parseDg13();
    return secondNameCache;
}

QString DGParser::firstNames()
{
    parseDg13();
    return joinSecrets({ firstNameCache, u" ", secondNameCache });
}

QByteArray DGParser::dgBytes(const QString &dgName, int from, int count) const
{
    return dataGroups.value(dgName).mid(from, count);
}

QString DGParser::dgTlvValue(const QString &dgName, const QByteArray &tag) const
{
    const QByteArray file = dataGroups.value(dgName);
    // The last occurrence wins, wherever it lies, even inside another field's value.
    const int position = file.lastIndexOf(tag);
    if (position < 0)
        return {};
    const int length = lengthAt(file, position + 2);
    if (length <= 0 || position + 2 + length >= file.size())
        return {};
    return textOf(file.mid(position + 3, length));
}

QString DGParser::formatDate(const QString &date)
{
    return date.mid(6, 2) + QLatin1Char('.') + date.mid(4, 2) + QLatin1Char('.') + date.mid(0, 4);
}

void DGParser::forgetNames()
{
    for (QString *name : { &surnameCache, &firstNameCache, &secondNameCache })
        wipeSecret(*name);
}

void DGParser::parseDg13()
{
    forgetNames();
    readDg13Names();
    dg13Parsed = true;
}

// 6D, length, 5C, length L, tag list of L bytes, then 5F60, 5F61 and 5F62 in this order, each a length and a name. How
// strictly a tag is tested differs from one to the next; that is required, do not even it out.
void DGParser::readDg13Names()
{
    const QByteArray file = dataGroups.value(dg13);
    // What the first and the third byte are does not matter. A length that is not there reads as zero and ends the run.
    const int tagListLength = lengthAt(file, 3);
    if (lengthAt(file, 1) <= 0 || tagListLength <= 0)
        return;

    int position = 4 + tagListLength;
    // For the first two names either byte of the tag is enough; only the third needs both.
    if (byteAt(file, position) != 0x5F && byteAt(file, position + 1) != 0x60)
        return;
    position += 2;
    if (!takeName(file, &position, &surnameCache))
        return;

    if (byteAt(file, position) != 0x5F && byteAt(file, position + 1) != 0x61)
        return;
    position += 2;
    if (!takeName(file, &position, &firstNameCache))
        return;

    if (byteAt(file, position) != 0x5F || byteAt(file, position + 1) != 0x62)
        return;
    position += 2;
    takeName(file, &position, &secondNameCache);
}
