#include "support/pin_flow.h"

#include <QIcon>

// A slow card: its photo comes when the user has already gone on to another page.
class TestCardReadPhoto : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

    // The home page of a card whose photo is held until the world's release().
    void showHomeWithoutPhoto()
    {
        QVERIFY(flow->world.addReader("Czytnik Alfa"));
        QVERIFY(flow->world.insertCard("Czytnik Alfa", "anna"));
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd, 2));
        flow->openWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(flow->waitForPad());
        QVERIFY(flow->waitForPage("pageHome"));
        QVERIFY(!flow->photoArrived());
    }

    void letThePhotoCome()
    {
        flow->world.release();
        QTRY_VERIFY_WITH_TIMEOUT(flow->photoArrived(), PinFlow::patience);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void holderTakesTheFocusOnTheHomePage()
    {
        showHomeWithoutPhoto();
        flow->widget("bSettings")->setFocus();

        letThePhotoCome();

        QCOMPARE(QApplication::focusWidget(), flow->widget("widgetBlurICAO"));
    }

    void typingGoesOnWhereItWas()
    {
        showHomeWithoutPhoto();
        flow->openPinPage(sim::Authentication);
        QTest::keyClicks(QApplication::focusWidget(), "12");

        letThePhotoCome();

        QCOMPARE(QApplication::focusWidget(), flow->widget("lineActualPin"));
        QTest::keyClicks(QApplication::focusWidget(), "34");
        QCOMPARE(flow->field("lineActualPin")->text(), QString("1234"));
        // Back on the home page, the holder is told with all that has come meanwhile.
        flow->click("bCancel");
        QCOMPARE(QApplication::focusWidget(), flow->widget("widgetBlurICAO"));
        QVERIFY(flow->widget("widgetBlurICAO")->accessibleName().contains("Wiśniewska"));
    }

    void focusStaysOnThePageShown_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QString>("page");
        QTest::newRow("settings") << QByteArray("bSettings") << "pageSettings";
        QTest::newRow("help") << QByteArray("bHelp") << "pageHelp";
        QTest::newRow("certificate") << QByteArray("bArrowAuthenCert") << "pageCertInfo";
    }
    void focusStaysOnThePageShown()
    {
        QFETCH(QByteArray, button);
        showHomeWithoutPhoto();
        flow->button(button.constData())->click();
        flow->widget("bClose")->setFocus();

        letThePhotoCome();

        QTEST(flow->page(), "page");
        QVERIFY(QApplication::focusWidget() != flow->widget("widgetBlurICAO"));
    }

    void loaderKeepsTheFocus()
    {
        showHomeWithoutPhoto();
        flow->window->quitClicked();

        letThePhotoCome();

        QCOMPARE(flow->page(), QString("pageHome"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("loadingDesc"));
    }

    // Its arrow is not there yet, but a double click on the tile opens the page.
    void personalDataShowThePhotoAsItComes()
    {
        showHomeWithoutPhoto();
        QEvent doubleClick(QEvent::MouseButtonDblClick);
        QCoreApplication::sendEvent(flow->widget("icao"), &doubleClick);
        QCOMPARE(flow->page(), QString("pageAllData"));
        const QLabel *place = flow->label("lPhotoLarge");
        const QImage none = QIcon(":/images/no_photo.svg").pixmap(place->size()).toImage();
        QCOMPARE(place->pixmap(Qt::ReturnByValue).toImage(), none);
        QCOMPARE(QApplication::focusWidget(), flow->widget("nameFrame_2"));

        letThePhotoCome();

        const QSize size = place->pixmap(Qt::ReturnByValue).size();
        QVERIFY(place->pixmap(Qt::ReturnByValue).toImage() != none);
        QVERIFY(size.width() >= place->width() && size.height() >= place->height());
        QCOMPARE(QApplication::focusWidget(), flow->widget("nameFrame_2"));
    }
};

VELMOR_TEST(TestCardReadPhoto)
#include "tst_card_read_photo.moc"
