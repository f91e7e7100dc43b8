// Which readers are named, by which flags, and which of them can be selected.
#include "support/scripted_pkcs11/pkcs11_world.h"

namespace {

constexpr int tokenPresent = 1;
constexpr int notReadByTheMonitor = 0x100;

} // namespace

class TestPkcs11Readers : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void init() { startUp(); }
    void cleanup() { tearDown(); }

    void descriptionIsCutAndCleaned_data();
    void descriptionIsCutAndCleaned();

    void readersAreListedOnce();
    void readerNameEndsAtTheMark();
    void readerWithoutMarkKeepsItsName();
    void readersFollowFlags_data();
    void readersFollowFlags();
    void slotThatFailsDoesNotBlockALaterOneOfItsReader();
    void readersEmptyTheList();
    void readersWithoutLibraryFail();
    void readersIgnoreAFailedSlotList();
    void missingFlagIsNamedInTheLog();
    void missingFlagIsNotNamedWithoutRequirement();

    void selectionNeedsAnInitializedToken_data();
    void selectionNeedsAnInitializedToken();
    void selectionAcceptsABracketAnywhere();
    void selectionComparesWholeNames();
    void failedSelectionShutsOutEveryReader();
    void selectionCanBeRepaired();
};

void TestPkcs11Readers::descriptionIsCutAndCleaned_data()
{
    QTest::addColumn<QByteArray>("description");
    QTest::addColumn<QString>("name");
    QTest::newRow("blanks") << QByteArray("Reader A  ") << "Reader A";
    QTest::newRow("leading blanks stay") << QByteArray("  Reader A") << "  Reader A";
    QTest::newRow("Polish") << QString("Czytnik żółw #1").toUtf8() << "Czytnik żółw";
    QTest::newRow("zeros behind") << QByteArray("Reader A").leftJustified(64, '\0') << "Reader A";
    // The white space is cut before the zeros go.
    QTest::newRow("zeros behind a blank") << QByteArray("Reader A ").leftJustified(64, '\0') << "Reader A ";
    QTest::newRow("zeros within") << QByteArray("Rea\0der A #1", 12) << "Reader A";
    QTest::newRow("all 64 bytes") << QByteArray(64, 'x') << QString(64, 'x');
    QTest::newRow("other white space") << QByteArray("Reader A\t\n") << "Reader A";
}

void TestPkcs11Readers::descriptionIsCutAndCleaned()
{
    QFETCH(QByteArray, description);
    QFETCH(QString, name);
    card->card = { slot(1, description) };
    QStringList found;

    QVERIFY(pkcs11->readers(found, tokenPresent, notReadByTheMonitor));

    QCOMPARE(found, QStringList { name });
}

void TestPkcs11Readers::readersAreListedOnce()
{
    card->addReader("Reader A", 1);
    card->addReader("Reader B", 9);
    QStringList found;

    QVERIFY(pkcs11->readers(found, tokenPresent, notReadByTheMonitor));

    QCOMPARE(found, (QStringList { "Reader A", "Reader B" }));
}

void TestPkcs11Readers::readerNameEndsAtTheMark()
{
    card->card = { slot(1, "Reader A #1"), slot(2, "Reader A #2 #3") };
    QStringList found;

    pkcs11->readers(found, tokenPresent, notReadByTheMonitor);

    QCOMPARE(found, QStringList { "Reader A" });
}

void TestPkcs11Readers::readerWithoutMarkKeepsItsName()
{
    card->card = { slot(1, "Reader A 00 00") };
    QStringList found;

    pkcs11->readers(found, tokenPresent, notReadByTheMonitor);

    QCOMPARE(found, QStringList { "Reader A 00 00" });
}

void TestPkcs11Readers::readersFollowFlags_data()
{
    QTest::addColumn<uint>("slotFlags");
    QTest::addColumn<uint>("require");
    QTest::addColumn<uint>("refuse");
    QTest::addColumn<bool>("listed");
    QTest::newRow("card, read") << 0x1u << 1u << 0x100u << true;
    QTest::newRow("card, not read") << 0x101u << 1u << 0x100u << false;
    QTest::newRow("no card") << 0x6u << 1u << 0x100u << false;
    QTest::newRow("nothing required") << 0x0u << 0u << 0x100u << true;
    QTest::newRow("nothing required, not read") << 0x100u << 0u << 0x100u << false;
    QTest::newRow("nothing refused lists nothing") << 0x1u << 1u << 0u << false;
    QTest::newRow("neither lists nothing") << 0x1u << 0u << 0u << false;
    QTest::newRow("one bit of several required") << 0x2u << 3u << 0x100u << true;
    QTest::newRow("one bit of several refused") << 0x81u << 1u << 0x180u << false;
    QTest::newRow("highest bit required") << 0x88002001u << 0x80000000u << 0x100u << true;
    QTest::newRow("highest bit refused") << 0x88002001u << 1u << 0x88000000u << false;
}

void TestPkcs11Readers::readersFollowFlags()
{
    QFETCH(uint, slotFlags);
    QFETCH(uint, require);
    QFETCH(uint, refuse);
    QFETCH(bool, listed);
    card->card = { slot(1, "Reader A #1", slotFlags) };
    QStringList found;

    QVERIFY(pkcs11->readers(found, require, refuse));

    QCOMPARE(found, listed ? QStringList { "Reader A" } : QStringList());
}

void TestPkcs11Readers::slotThatFailsDoesNotBlockALaterOneOfItsReader()
{
    card->card = { slot(1, "Reader A #1", 0x101), slot(2, "Reader A #2", 0x1) };
    QStringList found;

    pkcs11->readers(found, tokenPresent, notReadByTheMonitor);

    QCOMPARE(found, QStringList { "Reader A" });
}

void TestPkcs11Readers::readersEmptyTheList()
{
    QStringList found { "Left over" };

    QVERIFY(pkcs11->readers(found, tokenPresent, notReadByTheMonitor));

    QVERIFY(found.isEmpty());
}

void TestPkcs11Readers::readersWithoutLibraryFail()
{
    card->fail("C_Initialize", CKR_GENERAL_ERROR);
    QStringList found { "Left over" };

    QVERIFY(!pkcs11->readers(found, tokenPresent, notReadByTheMonitor));

    QVERIFY(found.isEmpty());
    QVERIFY(log->has("initialize failed !"));
    QCOMPARE(card->count("C_GetSlotList"), 0);
}

void TestPkcs11Readers::readersIgnoreAFailedSlotList()
{
    card->card = { slot(1, "Reader A #1") };
    card->fail("C_GetSlotList", CKR_DEVICE_ERROR);
    QStringList found;

    QVERIFY(pkcs11->readers(found, tokenPresent, notReadByTheMonitor));

    QVERIFY(found.isEmpty());
}

void TestPkcs11Readers::missingFlagIsNamedInTheLog()
{
    QStringList found;

    pkcs11->readers(found, 0x100, 1);
    QVERIFY(log->has("no slots with flag:  notReadByTheMonitor"));
    log->clear();
    pkcs11->readers(found, tokenPresent, notReadByTheMonitor);
    QVERIFY(log->has("no slots with flag: "));
}

void TestPkcs11Readers::missingFlagIsNotNamedWithoutRequirement()
{
    QStringList found;

    pkcs11->readers(found, 0, notReadByTheMonitor);

    QVERIFY(!log->has("no slots with flag: "));
}

void TestPkcs11Readers::selectionNeedsAnInitializedToken_data()
{
    QTest::addColumn<uint>("tokenFlags");
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<uint>("tokenInfo");
    QTest::addColumn<bool>("selected");
    const QByteArray label = "velmor Qualified";
    QTest::newRow("initialized") << 0x400u << label << 0u << true;
    QTest::newRow("not initialized") << 0x8u << label << 0u << false;
    QTest::newRow("waits for its CAN") << 0x480u << label << 0u << false;
    QTest::newRow("initialized, no label") << 0x400u << QByteArray() << 0u << true;
    QTest::newRow("bracket") << 0x400u << QByteArray("velmor (Qualified)") << 0u << true;
    QTest::newRow("initialized, every other sign")
        << 0x400u << QByteArray(")[]{}<>/#+-*.,:;\"'xX_ 0123456789") << 0u << true;
    QTest::newRow("bracket, waits for its CAN") << 0x480u << QByteArray("velmor (CAN)") << 0u << true;
    QTest::newRow("bracket, not initialized") << 0x0u << QByteArray("velmor (CAN)") << 0u << true;
    QTest::newRow("closing bracket only") << 0x0u << QByteArray("velmor CAN)") << 0u << false;
    QTest::newRow("no card in the reader, flags left over") << 0x400u << label << 0xE0u << false;
    QTest::newRow("unknown card in the reader, flags left over") << 0x400u << label << 0xE1u << false;
}

void TestPkcs11Readers::selectionNeedsAnInitializedToken()
{
    QFETCH(uint, tokenFlags);
    QFETCH(QByteArray, label);
    QFETCH(uint, tokenInfo);
    QFETCH(bool, selected);
    card->card = { slot(1, "Reader A #1", 1, label) };
    card->card[0].tokenFlags = tokenFlags;
    card->card[0].tokenInfo = tokenInfo;
    pkcs11->detectSlots();

    QCOMPARE(pkcs11->selectReader("Reader A"), selected);

    QVERIFY(log->has("select reader:  Reader A"));
    QCOMPARE(log->has("select reader success"), selected);
    QCOMPARE(log->has("select reader failed"), !selected);
}

void TestPkcs11Readers::selectionAcceptsABracketAnywhere()
{
    // In any slot, whatever its flags.
    card->card = { slot(1, "Reader A #1"), slot(2, "Reader A #2", 0, "velmor (CAN)") };
    card->card[0].tokenFlags = 0;
    card->card[1].tokenFlags = 0;
    pkcs11->detectSlots();

    QVERIFY(pkcs11->selectReader("Reader A"));
}

void TestPkcs11Readers::selectionComparesWholeNames()
{
    card->card = { slot(1, "Reader AB #1") };
    pkcs11->detectSlots();

    // The token is made, since the longer name holds the shorter one, but it proves nothing.
    QVERIFY(!pkcs11->selectReader("Reader A"));

    QCOMPARE(card->count("C_GetTokenInfo"), 1);
}

void TestPkcs11Readers::failedSelectionShutsOutEveryReader()
{
    card->card = { slot(1, "Reader A #1"), slot(2, "a null modem #1") };
    pkcs11->detectSlots();
    QVERIFY(!pkcs11->selectReader("Reader C"));
    card->clearCalls();

    pkcs11->detectTokens();

    // "null" is compared like any other name.
    QCOMPARE(card->calls(), QStringList { "C_GetTokenInfo 2" });
    QCOMPARE(pkcs11->isPinPad("Reader A"), -3);
}

void TestPkcs11Readers::selectionCanBeRepaired()
{
    card->card = { slot(1, "Reader A #1") };
    pkcs11->detectSlots();
    QVERIFY(!pkcs11->selectReader("Reader C"));

    QVERIFY(pkcs11->selectReader("Reader A"));

    QCOMPARE(pkcs11->isPinPad("Reader A"), 0);
}

VELMOR_TEST(TestPkcs11Readers)
#include "tst_pkcs11_readers.moc"
