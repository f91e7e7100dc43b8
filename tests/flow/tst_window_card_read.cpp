#include "support/flow.h"

#include "gui/anim_widget.h"

#include <QIcon>

// What each answer about a card decides by itself, and what of the card before it leaves alone or takes away.
class TestWindowCardRead : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    QImage photo(const char *place) const { return flow->label(place)->pixmap(Qt::ReturnByValue).toImage(); }
    bool photoIsAwaited() const { return !flow->label("lPhoto")->findChild<AnimSvgWidget *>()->isHidden(); }
    // All that stands on the page of the holder's data, but the values.
    QStringList captions() const
    {
        QStringList texts;
        for (const QLabel *label : flow->widget("pageAllData")->findChildren<QLabel *>()) {
            if (!label->objectName().contains("Val"))
                texts << label->text();
        }
        return texts;
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void cardWithACertificateIsAskedForItsData_data()
    {
        QTest::addColumn<QList<int>>("counts"); // authentication, authorization, presence, qualified
        QTest::newRow("authentication") << QList<int> { 1, 0, 0, 0 };
        QTest::newRow("authorization") << QList<int> { 0, 1, 0, 0 };
        QTest::newRow("presence") << QList<int> { 0, 0, 1, 0 };
        QTest::newRow("qualified") << QList<int> { 0, 0, 0, 1 };
        QTest::newRow("the first two") << QList<int> { 1, 1, 0, 0 };
        QTest::newRow("the last two") << QList<int> { 0, 0, 1, 1 };
        QTest::newRow("all but the qualified one") << QList<int> { 1, 1, 1, 0 };
    }
    void cardWithACertificateIsAskedForItsData()
    {
        QFETCH(QList<int>, counts);
        QVERIFY(flow->showCard("anna"));
        QSignalSpy data(flow->window.get(), &Window::getConteinersAndICAO);

        flow->window->loadedCertsCount(counts[0], counts[1], counts[2], counts[3]);

        QCOMPARE(data.count(), 1);
        QCOMPARE(data.first().first().toString(), QString("Czytnik Alfa"));
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void countsOfACardThatHasGoneTellNothing()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedReaders({}, "NO_CARD");
        QSignalSpy data(flow->window.get(), &Window::getConteinersAndICAO);

        flow->window->loadedCertsCount(0, 0, 0, 0);
        QCOMPARE(flow->page(), QString("pageDisconected"));

        flow->window->loadedCertsCount(1, 1, 1, 1);
        QCOMPARE(data.count(), 0);
        // By itself, since its tile is off.
        const QPushButton *button = flow->button("bChangePinQualifiedCert");
        QVERIFY(!button->isEnabledTo(button->parentWidget()));
    }

    // As if the photo of the card before had come meanwhile.
    void certificatesTakeAwayAPhotoThatIsNotTheirs()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(!photo("lPhoto").isNull());
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd));

        flow->window->loadedCerts({}, {}, {}, {});

        QVERIFY(photo("lPhoto").isNull());
        QVERIFY(photoIsAwaited());
        flow->window->moveToAllDataPage();
        QCOMPARE(photo("lPhotoLarge"),
                 QIcon(":/images/no_photo.svg").pixmap(flow->label("lPhotoLarge")->size()).toImage());
    }

    void photoOfACardThatHasGoneIsAwaitedNoLonger()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd));
        flow->window->loadedCerts({}, {}, {}, {});
        QVERIFY(photoIsAwaited());
        flow->window->loadedReaders({}, "NO_CARD");

        flow->window->loadedPhoto({});

        QVERIFY(!photoIsAwaited());
        QVERIFY(flow->widget("widgetBlurICAO")->accessibleName().isEmpty());
    }

    void certificateThatCannotBeReadGivesNoNames()
    {
        QVERIFY(flow->showCard("anna"));
        flow->label("lCommonNameVal")->clear();
        flow->label("lsurnameVal")->clear();

        flow->window->loadedCerts({}, "no certificate", {}, {});

        QCOMPARE(flow->label("lCommonNameVal")->text(), QString());
        QCOMPARE(flow->label("lsurnameVal")->text(), QString());
    }

    void holderHasTheFocusBeforeThePhotoComes()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd));
        flow->widget("bSettings")->setFocus();

        flow->window->loadedCerts({}, {}, {}, {});

        QCOMPARE(flow->window->focusWidget(), flow->widget("widgetBlurICAO"));
    }

    // Whoever has gone on stays there.
    void certificatesTakeNoFocusFromAnotherPage()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->world.block("C_FindObjectsInit", sim::Emrtd));
        flow->button("bSettings")->click();
        QCOMPARE(flow->window->focusWidget(), flow->widget("pageSettings"));

        flow->window->loadedCerts({}, {}, {}, {});

        QCOMPARE(flow->window->focusWidget(), flow->widget("pageSettings"));
    }

    // Captions stay, the next card needs them.
    void cardThatIsReadAnewLeavesTheCaptionsAlone()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->moveToAllDataPage();
        const QStringList before = captions();
        QVERIFY(before.contains("Nazwisko rodowe:  "));

        flow->window->loadAll();

        QCOMPARE(captions(), before);
        QCOMPARE(flow->label("lfamilyNameVal")->text(), QString());
    }

    void cardThatIsReadAnewShowsNothingOfItselfMeanwhile()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->moveToAllDataPage();
        flow->window->moveToHomePage();
        QVERIFY(!photo("lPhotoLarge").isNull());
        QCOMPARE(flow->label("lNumOfQualifiedCerts")->text(), QString("1"));

        flow->window->loadAll();

        for (const char *place : { "lPhoto", "lPhotoLarge" })
            QVERIFY2(photo(place).isNull(), place);
        QCOMPARE(flow->label("lNumOfQualifiedCerts")->text(), QString());
        QCOMPARE(flow->label("labelTitleQualifiedCert")->accessibleName(), QString());
    }
};

VELMOR_TEST(TestWindowCardRead)
#include "tst_window_card_read.moc"
