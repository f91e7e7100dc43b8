// Loading of the card's library, and its life between C_Initialize and C_Finalize.
#include "app/app.h"
#include "card/pkcs11.h"
#include "support/scripted_pkcs11/scripted_card.h"
#include "support/testmain.h"

#include <QDir>
#include <QLibrary>
#include <QProcess>
#include <QThread>
#include <QTranslator>

#include <functional>
#include <map>
#include <memory>

namespace {

constexpr const char *childMark = "VELMOR_TEST_CHILD";

const std::map<QByteArray, std::function<void(Pkcs11 &)>> &entries()
{
    static const std::map<QByteArray, std::function<void(Pkcs11 &)>> table {
        { "init", [](Pkcs11 &pkcs11) { pkcs11.init(); } },
        { "initialize", [](Pkcs11 &pkcs11) { pkcs11.initialize(); } },
        { "finalize", [](Pkcs11 &pkcs11) { pkcs11.finalize(); } },
        { "detectSlots", [](Pkcs11 &pkcs11) { pkcs11.detectSlots(); } },
        { "detectTokens", [](Pkcs11 &pkcs11) { pkcs11.detectTokens(); } },
        { "readers",
          [](Pkcs11 &pkcs11) {
              QStringList found;
              pkcs11.readers(found, 1, 256);
          } },
        { "selectReader", [](Pkcs11 &pkcs11) { pkcs11.selectReader("Reader A"); } },
        { "tokenInfo", [](Pkcs11 &pkcs11) { pkcs11.tokenInfo("Reader A", "Qualified"); } },
        { "certsCount", [](Pkcs11 &pkcs11) { pkcs11.certsCount("Reader A", "Qualified"); } },
        { "tokenDataMap", [](Pkcs11 &pkcs11) { pkcs11.tokenDataMap("Reader A", "eMRTD", { "DG1" }); } },
        { "isPinPad", [](Pkcs11 &pkcs11) { pkcs11.isPinPad("Reader A"); } },
        { "typeOfChip", [](Pkcs11 &pkcs11) { pkcs11.typeOfChip("Reader A"); } },
        { "login", [](Pkcs11 &pkcs11) { pkcs11.login("Reader A", "Qualified", {}, 1); } },
        { "changePIN", [](Pkcs11 &pkcs11) { pkcs11.changePIN("Reader A", "Qualified", {}, {}); } },
        { "unblockPIN", [](Pkcs11 &pkcs11) { pkcs11.unblockPIN("Reader A", "Qualified", {}, {}); } },
    };
    return table;
}

// Runs in a process of its own, which an assertion is to end.
void touchFromASecondThread(const QByteArray &entry)
{
    ScriptedCard card;
    qInstallMessageHandler(nullptr); // App's own keeps the assertion's text to itself
    Pkcs11 pkcs11;
    pkcs11.initialize();
    const std::unique_ptr<QThread> thread(QThread::create([&] { entries().at(entry)(pkcs11); }));
    thread->start();
    thread->wait();
}

} // namespace

// Takes an entry out of the library's table.
using Entry = std::function<void(CK_FUNCTION_LIST &)>;
Q_DECLARE_METATYPE(Entry)

class TestPkcs11Load : public QObject {
    Q_OBJECT

private slots:
    void constructionCallsNothing();
    void initLoadsTheLibraryOnce();
    void absentLibraryFails();
    void brokenLibraryFails_data();
    void brokenLibraryFails();
    void pathIsPutBeforeAReasonWithoutIt();
    void libraryWithoutEntryFails();
    void failingFunctionListUnloads();
    void unusableFunctionListFails_data();
    void unusableFunctionListFails();
    void failedLoadIsTriedAgainFromTheStart();
    void initializeCallsCInitializeOnce();
    void failedInitializeIsPassedUp_data();
    void failedInitializeIsPassedUp();
    void initializeAfterFailureAsksAgain();
    void initializeGivesTheValueOfInit();
    void finalizeTwiceCallsCFinalizeOnce();
    void finalizeIgnoresItsResult();
    void finalizeKeepsTheLibrary();
    void destructorFinalizesAndUnloads();
    void destructorFinalizesAfterFinalizeToo();
    void destructorOfAnUnusedObjectCallsNothing();
    void secondThreadIsCaughtInAssertingBuilds_data();
    void secondThreadIsCaughtInAssertingBuilds();
};

void TestPkcs11Load::constructionCallsNothing()
{
    ScriptedCard card;

    Pkcs11 pkcs11;

    QVERIFY(card.calls().isEmpty());
}

void TestPkcs11Load::initLoadsTheLibraryOnce()
{
    ScriptedCard card;
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.init(), 0);
    QCOMPARE(pkcs11.init(), 0);

    QCOMPARE(card.calls(), QStringList { "C_GetFunctionList" });
    QCOMPARE(log.lines().filter("init()").size(), 1);
    QCOMPARE(log.lines().filter("Loading: ").size(), 1);
    QVERIFY(log.has(App::instance()->pkcsLibPath("x86_64")));
    QVERIFY(!log.has("Pkcs11 err: "));
}

void TestPkcs11Load::absentLibraryFails()
{
    const QString path = ScriptedCard::removeLibrary();
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.init(), -1);

    const QStringList errors = log.lines().filter("Pkcs11 err: ");
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors.first().contains("#2 Nie można załadować biblioteki: "), qPrintable(errors.first()));
    QVERIFY2(errors.first().contains(path), qPrintable(errors.first()));
}

void TestPkcs11Load::brokenLibraryFails_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("text file") << QByteArray("This is not a library.\n").repeated(500);
    QTest::newRow("head of a program only") << QByteArray("\x7f"
                                                          "ELF\x02\x01\x01\x00",
                                                          8);
    QTest::newRow("zeros") << QByteArray(5000, '\0');
}

void TestPkcs11Load::brokenLibraryFails()
{
    QFETCH(QByteArray, bytes);
    const QString path = ScriptedCard::installBytes(bytes);
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.init(), -1);
    QCOMPARE(pkcs11.initialize(), -1);

    const QStringList errors = log.lines().filter("#2 Nie można załadować biblioteki: ");
    QCOMPARE(errors.size(), 2);
    QVERIFY2(errors.first().contains(path), qPrintable(errors.first()));
    // The reason itself does not begin with the same words once more.
    QCOMPARE(errors.first().count("Nie można załadować biblioteki"), 1);
}

// Stands in for the translation of Qt that a Polish program loads.
class PolishQt : public QTranslator {
public:
    explicit PolishQt(const QString &translation) : text(translation) { }
    bool isEmpty() const override { return false; }
    QString translate(const char *, const char *source, const char *, int) const override
    {
        return QString(source).startsWith("Cannot load library") ? text : QString();
    }

private:
    QString text;
};

void TestPkcs11Load::pathIsPutBeforeAReasonWithoutIt()
{
    const QString path = ScriptedCard::removeLibrary();
    Pkcs11 pkcs11;
    const struct {
        QString translation;
        QString expected;
    } rows[] = {
        { "Nie można załadować biblioteki %1: zły plik", "#2 Nie można załadować biblioteki:  " + path + ": zły plik" },
        { "Nie można załadować biblioteki, bez nazwy", "#2 Nie można załadować biblioteki: " + path + " , bez nazwy" },
    };
    for (const auto &row : rows) {
        PolishQt polish(row.translation);
        QCoreApplication::installTranslator(&polish);
        LogCatcher log;

        QCOMPARE(pkcs11.init(), -1);

        // A file name with and without its prefix is tried, so the name in the reason may end in our path's own.
        const QString line = log.lines().filter("#2 ").value(0);
        QVERIFY2(line.endsWith(row.expected), qPrintable(line + " <> " + row.expected));
    }
}

void TestPkcs11Load::libraryWithoutEntryFails()
{
    ScriptedCard::installNoEntryModule();
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.init(), -1);

    const QStringList errors = log.lines().filter("Pkcs11 err: ");
    QCOMPARE(errors.size(), 1);
    // The toolkit gives no reason, and says so.
    QCOMPARE(errors.first(), "Pkcs11 err:  #3 Nie można załadować biblioteki: " + QLibrary().errorString());
}

void TestPkcs11Load::failingFunctionListUnloads()
{
    ScriptedCard card;
    card.onFunctionList = [&card](CK_FUNCTION_LIST *own, CK_FUNCTION_LIST **list) -> CK_RV {
        // From now on Pkcs11 alone holds the module.
        card.letGoOfModule();
        *list = own;
        return card.isUnloaded() ? CKR_OK : CKR_GENERAL_ERROR;
    };
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.init(), -1);

    QVERIFY(log.lines().contains("Pkcs11 err:  #4 Nie można załadować biblioteki: " + QLibrary().errorString()));
    QVERIFY(card.isUnloaded());
}

void TestPkcs11Load::unusableFunctionListFails_data()
{
    QTest::addColumn<Entry>("clear");
    QTest::newRow("no table") << Entry();
    const auto row = [](const char *name, Entry clear) { QTest::newRow(name) << clear; };
#define GAP(function) row("table without " #function, [](CK_FUNCTION_LIST &list) { list.function = nullptr; })
    GAP(C_Initialize);
    GAP(C_Finalize);
    GAP(C_GetSlotList);
    GAP(C_GetSlotInfo);
    GAP(C_GetTokenInfo);
    GAP(C_OpenSession);
    GAP(C_CloseSession);
    GAP(C_Login);
    GAP(C_Logout);
    GAP(C_SetPIN);
    GAP(C_InitPIN);
    GAP(C_FindObjectsInit);
    GAP(C_FindObjects);
    GAP(C_FindObjectsFinal);
    GAP(C_GetAttributeValue);
#undef GAP
}

void TestPkcs11Load::unusableFunctionListFails()
{
    QFETCH(Entry, clear);
    ScriptedCard card;
    CK_FUNCTION_LIST gap = {};
    card.onFunctionList = [&gap, clear](CK_FUNCTION_LIST *own, CK_FUNCTION_LIST **list) -> CK_RV {
        gap = *own;
        if (clear)
            clear(gap);
        *list = clear ? &gap : nullptr;
        return CKR_OK;
    };
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.init(), -1);

    QVERIFY(log.has("#4 Nie można załadować biblioteki: "));
}

void TestPkcs11Load::failedLoadIsTriedAgainFromTheStart()
{
    Pkcs11 pkcs11;
    ScriptedCard::removeLibrary();
    QCOMPARE(pkcs11.init(), -1);

    ScriptedCard card;

    QCOMPARE(pkcs11.init(), 0);
    QCOMPARE(card.calls(), QStringList { "C_GetFunctionList" });
}

void TestPkcs11Load::initializeCallsCInitializeOnce()
{
    ScriptedCard card;
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.initialize(), 0);
    QCOMPARE(pkcs11.initialize(), 0);

    QCOMPARE(card.calls(), (QStringList { "C_GetFunctionList", "C_Initialize" }));
    QVERIFY(card.argumentsWereNull);
    QCOMPARE(log.count("C_initialize()"), 1);
}

void TestPkcs11Load::failedInitializeIsPassedUp_data()
{
    QTest::addColumn<uint>("rv");
    QTest::newRow("general error") << 5u;
    QTest::newRow("already initialized") << 0x191u;
    QTest::newRow("device removed") << 0x32u;
}

void TestPkcs11Load::failedInitializeIsPassedUp()
{
    QFETCH(uint, rv);
    ScriptedCard card;
    card.fail("C_Initialize", rv);
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.initialize(), int(rv));
    pkcs11.finalize();

    QVERIFY(!card.functions().contains("C_Finalize"));
}

void TestPkcs11Load::initializeAfterFailureAsksAgain()
{
    ScriptedCard card;
    card.fail("C_Initialize", CKR_GENERAL_ERROR, 1);
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.initialize(), 5);
    QCOMPARE(pkcs11.initialize(), 0);

    QCOMPARE(card.calls(), (QStringList { "C_GetFunctionList", "C_Initialize", "C_Initialize" }));
}

void TestPkcs11Load::initializeGivesTheValueOfInit()
{
    ScriptedCard::removeLibrary();
    LogCatcher log;
    Pkcs11 pkcs11;

    QCOMPARE(pkcs11.initialize(), -1);

    QVERIFY(!log.has("C_initialize()"));
}

void TestPkcs11Load::finalizeTwiceCallsCFinalizeOnce()
{
    ScriptedCard card;
    LogCatcher log;
    Pkcs11 pkcs11;
    pkcs11.initialize();
    card.clearCalls();

    pkcs11.finalize();
    pkcs11.finalize();

    QCOMPARE(card.calls(), QStringList { "C_Finalize" });
    QVERIFY(card.argumentsWereNull);
    QCOMPARE(log.count("C_finalize()"), 1);
}

void TestPkcs11Load::finalizeIgnoresItsResult()
{
    ScriptedCard card;
    Pkcs11 pkcs11;
    pkcs11.initialize();
    card.fail("C_Finalize", CKR_GENERAL_ERROR, 1);

    pkcs11.finalize();
    card.clearCalls();

    QCOMPARE(pkcs11.initialize(), 0);
    QCOMPARE(card.calls(), QStringList { "C_Initialize" });
}

void TestPkcs11Load::finalizeKeepsTheLibrary()
{
    ScriptedCard card;
    Pkcs11 pkcs11;
    pkcs11.initialize();

    pkcs11.finalize();
    QCOMPARE(pkcs11.initialize(), 0);

    QCOMPARE(card.calls(), (QStringList { "C_GetFunctionList", "C_Initialize", "C_Finalize", "C_Initialize" }));
}

void TestPkcs11Load::destructorFinalizesAndUnloads()
{
    ScriptedCard card;
    auto pkcs11 = std::make_unique<Pkcs11>();
    pkcs11->initialize();
    card.letGoOfModule();
    card.clearCalls();
    QVERIFY(!card.isUnloaded());

    pkcs11.reset();

    QCOMPARE(card.calls(), QStringList { "C_Finalize" });
    QVERIFY(card.isUnloaded());
}

void TestPkcs11Load::destructorFinalizesAfterFinalizeToo()
{
    ScriptedCard card;
    auto pkcs11 = std::make_unique<Pkcs11>();
    pkcs11->initialize();
    pkcs11->finalize();
    card.clearCalls();

    pkcs11.reset();

    QCOMPARE(card.calls(), QStringList { "C_Finalize" });
}

void TestPkcs11Load::destructorOfAnUnusedObjectCallsNothing()
{
    ScriptedCard card;
    auto pkcs11 = std::make_unique<Pkcs11>();

    pkcs11.reset();

    QVERIFY(card.calls().isEmpty());
}

void TestPkcs11Load::secondThreadIsCaughtInAssertingBuilds_data()
{
    QTest::addColumn<int>("row");
    for (const auto &entry : entries())
        QTest::newRow(entry.first.constData()) << 0;
}

void TestPkcs11Load::secondThreadIsCaughtInAssertingBuilds()
{
#ifdef QT_NO_DEBUG
    QSKIP("this build does not assert");
#endif
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(childMark, QTest::currentDataTag());
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);

    child.start(QCoreApplication::applicationFilePath(), QStringList());

    QVERIFY(child.waitForFinished());
    const QString output = QString::fromLocal8Bit(child.readAll());
    QVERIFY2(output.contains("in Pkcs11: \"touched from a second thread\""), qPrintable(output));
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
}

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    if (qEnvironmentVariableIsSet(childMark)) {
        touchFromASecondThread(qgetenv(childMark));
        return 0;
    }
    TestPkcs11Load test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_pkcs11_load.moc"
