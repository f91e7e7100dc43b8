#include "certificate_text.h"

#include "support/testmain.h"

#include <QSslCertificate>

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <ctime>
#include <memory>

// What the card of a certificate says, and how cards stand beside each other.
class TestCertificateText : public QObject {
    Q_OBJECT

private:
    using Entries = QList<QPair<const char *, const char *>>;

    // A certificate whose issuer has these entries in this order.
    static QSslCertificate issuedBy(const Entries &entries)
    {
        const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), X509_free);
        const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
        const std::unique_ptr<X509_NAME, decltype(&X509_NAME_free)> name(X509_NAME_new(), X509_NAME_free);
        for (const auto &entry : entries)
            X509_NAME_add_entry_by_txt(name.get(), entry.first, MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char *>(entry.second), -1, -1, 0);
        X509_set_issuer_name(certificate.get(), name.get());
        X509_set_subject_name(certificate.get(), name.get());
        X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
        X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 1000);
        X509_set_pubkey(certificate.get(), key.get());
        X509_sign(certificate.get(), key.get(), EVP_sha256());
        unsigned char *bytes = nullptr;
        const int size = i2d_X509(certificate.get(), &bytes);
        const QByteArray der(reinterpret_cast<const char *>(bytes), size);
        OPENSSL_free(bytes);
        return QSslCertificate(der, QSsl::Der);
    }

private slots:
    void initTestCase()
    {
        // Warsaw's rule, without a table of the machine.
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        tzset();
    }

    void issuerIsFourEntriesThatCloseUp_data()
    {
        QTest::addColumn<QStringList>("parts"); // CN, O, OU, C
        QTest::addColumn<QString>("shown");
        QTest::newRow("all") << QStringList { "Centrum", "Urząd", "Wydział", "PL" } << "Centrum, Urząd, Wydział, PL";
        QTest::newRow("no OU") << QStringList { "Centrum", "Urząd", "", "PL" } << "Centrum, Urząd, PL";
        QTest::newRow("no O") << QStringList { "Centrum", "", "Wydział", "PL" } << "Centrum, Wydział, PL";
        // The separator of an empty end stays, and of two empty ones beside each other: the text is passed once.
        QTest::newRow("no CN") << QStringList { "", "Urząd", "Wydział", "PL" } << ", Urząd, Wydział, PL";
        QTest::newRow("no C") << QStringList { "Centrum", "Urząd", "Wydział", "" } << "Centrum, Urząd, Wydział, ";
        QTest::newRow("neither O nor OU") << QStringList { "Centrum", "", "", "PL" } << "Centrum, , PL";
        QTest::newRow("none") << QStringList { "", "", "", "" } << ", , ";
        QTest::newRow("comma within") << QStringList { "A, B", "C , D", "", "PL" } << "A, B, C , D, PL";
    }
    void issuerIsFourEntriesThatCloseUp()
    {
        QFETCH(QStringList, parts);
        QTEST(CertificateText::issuer(parts), "shown");
    }

    void entryThatIsRepeatedIsJoinedByBlanks()
    {
        const QSslCertificate certificate = issuedBy({ { "C", "PL" },
                                                       { "O", "Urząd" },
                                                       { "OU", "Wydział" },
                                                       { "OU", "Referat" },
                                                       { "CN", "Centrum" },
                                                       { "CN", "Dowody" },
                                                       { "CN", "WZÓR" } });
        QVERIFY(!certificate.isNull());

        const QString shown = CertificateText::issuer(certificate);

        // In the order in which the toolkit lists them, which begins with the last.
        QCOMPARE(shown, QString("WZÓR Dowody Centrum, Urząd, Referat Wydział, PL"));
    }

    void holdersNamesStandBeforeTheSurname()
    {
        const CertificateText::Holder holder = CertificateText::holder(
            issuedBy({ { "CN", "Wiśniewska Zając" }, { "CN", "Anna" }, { "SN", "Zając" }, { "SN", "Wiśniewska" } }));

        QCOMPARE(holder.surname, QString("Wiśniewska Zając"));
        QCOMPARE(holder.names, QString("Anna"));
    }

    void dateIsThatOfTheMachinesTimeZone_data()
    {
        QTest::addColumn<QDateTime>("time");
        QTest::addColumn<QString>("shown");
        const auto utc = [](int year, int month, int day, int hour, int minute) {
            return QDateTime(QDate(year, month, day), QTime(hour, minute), Qt::UTC);
        };
        QTest::newRow("noon") << utc(2023, 10, 17, 12, 0) << "17 października 2023";
        QTest::newRow("one figure") << utc(2024, 1, 5, 12, 0) << "05 stycznia 2024";
#ifndef Q_OS_WIN // where such a rule knows no summer
        QTest::newRow("next day in summer") << utc(2023, 6, 30, 22, 30) << "01 lipca 2023";
#endif
        QTest::newRow("next day in winter") << utc(2023, 1, 31, 23, 30) << "01 lutego 2023";
        QTest::newRow("same day in winter") << utc(2023, 1, 30, 22, 30) << "30 stycznia 2023";
        QTest::newRow("last second of all years") << utc(9999, 12, 31, 23, 59) << "01 stycznia 10000";
        QTest::newRow("none") << QDateTime() << "";
    }
    void dateIsThatOfTheMachinesTimeZone()
    {
        QFETCH(QDateTime, time);
        QTEST(CertificateText::longDate(time), "shown");
    }

    void cardsStandTwoBesideEachOther_data()
    {
        QTest::addColumn<int>("cards");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("rows");
        QTest::newRow("one") << 1 << 1 << 1;
        QTest::newRow("two") << 2 << 2 << 1;
        QTest::newRow("three") << 3 << 2 << 2;
        QTest::newRow("four") << 4 << 2 << 2;
        QTest::newRow("five") << 5 << 2 << 3;
    }
    void cardsStandTwoBesideEachOther()
    {
        QFETCH(int, cards);
        QTEST(CertificateText::columns(cards), "columns");
        QTEST(CertificateText::rows(cards), "rows");
    }
};

VELMOR_TEST(TestCertificateText)
#include "tst_certificate_text.moc"
