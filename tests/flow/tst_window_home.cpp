#include "support/flow.h"

#include "card/card_tables.h"

// What the home page makes of a card: labels, words on the PIN buttons, which tiles are on, names for a screen reader.
class TestWindowHome : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    QString word(const char *button) const { return flow->button(button)->text().trimmed(); }
    bool on(const char *name) const { return flow->widget(name)->isEnabled(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void goodCardShowsPhotoNamesNumberAndDate()
    {
        QVERIFY(flow->showCard("anna"));

        const auto card = flow->world.card("anna");
        QVERIFY(card.has_value());
        for (const char *name : { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal" })
            QVERIFY2(!flow->label(name)->text().isEmpty(), name);
        const QString holder = QString::fromStdString(card->holder);
        QVERIFY(holder.contains(flow->label("lsurnameVal")->text()));
        QVERIFY(holder.startsWith(flow->label("lCommonNameVal")->text().section(' ', 0, 0)));
        QCOMPARE(flow->label("lNumIdVal")->text(), QString("CAA100017"));
        QVERIFY(!flow->label("lPhoto")->pixmap(Qt::ReturnByValue).isNull());
        QVERIFY(photoWidth() >= flow->label("lPhoto")->width());
        QCOMPARE(flow->window->focusWidget(), flow->widget("widgetBlurICAO"));
    }

    void expiryDateStandsInTheLongPolishForm()
    {
        QVERIFY(flow->showCard("anna"));

        QCOMPARE(flow->label("lExpDateVal")->text(), QString("17 października 2033"));
    }

    void callsOfACardReadAreThoseOfTheChainAndNoMore()
    {
        QVERIFY(flow->showCard("anna"));

        QStringList calls = flow->calls();
        // The first and only scan of the readers, from a fresh library.
        QCOMPARE(calls.takeFirst(), QString("C_GetFunctionList"));
        QCOMPARE(calls.takeFirst(), QString("C_Initialize"));
        QCOMPARE(calls.filter("C_Initialize").size(), 0);
        QCOMPARE(calls.filter("C_Finalize").size(), 0);
        QCOMPARE(calls.filter("C_GetSlotList").size(), 2);
        // One search of each container for the count, one for its certificates, two of eMRTD: data groups and photo.
        QStringList searches = calls.filter("C_FindObjectsInit");
        QCOMPARE(searches,
                 (QStringList { "C_FindObjectsInit Presence", "C_FindObjectsInit Authentication",
                                "C_FindObjectsInit Authorization", "C_FindObjectsInit Qualified",
                                "C_FindObjectsInit eMRTD", "C_FindObjectsInit Authentication",
                                "C_FindObjectsInit Presence", "C_FindObjectsInit Authorization",
                                "C_FindObjectsInit Qualified", "C_FindObjectsInit eMRTD" }));
        QCOMPARE(calls.filter("C_FindObjectsFinal").size(), searches.size());
        // One session a token, kept.
        QCOMPARE(calls.filter("C_OpenSession").size(), 5);
        QCOMPARE(calls.filter("C_CloseSession").size(), 0);
        for (const char *never : { "C_Login", "C_Logout", "C_SetPIN", "C_InitPIN", "C_WaitForSlotEvent" })
            QCOMPARE(calls.filter(never).size(), 0);
    }

    void statusWordsAndTilesFollowTheCard_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QList<bool>>("buttons");
        QTest::addColumn<QList<bool>>("tiles");
        const QString change = "Zmień PIN", unblock = "Odblokuj PIN", first = "Nadaj PIN";
        using Bools = QList<bool>;
        QTest::newRow("good") << "anna" << QStringList { change, change, change } << Bools { true, true, true }
                              << Bools { true, true, true, true };
        QTest::newRow("all locked") << "locked-pins" << QStringList { unblock, unblock, unblock }
                                    << Bools { true, true, true } << Bools { true, true, true, true };
        // The button of Qualified is never switched off by its word.
        QTest::newRow("first PIN, no certificate") << "zaneta" << QStringList { change, unblock, first }
                                                   << Bools { true, true, true } << Bools { true, true, true, false };
        QTest::newRow("not initialized") << "not-initialized" << QStringList { change, change, first }
                                         << Bools { true, true, true } << Bools { true, true, true, false };
    }
    void statusWordsAndTilesFollowTheCard()
    {
        QFETCH(QString, card);
        QFETCH(QStringList, words);
        QFETCH(QList<bool>, buttons);
        QFETCH(QList<bool>, tiles);
        const char *const buttonNames[] = { "bChangePinAuthenCert", "bChangePinAuthorCert", "bChangePinQualifiedCert" };
        const char *const tileNames[] = { "authenticationCert", "authorizationCert", "presenceCert", "qualifiedCert" };

        QVERIFY(flow->showCard(card.toStdString()));

        for (int i = 0; i < words.size(); ++i) {
            QCOMPARE(flow->button(buttonNames[i])->text(), QString(7, ' ') + words[i]);
            QCOMPARE(on(buttonNames[i]), buttons[i]);
        }
        for (int i = 0; i < tiles.size(); ++i)
            QCOMPARE(on(tileNames[i]), tiles[i]);
    }

    void blockedPinSwitchesTheQualifiedTileOffUntilTheLoaderHides()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(on("qualifiedCert"));

        flow->window->refreshCertsStatus("Zmień PIN", "Zmień PIN", "Odblokuj PIN", 3, 3, 3, 0);
        QVERIFY(!on("qualifiedCert"));

        flow->window->changePinFin(-3);
        QVERIFY(on("qualifiedCert"));
    }

    void pukTriesAreShownWhileThereAreSome()
    {
        QVERIFY(flow->showCard("anna"));
        QCOMPARE(flow->label("lTryNumDescPUK")->text(), QString("Pozostało prób: 3"));
        QCOMPARE(flow->label("lTryNumDescPUKpinpad")->text(), QString("Pozostało prób: 3"));

        flow->window->refreshCertsStatus("a", "b", "c", 1, 2, 1, 3);
        QCOMPARE(flow->label("lTryNumDescPUK")->text(), QString("Pozostało prób: 1"));
        QCOMPARE(flow->label("lTryNumDescPUKpinpad")->text(), QString("Pozostało prób: 1"));

        flow->window->refreshCertsStatus("a", "b", "c", 1, 2, 0, 3);
        QCOMPARE(flow->label("lTryNumDescPUK")->text(), QString("Pozostało prób: 1"));
    }

    void qualifiedTileTellsTheNumberOfCertificates_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<bool>("numberShown");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("spoken");
        QTest::newRow("one") << "anna" << true << "1"
                             << "Certyfikat kwalifikowany masz 1 certyfikat kwalifikowany";
        QTest::newRow("three") << "three-qualified" << true << "3"
                               << "Certyfikat kwalifikowany masz 3 certyfikaty kwalifikowane";
    }
    void qualifiedTileTellsTheNumberOfCertificates()
    {
        QFETCH(QString, card);
        QFETCH(bool, numberShown);

        QVERIFY(flow->showCard(card.toStdString()));

        QCOMPARE(!flow->widget("lNumOfQualifiedCerts")->isHidden(), numberShown);
        QTEST(flow->label("lNumOfQualifiedCerts")->text(), "number");
        QTEST(flow->label("labelTitleQualifiedCert")->accessibleName(), "spoken");
        QCOMPARE(flow->button("bChangePinQualifiedCert")->accessibleName(), QString(7, ' ') + "Zmień PIN");
    }

    void withoutAQualifiedCertificateTheNumberIsHiddenAndTheButtonSaysSo()
    {
        QVERIFY(flow->showCard("zaneta"));

        QVERIFY(flow->widget("lNumOfQualifiedCerts")->isHidden());
        QCOMPARE(flow->button("bChangePinQualifiedCert")->accessibleName(),
                 QString(7, ' ') + "Nadaj PIN dla kontenera certyfikatów kwalifikowanych");
    }

    void firstPinCanBeSetThoughItsTileIsOff()
    {
        QVERIFY(flow->showCard("zaneta"));
        LogCatcher log;

        QVERIFY(flow->button("bChangePinQualifiedCert")->isEnabled());
        flow->button("bChangePinQualifiedCert")->click();

        QVERIFY(log.has("Container:  Qualified"));
    }

    void pinButtonsAreDeafWhileBusy()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadAll();
        LogCatcher log;

        flow->window->chooseAuthenticationCertPIN();
        flow->window->chooseAuthorizationCertPIN();
        flow->window->chooseQualifiedCertPIN();

        QVERIFY(!log.has("Container: "));
        QVERIFY(flow->waitForCard());
    }

    void triesOfEachContainerReachItsPinPage_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("line");
        QTest::newRow("Authentication") << "bChangePinAuthenCert"
                                        << "Container:  Authentication  status:  3 triesLeftPUK:  2";
        QTest::newRow("Authorization") << "bChangePinAuthorCert"
                                       << "Container:  Authorization  status:  2 triesLeftPUK:  2";
        QTest::newRow("Qualified") << "bChangePinQualifiedCert"
                                   << "Container:  Qualified  status:  1 triesLeftPUK:  2";
    }
    void triesOfEachContainerReachItsPinPage()
    {
        QFETCH(QString, button);
        QFETCH(QString, line);
        flow->world.setTries("anna", sim::Authorization, 2);
        flow->world.setTries("anna", sim::Qualified, 1);
        flow->world.setPukTries("anna", 2);
        QVERIFY(flow->showCard("anna"));
        LogCatcher log;

        flow->button(button.toLatin1().constData())->click();

        QVERIFY2(log.has(line), qPrintable(log.text()));
    }

    void cardWithoutCertificatesHasNoElectronicLayerAndIsNotAskedForData()
    {
        QVERIFY(flow->showCard("no-certificates"));

        QCOMPARE(flow->page(), QString("pageNoElectricLayer"));
        QCOMPARE(flow->label("lPukBlocked_3")->accessibleName(), QString("Twój dowód nie ma warstwy elektronicznej"));
        QCOMPARE(flow->window->focusWidget(), flow->label("lPukBlocked_3"));
        QCOMPARE(flow->calls().filter("eMRTD").filter("C_FindObjects").size(), 0);
        QVERIFY(!flow->readersBox()->isEnabled());
    }

    void withoutPresenceTheHolderStaysEmptyButThePhotoIsRead()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(flow->waitForCard());
        flow->window->loadAll();
        QVERIFY(flow->waitForCard());
        flow->window->disableHomePage();
        QSignalSpy photo(flow->window.get(), &Window::getPhoto);
        QSignalSpy certs(flow->window.get(), &Window::getCerts);

        flow->window->loadedCertsCount(1, 1, 0, 1);

        QTRY_COMPARE(photo.count(), 1);
        QCOMPARE(certs.first().mid(1), (QVariantList { true, false, true, true }));
        for (const char *name : { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal" })
            QCOMPARE(flow->label(name)->text(), QString());
        QVERIFY(!on("presenceCert"));
        QTRY_VERIFY(flow->photoArrived());
    }

    void cardWithoutPhotoShowsTheDrawing_data()
    {
        QTest::addColumn<QString>("card");
        QTest::newRow("no DG2") << "no-photo";
        QTest::newRow("DG2 without a picture") << "bad-photo";
    }
    void cardWithoutPhotoShowsTheDrawing()
    {
        QFETCH(QString, card);
        QVERIFY(flow->showCard("anna"));
        const QImage good = flow->label("lPhoto")->pixmap(Qt::ReturnByValue).toImage();
        flow->world.removeCard("Czytnik Alfa");

        QVERIFY(flow->showCard(card.toStdString(), "Czytnik Beta"));

        QVERIFY(flow->label("lPhoto")->styleSheet().endsWith(" border: 1px solid rgb(76,83,88);"));
        const QImage shown = flow->label("lPhoto")->pixmap(Qt::ReturnByValue).toImage();
        QVERIFY(!shown.isNull());
        QVERIFY(shown != good);
    }

    void photoStyleGrowsByOneRuleALoad()
    {
        QVERIFY(flow->showCard("anna"));
        QCOMPARE(flow->label("lPhoto")->styleSheet().count("border-color: rgb(189,189,189);"), 1);

        flow->window->loadAll();
        QVERIFY(flow->waitForCard());

        QTRY_COMPARE(flow->label("lPhoto")->styleSheet().count(" border-color: rgb(189,189,189);"), 2);
    }

    void homePageIsDescribedForAScreenReader()
    {
        QVERIFY(flow->showCard("anna"));

        const QString expected = "Twoje dane z velmor: zdjęcie seria i numer dowodu: "
            + flow->label("lNumIdVal")->text() + " data ważności " + flow->label("lExpDateVal")->text()
            + " imiona: " + flow->label("lCommonNameVal")->text() + " nazwisko: " + flow->label("lsurnameVal")->text();
        QCOMPARE(flow->widget("widgetBlurICAO")->accessibleName(), expected);
    }

    void arrowsTellWhereTheyLead()
    {
        flow->openWindow();
        for (const char *name : { "bArrowAuthenCert", "bArrowAuthorCert", "bArrowPresenceCert", "bArrowQualifiedCert" })
            QCOMPARE(flow->widget(name)->accessibleDescription(), QString("zobacz szczegóły certyfikatu"));
        QCOMPARE(flow->widget("bArrowICAO")->accessibleDescription(),
                 QString("przejdź do rozszerzonego widoku danych z velmor"));
    }

    void doubleClickOnATileActsAsItsArrow()
    {
        QVERIFY(flow->showCard("anna"));
        QSignalSpy arrow(flow->button("bArrowPresenceCert"), &QPushButton::clicked);

        QTest::mouseDClick(flow->widget("presenceCert"), Qt::LeftButton, {}, QPoint(5, 5));

        QCOMPARE(arrow.count(), 1);
    }

private:
    int photoWidth() const
    {
        const QPixmap picture = flow->label("lPhoto")->pixmap(Qt::ReturnByValue);
        return int(picture.width() / picture.devicePixelRatio());
    }
};

VELMOR_TEST(TestWindowHome)
#include "tst_window_home.moc"
