#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

// Texts and the picture out of the data groups of the card in the reader (ICAO 9303 part 10, LDS 1; DG13 is national).
//
// Deliberately no TLV walker: DG1 is read at fixed positions of a TD1 document, DG11, DG12 and the tail of DG13 by
// searching two tag bytes, the names of DG13 by a fixed run of checks, DG2 by the start marker of its JPEG. Nothing is
// reported to the caller: whatever is malformed or missing gives an empty or partial text, or an empty picture, and
// does not disturb the other groups. No byte outside a stored group is ever read.
//
// One object serves one card at a time, on one thread.
class DGParser {
public:
    // Stores the raw file of a group under "DG1", "DG2", "DG11", "DG12" or "DG13". An empty file leaves what is stored:
    // clearDg comes first when a new card's data arrive. What is dropped is overwritten, if nobody else holds it.
    void loadDg(const QString &name, const QByteArray &data);
    void clearDg();

    // The JPEG of DG2, empty if there is none. At most 65537 bytes, since DG2 is read with a two-byte length only.
    QByteArray photo() const;

    QString documentNumber() const;

    // The century is always 20. "17.10.2033", or with longForm the day, the month's name in the language of the machine
    // and the year, and then empty for a date that does not exist. The short form checks nothing: ".." can come out.
    QString expiryDate(bool longForm) const;

    QString sex() const; // "KOBIETA", "MĘŻCZYZNA", or the letter as it stands
    QString nationality() const; // "POLSKIE", or the three letters as they stand
    QString personalNumber() const; // DG11, else DG1

    // DD.MM.YYYY from DG11, else from the personal number in DG1. Never empty: at least "..00".
    QString birthDate() const;
    QString birthPlace() const;

    // DD.MM.YYYY. Never empty: at least "..".
    QString issueDate() const;
    QString issuingAuthority() const;

    QString familyName() const;
    QString fatherName() const;
    QString motherName() const;

    // Each of these reads DG13 anew.
    QString surname();
    QString firstName();
    QString secondName();
    QString firstNames(); // both, with a blank between; the blank alone if there are none

private:
    QByteArray dgBytes(const QString &dgName, int from, int count) const;
    QString dgTlvValue(const QString &dgName, const QByteArray &tag) const;
    static QString formatDate(const QString &date);
    void parseDg13();
    void forgetNames();
    void readDg13Names();

    bool dg13Parsed = false; // set by every run, read by no decision
    QString firstNameCache;
    QString secondNameCache;
    QString surnameCache;
    QMap<QString, QByteArray> dataGroups;
};
