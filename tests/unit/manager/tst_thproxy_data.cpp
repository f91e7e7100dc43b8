// What the card worker reads of a card: container states, pinpad, chip, data groups and the photo.
#include "support/scripted_pkcs11/worker_world.h"

#include <QSignalSpy>

namespace {

const std::vector<ScriptedObject> groups = {
    { CKO_DATA, "DG1", "one" },     { CKO_DATA, "DG2", "photo" },     { CKO_DATA, "DG11", "eleven" },
    { CKO_DATA, "DG12", "twelve" }, { CKO_DATA, "DG13", "thirteen" },
};

} // namespace

class TestThProxyData : public QObject, private WorkerWorld {
    Q_OBJECT

private slots:
    void init()
    {
        startUp();
        card->slotOf(emrtdSlot)->objects = groups;
    }
    void cleanup() { tearDown(); }

    void statusReadsThreeContainersInOrder();
    void everyFieldHasItsSource();
    void missingTokensGiveEmptyStatus();
    void pinPadIsTold_data();
    void pinPadIsTold();
    void groupsComeFromEmrtd();
    void groupsComeFromPresenceIfEmrtdHasNone();
    void oneGroupInEmrtdIsEnough();
    void groupsOfNeitherAreEmptyAndTheRestIsFilled();
    void photoComesFromEmrtd();
    void photoComesFromPresenceIfEmrtdHasNone();
    void photoOfNeitherIsEmpty();
};

void TestThProxyData::statusReadsThreeContainersInOrder()
{
    select();
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(card->calls().mid(0, 6),
             (QStringList { "C_GetTokenInfo 1", "C_GetTokenInfo 3", "C_GetTokenInfo 4", "C_GetSlotInfo 1",
                            "C_OpenSession 5 flags=6", "C_FindObjectsInit 1 null 0" }));
    QCOMPARE(log->lines().first(), QString("Checking conteiners"));
}

void TestThProxyData::everyFieldHasItsSource()
{
    select();
    setTries(authenticationSlot, CKF_USER_PIN_COUNT_LOW | CKF_SO_PIN_LOCKED);
    setTries(authorizationSlot, CKF_USER_PIN_LOCKED | CKF_SO_PIN_LOCKED);
    setTries(qualifiedSlot, CKF_USER_PIN_TO_BE_CHANGED | CKF_SO_PIN_FINAL_TRY);
    setTries(presenceSlot, CKF_USER_PIN_FINAL_TRY | CKF_SO_PIN_LOCKED);
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(),
             (QList<QVariant> { "Zmień PIN", "Odblokuj PIN", "Nadaj PIN", 2, 0, 1, 4, false, 0, QByteArray("one"),
                                QByteArray("eleven"), QByteArray("twelve"), QByteArray("thirteen") }));
}

void TestThProxyData::missingTokensGiveEmptyStatus()
{
    select();
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO("Reader C");

    // Also a reader without a pinpad answer: -3 reads as none.
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(
        answers.first(),
        (QList<QVariant> { "", "", "", 0, 0, 0, 0, false, 0, QByteArray(), QByteArray(), QByteArray(), QByteArray() }));
}

void TestThProxyData::pinPadIsTold_data()
{
    QTest::addColumn<uint>("flags");
    QTest::addColumn<bool>("failing");
    QTest::addColumn<bool>("pinPad");
    QTest::addColumn<int>("chip");
    QTest::newRow("pinpad, VELMOR_2_0") << 0x88040201u << false << true << 4;
    QTest::newRow("none, VELMOR_2_1") << 0x88080001u << false << false << 16;
    QTest::newRow("cannot be asked") << 0x88080201u << true << false << 16;
}

void TestThProxyData::pinPadIsTold()
{
    QFETCH(uint, flags);
    QFETCH(bool, failing);
    QFETCH(bool, pinPad);
    for (ScriptedSlot &slot : card->card)
        slot.flags = flags;
    select();
    if (failing)
        card->fail("C_GetSlotInfo", CKR_DEVICE_ERROR);
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().at(7).toBool(), pinPad);
    QTEST(answers.first().at(8).toInt(), "chip");
    QVERIFY(log->has(pinPad ? "reader with pinpad:  true" : "reader with pinpad:  false"));
}

void TestThProxyData::groupsComeFromEmrtd()
{
    select();
    card->slotOf(presenceSlot)->objects = { { CKO_DATA, "DG1", "other" } };
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(
        answers.first().mid(9),
        (QList<QVariant> { QByteArray("one"), QByteArray("eleven"), QByteArray("twelve"), QByteArray("thirteen") }));
    QVERIFY(!log->has("from Presence container"));
    // The photo is none of the four and is left alone.
    QVERIFY(!log->has("read DG2"));
    QCOMPARE(card->count("C_OpenSession"), 1);
}

void TestThProxyData::groupsComeFromPresenceIfEmrtdHasNone()
{
    select();
    card->slotOf(emrtdSlot)->objects.clear();
    card->slotOf(presenceSlot)->objects = groups;
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(),
             (QList<QVariant> { "Zmień PIN", "Zmień PIN", "Zmień PIN", 3, 3, 3, 3, false, 0, QByteArray("one"),
                                QByteArray("eleven"), QByteArray("twelve"), QByteArray("thirteen") }));
    QCOMPARE(log->count("Loading DG1/DG11/DG12/DG13 from Presence container"), 1);
    QCOMPARE(card->calls().filter("C_OpenSession"),
             (QStringList { "C_OpenSession 5 flags=6", "C_OpenSession 2 flags=6" }));
}

void TestThProxyData::oneGroupInEmrtdIsEnough()
{
    select();
    card->slotOf(emrtdSlot)->objects = { { CKO_DATA, "DG12", "twelve" } };
    card->slotOf(presenceSlot)->objects = groups;
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().mid(9),
             (QList<QVariant> { QByteArray(), QByteArray(), QByteArray("twelve"), QByteArray() }));
    QVERIFY(!log->has("from Presence container"));
}

void TestThProxyData::groupsOfNeitherAreEmptyAndTheRestIsFilled()
{
    select();
    card->slotOf(emrtdSlot)->objects.clear();
    setTries(authenticationSlot, CKF_USER_PIN_COUNT_LOW);
    setTries(authorizationSlot, CKF_USER_PIN_FINAL_TRY);
    setTries(qualifiedSlot, CKF_USER_PIN_LOCKED | CKF_SO_PIN_COUNT_LOW);
    QSignalSpy answers(proxy.get(), &ThProxy::getConteinersAndICAOFin);

    emit window->getConteinersAndICAO(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(),
             (QList<QVariant> { "Zmień PIN", "Zmień PIN", "Odblokuj PIN", 2, 1, 2, 0, false, 0, QByteArray(),
                                QByteArray(), QByteArray(), QByteArray() }));
}

void TestThProxyData::photoComesFromEmrtd()
{
    select();
    QSignalSpy answers(proxy.get(), &ThProxy::getPhotoFin);

    emit window->getPhoto(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), QList<QVariant> { QByteArray("photo") });
    QVERIFY(!log->has("from Presence container"));
    // One wanted object: the search ends at it.
    QCOMPARE(card->count("C_FindObjects"), 2);
}

void TestThProxyData::photoComesFromPresenceIfEmrtdHasNone()
{
    select();
    card->slotOf(emrtdSlot)->objects = { { CKO_DATA, "DG1", "one" } };
    card->slotOf(presenceSlot)->objects = { { CKO_DATA, "DG2", "another photo" } };
    QSignalSpy answers(proxy.get(), &ThProxy::getPhotoFin);

    emit window->getPhoto(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), QList<QVariant> { QByteArray("another photo") });
    QCOMPARE(log->count("Loading DG2 from Presence container"), 1);
}

void TestThProxyData::photoOfNeitherIsEmpty()
{
    select();
    card->slotOf(emrtdSlot)->objects.clear();
    QSignalSpy answers(proxy.get(), &ThProxy::getPhotoFin);

    emit window->getPhoto(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), QList<QVariant> { QByteArray() });
}

VELMOR_TEST(TestThProxyData)
#include "tst_thproxy_data.moc"
