#include "devkit/sim_fixture.h"
#include "support/testmain.h"

// Texts, flags, counts and lengths that a call of the simulated library can be made to answer in place of the true
// ones.
class TstSimWrongData : public QObject {
    Q_OBJECT

private slots:
    void descriptionIsRawBytes();
    void labelIsRawBytes();
    void flagsAreReplaced();
    void slotCountChangesBetweenTheCalls();
    void objectCountIsNonsense();
    void lengthIsUnavailable();
    void secondLengthIsLargerThanTheFirst();

private:
    SimFixture sim;
};

void TstSimWrongData::descriptionIsRawBytes()
{
    sim.start("anna");
    const std::string raw = std::string("R\0X\xFF\xC5", 5);
    sim.fault("C_GetSlotInfo", [&](sim::Fault &f) { f.description = raw; });

    QCOMPARE(sim.text(sim.slotInfo(1).slotDescription), QByteArray(raw.data(), 5).leftJustified(64, ' '));
    sim.fault("C_GetSlotInfo", [&](sim::Fault &f) { f.description = std::string(80, 'x'); });
    QCOMPARE(sim.text(sim.slotInfo(1).slotDescription), QByteArray(64, 'x'));
}

void TstSimWrongData::labelIsRawBytes()
{
    sim.start("anna");
    sim.fault("C_GetTokenInfo", [&](sim::Fault &f) { f.label = std::string("\xC4\x85\xC4", 3); });

    QCOMPARE(sim.text(sim.tokenInfo(1).label), QByteArray("\xC4\x85\xC4").leftJustified(32, ' '));
}

void TstSimWrongData::flagsAreReplaced()
{
    sim.start("anna");
    sim.fault("C_GetSlotInfo", [](sim::Fault &f) { f.flags = 0xFFFFFFFF; });
    sim.fault("C_GetTokenInfo", [](sim::Fault &f) { f.flags = 0; });

    QCOMPARE(qulonglong(sim.slotInfo(1).flags), 0xFFFFFFFFULL);
    QCOMPARE(qulonglong(sim.tokenInfo(1).flags), 0ULL);
}

void TstSimWrongData::slotCountChangesBetweenTheCalls()
{
    sim.start("anna");
    sim.fault("C_GetSlotList", [](sim::Fault &f) {
        f.buffer = sim::Fault::Buffer::Null;
        f.count = 2;
    });
    CK_ULONG count = 0;
    CK_SLOT_ID ids[6] = { 99, 99, 99, 99, 99, 99 };

    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, nullptr, &count), CKR_OK);
    QCOMPARE(count, CK_ULONG(2));
    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, ids, &count), CKR_BUFFER_TOO_SMALL);
    QCOMPARE(ids[0], CK_SLOT_ID(99));

    sim.fault("C_GetSlotList", [](sim::Fault &f) {
        f.buffer = sim::Fault::Buffer::Given;
        f.count = 400;
    });
    count = 5;
    COMPARE_RV(sim.p11->C_GetSlotList(CK_FALSE, ids, &count), CKR_OK);
    QCOMPARE(count, CK_ULONG(400));
    QCOMPARE(ids[4], CK_SLOT_ID(5));
    QCOMPARE(ids[5], CK_SLOT_ID(99));
}

void TstSimWrongData::objectCountIsNonsense()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    sim.fault("C_FindObjects", [](sim::Fault &f) { f.count = 7; });
    CK_OBJECT_HANDLE objects[2] = { 0, 99 };
    CK_ULONG count = 0;
    sim.p11->C_FindObjectsInit(session, nullptr, 0);

    COMPARE_RV(sim.p11->C_FindObjects(session, objects, 1, &count), CKR_OK);

    QCOMPARE(count, CK_ULONG(7));
    QCOMPARE(objects[1], CK_OBJECT_HANDLE(99));
}

void TstSimWrongData::lengthIsUnavailable()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    sim.fault("C_GetAttributeValue", [](sim::Fault &f) {
        f.attribute = CKA_VALUE;
        f.buffer = sim::Fault::Buffer::Null;
        f.length = -1;
    });
    CK_ATTRIBUTE attribute = { CKA_VALUE, nullptr, 0 };

    COMPARE_RV(sim.p11->C_GetAttributeValue(session, 5002, &attribute, 1), CKR_OK);

    QCOMPARE(attribute.ulValueLen, CK_ULONG(-1));
}

void TstSimWrongData::secondLengthIsLargerThanTheFirst()
{
    sim.start("anna");
    const CK_SESSION_HANDLE session = sim.open("eMRTD");
    sim.fault("C_GetAttributeValue", [](sim::Fault &f) {
        f.buffer = sim::Fault::Buffer::Given;
        f.length = 100000;
    });
    CK_ATTRIBUTE attribute = { CKA_LABEL, nullptr, 0 };
    char label[4] = { '?', '?', '?', '?' };

    COMPARE_RV(sim.p11->C_GetAttributeValue(session, 5002, &attribute, 1), CKR_OK);
    QCOMPARE(attribute.ulValueLen, CK_ULONG(3));
    attribute.pValue = label;
    COMPARE_RV(sim.p11->C_GetAttributeValue(session, 5002, &attribute, 1), CKR_OK);

    QCOMPARE(attribute.ulValueLen, CK_ULONG(100000));
    QCOMPARE(QByteArray(label, 4), QByteArray("DG1?"));
}

VELMOR_TEST(TstSimWrongData)
#include "tst_sim_wrong_data.moc"
