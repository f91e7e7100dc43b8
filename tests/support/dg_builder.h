#pragma once

#include <QByteArray>

// Data groups as a card holds them, for tests. People and numbers are invented.
namespace DgBuilder {

// Tag, length and value, the length in the shortest form of BER.
inline QByteArray tlv(const QByteArray &tag, const QByteArray &value)
{
    const int size = value.size();
    QByteArray length;
    if (size >= 0x80) {
        for (int rest = size; rest > 0; rest >>= 8)
            length.prepend(static_cast<char>(rest & 0xFF));
        length.prepend(static_cast<char>(0x80 + length.size()));
    } else {
        length.append(static_cast<char>(size));
    }
    return tag + length + value;
}

inline QByteArray tlv(const char *tagHex, const QByteArray &value)
{
    return tlv(QByteArray::fromHex(tagHex), value);
}

// The three lines of a TD1 document, 30 characters each.
struct Dg1 {
    QByteArray documentNumber = "ABC123456";
    QByteArray sex = "F";
    QByteArray expiry = "331017";
    QByteArray nationality = "POL";
    QByteArray personalNumber = "84052312345";

    QByteArray file() const
    {
        const QByteArray first = ("I<POL" + documentNumber.leftJustified(9, '<') + "7").leftJustified(30, '<');
        const QByteArray second =
            ("8405239" + sex + expiry + "5" + nationality + personalNumber.leftJustified(11, '<') + "8")
                .leftJustified(30, '<');
        const QByteArray third = QByteArray("KOWALSKA<<ANNA<MARIA").leftJustified(30, '<');
        return tlv("61", tlv("5F1F", first + second + third));
    }
};

struct Dg11 {
    QByteArray personalNumber = "84052312345";
    QByteArray birthPlace = "ZIELONA<GÓRA";
    QByteArray birthDate = "19840523";

    QByteArray file() const
    {
        return tlv("6B",
                   tlv("5C", QByteArray::fromHex("5F105F115F2B")) + tlv("5F10", personalNumber)
                       + tlv("5F11", birthPlace) + tlv("5F2B", birthDate));
    }
};

struct Dg12 {
    QByteArray authority = "PREZYDENT MIASTA ŁODZI";
    QByteArray issueDate = "20231017";

    QByteArray file() const
    {
        return tlv("6C", tlv("5C", QByteArray::fromHex("5F195F26")) + tlv("5F19", authority) + tlv("5F26", issueDate));
    }
};

struct Dg13 {
    QByteArray surname = "ŻÓŁĆ";
    QByteArray firstName = "ANNA";
    QByteArray secondName = "ŁUCJA";
    QByteArray familyName = "WĄS";
    QByteArray fatherName = "JAN";
    QByteArray motherName = "EWA";
    QByteArray tagList = QByteArray::fromHex("5F605F615F625F635F645F65");

    QByteArray body() const
    {
        return tlv("5C", tagList) + tlv("5F60", surname) + tlv("5F61", firstName) + tlv("5F62", secondName)
            + tlv("5F63", familyName) + tlv("5F64", fatherName) + tlv("5F65", motherName);
    }
    QByteArray file() const { return tlv("6D", body()); }
};

// A start marker, `size` bytes of picture that hold no second one, and an end marker.
inline QByteArray jpeg(int size = 600)
{
    QByteArray picture;
    for (int index = 0; index < size; ++index)
        picture.append(static_cast<char>(index % 251));
    return QByteArray::fromHex("FFD8") + picture + QByteArray::fromHex("FFD9");
}

// The outer length always takes two bytes, as on a card. The biometric headers are stand-ins of the usual size.
struct Dg2 {
    QByteArray picture = jpeg();
    QByteArray headers = QByteArray(80, '\x11');

    QByteArray file() const
    {
        const QByteArray body = headers + picture;
        QByteArray outer = QByteArray::fromHex("7582");
        outer.append(static_cast<char>(body.size() >> 8)).append(static_cast<char>(body.size() & 0xFF));
        return outer + body;
    }
};

} // namespace DgBuilder
