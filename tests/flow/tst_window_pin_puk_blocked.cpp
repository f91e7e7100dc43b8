#include "support/opened_urls.h"
#include "support/pin_flow.h"

// The end of the road: a PUK without tries, on the way to its page and on the page itself.
class TestWindowPinPukBlocked : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PinFlow> flow;

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void blockedPukShowsItsPageInsteadOfTheForm_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<int>("tries");
        QTest::addColumn<int>("pukTries");
        for (const int pukTries : { 0, 4 }) {
            QTest::addRow("first PIN, PUK tries %d", pukTries) << "Nadaj PIN" << 4 << pukTries;
            QTest::addRow("locked, PUK tries %d", pukTries) << "Odblokuj PIN" << 0 << pukTries;
        }
    }
    void blockedPukShowsItsPageInsteadOfTheForm()
    {
        QFETCH(QString, word);
        QFETCH(int, tries);
        QFETCH(int, pukTries);
        QVERIFY(flow->start("anna"));
        flow->window->refreshCertsStatus("Zmień PIN", "Zmień PIN", word, 3, 3, pukTries, tries);
        flow->readersBox()->setEnabled(true);

        flow->openPinPage(sim::Qualified);

        QCOMPARE(flow->page(), QString("pageBlockedPuk_2"));
        QVERIFY(!flow->readersBox()->isEnabled());
        QCOMPARE(flow->title(), QString("Odblokowanie PIN-u "));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lPukBlocked_2"));
    }

    void blockedPageLeadsToTheOneOnNewCards_data()
    {
        QTest::addColumn<QByteArray>("label");
        QTest::newRow("page of its own") << QByteArray("lPukBlocked_2");
        QTest::newRow("in the page for the PUK") << QByteArray("lPukBlocked");
    }
    void blockedPageLeadsToTheOneOnNewCards()
    {
        QFETCH(QByteArray, label);
        flow->openWindow();
        QLabel *blocked = flow->label(label.constData());
        for (QWidget *page = blocked; page != flow->window.get(); page = page->parentWidget()) {
            if (auto *pager = qobject_cast<QStackedWidget *>(page->parentWidget()))
                pager->setCurrentWidget(page);
        }
        const OpenedUrls opened("https");

        // By the keyboard alone.
        QTest::keyClick(blocked, Qt::Key_Tab);
        QTest::keyClick(blocked, Qt::Key_Return);

        QCOMPARE(opened.urls.size(), 1);
        QVERIFY(blocked->text().contains('"' + opened.urls.first().toString() + '"'));
    }

    void pukThatIsBlockedMeanwhileIsNotSent_data()
    {
        QTest::addColumn<int>("pukTries");
        QTest::newRow("no tries") << 0;
        QTest::newRow("without a counter") << 4;
    }
    void pukThatIsBlockedMeanwhileIsNotSent()
    {
        QFETCH(int, pukTries);
        QVERIFY(flow->start("locked-pins"));
        flow->openPinPage(sim::Authentication);
        flow->typeUnblock(PinFlow::puk, "4826", "4826");
        flow->window->refreshCertsStatus("Odblokuj PIN", "Odblokuj PIN", "Odblokuj PIN", 0, 0, pukTries, 0);
        QSignalSpy sent(flow->window.get(), &Window::unblockPinSig);
        LogCatcher log;

        flow->click("bChangePinPuk");

        QCOMPARE(flow->page(), QString("pageBlockedPuk_2"));
        QVERIFY(log.lines().contains("PUK is blocked! tries left= " + QString::number(pukTries)));
        QCOMPARE(sent.size(), 0);
        // Not busy.
        flow->click("bWrocPuk");
        flow->openPinPage(sim::Authentication);
        QCOMPARE(flow->page(), QString("pageBlockedPuk_2"));
    }
};

VELMOR_TEST(TestWindowPinPukBlocked)
#include "tst_window_pin_puk_blocked.moc"
