#include <QCryptographicHash>
#include <QImage>
#include <QSet>
#include <QSslCertificate>
#include <QSslKey>

#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// The specimen cards: that each is what its name says, in the layouts of the standards.
class TstSpecimenCards : public QObject {
    Q_OBJECT

private slots:
    void everyPromisedCardIsThere();
    void machineReadableZoneHasRightCheckDigits_data();
    void machineReadableZoneHasRightCheckDigits();
    void machineReadableZoneStandsAtFixedPlaces();
    void dg11AndDg12HoldTheirFields();
    void dg13HasTheShortForm();
    void longDg13HasTheLongForm();
    void dg13WithoutSecondName();
    void photoIsAJpegAtTheEndOfTheFile();
    void portraitsDiffer();
    void photoVariants();
    void certificatesNameTheirHolder_data();
    void certificatesNameTheirHolder();
    void serialNumbersAreUsedOnce();
    void qualifiedCertificatesHaveDifferentIssuers();
    void oddCertificatesAreOdd();
    void missingPartsAreMissing();
    void pinsAreAsPromised();
    void readmeNamesEveryCard();

private:
    static QByteArray data(const sim::Card &card, const char *label, const char *container = sim::Emrtd)
    {
        const auto found = card.objects.find(container);
        if (found == card.objects.end())
            return {};
        for (const sim::Object &object : found->second) {
            if (object.label == label)
                return QByteArray::fromStdString(object.value);
        }
        return {};
    }

    static QList<QByteArray> certificates(const sim::Card &card, const char *container)
    {
        QList<QByteArray> out;
        const auto found = card.objects.find(container);
        if (found == card.objects.end())
            return out;
        for (const sim::Object &object : found->second) {
            if (object.objectClass == CKO_CERTIFICATE)
                out << QByteArray::fromStdString(object.value);
        }
        return out;
    }

    // The value after the last occurrence of a two-byte tag with a short length.
    static QByteArray field(const QByteArray &file, const char *hexTag)
    {
        const int at = file.lastIndexOf(QByteArray::fromHex(hexTag));
        return at < 0 ? QByteArray() : file.mid(at + 3, quint8(file.at(at + 2)));
    }

    static QByteArray picture(const QByteArray &dg2) { return dg2.mid(dg2.indexOf(QByteArray::fromHex("FFD8"))); }

    static char checkDigit(const QByteArray &text)
    {
        int sum = 0;
        for (int at = 0; at < text.size(); ++at) {
            const char c = text.at(at);
            const int value = c == '<' ? 0 : c <= '9' ? c - '0' : c - 'A' + 10;
            sum += value * (at % 3 == 0 ? 7 : at % 3 == 1 ? 3 : 1);
        }
        return char('0' + sum % 10);
    }

    sim::SimWorld world;
};

static const char *const promised[] = { "anna",
                                        "jan",
                                        "ewa",
                                        "halina",
                                        "bartlomiej",
                                        "zaneta",
                                        "no-dg13",
                                        "long-dg13",
                                        "one-name",
                                        "no-dg11",
                                        "no-dg12",
                                        "no-certificates",
                                        "three-qualified",
                                        "two-authentication",
                                        "odd-objects",
                                        "odd-certificates",
                                        "first-pin",
                                        "not-initialized",
                                        "locked-authentication",
                                        "locked-authorization",
                                        "locked-qualified",
                                        "locked-pins",
                                        "locked-puk",
                                        "presence-only",
                                        "no-photo",
                                        "bad-photo",
                                        "no-data",
                                        "long-names",
                                        "foreigner",
                                        "foreign" };

void TstSpecimenCards::everyPromisedCardIsThere()
{
    QSet<QString> there;
    for (const sim::Card &card : world.cards())
        there << QString::fromStdString(card.name);

    QSet<QString> expected;
    for (const char *name : promised)
        expected << name;
    QCOMPARE(there, expected);
}

void TstSpecimenCards::machineReadableZoneHasRightCheckDigits_data()
{
    // The check digits of the published example of a TD1 document prove the arithmetic used here.
    QCOMPARE(checkDigit("D23145890"), '7');
    QCOMPARE(checkDigit("740812"), '2');
    QTest::addColumn<QByteArray>("card");
    for (const char *name : promised) {
        if (!data(*world.card(name), "DG1").isEmpty())
            QTest::newRow(name) << QByteArray(name);
    }
}

void TstSpecimenCards::machineReadableZoneHasRightCheckDigits()
{
    QFETCH(QByteArray, card);

    const QByteArray dg1 = data(*world.card(card.toStdString()), "DG1");

    QCOMPARE(dg1.size(), 95);
    QCOMPARE(dg1.left(5), QByteArray::fromHex("615D5F1F5A"));
    const QByteArray upper = dg1.mid(5, 30);
    const QByteArray middle = dg1.mid(35, 30);
    QCOMPARE(upper.at(14), checkDigit(upper.mid(5, 9)));
    QCOMPARE(middle.at(6), checkDigit(middle.left(6)));
    QCOMPARE(middle.at(14), checkDigit(middle.mid(8, 6)));
    QCOMPARE(middle.at(29), checkDigit(upper.mid(5) + middle.left(7) + middle.mid(8, 7) + middle.mid(18, 11)));
    QVERIFY(QRegularExpression("^[A-Z0-9<]{90}$").match(dg1.mid(5)).hasMatch());
}

void TstSpecimenCards::machineReadableZoneStandsAtFixedPlaces()
{
    const QByteArray dg1 = data(*world.card("zaneta"), "DG1");

    QCOMPARE(dg1.mid(10, 9), QByteArray("ABA123456"));
    QCOMPARE(dg1.mid(42, 1), QByteArray("F"));
    QCOMPARE(dg1.mid(43, 6), QByteArray("331017"));
    QCOMPARE(dg1.mid(50, 3), QByteArray("POL"));
    QCOMPARE(dg1.mid(53, 6), QByteArray("901205"));
    QCOMPARE(dg1.mid(65), QByteArray("SWIECICKA<LACKA<<ZANETA<JOZEFINA").left(30));
    // Born after 1999: 20 is added to the month.
    QCOMPARE(data(*world.card("ewa"), "DG1").mid(53, 6), QByteArray("012214"));
    QCOMPARE(data(*world.card("foreigner"), "DG1").mid(50, 3), QByteArray("FRA"));
    QCOMPARE(data(*world.card("foreigner"), "DG1").mid(42, 1), QByteArray("X"));
}

void TstSpecimenCards::dg11AndDg12HoldTheirFields()
{
    const sim::Card card = *world.card("zaneta");
    const QByteArray dg11 = data(card, "DG11");
    const QByteArray dg12 = data(card, "DG12");

    QCOMPARE(dg11.left(1), QByteArray::fromHex("6B"));
    QCOMPARE(int(quint8(dg11.at(1))), dg11.size() - 2);
    QCOMPARE(field(dg11, "5F10"), data(card, "DG1").mid(53, 11));
    QCOMPARE(field(dg11, "5F2B"), QByteArray("19901205"));
    QCOMPARE(field(dg11, "5F11"), QByteArray("ZAKOPANE"));
    QCOMPARE(dg12.left(1), QByteArray::fromHex("6C"));
    QCOMPARE(field(dg12, "5F19"), QByteArray("BURMISTRZ MIASTA ZAKOPANE"));
    QCOMPARE(field(dg12, "5F26"), QByteArray("20231017"));
}

void TstSpecimenCards::dg13HasTheShortForm()
{
    for (const char *name : { "anna", "zaneta", "long-names", "bartlomiej", "foreigner" }) {
        const QByteArray dg13 = data(*world.card(name), "DG13");
        QCOMPARE(dg13.left(1), QByteArray::fromHex("6D"));
        QCOMPARE(int(quint8(dg13.at(1))), dg13.size() - 2);
        QVERIFY(quint8(dg13.at(1)) < 0x80);
        QCOMPARE(dg13.mid(2, 2), QByteArray::fromHex("5C0C"));
        QCOMPARE(dg13.mid(16, 2), QByteArray::fromHex("5F60"));
    }
    const QByteArray dg13 = data(*world.card("zaneta"), "DG13");
    QCOMPARE(field(dg13, "5F60"), QByteArray("Święcicka-Łącka"));
    QCOMPARE(field(dg13, "5F61"), QByteArray("Żaneta"));
    QCOMPARE(field(dg13, "5F62"), QByteArray("Józefina"));
    QCOMPARE(field(dg13, "5F63"), QByteArray("Jaźwińska"));
    QCOMPARE(field(dg13, "5F64"), QByteArray("Grzegorz"));
    QCOMPARE(field(dg13, "5F65"), QByteArray("Małgorzata"));
}

void TstSpecimenCards::longDg13HasTheLongForm()
{
    const QByteArray dg13 = data(*world.card("long-dg13"), "DG13");

    QCOMPARE(dg13.left(2), QByteArray::fromHex("6D81"));
    QCOMPARE(int(quint8(dg13.at(2))), dg13.size() - 3);
    QCOMPARE(field(dg13, "5F64"), QByteArray("Tadeusz"));
}

void TstSpecimenCards::dg13WithoutSecondName()
{
    const QByteArray dg13 = data(*world.card("one-name"), "DG13");

    QVERIFY(!dg13.contains(QByteArray::fromHex("5F62")));
    QCOMPARE(field(dg13, "5F61"), QByteArray("Bartłomiej"));
}

void TstSpecimenCards::photoIsAJpegAtTheEndOfTheFile()
{
    const QByteArray dg2 = data(*world.card("anna"), "DG2");

    QCOMPARE(dg2.left(2), QByteArray::fromHex("7582"));
    QCOMPARE(int(quint8(dg2.at(2))) * 256 + quint8(dg2.at(3)), dg2.size() - 4);
    const int start = dg2.indexOf(QByteArray::fromHex("FFD8"));
    QVERIFY(start > 60 && start < 200);
    QVERIFY(dg2.left(start).contains(QByteArray("FAC\0"
                                                "010\0",
                                                8)));
    QVERIFY(dg2.endsWith(QByteArray::fromHex("FFD9")));
    QCOMPARE(QImage::fromData(picture(dg2), "JPEG").size(), QSize(300, 400));
}

void TstSpecimenCards::portraitsDiffer()
{
    QSet<QByteArray> pictures;
    for (const char *name : { "anna", "jan", "ewa", "halina", "bartlomiej", "zaneta", "long-names", "foreigner" }) {
        const QImage image = QImage::fromData(picture(data(*world.card(name), "DG2")));
        QVERIFY(!image.isNull());
        QVERIFY(image.pixel(150, 350) != image.pixel(10, 10));
        pictures << QCryptographicHash::hash(
            QByteArray(reinterpret_cast<const char *>(image.constBits()), int(image.sizeInBytes())),
            QCryptographicHash::Sha1);
    }
    QCOMPARE(pictures.size(), 8);
}

void TstSpecimenCards::photoVariants()
{
    QVERIFY(data(*world.card("no-photo"), "DG2").isEmpty());
    const QByteArray bad = data(*world.card("bad-photo"), "DG2");
    QVERIFY(!bad.isEmpty());
    QVERIFY(!bad.contains(QByteArray::fromHex("FFD8")));
}

void TstSpecimenCards::certificatesNameTheirHolder_data()
{
    QTest::addColumn<QByteArray>("card");
    QTest::addColumn<QString>("surname");
    QTest::addColumn<QString>("common");
    QTest::newRow("zaneta") << QByteArray("zaneta") << "Święcicka-Łącka"
                            << "Żaneta Józefina Święcicka-Łącka";
    QTest::newRow("ewa") << QByteArray("ewa") << "Łoś"
                         << "Ewa Ida Łoś";
    QTest::newRow("long-names") << QByteArray("long-names") << "Krzyżanowska-Błogosławieństwska-Zawadzka"
                                << "Maksymiliana Konstancja Krzyżanowska-Błogosławieństwska-Zawadzka";
}

void TstSpecimenCards::certificatesNameTheirHolder()
{
    QFETCH(QByteArray, card);
    QFETCH(QString, surname);
    QFETCH(QString, common);

    for (const char *container : { sim::Authentication, sim::Presence, sim::Authorization }) {
        const auto ders = certificates(*world.card(card.toStdString()), container);
        QCOMPARE(ders.size(), 1);
        const QSslCertificate certificate(ders[0], QSsl::Der);
        QVERIFY(!certificate.isNull());
        QCOMPARE(certificate.subjectInfo("SN"), QStringList(surname));
        QCOMPARE(certificate.subjectInfo("CN"), QStringList(common));
        QCOMPARE(certificate.subjectInfo("C"), QStringList("PL"));
        QVERIFY(certificate.subjectInfo("serialNumber").value(0).startsWith("PNOPL-"));
        QCOMPARE(certificate.issuerInfo("O"), QStringList("Urząd Wzorów Dokumentów"));
        QCOMPARE(certificate.issuerInfo("OU").size(), 1);
        QCOMPARE(certificate.effectiveDate().date().addYears(10), certificate.expiryDate().date());
        QCOMPARE(certificate.publicKey().algorithm(), QSsl::Ec);
    }
}

void TstSpecimenCards::serialNumbersAreUsedOnce()
{
    QSet<QByteArray> serials;
    int count = 0;
    for (const char *name : promised) {
        for (const char *container : { sim::Authentication, sim::Presence, sim::Authorization, sim::Qualified }) {
            for (const QByteArray &der : certificates(*world.card(name), container)) {
                if (der.isEmpty())
                    continue; // the empty one of "odd-objects"
                const QSslCertificate certificate(der, QSsl::Der);
                if (certificate.isNull() && QByteArray(name) == "odd-certificates")
                    continue; // those cut off
                serials << certificate.serialNumber();
                ++count;
            }
        }
    }
    QVERIFY(count > 90);
    QCOMPARE(serials.size(), count);
}

void TstSpecimenCards::qualifiedCertificatesHaveDifferentIssuers()
{
    const auto ders = certificates(*world.card("three-qualified"), sim::Qualified);

    QSet<QString> issuers;
    int withUnit = 0;
    for (const QByteArray &der : ders) {
        const QSslCertificate certificate(der, QSsl::Der);
        issuers << certificate.issuerInfo("CN").value(0);
        withUnit += certificate.issuerInfo("OU").size();
    }
    QCOMPARE(ders.size(), 3);
    QCOMPARE(issuers.size(), 3);
    QCOMPARE(withUnit, 1);
}

void TstSpecimenCards::oddCertificatesAreOdd()
{
    const auto ders = certificates(*world.card("odd-certificates"), sim::Qualified);
    QCOMPARE(ders.size(), 6);
    QList<QSslCertificate> read;
    for (const QByteArray &der : ders)
        read << QSslCertificate(der, QSsl::Der);

    QVERIFY(QSslCertificate(certificates(*world.card("odd-certificates"), sim::Authentication).value(0), QSsl::Der)
                .isNull());
    QVERIFY(read[1].issuerInfo("CN").isEmpty() && !read[1].isNull());
    QCOMPARE(read[2].issuerInfo("OU").value(0).size(), 10000);
    QCOMPARE(read[3].expiryDate().toUTC().date(), QDate(9999, 12, 31));
    QVERIFY(!read[4].isNull() && !read[4].expiryDate().isValid());
    QVERIFY(read[5].isNull());
}

void TstSpecimenCards::missingPartsAreMissing()
{
    QVERIFY(data(*world.card("no-dg13"), "DG13").isEmpty() && !data(*world.card("no-dg13"), "DG11").isEmpty());
    QVERIFY(data(*world.card("no-dg11"), "DG11").isEmpty() && !data(*world.card("no-dg11"), "DG13").isEmpty());
    QVERIFY(data(*world.card("no-dg12"), "DG12").isEmpty() && !data(*world.card("no-dg12"), "DG11").isEmpty());
    QVERIFY(data(*world.card("no-data"), "DG1").isEmpty()
            && data(*world.card("no-data"), "DG1", sim::Presence).isEmpty());
    QVERIFY(data(*world.card("presence-only"), "DG1").isEmpty());
    QVERIFY(!data(*world.card("presence-only"), "DG1", sim::Presence).isEmpty());
    QVERIFY(!data(*world.card("presence-only"), "DG2", sim::Presence).isEmpty());
    for (const char *container : { sim::Authentication, sim::Presence, sim::Authorization, sim::Qualified })
        QVERIFY(certificates(*world.card("no-certificates"), container).isEmpty());
    QVERIFY(!data(*world.card("no-certificates"), "DG1").isEmpty());
    QCOMPARE(certificates(*world.card("two-authentication"), sim::Authentication).size(), 2);
    QVERIFY(certificates(*world.card("first-pin"), sim::Qualified).isEmpty());
    QVERIFY(certificates(*world.card("not-initialized"), sim::Qualified).isEmpty());
    QVERIFY(!world.card("foreign")->supported);
}

void TstSpecimenCards::pinsAreAsPromised()
{
    const struct {
        const char *card;
        int tries[4]; // Authentication, Authorization, Qualified, PUK
    } rows[] = {
        { "anna", { 3, 3, 3, 3 } },
        { "zaneta", { 3, 0, 3, 3 } },
        { "locked-authentication", { 0, 3, 3, 3 } },
        { "locked-authorization", { 3, 0, 3, 3 } },
        { "locked-qualified", { 3, 3, 0, 3 } },
        { "locked-pins", { 0, 0, 0, 3 } },
        { "locked-puk", { 0, 0, 0, 0 } },
    };
    for (const auto &row : rows) {
        const auto state = world.cardState(row.card);
        QVERIFY2(state, row.card);
        QCOMPARE(state->pins.at(sim::Authentication).tries, row.tries[0]);
        QCOMPARE(state->pins.at(sim::Authorization).tries, row.tries[1]);
        QCOMPARE(state->pins.at(sim::Qualified).tries, row.tries[2]);
        QCOMPARE(state->pukTries, row.tries[3]);
        QCOMPARE(state->pins.at(sim::Authentication).pin, std::string("1234"));
        QCOMPARE(state->pins.at(sim::Authorization).pin, std::string("123456"));
        QCOMPARE(state->pins.at(sim::Qualified).pin, std::string("12345678"));
        QCOMPARE(state->puk, std::string("87654321"));
    }
    const auto firstUse = world.cardState("first-pin")->pins.at(sim::Qualified);
    QVERIFY(firstUse.initialized && firstUse.toBeChanged);
    const auto notInitialized = world.cardState("not-initialized")->pins.at(sim::Qualified);
    QVERIFY(!notInitialized.initialized && !notInitialized.toBeChanged);
}

void TstSpecimenCards::readmeNamesEveryCard()
{
    QFile readme(QString(VELMOR_TEST_SOURCE_DIR) + "/devkit/README.md");
    QVERIFY(readme.open(QIODevice::ReadOnly));
    const QByteArray text = readme.readAll();

    for (const char *name : promised)
        QVERIFY2(text.contains(QByteArray("`") + name + "`"), name);
}

VELMOR_TEST(TstSpecimenCards)
#include "tst_specimen_cards.moc"
