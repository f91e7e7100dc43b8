#include "support/flow.h"

#include "app/app_log.h"
#include "gui/anim_widget.h"

#include <QIcon>

#include <cstdio>
#include <unistd.h>

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

    // Of a line with a mark for which it is always written there; -1 if there is none.
    static qint64 timeInFrontOfALine()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("output");
        std::FILE *file = std::fopen(QFile::encodeName(path).constData(), "w");
        std::fflush(stdout);
        const int output = dup(fileno(stdout));
        dup2(fileno(file), fileno(stdout));
        AppLog::write("window.cpp", "[test]");
        dup2(output, fileno(stdout));
        close(output);
        std::fclose(file);
        QFile told(path);
        bool isTime = false;
        told.open(QFile::ReadOnly);
        const qint64 time = told.readAll().left(9).toLongLong(&isTime);
        return isTime ? time : -1;
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
        for (const QString &told : { flow->label("loadingDesc")->text(), flow->label("loadingDesc")->accessibleName() })
            QCOMPARE(told, QString("Trwa odczyt danych ICAO"));
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

    void unreadableDg13FillsTheNamesFromTheCertificate()
    {
        QVERIFY(flow->showCard("no-dg13"));

        const QString holder = QString::fromStdString(flow->world.card("no-dg13")->holder);
        QCOMPARE(flow->label("lCommonNameVal")->text() + ' ' + flow->label("lsurnameVal")->text(), holder);
    }

    void longNameIsCutAndStandsWholeInTheToolTip()
    {
        QVERIFY(flow->showCard("long-names"));

        const QLabel *surname = flow->label("lsurnameVal");
        QVERIFY2(surname->text().endsWith("..."), qPrintable(surname->text()));
        QVERIFY(surname->toolTip().size() > surname->text().size());
        QVERIFY(surname->toolTip().startsWith(surname->text().chopped(3)));
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
        QVERIFY(!photoIsAwaited());
        QCOMPARE(flow->label("lNumOfQualifiedCerts")->text(), QString("1"));

        flow->window->loadAll();

        QCOMPARE(flow->label("loadingDesc")->text(), QString("Trwa łączenie z czytnikami"));
        QVERIFY(!flow->widget("authenticationCert")->isEnabled());
        for (const char *place : { "lPhoto", "lPhotoLarge" })
            QVERIFY2(photo(place).isNull(), place);
        QCOMPARE(flow->label("lNumOfQualifiedCerts")->text(), QString());
        QCOMPARE(flow->label("labelTitleQualifiedCert")->accessibleName(), QString());
    }

    // Its name makes the box read like a sentence about a missing reader, and nothing else.
    void readerWithBrakInItsNameShowsItsCardAndForgetsIt()
    {
        const QString name = "Czytnik BRAKnet 2";
        QVERIFY(flow->showCard("anna", name.toStdString()));
        QCOMPARE(flow->page(), QString("pageHome"));
        QCOMPARE(flow->label("lsurnameVal")->text(), QString("Wiśniewska"));
        QVERIFY(!photo("lPhoto").isNull());
        QCOMPARE(flow->readersBox()->currentText(), name);

        flow->window->loadedReaders({}, "NO_CARD");

        QCOMPARE(flow->label("lsurnameVal")->text(), QString());
        QCOMPARE(flow->widget("widgetBlurICAO")->accessibleName(), QString());
    }

    void readersWithoutACardAreNotListed()
    {
        flow->world.addReader("Czytnik Zulu", false);
        QVERIFY(flow->showCard("anna"));
        QSignalSpy asked(flow->window.get(), &Window::getReaders);

        flow->window->loadAll();

        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked.first(), (QVariantList { 1, 256 }));
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->readersBox()->count(), 1);
    }

    void temporaryCertificateGoesWithItsCard()
    {
        QVERIFY(flow->showCard("anna"));
        QFile file(QDir::tempPath() + "/cert.cer");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();

        flow->window->loadAll();

        QVERIFY(!file.exists());
    }

    void timesOnStandardOutputAreThoseOfTheLatestRead()
    {
        flow->openWindow();
        QTest::qWait(50);
        QElapsedTimer sinceTheRead;
        sinceTheRead.start();

        flow->window->loadAll();

        const qint64 told = timeInFrontOfALine();
        QVERIFY2(told >= 0 && told <= sinceTheRead.elapsed(), qPrintable(QString::number(told)));
    }
};

VELMOR_TEST(TestWindowCardRead)
#include "tst_window_card_read.moc"
