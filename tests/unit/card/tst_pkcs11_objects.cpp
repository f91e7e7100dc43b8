// Objects of a token: which are read, in which calls, and what of them reaches the caller and the log.
#include "support/own_memory.h"
#include "support/scripted_pkcs11/pkcs11_world.h"

namespace {

constexpr CK_OBJECT_CLASS data = CKO_DATA;
constexpr CK_OBJECT_CLASS certificate = CKO_CERTIFICATE;

// Handles start at 1 and slots at 1, so the first session is on whatever token is asked first.
QStringList readingOf(int object, bool withValue)
{
    const QString call = QString("C_GetAttributeValue 1 %1 ").arg(object);
    QStringList calls { call + "CLASS given", call + "LABEL null", call + "LABEL given" };
    if (withValue)
        calls << call + "VALUE null" << call + "VALUE given";
    return calls;
}

} // namespace

class TestPkcs11Objects : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init()
    {
        startUp();
        card->addReader(reader);
    }
    void cleanup() { tearDown(); }

    void objectsAreReadInTwoCallsAnAttribute();
    void typeChoosesTheClass_data();
    void typeChoosesTheClass();
    void classesAboveOneAreNeverRead();
    void labelIsCutAtItsEnd();
    void objectsWithoutLabelAreSkipped_data();
    void objectsWithoutLabelAreSkipped();
    void unwantedLabelsAreSkippedWithoutReadingTheirValue();
    void namesAreCaseSensitive();
    void valueThatCannotBeReadLeavesTheObjectOut_data();
    void valueThatCannotBeReadLeavesTheObjectOut();
    void searchStopsAsSoonAsAllNamesAreThere();
    void searchRunsToTheEndIfANameIsMissing();
    void emptyValueDoesNotCountForTheStop();
    void sameLabelTwiceStopsTheSearchToo();
    void unreadableClassReadsAsData();
    void objectsWithoutTokenOrSession();
    void labelsOfQualifiedObjectsStayOutOfTheLog();
    void otherLabelsAreLogged();
    void certsAreTheValuesOfCertificates();
    void laterDataOfTheSameLabelWins();
    void dataThatALaterOneReplacesIsOverwritten();
    void flagsOfASlotHideNoToken();

private:
    QList<pkcsDataObj> read(int type, const QStringList &names = {});
};

QList<pkcsDataObj> TestPkcs11Objects::read(int type, const QStringList &names)
{
    listAndSelect();
    return pkcs11->tokenObjects(reader, "eMRTD", type, names);
}

void TestPkcs11Objects::objectsAreReadInTwoCallsAnAttribute()
{
    objects("eMRTD") = { { data, "DG1", "one" } };

    const QList<pkcsDataObj> found = read(-1);

    QCOMPARE(card->calls(),
             (QStringList { "C_OpenSession 5 flags=6", "C_FindObjectsInit 1 null 0", "C_FindObjects 1 max=1" }
              + readingOf(1, true) + QStringList { "C_FindObjects 1 max=1", "C_FindObjectsFinal 1" }));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().name, QString("DG1"));
    QCOMPARE(found.first().value, QByteArray("one"));
}

void TestPkcs11Objects::typeChoosesTheClass_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("both") << -1 << QStringList { "data", "cert" };
    QTest::newRow("data") << 0 << QStringList { "data" };
    QTest::newRow("certificates") << 1 << QStringList { "cert" };
    QTest::newRow("public keys") << 2 << QStringList();
    QTest::newRow("private keys") << 3 << QStringList();
}

void TestPkcs11Objects::typeChoosesTheClass()
{
    QFETCH(int, type);
    QFETCH(QStringList, expected);
    objects(
        "eMRTD") = { { 3, "private", "k" }, { data, "data", "d" }, { 2, "public", "p" }, { certificate, "cert", "c" } };

    QCOMPARE(labels(read(type)), expected);
}

void TestPkcs11Objects::classesAboveOneAreNeverRead()
{
    objects("eMRTD") = { { 2, "public", "p" }, { 3, "private", "k" }, { 0x80000001u, "vendor", "v" } };

    QVERIFY(read(-1).isEmpty());

    QCOMPARE(card->calls().filter("CLASS").size(), 3);
    QCOMPARE(card->calls().filter("LABEL").size(), 0);
    QCOMPARE(card->calls().filter("VALUE").size(), 0);
}

void TestPkcs11Objects::labelIsCutAtItsEnd()
{
    objects("eMRTD") = { { data, "  DG1 \t \n", "x" }, { data, "Za\xc5\xbc\xc3\xb3\xc5\x82\xc4\x87", "y" } };

    QCOMPARE(labels(read(-1)), (QStringList { "  DG1", "Zażółć" }));
}

void TestPkcs11Objects::objectsWithoutLabelAreSkipped_data()
{
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<int>("failing");
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("blanks") << QByteArray("   ") << 0;
    QTest::newRow("length cannot be read") << QByteArray("DG1") << 1;
    QTest::newRow("text cannot be read") << QByteArray("DG1") << 2;
}

void TestPkcs11Objects::objectsWithoutLabelAreSkipped()
{
    QFETCH(QByteArray, label);
    QFETCH(int, failing);
    objects("eMRTD") = { { data, label, "x" }, { data, "DG2", "y" } };
    if (failing)
        card->fail("C_GetAttributeValue.LABEL", CKR_DEVICE_ERROR, failing);

    QCOMPARE(labels(read(-1)), QStringList { "DG2" });

    QVERIFY(card->calls().filter("1 1 VALUE").isEmpty());
}

void TestPkcs11Objects::unwantedLabelsAreSkippedWithoutReadingTheirValue()
{
    objects("eMRTD") = { { data, "DG2", "photo" }, { data, "DG1", "one" } };

    QCOMPARE(labels(read(0, { "DG1" })), QStringList { "DG1" });

    QCOMPARE(card->calls().mid(2),
             (QStringList { "C_FindObjects 1 max=1" } + readingOf(1, false) + QStringList { "C_FindObjects 1 max=1" }
              + readingOf(2, true) + QStringList { "C_FindObjectsFinal 1" }));
}

void TestPkcs11Objects::namesAreCaseSensitive()
{
    objects("eMRTD") = { { data, "dg1", "x" }, { data, "DG11", "y" } };

    QVERIFY(read(0, { "DG1" }).isEmpty());
}

void TestPkcs11Objects::valueThatCannotBeReadLeavesTheObjectOut_data()
{
    QTest::addColumn<int>("failing");
    QTest::newRow("length") << 1;
    QTest::newRow("bytes") << 2;
}

void TestPkcs11Objects::valueThatCannotBeReadLeavesTheObjectOut()
{
    QFETCH(int, failing);
    objects("eMRTD") = { { data, "DG1", "one" }, { data, "DG2", "two" } };
    card->fail("C_GetAttributeValue.VALUE", CKR_DEVICE_ERROR, failing);

    QCOMPARE(labels(read(-1)), QStringList { "DG2" });

    QCOMPARE(card->calls().filter("1 1 VALUE").size(), failing);
}

void TestPkcs11Objects::searchStopsAsSoonAsAllNamesAreThere()
{
    objects("eMRTD") = {
        { data, "DG2", "x" }, { data, "DG1", "one" }, { data, "DG11", "eleven" }, { data, "DG14", "never" }
    };

    QCOMPARE(labels(read(0, { "DG1", "DG11" })), (QStringList { "DG1", "DG11" }));

    QCOMPARE(card->count("C_FindObjects"), 3);
    QCOMPARE(card->functions().last(), QString("C_FindObjectsFinal"));
}

void TestPkcs11Objects::searchRunsToTheEndIfANameIsMissing()
{
    objects("eMRTD") = { { data, "DG1", "1" }, { data, "DG11", "11" }, { data, "DG12", "12" }, { data, "DG2", "2" } };

    QCOMPARE(labels(read(0, { "DG1", "DG11", "DG12", "DG13" })), (QStringList { "DG1", "DG11", "DG12" }));

    QCOMPARE(card->count("C_FindObjects"), 5);
    QCOMPARE(card->functions().last(), QString("C_FindObjectsFinal"));
}

void TestPkcs11Objects::emptyValueDoesNotCountForTheStop()
{
    objects("eMRTD") = { { data, "DG1", "" }, { data, "DG11", "11" }, { data, "DG1", "1" } };

    QCOMPARE(labels(read(0, { "DG1", "DG11" })), (QStringList { "DG11", "DG1" }));

    QCOMPARE(card->count("C_FindObjects"), 3);
}

void TestPkcs11Objects::sameLabelTwiceStopsTheSearchToo()
{
    // Entries are counted, not names.
    objects("eMRTD") = { { data, "DG1", "1" }, { data, "DG1", "2" }, { data, "DG11", "11" } };

    QCOMPARE(labels(read(0, { "DG1", "DG11" })), (QStringList { "DG1", "DG1" }));
}

void TestPkcs11Objects::unreadableClassReadsAsData()
{
    objects("eMRTD") = { { 3, "private", "k" } };
    card->fail("C_GetAttributeValue.CLASS", CKR_DEVICE_ERROR);

    QCOMPARE(labels(read(0)), QStringList { "private" });
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", 1, {}).isEmpty());
}

void TestPkcs11Objects::objectsWithoutTokenOrSession()
{
    listAndSelect();

    QVERIFY(pkcs11->tokenObjects("Reader C", "eMRTD", -1, {}).isEmpty());
    QVERIFY(log->has("Token:  eMRTD  not found"));
    card->fail("C_OpenSession", CKR_DEVICE_REMOVED);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
    QVERIFY(log->has("tokenObjects, openSession return empty tokens list"));
}

void TestPkcs11Objects::labelsOfQualifiedObjectsStayOutOfTheLog()
{
    listAndSelect();
    objects("Qualified") = { { certificate, "Jan Kowalski PODPIS", "x" }, { certificate, "Inny", "y" } };

    QCOMPARE(pkcs11->tokenCerts(reader, "Qualified").size(), 2);

    QCOMPARE(log->count("Read qualified cert"), 2);
    QVERIFY(!log->has("Kowalski"));
    QVERIFY(!log->has("Inny"));
}

void TestPkcs11Objects::otherLabelsAreLogged()
{
    objects("eMRTD") = { { data, "DG1", "1" } };

    read(-1);

    QVERIFY(log->lines().contains("read DG1"));
}

void TestPkcs11Objects::certsAreTheValuesOfCertificates()
{
    listAndSelect();
    objects("Presence") = { { certificate, "a", QByteArray("\x30\x00\x01", 3) },
                            { data, "d", "no" },
                            { certificate, "a", "second" },
                            { certificate, "empty", "" } };

    QCOMPARE(pkcs11->tokenCerts(reader, "Presence"), (QByteArrayList { QByteArray("\x30\x00\x01", 3), "second" }));
}

void TestPkcs11Objects::laterDataOfTheSameLabelWins()
{
    listAndSelect();
    objects("eMRTD") = { { data, "DG1", "old" }, { certificate, "DG2", "no" }, { data, "DG1", "new" } };

    const auto values = pkcs11->tokenDataMap(reader, "eMRTD", {});

    QCOMPARE(values, (QMap<QString, QByteArray> { { "DG1", "new" } }));
}

void TestPkcs11Objects::dataThatALaterOneReplacesIsOverwritten()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("The sanitizer guards what was freed, which is looked at here");
#endif
    const HiddenDigits digits("71829304152637485960");
    const HiddenBytes old = HiddenBytes::of(digits);
    listAndSelect();
    {
        QByteArray bytes(700, '\0');
        for (int i = 0; i < digits.size(); ++i)
            bytes[600 + i] = digits.at(i);
        objects("eMRTD") = { { data, "DG1", bytes }, { data, "DG1", "new" } };
    }
    // On the card.
    QCOMPARE(old.places(), 1);

    const auto values = pkcs11->tokenDataMap(reader, "eMRTD", {});

    QCOMPARE(values, (QMap<QString, QByteArray> { { "DG1", "new" } }));
    QCOMPARE(old.places(), 1);
}

void TestPkcs11Objects::flagsOfASlotHideNoToken()
{
    for (ScriptedSlot &slot : card->card)
        slot.flags = 0;
    listAndSelect();
    objects("Presence") = { { certificate, "a", "x" } };

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);
    QCOMPARE(pkcs11->tokenCerts(reader, "Presence"), QByteArrayList { "x" });
    QVERIFY(!pkcs11->tokenInfo(reader, "Presence").isEmpty());
    QCOMPARE(pkcs11->isPinPad(reader), 0);
}

VELMOR_TEST(TestPkcs11Objects)
#include "tst_pkcs11_objects.moc"
