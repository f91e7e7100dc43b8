#include "support/flow.h"

#include "app/app.h"

#include <QDir>

using SetFault = void (*)(sim::Fault &);
Q_DECLARE_METATYPE(SetFault)

// A card library that is missing, broken, fails, blocks or answers nonsense: the window stays up and shows what it can.
class TestBadLibrary : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;
    QStringList pins { "1234", "123456", "12345678", "87654321" };

    // The read has come to one of its ends: photo shown, no electronic layer, or waiting for the Monitor.
    static bool hasEnded(const Flow &flow, const LogCatcher &log)
    {
        return flow.photoArrived() || flow.page() == "pageNoElectricLayer" || log.has("reader checked ");
    }

    static sim::Fault always(const char *function, unsigned long result)
    {
        sim::Fault fault;
        fault.function = function;
        fault.nth = 0;
        fault.result = result;
        return fault;
    }

    // Only where a buffer is given, so not in the call that asks for the size.
    static sim::Fault &secondly(sim::Fault &fault)
    {
        fault.buffer = sim::Fault::Buffer::Given;
        return fault;
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<Flow>();
        flow->world.insertCard("Czytnik Alfa", "anna");
    }
    void cleanup() { flow.reset(); }

    void functionThatAlwaysFailsLeavesTheWindowUp_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("logged");
        QTest::newRow("C_Initialize") << "C_Initialize"
                                      << "initialize failed !";
        QTest::newRow("C_GetSlotList") << "C_GetSlotList"
                                       << "Błąd podczas pobierania listy slotów.";
        QTest::newRow("C_GetSlotInfo") << "C_GetSlotInfo"
                                       << "";
        QTest::newRow("C_GetTokenInfo") << "C_GetTokenInfo"
                                        << "select reader failed";
        QTest::newRow("C_OpenSession") << "C_OpenSession"
                                       << "tokenObjects, openSession return empty tokens list";
        QTest::newRow("C_FindObjectsInit") << "C_FindObjectsInit"
                                           << "tokenObjects error: C_FindObjectsInit failed";
        QTest::newRow("C_FindObjects") << "C_FindObjects"
                                       << "";
        QTest::newRow("C_FindObjectsFinal") << "C_FindObjectsFinal"
                                            << "C_FindObjectsFinal failed";
        QTest::newRow("C_GetAttributeValue") << "C_GetAttributeValue"
                                             << "Błąd biblioteki PKCS11!";
        QTest::newRow("C_Finalize") << "C_Finalize"
                                    << "";
    }
    void functionThatAlwaysFailsLeavesTheWindowUp()
    {
        QFETCH(QString, function);
        QFETCH(QString, logged);
        constexpr unsigned long generalError = 5;
        flow->world.addFault(always(function.toLatin1().constData(), generalError));
        flow->openWindow();
        LogCatcher log;

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QTRY_VERIFY_WITH_TIMEOUT(hasEnded(*flow, log), 10000);
        QVERIFY2(log.has(logged), qPrintable(log.text()));
        QVERIFY(flow->window->isVisible());
    }

    void libraryThatRecoversShowsTheCard()
    {
        flow->world.addFault(always("C_OpenSession", 0x30));
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QTRY_COMPARE_WITH_TIMEOUT(flow->page(), QString("pageNoElectricLayer"), 10000);

        flow->world.clearFaults();
        flow->window->loadAll();

        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(!flow->label("lsurnameVal")->text().isEmpty());
    }

    void nonsenseInNamesAndSizesIsSurvived_data()
    {
        const struct {
            const char *nonsense;
            const char *function;
            SetFault set;
        } rows[] = {
            { "label of zero bytes", "C_GetTokenInfo", [](sim::Fault &f) { f.label = std::string(32, '\0'); } },
            { "label without blanks", "C_GetTokenInfo", [](sim::Fault &f) { f.label = std::string(32, 'A'); } },
            { "label of broken UTF-8", "C_GetTokenInfo", [](sim::Fault &f) { f.label = std::string(32, '\xC3'); } },
            { "every flag set", "C_GetTokenInfo", [](sim::Fault &f) { f.flags = 0xFFFFFFFF; } },
            { "name of zero bytes", "C_GetSlotInfo", [](sim::Fault &f) { f.description = std::string(64, '\0'); } },
            { "name of broken UTF-8", "C_GetSlotInfo", [](sim::Fault &f) { f.description = std::string(64, '\xFF'); } },
            { "fewer slots the second time", "C_GetSlotList", [](sim::Fault &f) { secondly(f).count = 1; } },
            { "more slots the second time", "C_GetSlotList", [](sim::Fault &f) { secondly(f).count = 1000; } },
            { "length not available", "C_GetAttributeValue", [](sim::Fault &f) { f.length = -1; } },
            { "larger the second time", "C_GetAttributeValue", [](sim::Fault &f) { secondly(f).length = 1000000; } },
        };
        QTest::addColumn<QByteArray>("function");
        QTest::addColumn<SetFault>("set");
        for (const auto &row : rows)
            QTest::newRow(row.nonsense) << QByteArray(row.function) << row.set;
    }
    void nonsenseInNamesAndSizesIsSurvived()
    {
        QFETCH(QByteArray, function);
        QFETCH(SetFault, set);
        sim::Fault fault;
        fault.function = function.toStdString();
        fault.nth = 0;
        set(fault);
        flow->world.addFault(fault);
        flow->openWindow();
        LogCatcher log;

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QTRY_VERIFY_WITH_TIMEOUT(hasEnded(*flow, log), 10000);
        QVERIFY(flow->window->isVisible());
    }

    void windowAnswersWhileTheLibraryBlocks()
    {
        flow->world.block("C_GetTokenInfo");
        flow->openWindow();

        flow->window->loadedReaders({ "Czytnik Alfa" });
        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);

        QVERIFY(flow->loaderShown());
        bool ticked = false;
        QTimer::singleShot(0, flow->window.get(), [&ticked] { ticked = true; });
        QTRY_VERIFY(ticked);
        flow->world.release();
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void cardTakenOutWhileItIsReadLeavesTheWindowUp_data()
    {
        QTest::addColumn<QString>("function");
        for (const char *function : { "C_GetSlotInfo", "C_GetTokenInfo", "C_OpenSession", "C_FindObjectsInit",
                                      "C_FindObjects", "C_GetAttributeValue" })
            QTest::newRow(function) << function;
    }
    void cardTakenOutWhileItIsReadLeavesTheWindowUp()
    {
        QFETCH(QString, function);
        sim::Fault fault;
        fault.function = function.toStdString();
        fault.nth = 3;
        fault.removeCard = "Czytnik Alfa";
        flow->world.addFault(fault);
        flow->openWindow();
        LogCatcher log;

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QTRY_VERIFY_WITH_TIMEOUT(hasEnded(*flow, log), 10000);
        QVERIFY(flow->window->isVisible());
    }

    void noPinIsInLogOrTrace()
    {
        LogCatcher log;
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(flow->waitForCard());

        QSignalSpy changed(flow->window.get(), &Window::changePinSig);
        emit flow->window->changePinSig("Czytnik Alfa", "Authentication", "1234", "4321");
        emit flow->window->unblockPinSig("Czytnik Alfa", "Authorization", "87654321", "654321");
        QTRY_VERIFY_WITH_TIMEOUT(log.has("unblock Pin fin code: "), 10000);

        QVERIFY(log.has("Change pin status:  0"));
        QFile trace(QString::fromStdString(flow->world.directory()) + "/trace.log");
        QVERIFY(trace.open(QIODevice::ReadOnly));
        const QString traced = QString::fromUtf8(trace.readAll());
        QVERIFY(traced.contains("C_SetPIN"));
        for (const QString &secret : pins + QStringList { "4321", "654321" }) {
            const QRegularExpression whole("(?<!\\d)" + secret + "(?!\\d)");
            QVERIFY2(!log.text().contains(whole), qPrintable(secret + " is in the log"));
            QVERIFY2(!traced.contains(whole), qPrintable(secret + " is in the trace"));
        }
    }
};

VELMOR_TEST(TestBadLibrary)
#include "tst_bad_library.moc"
