#include "support/armed_timers.h"
#include "support/flow.h"
#include "support/viewers.h"

#include "base/ipc_msg.h"
#include "platform/os.h"

#include <QElapsedTimer>
#include <QSslCertificate>
#include <QTableWidget>

// From the button of a certificate's card to the system's window, and the loader in between.
class TestWindowCertificatesViewer : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Viewers> viewers;
    std::unique_ptr<Flow> flow;

    QPushButton *detailsButton() const
    {
        return flow->find<QTableWidget>("tableCert")->findChild<QPushButton *>("bDetailsCert");
    }
    void openPage()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bArrowAuthenCert")->click();
    }
    void openFirstViewer()
    {
        const int before = Os().certWindowCount();
        QVERIFY(Os().certOpen("another certificate"));
        QTRY_COMPARE(Os().certWindowCount(), before + 1);
    }
    QSslCertificate authentication() const
    {
        const std::optional<sim::Card> card = flow->world.card("anna");
        const sim::Object &object = card->objects.at(sim::Authentication).front();
        return QSslCertificate(QByteArray::fromStdString(object.value), QSsl::Der);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        viewers = std::make_unique<Viewers>();
        flow = std::make_unique<Flow>();
    }
    void cleanup()
    {
        flow.reset();
        viewers.reset();
    }

    void certificateIsHandedToTheViewer()
    {
        viewers->install("gcr-viewer");
        openPage();
        LogCatcher log;

        detailsButton()->click();

        QVERIFY(log.has("open cert win"));
        QFile file(QDir::tempPath() + "/cert.cer");
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), authentication().toDer());
        QTRY_COMPARE(viewers->started(), 1);
        QCOMPARE(viewers->call(0), "gcr-viewer " + QDir::tempPath() + "/cert.cer");
        QTRY_VERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->loaderShown());
    }

    void focusReturnsToTheButton()
    {
        viewers->install("gcr-viewer");
        openPage();
        detailsButton()->setFocus();

        QTest::keyClick(detailsButton(), Qt::Key_Space);

        QTRY_VERIFY(flow->loaderShown());
        QCOMPARE(QApplication::focusWidget(), flow->widget("loadingDesc"));
        QTRY_VERIFY(!flow->loaderShown());
        QCOMPARE(QApplication::focusWidget(), detailsButton());
    }

    void viewerIsLookedForAtItsTimes()
    {
        viewers->install("gcr-viewer");
        openPage();
        const auto armedByLook = [this](const char *slot) {
            return waitsArmedBy([&] { QMetaObject::invokeMethod(flow->window.get(), slot); });
        };
        QCOMPARE(waitsArmedBy([this] { detailsButton()->click(); }), QList<int> { 100 });
        QCOMPARE(armedByLook("openCertWinShowLoader"), QList<int> { 1000 });
        QCOMPARE(armedByLook("openCertWinFin"), QList<int> { 500 });
        QTRY_VERIFY(!flow->loaderShown());
    }

    void loaderStaysUntilTheWindowHasCome()
    {
        viewers->install("gcr-viewer");
        openPage();

        detailsButton()->click();
        QVERIFY(!flow->loaderShown());
        QTRY_VERIFY(flow->loaderShown());

        QCOMPARE(flow->label("loadingDesc")->text(), QString("Trwa otwieranie certyfikatu"));
        QVERIFY(flow->widget("pager")->isHidden());
        QVERIFY(flow->widget("cbReaders")->isHidden() && flow->widget("lReaderDesc")->isHidden());
        QVERIFY(flow->widget("bWroc")->isHidden());
        QTRY_VERIFY(!flow->loaderShown());
        QCOMPARE(flow->page(), QString("pageCertInfo"));
        QVERIFY(flow->widget("bWroc")->isVisible());
        QVERIFY(flow->widget("cbReaders")->isVisible() && flow->widget("lReaderDesc")->isVisible());
        QVERIFY(!flow->readersBox()->isEnabled());
    }

    void loaderNeverShowsForAWindowThatIsThereAtTheFirstLook()
    {
        viewers->install("gcr-viewer");
        openPage();
        LogCatcher log;

        detailsButton()->click();
        // The first look is late, as on a slow machine, and the window has come.
        constexpr int longerThanSettling = 600;
        QTest::qSleep(longerThanSettling);
        constexpr int longerThanTheSecondLook = 1200;
        QTest::qWait(longerThanTheSecondLook);

        QVERIFY(!log.has("loader show"));
        QVERIFY(!log.has("loader hide"));
    }

    void windowThatIsOpenAlreadyDoesNotCount()
    {
        viewers->install("gcr-viewer");
        openPage();
        openFirstViewer();

        detailsButton()->click();

        QTRY_VERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->loaderShown());
        QCOMPARE(viewers->started(), 2);
        QCOMPARE(Os().certWindowCount(), 2);
    }

    void windowThatIsClosedMeanwhileLowersTheMark()
    {
        viewers->install("gcr-viewer");
        openPage();
        openFirstViewer();

        detailsButton()->click();
        viewers->close(0);

        QTRY_VERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->loaderShown());
        QCOMPARE(Os().certWindowCount(), 1);
    }

    void doubleClickOpensOneWindow()
    {
        viewers->install("gcr-viewer");
        openPage();
        QPushButton *button = detailsButton();

        QTest::mouseClick(button, Qt::LeftButton);
        QTest::mouseDClick(button, Qt::LeftButton);
        QTest::mouseRelease(button, Qt::LeftButton);

        QTRY_VERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->loaderShown());
        QCOMPARE(viewers->started(), 1);
    }

    void keyOpensTheWindowToo_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Space") << int(Qt::Key_Space);
        QTest::newRow("Enter") << int(Qt::Key_Return);
    }
    void keyOpensTheWindowToo()
    {
        QFETCH(int, key);
        viewers->install("gcr-viewer");
        openPage();
        detailsButton()->setFocus();

        QTest::keyClick(detailsButton(), Qt::Key(key));

        QTRY_COMPARE(viewers->started(), 1);
        QTRY_VERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->loaderShown());
    }

    void keyThatIsHeldDownOpensOneWindow()
    {
        viewers->install("gcr-viewer");
        openPage();
        QPushButton *button = detailsButton();

        QTest::keyPress(button, Qt::Key_Return);
        for (int i = 0; i < 30; ++i) {
            QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
            QCoreApplication::sendEvent(button, &repeated);
            QTest::qWait(30);
        }
        QTest::keyRelease(button, Qt::Key_Return);

        QTRY_VERIFY(!flow->loaderShown());
        QCOMPARE(viewers->started(), 1);
    }

    void nullCertificateOpensNothing()
    {
        viewers->install("gcr-viewer");
        openPage();
        LogCatcher log;

        flow->window->openCertWin(QSslCertificate());

        QVERIFY(log.has("open cert win"));
        QVERIFY(!QFile::exists(QDir::tempPath() + "/cert.cer"));
        constexpr int longerThanTheFirstLook = 200;
        QTest::qWait(longerThanTheFirstLook);
        QCOMPARE(viewers->started(), 0);
        QVERIFY(!log.has("loader show"));
    }

    void watchLeavesTheLoaderOfTheNextCardAlone()
    {
        viewers->install("gcr-viewer");
        openPage();
        detailsButton()->click();
        QTRY_VERIFY(flow->loaderShown());
        flow->window->loadedReaders({}, "NO_CARD");
        QVERIFY(!flow->loaderShown());
        flow->world.block("C_GetSlotList");
        flow->window->loadAll();
        QVERIFY(flow->loaderShown());

        QTRY_COMPARE(Os().certWindowCount(), 1);
        constexpr int longerThanTheSecondLook = 1200;
        QTest::qWait(longerThanTheSecondLook);

        QVERIFY(flow->loaderShown());
        flow->world.clearFaults();
        flow->world.release();
    }

    void userWhoHasLeftThePageByTheFirstLookSeesNoLoader()
    {
        viewers->install("gcr-viewer");
        openPage();
        LogCatcher log;

        detailsButton()->click();
        flow->button("bSettings")->click();
        constexpr int longerThanTheFirstLook = 200;
        QTest::qWait(longerThanTheFirstLook);

        QCOMPARE(Os().certWindowCount(), 0);
        QVERIFY(!log.has("loader show"));
    }

    void watchOfACardThatHasGoneEndsNothing()
    {
        viewers->install("gcr-viewer");
        openPage();
        detailsButton()->click();
        QTRY_VERIFY(flow->loaderShown());
        flow->window->loadedReaders({}, "NO_CARD");
        QVERIFY(!flow->loaderShown());
        LogCatcher log;

        constexpr int longerThanTheSecondLook = 1200;
        QTest::qWait(longerThanTheSecondLook);

        QCOMPARE(Os().certWindowCount(), 1);
        QVERIFY(!log.has("loader hide"));
    }

    // Over another page, too, the loader is the watch's own and goes with it.
    void loaderGoesWhereverTheUserIsByThen_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("page");

        QTest::newRow("button to the settings") << "bSettings" << QByteArray() << "pageSettings";
        QTest::newRow("button to the help") << "bHelp" << QByteArray() << "pageHelp";
        QTest::newRow("message settings") << QString() << QByteArray("settings") << "pageSettings";
        QTest::newRow("message help") << QString() << QByteArray("help") << "pageHelp";
    }
    void loaderGoesWhereverTheUserIsByThen()
    {
        QFETCH(QString, button);
        QFETCH(QByteArray, message);
        QFETCH(QString, page);
        viewers->install("gcr-viewer");
        openPage();
        const QPushButton *clicked = detailsButton();
        detailsButton()->click();
        QTRY_VERIFY(flow->loaderShown());

        if (button.isEmpty())
            flow->window->recvIpcMsg({ { "from", "velmor_monitor" }, { "to", "velmor_manager" }, { message, 1 } });
        else
            flow->button(qPrintable(button))->click();

        QCOMPARE(flow->page(), page);
        QTRY_VERIFY(!flow->loaderShown());
        QVERIFY(flow->widget("pager")->isVisible());
        QCOMPARE(flow->page(), page);
        QVERIFY(flow->window->focusWidget() != clicked);
    }

    // Of a window with a title that nobody knows as much is seen as of none.
    void loaderEndsByItselfWhenNoWindowComes()
    {
        openPage();
        detailsButton()->click();
        QTRY_VERIFY(flow->loaderShown());
        QElapsedTimer shown;
        shown.start();

        constexpr int fullTime = 1000 + 41 * 500;
        QTRY_VERIFY_WITH_TIMEOUT(!flow->loaderShown(), fullTime + 3000);

        QVERIFY2(shown.elapsed() >= fullTime - 200, qPrintable(QString::number(shown.elapsed())));
        QVERIFY(flow->widget("bWroc")->isVisible());
    }
};

VELMOR_TEST(TestWindowCertificatesViewer)
#include "tst_window_certificates_viewer_linux.moc"
