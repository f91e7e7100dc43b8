#include "support/flow.h"

#include "base/settings.h"

namespace {

// Where the focus of the application goes while this lives, by the names of the widgets.
class FocusSteps : public QObject {
public:
    FocusSteps()
    {
        connect(qApp, &QApplication::focusChanged, this, [this](const QWidget *, const QWidget *now) {
            steps << (now ? now->objectName() : QString("nobody"));
        });
    }

    QStringList steps;
};

} // namespace

// What has the focus lets go of it before it is hidden or goes off. Else the toolkit would hand it on to whatever comes
// next, and a screen reader would speak of that before it speaks of the page.
class TestWindowFocus : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    void open()
    {
        flow->openWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
    }
    // On the box, which is on with two of them.
    void focusTheReaders(const std::string &card)
    {
        QVERIFY(flow->world.insertCard("Czytnik Alfa", card));
        QVERIFY(flow->world.insertCard("Czytnik Beta", "jan"));
        open();
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QVERIFY(flow->waitForCard());
        QVERIFY(flow->readersBox()->isEnabled());
        flow->readersBox()->setFocus();
        QCOMPARE(QApplication::focusWidget(), flow->readersBox());
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup()
    {
        flow.reset();
        Settings::instance()->setValue(SettingsKey::updateAvailable, "");
    }

    // The button that is pressed goes off for a moment.
    void goesFromTheFooterStraightToThePage_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QString>("first");
        QTest::newRow("settings") << QByteArray("bSettings") << "pageSettings";
        QTest::newRow("help") << QByteArray("bHelp") << "lPukBlocked_4";
    }
    void goesFromTheFooterStraightToThePage()
    {
        QFETCH(QByteArray, button);
        QFETCH(QString, first);
        open();
        QVERIFY(flow->showCard("anna"));
        flow->widget(button.constData())->setFocus();
        FocusSteps focus;

        flow->button(button.constData())->click();

        QCOMPARE(focus.steps, (QStringList { "nobody", first }));
    }

    void goesFromTheReadersStraightToThePage()
    {
        focusTheReaders("anna");
        FocusSteps focus;

        flow->window->moveToAllDataPage();

        QVERIFY(!flow->readersBox()->isEnabled());
        QCOMPARE(focus.steps, (QStringList { "nobody", "nameFrame_2" }));
    }

    void goesFromTheReadersToNobodyWhenTheCardHasGone()
    {
        focusTheReaders("anna");
        FocusSteps focus;

        flow->window->loadedReaders({}, "NO_CARD");

        QVERIFY(!flow->readersBox()->isEnabled());
        QCOMPARE(focus.steps, QStringList { "nobody" });
    }

    void goesFromTheReadersToNobodyWhenOnlyOneIsLeft()
    {
        focusTheReaders("no-certificates");
        QCOMPARE(flow->page(), QString("pageNoElectricLayer"));
        FocusSteps focus;

        flow->window->loadedReaders({ "Czytnik Alfa" });

        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(!flow->readersBox()->isEnabled());
        QCOMPARE(focus.steps, QStringList { "nobody" });
    }

    void goesFromATileStraightToTheSentenceOfTheNextPage()
    {
        open();
        QVERIFY(flow->showCard("anna"));
        flow->widget("bArrowAuthenCert")->setFocus();
        FocusSteps focus;

        flow->window->loadedCertsCount(0, 0, 0, 0);

        QCOMPARE(flow->page(), QString("pageNoElectricLayer"));
        QCOMPARE(focus.steps, (QStringList { "nobody", "lPukBlocked_3" }));
    }

    void goesFromTheLoaderToNobody()
    {
        open();
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->world.block("C_GetSlotList"));
        flow->window->loadAll();
        QCOMPARE(QApplication::focusWidget(), flow->widget("loadingDesc"));
        FocusSteps focus;

        flow->window->changePinFin(-3);

        QVERIFY(!flow->loaderShown());
        QCOMPARE(focus.steps, QStringList { "nobody" });
    }

    void staysWhereItIsWhenTheLoaderDoesNotHaveIt()
    {
        open();
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->world.block("C_GetSlotList"));
        flow->window->loadAll();
        flow->widget("bSettings")->setFocus();
        FocusSteps focus;

        flow->window->changePinFin(-3);

        QCOMPARE(focus.steps, QStringList());
    }

    // From whichever of the two buttons: what it has become is told, and then both are off.
    void goesFromTheUpdateToNobodyOnceItIsTold()
    {
        open();
        Settings::instance()->setValue(SettingsKey::updateAvailable, "true");
        flow->window->checkForUpdate();
        flow->widget("bUpdateArrow")->setFocus();
        QCOMPARE(QApplication::focusWidget(), flow->widget("bUpdateArrow"));
        FocusSteps focus;

        flow->window->updateApp();

        QCOMPARE(focus.steps, (QStringList { "bUpdate", "nobody" }));
    }
};

VELMOR_TEST(TestWindowFocus)
#include "tst_window_focus.moc"
