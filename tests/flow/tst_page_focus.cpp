#include "support/pin_flow.h"

#include <QAccessible>

// The focus goes where a user who hears the page expects it, and nothing that comes late takes it away again.
class TestPageFocus : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    static constexpr int disconnectDelay = 1000;

    void press(const char *button) const
    {
        flow->button(button)->setFocus();
        QTest::keyClick(flow->button(button), Qt::Key_Space);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<PinFlow>();
        flow->openWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        // The page with which the program starts stays whatever is said of the readers.
        flow->find<QStackedWidget>("pager")->setCurrentWidget(flow->widget("pageHome"));
    }
    void cleanup() { flow.reset(); }

    void pageOpenedByKeyboardGetsTheFocusAndSaysItsTitle_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QByteArray>("widget");
        QTest::addColumn<QString>("spoken");
        QTest::addColumn<bool>("withCard");
        for (const bool withCard : { false, true }) {
            const char *card = withCard ? "a card" : "no card";
            QTest::addRow("settings, %s", card)
                << QByteArray("bSettings") << QByteArray("pageSettings") << "Ustawienia" << withCard;
            QTest::addRow("help, %s", card)
                << QByteArray("bHelp") << QByteArray("lPukBlocked_4") << "Pomoc techniczna" << withCard;
        }
    }
    void pageOpenedByKeyboardGetsTheFocusAndSaysItsTitle()
    {
        QFETCH(QByteArray, button);
        QFETCH(QByteArray, widget);
        QFETCH(QString, spoken);
        QFETCH(bool, withCard);
        if (withCard)
            QVERIFY(flow->showCard("anna"));
        else
            flow->window->loadedReaders({}, "NO_READER");

        press(button.constData());

        QCOMPARE(QApplication::focusWidget(), flow->widget(widget.constData()));
        QCOMPARE(QAccessible::queryAccessibleInterface(QApplication::focusWidget())->text(QAccessible::Name), spoken);
        // The next stop is the first of the page.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QVERIFY(flow->find<QStackedWidget>("pager")->currentWidget()->isAncestorOf(QApplication::focusWidget()));
    }

    // The page without a connection gets the focus a second after it has come, if it is still there.
    void focusStaysOnThePageThatWasGoneOnTo_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("settings") << QByteArray("bSettings");
        QTest::newRow("help") << QByteArray("bHelp");
    }
    void focusStaysOnThePageThatWasGoneOnTo()
    {
        QFETCH(QByteArray, button);
        flow->window->loadedReaders({}, "NO_READER");
        QCOMPARE(flow->page(), QString("pageDisconected"));
        press(button.constData());
        QWidget *const reached = QApplication::focusWidget();
        QVERIFY(reached);

        QTest::qWait(disconnectDelay + 100);

        QCOMPARE(QApplication::focusWidget(), reached);
    }

    void digitsOfThePinGoWhereTheyWereTypedAfterAShortLossOfTheCard()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedReaders({}, "NO_CARD");
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(flow->waitForCard());
        flow->openPinPage(sim::Authentication);
        QTest::keyClicks(QApplication::focusWidget(), "12");

        QTest::qWait(disconnectDelay + 100);

        QCOMPARE(QApplication::focusWidget(), flow->widget("lineActualPin"));
    }

    void loaderKeepsTheFocusFromThePageBehindIt()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->window->loadedReaders({}, "NO_CARD");
        QVERIFY(flow->world.block("C_Initialize"));
        flow->window->loadAll();
        QVERIFY(flow->loaderShown());
        QCOMPARE(flow->page(), QString("pageDisconected"));

        QTest::qWait(disconnectDelay + 100);

        QCOMPARE(QApplication::focusWidget(), flow->widget("loadingDesc"));
    }
};

VELMOR_TEST(TestPageFocus)
#include "tst_page_focus.moc"
