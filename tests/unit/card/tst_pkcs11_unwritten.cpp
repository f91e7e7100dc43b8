// Answers that say all is well and write nothing. What a library has not written is none: no slot, no session, no
// object.
#include "card/pkcs11.h"
#include "support/scripted_pkcs11/scripted_card.h"
#include "support/testmain.h"

#include <cstring>
#include <memory>

namespace {

const QString reader = "Reader A";

// Does as asked, and keeps part of the answer to itself.
class SilentCard : public ScriptedCard {
public:
    bool keepsSession = false;
    bool keepsCount = false;
    bool keepsObject = false;

    CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void *application, CK_NOTIFY notify,
                      CK_SESSION_HANDLE *session) override
    {
        CK_SESSION_HANDLE kept = 0;
        return ScriptedCard::openSession(slot, flags, application, notify, keepsSession ? &kept : session);
    }
    CK_RV findObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE *objects, CK_ULONG max, CK_ULONG *count) override
    {
        CK_OBJECT_HANDLE keptObject = 0;
        CK_ULONG keptCount = 0;
        return ScriptedCard::findObjects(session, keepsObject ? &keptObject : objects, max,
                                         keepsCount ? &keptCount : count);
    }
};

// A data object labelled "DG1"; of its value the length alone is told, and that only if there is one.
void answerWithoutValue(CK_ATTRIBUTE *attribute, CK_ULONG length)
{
    if (attribute->type == CKA_LABEL) {
        if (attribute->pValue)
            std::memcpy(attribute->pValue, "DG1", 3);
        attribute->ulValueLen = 3;
    } else if (attribute->type == CKA_VALUE && length) {
        attribute->ulValueLen = length;
    }
}

} // namespace

class TestPkcs11Unwritten : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void slotCountIsNone();
    void sessionIsNone();
    void objectCountIsNone();
    void objectIsNone();
    void attributeLengthIsNone();
    void attributeBytesAreZeros();

private:
    std::unique_ptr<SilentCard> card;
    std::unique_ptr<Pkcs11> pkcs11;
};

void TestPkcs11Unwritten::init()
{
    card = std::make_unique<SilentCard>();
    card->addReader(reader);
    card->slotOf(2)->objects = { { CKO_CERTIFICATE, "a", "x" } };
    card->slotOf(5)->objects = { { CKO_DATA, "DG1", "one" } };
    pkcs11 = std::make_unique<Pkcs11>();
    pkcs11->detectSlots();
    QVERIFY(pkcs11->selectReader(reader));
    card->clearCalls();
}

void TestPkcs11Unwritten::cleanup()
{
    pkcs11.reset();
    card.reset();
}

void TestPkcs11Unwritten::slotCountIsNone()
{
    card->onSlotList = [](CK_SLOT_ID *, CK_ULONG *) -> CK_RV { return CKR_OK; };

    QVERIFY(pkcs11->detectSlots());

    QCOMPARE(card->count("C_GetSlotInfo"), 0);
}

void TestPkcs11Unwritten::sessionIsNone()
{
    card->keepsSession = true;

    // Not a session to this program, so the next operation opens another.
    QCOMPARE(pkcs11->login(reader, "Qualified", "12345678", 1), -1);
    QCOMPARE(pkcs11->login(reader, "Qualified", "12345678", 1), -1);

    QCOMPARE(card->calls(),
             (QStringList { "C_OpenSession 4 flags=6", "C_Login 0 user=1 pin=8", "C_OpenSession 4 flags=6",
                            "C_Login 0 user=1 pin=8" }));
}

void TestPkcs11Unwritten::objectCountIsNone()
{
    card->keepsCount = true;

    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 0);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());

    QCOMPARE(card->count("C_FindObjects"), 2);
    QCOMPARE(card->count("C_GetAttributeValue"), 0);
}

void TestPkcs11Unwritten::objectIsNone()
{
    card->keepsObject = true;

    // By the handle that is none to any library, not by one of an object that is there.
    QCOMPARE(pkcs11->certsCount(reader, "Presence"), 0);
    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());

    QCOMPARE(card->calls().filter("C_GetAttributeValue"),
             (QStringList { "C_GetAttributeValue 1 0 CLASS given", "C_GetAttributeValue 2 0 CLASS given",
                            "C_GetAttributeValue 2 0 LABEL null" }));
}

void TestPkcs11Unwritten::attributeLengthIsNone()
{
    card->onAttribute = [](CK_ATTRIBUTE *attribute) -> CK_RV {
        answerWithoutValue(attribute, 0);
        return CKR_OK;
    };

    QVERIFY(pkcs11->tokenObjects(reader, "eMRTD", -1, {}).isEmpty());
}

void TestPkcs11Unwritten::attributeBytesAreZeros()
{
    card->onAttribute = [](CK_ATTRIBUTE *attribute) -> CK_RV {
        answerWithoutValue(attribute, 4);
        return CKR_OK;
    };

    const QList<pkcsDataObj> found = pkcs11->tokenObjects(reader, "eMRTD", -1, {});

    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().value, QByteArray(4, '\0'));
}

VELMOR_TEST(TestPkcs11Unwritten)
#include "tst_pkcs11_unwritten.moc"
