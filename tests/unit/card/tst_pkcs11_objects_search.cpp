// The course of a search: sessions, dead sessions, failures on the way, and the count of certificates.
#include "support/scripted_pkcs11/pkcs11_world.h"

namespace {

constexpr CK_OBJECT_CLASS data = CKO_DATA;
constexpr CK_OBJECT_CLASS certificate = CKO_CERTIFICATE;

} // namespace

class TestPkcs11ObjectsSearch : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init()
    {
        startUp();
        card->addReader(reader);
    }
    void cleanup() { tearDown(); }

    void countOpensASessionAndEndsItsSearch();
    void countKeepsTheSession();
    void onlyCertificatesAreCounted();
    void countEndsTheSearchAfterAFailure();
    void countWithoutTokenIsZeroAndSilent();
    void countWithoutSession();
    void countWithoutLibrary();
    void unreadableClassIsData();
    void countSurvivesAFailedFinal();
    void countLogsItsLine();

    void deadSessionIsRestoredOnce();
    void deadSessionThatStaysDeadGivesUp();
    void failedRestoreStillTriesTheSearch();
    void otherSearchFailureIsNotRetried();
    void sessionIsRestoredAfterFinalize();

    void failedFindEndsWithoutFinal_data();
    void failedFindEndsWithoutFinal();
    void searchLeftOpenIsRefusedUntilFinalize();
    void failedFinalLeavesTheResult();
    void endlessAnswersEndTheCount();
    void endlessAnswersEndTheReading();

private:
    QList<pkcsDataObj> read(int type, const QStringList &names = {});
};

QList<pkcsDataObj> TestPkcs11ObjectsSearch::read(int type, const QStringList &names)
{
    listAndSelect();
    return pkcs11->tokenObjects(reader, "eMRTD", type, names);
}

void TestPkcs11ObjectsSearch::countOpensASessionAndEndsItsSearch()
{
    listAndSelect();
    objects("Presence") = { { certificate, "c", "x" } };

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);

    QCOMPARE(card->calls(),
             (QStringList { "C_OpenSession 2 flags=6", "C_FindObjectsInit 1 null 0", "C_FindObjects 1 max=1",
                            "C_GetAttributeValue 1 1 CLASS given", "C_FindObjects 1 max=1", "C_FindObjectsFinal 1" }));
}

void TestPkcs11ObjectsSearch::countKeepsTheSession()
{
    listAndSelect();
    pkcs11->certsCount(reader, "Presence");
    card->clearCalls();

    pkcs11->certsCount(reader, "Presence");

    QCOMPARE(card->functions(), (QStringList { "C_FindObjectsInit", "C_FindObjects", "C_FindObjectsFinal" }));
}

void TestPkcs11ObjectsSearch::onlyCertificatesAreCounted()
{
    listAndSelect();
    objects("Presence") = {
        { data, "d", "x" }, { certificate, "a", "x" }, { 2, "p", "x" }, { 3, "k", "x" }, { certificate, "", "" }
    };

    // Labels and values do not matter here.
    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 2);
}

void TestPkcs11ObjectsSearch::countEndsTheSearchAfterAFailure()
{
    listAndSelect();
    objects("Presence") = { { certificate, "a", "x" }, { certificate, "b", "x" } };
    card->fail("C_FindObjects", CKR_DEVICE_ERROR, 2);

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);

    QCOMPARE(card->functions().last(), QString("C_FindObjectsFinal"));
}

// A library that finds one more each time it is asked.
void TestPkcs11ObjectsSearch::endlessAnswersEndTheCount()
{
    listAndSelect();
    objects("Presence") = std::vector<ScriptedObject>(4100, { certificate, "a", "x" });

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 4096);

    QCOMPARE(card->count("C_FindObjects"), 4096);
    QCOMPARE(card->functions().last(), QString("C_FindObjectsFinal"));
    QVERIFY(log->has("more objects than a card can have, search ended"));
}

void TestPkcs11ObjectsSearch::endlessAnswersEndTheReading()
{
    listAndSelect();
    objects("eMRTD") = std::vector<ScriptedObject>(4100, { data, "DG1", "x" });

    QCOMPARE(read(CKO_DATA).size(), 4096);

    QCOMPARE(card->count("C_FindObjects"), 4096);
    QCOMPARE(card->functions().last(), QString("C_FindObjectsFinal"));
    QVERIFY(log->has("more objects than a card can have, search ended"));
}

void TestPkcs11ObjectsSearch::countWithoutTokenIsZeroAndSilent()
{
    listAndSelect();

    QCOMPARE(pkcs11->certsCount("Reader C", "Presence"), 0);

    QVERIFY(card->calls().isEmpty());
    QVERIFY(log->has("Token:  Presence  not found"));
    QVERIFY(!log->has("Certs in"));
}

void TestPkcs11ObjectsSearch::countWithoutSession()
{
    listAndSelect();
    card->fail("C_OpenSession", CKR_DEVICE_REMOVED);

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 0);

    QCOMPARE(card->functions(), QStringList { "C_OpenSession" });
    QVERIFY(log->has("tokenObjects, openSession return empty tokens list"));
}

void TestPkcs11ObjectsSearch::countWithoutLibrary()
{
    listAndSelect();
    pkcs11->finalize();
    card->fail("C_Initialize", CKR_GENERAL_ERROR);
    card->clearCalls();

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 0);

    QCOMPARE(card->functions(), QStringList { "C_Initialize" });
    QVERIFY(log->has("tokenObjects, openSession return empty tokens list"));
}

void TestPkcs11ObjectsSearch::unreadableClassIsData()
{
    listAndSelect();
    objects("Presence") = { { certificate, "a", "x" }, { certificate, "b", "x" } };
    card->fail("C_GetAttributeValue.CLASS", CKR_DEVICE_ERROR, 1);

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);

    QVERIFY(log->has("Pkcs11 err:  Błąd biblioteki PKCS11!"));
}

void TestPkcs11ObjectsSearch::countSurvivesAFailedFinal()
{
    listAndSelect();
    objects("Presence") = { { certificate, "a", "x" } };
    card->fail("C_FindObjectsFinal", CKR_DEVICE_ERROR);

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);

    QVERIFY(log->has("tokenObjects error: C_FindObjectsFinal failed, sessId: 1"));
    QVERIFY(log->has("Pkcs11 err:  Błąd pobierania obiektów danych!"));
}

void TestPkcs11ObjectsSearch::countLogsItsLine()
{
    listAndSelect();
    objects("Presence") = { { certificate, "a", "x" }, { certificate, "b", "x" } };

    pkcs11->certsCount(reader, "Presence");

    QVERIFY(log->has("Certs in Presence 2"));
}

void TestPkcs11ObjectsSearch::deadSessionIsRestoredOnce()
{
    listAndSelect();
    pkcs11->certsCount(reader, "Presence");
    objects("Presence") = { { certificate, "a", "x" } };
    pkcs11->finalize();
    pkcs11->initialize();
    card->clearCalls();

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 1);

    QCOMPARE(card->calls().mid(0, 3),
             (QStringList { "C_FindObjectsInit 1 null 0", "C_OpenSession 2 flags=6", "C_FindObjectsInit 2 null 0" }));
    QVERIFY(log->has("sessionRestore()"));
    QVERIFY(log->has("C_FindObjectsInit error:  b3"));
    // Later calls use the new session.
    card->clearCalls();
    pkcs11->certsCount(reader, "Presence");
    QCOMPARE(card->calls().first(), QString("C_FindObjectsInit 2 null 0"));
}

void TestPkcs11ObjectsSearch::deadSessionThatStaysDeadGivesUp()
{
    listAndSelect();
    card->fail("C_FindObjectsInit", CKR_SESSION_HANDLE_INVALID);

    QVERIFY(pkcs11->tokenObjects(reader, "Presence", -1, {}).isEmpty());

    QCOMPARE(card->functions(),
             (QStringList { "C_OpenSession", "C_FindObjectsInit", "C_OpenSession", "C_FindObjectsInit" }));
    QVERIFY(log->has("tokenObjects error: C_FindObjectsInit failed, sessId: 2"));
}

void TestPkcs11ObjectsSearch::failedRestoreStillTriesTheSearch()
{
    listAndSelect();
    pkcs11->certsCount(reader, "Presence");
    card->fail("C_FindObjectsInit", CKR_SESSION_HANDLE_INVALID, 1);
    card->fail("C_OpenSession", CKR_DEVICE_ERROR);
    card->clearCalls();

    // What the restoring gives is not looked at; the old session still being good, the search runs on it.
    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 0);

    QCOMPARE(card->functions(),
             (QStringList { "C_FindObjectsInit", "C_OpenSession", "C_FindObjectsInit", "C_FindObjects",
                            "C_FindObjectsFinal" }));
}

void TestPkcs11ObjectsSearch::otherSearchFailureIsNotRetried()
{
    listAndSelect();
    card->fail("C_FindObjectsInit", CKR_OPERATION_ACTIVE);

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 0);

    QCOMPARE(card->functions(), (QStringList { "C_OpenSession", "C_FindObjectsInit" }));
    QVERIFY(log->has("C_FindObjectsInit error:  90"));
    QVERIFY(log->has("tokenObjects error: C_FindObjectsInit failed, sessId: 1"));
    QVERIFY(!log->has("sessionRestore()"));
}

void TestPkcs11ObjectsSearch::sessionIsRestoredAfterFinalize()
{
    // Without a new initialisation the restoring brings it about.
    listAndSelect();
    pkcs11->certsCount(reader, "Presence");
    card->fail("C_FindObjectsInit", CKR_SESSION_HANDLE_INVALID, 1);
    pkcs11->finalize();
    card->clearCalls();

    pkcs11->certsCount(reader, "Presence");

    QCOMPARE(card->functions(),
             (QStringList { "C_FindObjectsInit", "C_Initialize", "C_OpenSession", "C_FindObjectsInit", "C_FindObjects",
                            "C_FindObjectsFinal" }));
}

void TestPkcs11ObjectsSearch::failedFindEndsWithoutFinal_data()
{
    QTest::addColumn<int>("nth");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("first") << 1 << QStringList();
    QTest::newRow("second") << 2 << QStringList { "DG1" };
    QTest::newRow("third") << 3 << QStringList { "DG1", "DG2" };
}

void TestPkcs11ObjectsSearch::failedFindEndsWithoutFinal()
{
    QFETCH(int, nth);
    QFETCH(QStringList, expected);
    objects("eMRTD") = { { data, "DG1", "1" }, { data, "DG2", "2" } };
    card->fail("C_FindObjects", CKR_DEVICE_ERROR, nth);

    QCOMPARE(labels(read(-1)), expected);

    QCOMPARE(card->count("C_FindObjects"), nth);
    QCOMPARE(card->count("C_FindObjectsFinal"), 0);
    QVERIFY(log->has("tokenObjects, no more objects"));
}

void TestPkcs11ObjectsSearch::searchLeftOpenIsRefusedUntilFinalize()
{
    objects("eMRTD") = { { data, "DG1", "1" } };
    card->fail("C_FindObjects", CKR_DEVICE_ERROR, 1);
    QVERIFY(read(-1).isEmpty());

    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
    pkcs11->finalize();
    pkcs11->initialize();

    QCOMPARE(labels(pkcs11->tokenObjects(reader, "eMRTD", -1, {})), QStringList { "DG1" });
}

void TestPkcs11ObjectsSearch::failedFinalLeavesTheResult()
{
    objects("eMRTD") = { { data, "DG1", "1" } };
    card->fail("C_FindObjectsFinal", CKR_DEVICE_ERROR);

    QCOMPARE(labels(read(-1)), QStringList { "DG1" });

    QVERIFY(log->has("Pkcs11 err:  Błąd pobierania obiektów danych!"));
}

VELMOR_TEST(TestPkcs11ObjectsSearch)
#include "tst_pkcs11_objects_search.moc"
