#include "support/own_memory.h"
#include "support/testmain.h"

#include "card/cert_store.h"

#include <limits>

// Counts and certificates of the card in the reader.
class TstCertStore : public QObject {
    Q_OBJECT

private slots:
    void freshStoreIsEmpty();
    void containerHasItsIndex_data();
    void containerHasItsIndex();
    void countsStandInArgumentOrder();
    void countOfZeroOrLessIsNoContainer();
    void indexOutsideHasNoContainer_data();
    void indexOutsideHasNoContainer();
    void certificateReplacesTheList();
    void emptyCertificateChangesNothing();
    void certificateOutsideChangesNothing_data();
    void certificateOutsideChangesNothing();
    void qualifiedListIsReplaced();
    void emptyQualifiedListEmptiesIt();
    void certsGivesACopy();
    void countsAndListsAreApart();
    void clearForgetsAll();
    void certificateThatGoesIsOverwritten_data();
    void certificateThatGoesIsOverwritten();
};

namespace {

using Certs = QList<QByteArray>;
using LetGo = void (*)(CertStore &);

void addOutsideRows()
{
    QTest::addColumn<int>("index");
    for (const int index : { -1, 4, 5, 255, std::numeric_limits<int>::min(), std::numeric_limits<int>::max() })
        QTest::addRow("%d", index) << index;
}

} // namespace

Q_DECLARE_METATYPE(LetGo)

void TstCertStore::freshStoreIsEmpty()
{
    const CertStore store;

    for (int index = 0; index < 4; ++index) {
        QVERIFY(!store.hasContainer(index));
        QCOMPARE(store.certs(index), Certs());
    }
    QCOMPARE(store.qualifiedCount(), 0);
}

void TstCertStore::containerHasItsIndex_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");
    QTest::newRow("Authentication") << "Authentication" << 0;
    QTest::newRow("Authorization") << "Authorization" << 1;
    QTest::newRow("Presence") << "Presence" << 2;
    QTest::newRow("Qualified") << "Qualified" << 3;
    QTest::newRow("no name") << "" << -1;
    QTest::newRow("small letters") << "qualified" << -1;
    QTest::newRow("part of a name") << "Auth" << -1;
    QTest::newRow("more than a name") << "Presence " << -1;
    QTest::newRow("token of the data groups") << "eMRTD" << -1;
}

void TstCertStore::containerHasItsIndex()
{
    QFETCH(QString, name);

    QTEST(CertStore::containerIndex(name), "index");
}

void TstCertStore::countsStandInArgumentOrder()
{
    for (int only = 0; only < 4; ++only) {
        CertStore store;

        store.setCounts(only == 0, only == 1, only == 2, only == 3);

        for (int index = 0; index < 4; ++index)
            QCOMPARE(store.hasContainer(index), index == only);
        QCOMPARE(store.qualifiedCount(), only == 3 ? 1 : 0);
    }
    CertStore store;
    store.setCounts(4, 5, 6, 7);
    QCOMPARE(store.qualifiedCount(), 7);
}

void TstCertStore::countOfZeroOrLessIsNoContainer()
{
    CertStore store;

    store.setCounts(-1, 0, std::numeric_limits<int>::min(), -3);

    for (int index = 0; index < 4; ++index)
        QVERIFY(!store.hasContainer(index));
    QCOMPARE(store.qualifiedCount(), -3);
}

void TstCertStore::indexOutsideHasNoContainer_data()
{
    addOutsideRows();
}

void TstCertStore::indexOutsideHasNoContainer()
{
    QFETCH(int, index);
    CertStore store;

    store.setCounts(1, 1, 1, 1);

    QVERIFY(!store.hasContainer(index));
}

void TstCertStore::certificateReplacesTheList()
{
    for (int index = 0; index < 4; ++index) {
        CertStore store;
        store.setQualifiedCerts({ "a", "b", "c" });

        store.setCerts(index, "first");
        store.setCerts(index, "second");

        for (int other = 0; other < 3; ++other)
            QCOMPARE(store.certs(other), other == index ? Certs({ "second" }) : Certs());
        QCOMPARE(store.certs(3), index == 3 ? Certs({ "second" }) : Certs({ "a", "b", "c" }));
    }
}

void TstCertStore::emptyCertificateChangesNothing()
{
    CertStore store;
    store.setCerts(1, "kept");

    store.setCerts(1, QByteArray());
    store.setCerts(1, QByteArray(""));

    QCOMPARE(store.certs(1), Certs({ "kept" }));
}

void TstCertStore::certificateOutsideChangesNothing_data()
{
    addOutsideRows();
}

void TstCertStore::certificateOutsideChangesNothing()
{
    QFETCH(int, index);
    struct {
        CertStore store;
        Certs behind; // where one list more would lie
    } memory;
    memory.behind = Certs({ "behind" });

    memory.store.setCerts(index, "certificate");

    for (int inside = 0; inside < 4; ++inside)
        QCOMPARE(memory.store.certs(inside), Certs());
    QCOMPARE(memory.store.certs(index), Certs());
    QCOMPARE(memory.behind, Certs({ "behind" }));
}

void TstCertStore::qualifiedListIsReplaced()
{
    CertStore store;
    store.setQualifiedCerts({ "a", "b", "c" });

    store.setQualifiedCerts({ "d", "e" });

    QCOMPARE(store.certs(3), Certs({ "d", "e" }));
}

void TstCertStore::emptyQualifiedListEmptiesIt()
{
    CertStore store;
    store.setQualifiedCerts({ "a" });

    store.setQualifiedCerts({});

    QCOMPARE(store.certs(3), Certs());
}

void TstCertStore::certsGivesACopy()
{
    CertStore store;
    store.setCerts(0, "certificate");

    Certs copy = store.certs(0);
    copy.append("another");
    copy[0] = "changed";

    QCOMPARE(store.certs(0), Certs({ "certificate" }));
}

void TstCertStore::countsAndListsAreApart()
{
    CertStore store;

    store.setCounts(1, 1, 1, 3);
    QCOMPARE(store.certs(3), Certs());
    store.setCounts(0, 0, 0, 0);
    store.setQualifiedCerts({ "a", "b" });

    QCOMPARE(store.qualifiedCount(), 0);
    QVERIFY(!store.hasContainer(3));
}

void TstCertStore::clearForgetsAll()
{
    CertStore store;
    store.setCounts(1, 2, 3, 4);
    for (int index = 0; index < 4; ++index)
        store.setCerts(index, "certificate");

    store.clear();

    for (int index = 0; index < 4; ++index) {
        QVERIFY(!store.hasContainer(index));
        QCOMPARE(store.certs(index), Certs());
    }
    QCOMPARE(store.qualifiedCount(), 0);
}

void TstCertStore::certificateThatGoesIsOverwritten_data()
{
    QTest::addColumn<LetGo>("letGo");
    const auto row = [](const char *name, LetGo letGo) { QTest::newRow(name) << letGo; };
    row("for another", [](CertStore &store) { store.setCerts(3, "another"); });
    row("for a list", [](CertStore &store) { store.setQualifiedCerts({ "another" }); });
    row("with the card", [](CertStore &store) { store.clear(); });
}

void TstCertStore::certificateThatGoesIsOverwritten()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("The sanitizer guards what was freed, which is looked at here");
#endif
    QFETCH(LetGo, letGo);
    const HiddenDigits digits("60718293041526374859");
    const HiddenBytes certificate = HiddenBytes::of(digits);
    CertStore store;
    {
        QByteArray bytes(700, '\0');
        for (int i = 0; i < digits.size(); ++i)
            bytes[600 + i] = digits.at(i);
        store.setCerts(3, bytes);
    }
    QCOMPARE(certificate.places(), 1);

    letGo(store);

    QCOMPARE(certificate.places(), 0);
}

VELMOR_TEST(TstCertStore)
#include "tst_cert_store.moc"
