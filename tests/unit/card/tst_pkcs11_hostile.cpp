// Answers that no sane library gives. None may make the program read or write where nothing was answered, or throw. Run
// it with the address sanitizer as well: a read behind a buffer shows there and not here.
#include "card/pkcs11.h"
#include "support/scripted_pkcs11/scripted_card.h"
#include "support/testmain.h"

#include <cstring>
#include <memory>

namespace {

const QString reader = "Reader A";
constexpr CK_ULONG none = static_cast<CK_ULONG>(-1);

} // namespace

class TestPkcs11Hostile : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void slotCountThatGrows();
    void slotCountThatShrinks();
    void slotCountLargerThanWhatWasAskedFor();
    void absurdSlotCounts_data();
    void absurdSlotCounts();
    void sameSlotTwice();
    void textFields_data();
    void textFields();
    void attributeLengths_data();
    void attributeLengths();
    void absurdAttributeLengths_data();
    void absurdAttributeLengths();
    void largestAttributeIsAskedFor();
    void lengthUnavailableWithoutAnError();
    void secondLengthUnavailable();
    void labelOfZeros();
    void labelThatIsNotUtf8();
    void zeroesWithinALabel();
    void classThatIsNotWritten();
    void classOfFourBytes();
    void moreObjectsThanAskedFor();
    void sessionHandleOfZero();
    void sessionHandleBeyond31Bits();
    void tableThatFailsAtEachFunction_data();
    void tableThatFailsAtEachFunction();

private:
    void insert();
    // Answers an attribute with the first length, then with the second, writing at most what fits.
    void answerLengths(CK_ATTRIBUTE_TYPE type, CK_ULONG first, CK_ULONG second);

    std::unique_ptr<ScriptedCard> card;
    std::unique_ptr<Pkcs11> pkcs11;
};

void TestPkcs11Hostile::init()
{
    card = std::make_unique<ScriptedCard>();
    card->addReader(reader);
    card->slotOf(5)->objects = { { CKO_DATA, "DG1", "one" } };
    pkcs11 = std::make_unique<Pkcs11>();
}

void TestPkcs11Hostile::cleanup()
{
    pkcs11.reset();
    card.reset();
}

void TestPkcs11Hostile::insert()
{
    pkcs11->detectSlots();
    QVERIFY(pkcs11->selectReader(reader));
    card->clearCalls();
}

void TestPkcs11Hostile::answerLengths(CK_ATTRIBUTE_TYPE type, CK_ULONG first, CK_ULONG second)
{
    card->onAttribute = [type, first, second](CK_ATTRIBUTE *attribute) -> CK_RV {
        if (attribute->type == CKA_CLASS) {
            const CK_OBJECT_CLASS data = CKO_DATA;
            std::memcpy(attribute->pValue, &data, sizeof data);
            return CKR_OK;
        }
        const bool asked = attribute->type == type;
        if (!attribute->pValue) {
            attribute->ulValueLen = asked ? first : 3;
            return CKR_OK;
        }
        // Nothing is ever written beyond the room that was offered.
        std::memset(attribute->pValue, 'x', attribute->ulValueLen);
        if (asked)
            attribute->ulValueLen = second;
        return CKR_OK;
    };
}

void TestPkcs11Hostile::slotCountThatGrows()
{
    // A reader is plugged in between the two calls.
    card->onSlotList = [](CK_SLOT_ID *ids, CK_ULONG *count) -> CK_RV {
        *count = ids ? 7 : 5;
        return ids ? CKR_BUFFER_TOO_SMALL : CKR_OK;
    };

    QVERIFY(!pkcs11->detectSlots());

    QCOMPARE(card->count("C_GetSlotInfo"), 0);
}

void TestPkcs11Hostile::slotCountThatShrinks()
{
    card->onSlotList = [](CK_SLOT_ID *ids, CK_ULONG *count) -> CK_RV {
        *count = ids ? 1 : 5;
        if (ids)
            ids[0] = 3;
        return CKR_OK;
    };

    QVERIFY(pkcs11->detectSlots());

    QCOMPARE(card->calls().filter("C_GetSlotInfo"), QStringList { "C_GetSlotInfo 3" });
}

void TestPkcs11Hostile::slotCountLargerThanWhatWasAskedFor()
{
    card->onSlotList = [](CK_SLOT_ID *ids, CK_ULONG *count) -> CK_RV {
        *count = ids ? 100000 : 2;
        if (ids) {
            ids[0] = 1;
            ids[1] = 2;
        }
        return CKR_OK;
    };

    QVERIFY(pkcs11->detectSlots());

    QCOMPARE(card->calls().filter("C_GetSlotInfo"), (QStringList { "C_GetSlotInfo 1", "C_GetSlotInfo 2" }));
}

void TestPkcs11Hostile::absurdSlotCounts_data()
{
    QTest::addColumn<quint64>("count");
    QTest::newRow("(CK_ULONG)-1") << quint64(none);
    QTest::newRow("half of all numbers") << quint64(none / 2);
    QTest::newRow("more bytes than numbers") << quint64(none / sizeof(CK_SLOT_ID) + 2);
    QTest::newRow("a billion") << quint64(1000000000);
}

void TestPkcs11Hostile::absurdSlotCounts()
{
    QFETCH(quint64, count);
    card->onSlotList = [count](CK_SLOT_ID *, CK_ULONG *asked) -> CK_RV {
        *asked = static_cast<CK_ULONG>(count);
        return CKR_OK;
    };
    LogCatcher log;

    QVERIFY(!pkcs11->detectSlots());

    QVERIFY(log.has("Błąd podczas pobierania listy slotów."));
}

void TestPkcs11Hostile::sameSlotTwice()
{
    // Two tokens on one slot must not end as one token owned twice.
    card->onSlotList = [](CK_SLOT_ID *ids, CK_ULONG *count) -> CK_RV {
        if (ids)
            std::fill(ids, ids + *count, CK_SLOT_ID(5));
        *count = 3;
        return CKR_OK;
    };
    insert();

    for (int i = 0; i < 3; ++i) {
        pkcs11->detectTokens();
        QCOMPARE(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).size(), 1);
    }
    QVERIFY(!pkcs11->selectReader("Reader C"));
}

void TestPkcs11Hostile::textFields_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("zeros") << QByteArray(64, '\0');
    QTest::newRow("no blank at all") << QByteArray(64, 'x');
    QTest::newRow("not UTF-8") << QByteArray(64, '\xff');
    QTest::newRow("cut within a letter") << QByteArray(31, 'x') + QByteArray("\xc5\xbc") + QByteArray(31, '\xc5');
    QTest::newRow("only marks") << QByteArray(" #").repeated(32);
    QTest::newRow("percent signs") << QByteArray("%1 %s %n").repeated(8);
    QTest::newRow("line ends") << QByteArray("\n\r").repeated(32);
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                   "Reader A");
}

void TestPkcs11Hostile::textFields()
{
    QFETCH(QByteArray, bytes);
    for (ScriptedSlot &slot : card->card) {
        slot.description = bytes;
        slot.label = bytes;
    }
    QStringList found;

    QVERIFY(pkcs11->readers(found, 1, 0x100));
    for (const QString &name : found) {
        pkcs11->selectReader(name);
        pkcs11->tokenInfo(name, "Qualified");
        pkcs11->certsCount(name, "Qualified");
        pkcs11->isPinPad(name);
        pkcs11->typeOfChip(name);
        QCOMPARE(pkcs11->login("Reader C", "Qualified", "1234", 1), -3);
    }
}

void TestPkcs11Hostile::attributeLengths_data()
{
    QTest::addColumn<quint64>("first");
    QTest::addColumn<quint64>("second");
    QTest::addColumn<int>("expected");
    QTest::newRow("the same") << quint64(10) << quint64(10) << 10;
    QTest::newRow("smaller at the second call") << quint64(10) << quint64(4) << 4;
    QTest::newRow("larger at the second call") << quint64(10) << quint64(1000000) << 10;
    QTest::newRow("one larger at the second call") << quint64(10) << quint64(11) << 10;
    QTest::newRow("gone at the second call") << quint64(10) << quint64(0) << 0;
    QTest::newRow("almost (CK_ULONG)-1 at the second call") << quint64(10) << quint64(none - 1) << 10;
}

void TestPkcs11Hostile::attributeLengths()
{
    QFETCH(quint64, first);
    QFETCH(quint64, second);
    QFETCH(int, expected);
    insert();

    answerLengths(CKA_VALUE, static_cast<CK_ULONG>(first), static_cast<CK_ULONG>(second));
    const QList<pkcsDataObj> byValue = pkcs11->tokenObjects(reader, "eMRTD", -1, {});
    answerLengths(CKA_LABEL, static_cast<CK_ULONG>(first), static_cast<CK_ULONG>(second));
    const QList<pkcsDataObj> byLabel = pkcs11->tokenObjects(reader, "eMRTD", -1, {});

    QCOMPARE(byValue.size(), expected ? 1 : 0);
    QCOMPARE(byLabel.size(), expected ? 1 : 0);
    if (expected) {
        QCOMPARE(byValue.first().value, QByteArray(expected, 'x'));
        QCOMPARE(byLabel.first().name, QString(expected, 'x'));
    }
}

void TestPkcs11Hostile::absurdAttributeLengths_data()
{
    QTest::addColumn<quint64>("length");
    QTest::newRow("(CK_ULONG)-1") << quint64(none);
    QTest::newRow("(CK_ULONG)-2") << quint64(none - 1);
    QTest::newRow("half of all numbers") << quint64(none / 2);
    QTest::newRow("0x7fffffff") << quint64(0x7fffffff);
    QTest::newRow("0xffffffff") << quint64(0xffffffffu);
    QTest::newRow("one more than is asked for") << quint64(16 * 1024 * 1024 + 1);
}

void TestPkcs11Hostile::absurdAttributeLengths()
{
    QFETCH(quint64, length);
    insert();

    answerLengths(CKA_VALUE, static_cast<CK_ULONG>(length), 3);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
    QVERIFY(card->calls().filter("VALUE given").isEmpty());
    answerLengths(CKA_LABEL, static_cast<CK_ULONG>(length), 3);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
    QVERIFY(card->calls().filter("LABEL given").size() == 1);
}

void TestPkcs11Hostile::largestAttributeIsAskedFor()
{
    insert();

    answerLengths(CKA_VALUE, 16 * 1024 * 1024, 3);

    pkcs11->tokenObjects(reader, "eMRTD", -1, {});
    QVERIFY(!card->calls().filter("VALUE given").isEmpty());
}

void TestPkcs11Hostile::lengthUnavailableWithoutAnError()
{
    insert();
    answerLengths(CKA_VALUE, none, none);

    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());

    // The search goes on and ends as usual.
    QCOMPARE(card->functions().last(), QString("C_FindObjectsFinal"));
}

void TestPkcs11Hostile::secondLengthUnavailable()
{
    insert();

    answerLengths(CKA_VALUE, 10, none);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
    answerLengths(CKA_LABEL, 10, none);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
}

void TestPkcs11Hostile::labelOfZeros()
{
    card->slotOf(5)->objects = { { CKO_DATA, QByteArray(64, '\0'), "x" } };
    insert();

    const QList<pkcsDataObj> found = pkcs11->tokenObjects(reader, "eMRTD", -1, {});

    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().name, QString(64, QChar(0)));
}

void TestPkcs11Hostile::labelThatIsNotUtf8()
{
    card->slotOf(5)->objects = { { CKO_DATA, "DG\xff\xfe", "x" } };
    insert();

    const QList<pkcsDataObj> found = pkcs11->tokenObjects(reader, "eMRTD", -1, {});

    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().name, QString("DG") + QString(2, QChar::ReplacementCharacter));
}

void TestPkcs11Hostile::zeroesWithinALabel()
{
    // Compared with its whole length, so it is not taken for the wanted one.
    card->slotOf(5)->objects = { { CKO_DATA, QByteArray("DG1\0x", 5), "x" } };
    insert();

    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", 0, { "DG1" }).isEmpty());
}

void TestPkcs11Hostile::classThatIsNotWritten()
{
    card->onAttribute = [](CK_ATTRIBUTE *attribute) -> CK_RV {
        attribute->ulValueLen = none;
        return CKR_OK;
    };
    insert();

    QCOMPARE(pkcs11->certsCount(reader, "eMRTD"), 0);
}

void TestPkcs11Hostile::classOfFourBytes()
{
    card->onAttribute = [](CK_ATTRIBUTE *attribute) -> CK_RV {
        const quint32 certificate = CKO_CERTIFICATE;
        std::memcpy(attribute->pValue, &certificate, sizeof certificate);
        attribute->ulValueLen = sizeof certificate;
        return CKR_OK;
    };
    insert();

    QCOMPARE(pkcs11->certsCount(reader, "eMRTD"), 1);
}

void TestPkcs11Hostile::moreObjectsThanAskedFor()
{
    card->onFindObjects = [](CK_ULONG *count) -> CK_RV {
        *count = *count ? 1000 : 0;
        return CKR_OK;
    };
    insert();

    QCOMPARE(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).size(), 1);
    QCOMPARE(pkcs11->certsCount(reader, "eMRTD"), 0);
}

void TestPkcs11Hostile::sessionHandleOfZero()
{
    card->nextSession = 0;
    insert();

    // Not a session to this program, so the next operation opens another.
    QCOMPARE(pkcs11->login(reader, "Qualified", "12345678", 1), 0);
    QCOMPARE(pkcs11->login(reader, "Qualified", "12345678", 1), 0);

    QCOMPARE(card->count("C_OpenSession"), 2);
}

void TestPkcs11Hostile::sessionHandleBeyond31Bits()
{
    card->nextSession = 0x80000005u;
    insert();

    QCOMPARE(pkcs11->login(reader, "Qualified", "12345678", 1), 0);

    QCOMPARE(card->calls().last(), QString("C_Login 2147483653 user=1 pin=8"));
}

void TestPkcs11Hostile::tableThatFailsAtEachFunction_data()
{
    QTest::addColumn<QString>("function");
    for (const char *function : { "C_Initialize", "C_Finalize", "C_GetSlotList", "C_GetSlotInfo", "C_GetTokenInfo",
                                  "C_OpenSession", "C_CloseSession", "C_Login", "C_Logout", "C_SetPIN", "C_InitPIN",
                                  "C_FindObjectsInit", "C_FindObjects", "C_FindObjectsFinal", "C_GetAttributeValue" })
        QTest::newRow(function) << function;
}

// One function fails at its first, its second, and at every call, through all that the program asks of a card: results
// differ, and the next round without the fault is good again.
void TestPkcs11Hostile::tableThatFailsAtEachFunction()
{
    QFETCH(QString, function);
    card->slotOf(1)->objects = { { CKO_CERTIFICATE, "a", "x" } };
    const auto round = [this] {
        QStringList found;
        pkcs11->finalize();
        const bool listed = pkcs11->readers(found, 1, 0x100);
        const bool selected = pkcs11->selectReader(reader);
        card->slotOf(4)->tokenFlags |= CKF_USER_PIN_LOCKED;
        int certs = 0;
        for (const char *conteiner : { "Presence", "Authentication", "Authorization", "Qualified" })
            certs += pkcs11->certsCount(reader, conteiner);
        pkcs11->tokenInfo(reader, "Qualified");
        const int changed = pkcs11->changePIN(reader, "Authentication", "1234", "4321");
        const int unblocked = pkcs11->unblockPIN(reader, "Qualified", "12345678", "87654321");
        const int groups = pkcs11->tokenDataMap(reader, "eMRTD", { "DG1" }).size();
        pkcs11->isPinPad(reader);
        pkcs11->typeOfChip(reader);
        return listed && selected && certs == 1 && changed == 0 && unblocked == 0 && groups == 1;
    };
    // Functions whose result nobody looks at, or that only close things.
    const bool ignored = function == "C_Finalize" || function == "C_CloseSession" || function == "C_FindObjectsFinal";
    QVERIFY(round());

    for (const int nth : { 1, 2, 0 }) {
        card->clearCalls();
        card->fail(function, CKR_DEVICE_ERROR, nth);
        const bool good = round();
        QVERIFY2(nth != 0 || good == ignored, "all calls failed");
        card->heal();
        // Twice: the first round still finds what the fault has left behind.
        round();
        QVERIFY(round());
    }
}

VELMOR_TEST(TestPkcs11Hostile)
#include "tst_pkcs11_hostile.moc"
