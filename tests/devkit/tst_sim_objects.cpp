#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// Searching and reading objects of the simulated library.
class TstSimObjects : public QObject {
    Q_OBJECT

private slots:
    void aSearchFindsTheObjectsOfItsTokenInTheirOrder();
    void dataGroupIsReadAsItStandsInTheFile();
    void privateKeyIsThereAndKeepsItsValue();
    void privateObjectIsFoundAfterLoginOnly();
    void aSecondSearchIsRefusedUntilTheFirstEnds();
    void searchStepsWithoutASearchAreRefused();
    void findHandsOutAsManyAsAsked();
    void templateNarrowsTheSearch();
    void unknownAttributeHasNoLength();
    void shortBufferIsNotWritten();
    void severalAttributesAreFilledAtOnce();
    void objectOfAnotherTokenIsUnknown();
    void oddObjectsAreHandedOutAsTheyAre();
    void certificateFieldsComeFromItsBytes();

private:
    SimFixture sim;
};

void TstSimObjects::aSearchFindsTheObjectsOfItsTokenInTheirOrder()
{
    sim.start("anna");

    QCOMPARE(sim.labels("eMRTD"), QStringList({ "COM", "DG1", "DG2", "DG11", "DG12", "DG13" }));
    QCOMPARE(sim.labels("Presence").first(), QString("Certyfikat potwierdzenia obecności"));
    sim.start("presence-only");
    QCOMPARE(sim.labels("eMRTD"), QStringList());
    QCOMPARE(sim.labels("Presence").mid(2), QStringList({ "COM", "DG1", "DG2", "DG11", "DG12", "DG13" }));
}

void TstSimObjects::dataGroupIsReadAsItStandsInTheFile()
{
    sim.start("anna");
    QFile file(QString(VELMOR_TEST_ROOT) + "/devkit/cards/anna/DG2.bin");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const CK_SESSION_HANDLE session = sim.open("eMRTD");

    const CK_OBJECT_HANDLE dg2 = sim.find(session).at(2);

    QCOMPARE(sim.objectClass(session, dg2), CK_ULONG(CKO_DATA));
    QCOMPARE(sim.attribute(session, dg2, CKA_VALUE), file.readAll());
}

void TstSimObjects::privateKeyIsThereAndKeepsItsValue()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Authentication");

    const auto objects = sim.find(session);

    CK_ATTRIBUTE value = { CKA_VALUE, nullptr, 0 };
    QCOMPARE(objects.size(), std::size_t(2));
    QCOMPARE(sim.objectClass(session, objects[0]), CK_ULONG(CKO_CERTIFICATE));
    QCOMPARE(sim.objectClass(session, objects[1]), CK_ULONG(CKO_PRIVATE_KEY));
    COMPARE_RV(sim.p11->C_GetAttributeValue(session, objects[1], &value, 1), CKR_ATTRIBUTE_SENSITIVE);
    QCOMPARE(value.ulValueLen, CK_ULONG(-1));
    QCOMPARE(sim.attribute(session, objects[0], CKA_ID), sim.attribute(session, objects[1], CKA_ID));
}

void TstSimObjects::privateObjectIsFoundAfterLoginOnly()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Qualified");

    QCOMPARE(sim.find(session).size(), std::size_t(1));
    COMPARE_RV(sim.login(session, CKU_USER, "12345678"), CKR_OK);
    const auto objects = sim.find(session);
    QCOMPARE(objects.size(), std::size_t(2));
    sim.p11->C_Logout(session);

    sim.attribute(session, objects[1], CKA_LABEL);
    COMPARE_RV(sim.attributeResult, CKR_OBJECT_HANDLE_INVALID);
    COMPARE_RV(sim.login(session, CKU_SO, "87654321"), CKR_OK);
    QCOMPARE(sim.find(session).size(), std::size_t(1));
}

void TstSimObjects::aSecondSearchIsRefusedUntilTheFirstEnds()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    const CK_SESSION_HANDLE other = sim.open("eMRTD");

    COMPARE_RV(sim.p11->C_FindObjectsInit(session, nullptr, 0), CKR_OK);
    COMPARE_RV(sim.p11->C_FindObjectsInit(session, nullptr, 0), CKR_OPERATION_ACTIVE);
    COMPARE_RV(sim.p11->C_FindObjectsInit(other, nullptr, 0), CKR_OK);
    COMPARE_RV(sim.p11->C_FindObjectsFinal(session), CKR_OK);
    COMPARE_RV(sim.p11->C_FindObjectsInit(session, nullptr, 0), CKR_OK);
}

void TstSimObjects::searchStepsWithoutASearchAreRefused()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    CK_OBJECT_HANDLE object = 0;
    CK_ULONG count = 0;

    COMPARE_RV(sim.p11->C_FindObjects(session, &object, 1, &count), CKR_OPERATION_NOT_INITIALIZED);
    COMPARE_RV(sim.p11->C_FindObjectsFinal(session), CKR_OPERATION_NOT_INITIALIZED);
    sim.p11->C_FindObjectsInit(session, nullptr, 0);
    COMPARE_RV(sim.p11->C_FindObjects(session, &object, 0, &count), CKR_ARGUMENTS_BAD);
}

void TstSimObjects::findHandsOutAsManyAsAsked()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    CK_OBJECT_HANDLE objects[4] = {};
    CK_ULONG count = 0;
    sim.p11->C_FindObjectsInit(session, nullptr, 0);

    QList<CK_ULONG> counts;
    for (int call = 0; call < 3; ++call) {
        COMPARE_RV(sim.p11->C_FindObjects(session, objects, 4, &count), CKR_OK);
        counts << count;
    }

    QCOMPARE(counts, QList<CK_ULONG>({ 4, 2, 0 }));
}

void TstSimObjects::templateNarrowsTheSearch()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    CK_ULONG wanted = CKO_DATA;
    char label[] = { 'D', 'G', '1', '1' };
    CK_ATTRIBUTE attributes[] = { { CKA_CLASS, &wanted, sizeof wanted }, { CKA_LABEL, label, sizeof label } };
    CK_OBJECT_HANDLE objects[9] = {};
    CK_ULONG count = 0;

    sim.p11->C_FindObjectsInit(session, attributes, 2);
    sim.p11->C_FindObjects(session, objects, 9, &count);

    QCOMPARE(count, CK_ULONG(1));
    QCOMPARE(sim.attribute(session, objects[0], CKA_LABEL), QByteArray("DG11"));
}

void TstSimObjects::unknownAttributeHasNoLength()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    CK_ATTRIBUTE attribute = { CKA_MODULUS, nullptr, 7 };

    COMPARE_RV(sim.p11->C_GetAttributeValue(session, sim.find(session).at(0), &attribute, 1),
               CKR_ATTRIBUTE_TYPE_INVALID);

    QCOMPARE(attribute.ulValueLen, CK_ULONG(-1));
}

void TstSimObjects::shortBufferIsNotWritten()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    char buffer[] = "??";
    CK_ATTRIBUTE attribute = { CKA_LABEL, buffer, 2 };

    COMPARE_RV(sim.p11->C_GetAttributeValue(session, sim.find(session).at(1), &attribute, 1), CKR_BUFFER_TOO_SMALL);

    QCOMPARE(attribute.ulValueLen, CK_ULONG(-1));
    QCOMPARE(buffer, "??");
}

void TstSimObjects::severalAttributesAreFilledAtOnce()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    CK_ULONG classOf = 99;
    char label[8] = {};
    CK_ATTRIBUTE attributes[] = { { CKA_CLASS, &classOf, sizeof classOf },
                                  { CKA_MODULUS, nullptr, 0 },
                                  { CKA_LABEL, label, sizeof label } };

    COMPARE_RV(sim.p11->C_GetAttributeValue(session, sim.find(session).at(1), attributes, 3),
               CKR_ATTRIBUTE_TYPE_INVALID);

    QCOMPARE(classOf, CK_ULONG(CKO_DATA));
    QCOMPARE(QByteArray(label, int(attributes[2].ulValueLen)), QByteArray("DG1"));
}

void TstSimObjects::objectOfAnotherTokenIsUnknown()
{
    sim.start("anna");
    const CK_SESSION_HANDLE data = sim.open("eMRTD");
    const CK_SESSION_HANDLE certificates = sim.open("Presence");

    sim.attribute(certificates, sim.find(data).at(0), CKA_LABEL);

    COMPARE_RV(sim.attributeResult, CKR_OBJECT_HANDLE_INVALID);
}

void TstSimObjects::oddObjectsAreHandedOutAsTheyAre()
{
    sim.start("odd-objects");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");

    QCOMPARE(sim.labels("eMRTD"), QStringList({ "", "COM", "   ", "EMPTY", "DG1", "DG2", "DG11", "DG12", "DG13" }));
    QCOMPARE(sim.attribute(session, sim.find(session).at(3), CKA_VALUE), QByteArray());
    COMPARE_RV(sim.attributeResult, CKR_OK);
}

void TstSimObjects::certificateFieldsComeFromItsBytes()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("Presence");
    const CK_OBJECT_HANDLE certificate = sim.find(session).at(0);

    const QByteArray der = sim.attribute(session, certificate, CKA_VALUE);

    // A sequence that holds the surname's object identifier (2.5.4.4) and the surname, and lies in the certificate.
    const QByteArray subject = sim.attribute(session, certificate, CKA_SUBJECT);
    QCOMPARE(quint8(subject.at(0)), quint8(0x30));
    QVERIFY(subject.contains(QByteArray::fromHex("0603550404")));
    QVERIFY(subject.contains("Wiśniewska"));
    QVERIFY(der.contains(subject));
    QVERIFY(!sim.attribute(session, certificate, CKA_ISSUER).contains("Wiśniewska"));
    QCOMPARE(sim.attribute(session, certificate, CKA_SERIAL_NUMBER).left(2), QByteArray::fromHex("0204"));
}

VELMOR_TEST(TstSimObjects)
#include "tst_sim_objects.moc"
