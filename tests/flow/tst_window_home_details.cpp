#include "support/flow.h"

#include <QTextDocument>

namespace {

// Made with openssl: SN=Nowakowska, CN=Maksymiliana Konstancja Aleksandra Wilhelmina Nowakowska, an invented person.
const char longNames[] =
    "MIICADCCAaWgAwIBAgIUTDmEATGfC/a0l5yd09+yVkAZM90wCgYIKoZIzj0EAwIwWDETMBEGA1UEBAwKTm93YWtvd3NrYTFBMD8G"
    "A1UEAww4TWFrc3ltaWxpYW5hIEtvbnN0YW5jamEgQWxla3NhbmRyYSBXaWxoZWxtaW5hIE5vd2Frb3dza2EwHhcNMjYxMTIwMTU0"
    "NzA3WhcNMzYxMTE3MTU0NzA3WjBYMRMwEQYDVQQEDApOb3dha293c2thMUEwPwYDVQQDDDhNYWtzeW1pbGlhbmEgS29uc3RhbmNq"
    "YSBBbGVrc2FuZHJhIFdpbGhlbG1pbmEgTm93YWtvd3NrYTBZMBMGByqGSM49AgEGCCqGSM49AwEHA0IABAE9rB+Blyf+8/PgR6S4"
    "AHhDk3qSQzNOgNPqXeRG/Olcvu/iaq4gr+Enf5zbmmZ4UY0Lv1ejchD9SYVX8DWSWsqjTTBLMB0GA1UdDgQWBBRZqewsyvTF8hfS"
    "/uZKdMDzW0GzLDAfBgNVHSMEGDAWgBRZqewsyvTF8hfS/uZKdMDzW0GzLDAJBgNVHRMEAjAAMAoGCCqGSM49BAMCA0kAMEYCIQDo"
    "NqvAUDNPuZ+yOwCyi6N5Vc3Io76IfPAlUU2h5PZM7QIhAK4lOo1nyDabp3AQ+QzVYMLw3U0t3XT/OiCkEV+sb8Pk";

} // namespace

// Finer points of the home page: what each answer of the worker sets on its own, and what the counts and words decide.
class TestWindowHomeDetails : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    bool on(const char *name) const { return flow->widget(name)->isEnabled(); }
    // Whether the button itself is on, whatever its tile is.
    bool buttonOn(const char *name) const
    {
        return flow->button(name)->isEnabledTo(flow->button(name)->parentWidget());
    }
    void hideLoader() { flow->window->changePinFin(-3); }

    void dataGroups(const QByteArray &dg13)
    {
        flow->window->loadedConteinersAndICAO("Zmień PIN", "Zmień PIN", "Zmień PIN", 3, 3, 3, 3, false, 4, {}, {}, {},
                                              dg13);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void pinButtonIsSpokenAsItIsWritten()
    {
        QVERIFY(flow->showCard("locked-authorization"));

        QCOMPARE(flow->button("bChangePinAuthenCert")->accessibleName(),
                 QString("Zmień PIN: certyfikat do identyfikacji i uwierzytelniania"));
        QCOMPARE(flow->button("bChangePinAuthorCert")->accessibleName(),
                 QString("Odblokuj PIN: certyfikat do podpisu osobistego"));
    }

    // A card that could not be asked for its PIN gives an empty word, and what was said of the one before must go.
    void pinButtonWithoutAWordIsSpokenWithoutOne()
    {
        QVERIFY(flow->showCard("locked-authorization"));
        flow->window->refreshCertsStatus({}, {}, "Zmień PIN", 3, 3, 3, 3);
        for (const char *name : { "bChangePinAuthenCert", "bChangePinAuthorCert" })
            QCOMPARE(flow->button(name)->accessibleName(), QString());
    }

    void tilesCarryTheirTitlesAndTextsFromTheStart()
    {
        flow->openWindow();
        const struct {
            const char *titleLabel;
            const char *title;
            const char *textLabel;
            const char *text;
        } rows[] = {
            { "labelTitleAuthenCert", "Certyfikat do \nidentyfikacji i uwierzytelniania", "lTextAuthenCert",
              "<p>Możesz potwierdzać swoją tożsamość w internecie (na przykład korzystać z e-usług) </p>" },
            { "labelTitleAuthorCert", "Certyfikat do \npodpisu osobistego", "lTextAuthorCert",
              "<p>Możesz podpisywać dokumenty (służy jako elektroniczny podpis) </p>" },
            { "labelTitlePresenceCert", "Certyfikat do \npotwierdzania obecności", "lTextPresenceCert",
              "<p>Możesz potwierdzać swoją obecność (na przykład w placówce medycznej)</p>" },
            { "labelTitleQualifiedCert", "Certyfikat \nkwalifikowany", "lTextQualifiedCert",
              "<p>Możesz dodawać certyfikaty kwalifikowane </p>" },
        };
        for (const auto &row : rows) {
            QCOMPARE(flow->label(row.titleLabel)->text(), QString(row.title));
            QCOMPARE(flow->label(row.textLabel)->text(), QString(row.text));
        }
    }

    void countsDecideThePinButtonsButNotThatOfQualified()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->photoArrived());

        flow->window->loadedCertsCount(0, 1, 1, 1);
        QVERIFY(!buttonOn("bChangePinAuthenCert"));
        QVERIFY(buttonOn("bChangePinAuthorCert"));
        QVERIFY(!flow->photoArrived());

        flow->window->loadedCertsCount(1, 0, 1, 1);
        QVERIFY(buttonOn("bChangePinAuthenCert"));
        QVERIFY(!buttonOn("bChangePinAuthorCert"));
    }

    void buttonOfQualifiedComesBackWithTheNextCard()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedReaders({}, "NO_CARD");
        QVERIFY(!buttonOn("bChangePinQualifiedCert"));
        flow->window->loadedReaders({ "Czytnik Alfa" });
        QVERIFY(!buttonOn("bChangePinQualifiedCert"));

        flow->window->loadedCertsCount(1, 1, 1, 0);

        QVERIFY(buttonOn("bChangePinQualifiedCert"));
    }

    void requestForCertificatesNamesThePresentOnes_data()
    {
        QTest::addColumn<QList<int>>("counts"); // authentication, authorization, presence, qualified
        QTest::addColumn<QVariantList>("flags"); // authentication, presence, authorization, qualified
        QTest::newRow("two") << QList<int> { 1, 0, 1, 0 } << QVariantList { true, true, false, false };
        QTest::newRow("the others") << QList<int> { 0, 1, 0, 3 } << QVariantList { false, false, true, true };
    }
    void requestForCertificatesNamesThePresentOnes()
    {
        QFETCH(QList<int>, counts);
        QFETCH(QVariantList, flags);
        QVERIFY(flow->showCard("anna"));
        QSignalSpy certs(flow->window.get(), &Window::getCerts);

        flow->window->loadedCertsCount(counts[0], counts[1], counts[2], counts[3]);

        QTRY_COMPARE(certs.count(), 1);
        QCOMPARE(certs.first().first().toString(), QString("Czytnik Alfa"));
        QCOMPARE(certs.first().mid(1), flags);
    }

    void namesWithoutAReadableDg13_data()
    {
        QTest::addColumn<QByteArray>("dg13");
        QTest::addColumn<QString>("names");
        // Two empty names with the blank between them, which is meant.
        QTest::newRow("two bytes") << QByteArray("\x01\x02") << " ";
        QTest::newRow("none") << QByteArray() << "";
    }
    void namesWithoutAReadableDg13()
    {
        QFETCH(QByteArray, dg13);
        QVERIFY(flow->showCard("anna"));
        QVERIFY(!flow->label("lsurnameVal")->text().isEmpty());

        dataGroups(dg13);

        QTEST(flow->label("lCommonNameVal")->text(), "names");
        QCOMPARE(flow->label("lsurnameVal")->text(), QString());
        // Nor does any other group of the read before fill in for one that is missing.
        QCOMPARE(flow->label("lNumIdVal")->text(), QString());
    }

    void wordThatSwitchesButtonsOffLeavesQualifiedToTheNextLoader_data()
    {
        QTest::addColumn<QString>("word");
        QTest::newRow("first PIN") << "Nadaj PIN";
        QTest::newRow("empty") << "";
    }
    void wordThatSwitchesButtonsOffLeavesQualifiedToTheNextLoader()
    {
        QFETCH(QString, word);
        QVERIFY(flow->showCard("anna"));
        QVERIFY(on("qualifiedCert"));

        flow->window->refreshCertsStatus(word, word, word, 0, 0, 3, 0);

        QCOMPARE(flow->button("bChangePinAuthenCert")->text(), QString(7, ' ') + word);
        QVERIFY(!buttonOn("bChangePinAuthenCert"));
        QVERIFY(!buttonOn("bChangePinAuthorCert"));
        QVERIFY(buttonOn("bChangePinQualifiedCert"));
        QVERIFY(!on("qualifiedCert"));

        hideLoader();
        QVERIFY(on("qualifiedCert"));
        QVERIFY(!buttonOn("bChangePinAuthenCert"));
        QVERIFY(!buttonOn("bChangePinAuthorCert"));
    }

    void tileOfQualifiedIsOffWithoutACertificateWhateverTheWord()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedCertsCount(1, 1, 1, 0);

        flow->window->refreshCertsStatus("Zmień PIN", "Zmień PIN", "Zmień PIN", 3, 3, 3, 3);
        QVERIFY(!on("qualifiedCert"));

        hideLoader();
        QVERIFY(!on("qualifiedCert"));
        QVERIFY(flow->widget("lNumOfQualifiedCerts")->isHidden());
        QVERIFY(buttonOn("bChangePinQualifiedCert"));
    }

    void tileWithoutACertificateIsOffAndItsButtonFollowsTheWord()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedCertsCount(0, 1, 1, 1);

        flow->window->refreshCertsStatus("Zmień PIN", "Nadaj PIN", "Zmień PIN", 3, 3, 3, 3);
        hideLoader();

        QVERIFY(!on("authenticationCert"));
        QVERIFY(on("authorizationCert"));
        QVERIFY(buttonOn("bChangePinAuthenCert"));
        QVERIFY(!buttonOn("bChangePinAuthorCert"));
    }

    void hoverOfTheContainersEndsWithTheLoaderAndThatOfTheHolderStays()
    {
        QVERIFY(flow->showCard("anna"));
        const char *const containers[] = { "authenticationCert", "authorizationCert", "presenceCert", "qualifiedCert" };
        for (const char *tile : containers)
            flow->widget(tile)->setProperty("MouseOver", true);
        flow->widget("icao")->setProperty("MouseOver", true);

        hideLoader();

        for (const char *tile : containers)
            QCOMPARE(flow->widget(tile)->property("MouseOver"), QVariant(false));
        QCOMPARE(flow->widget("icao")->property("MouseOver"), QVariant(true));
    }

    // What a card carries is never markup in a tool tip, where the toolkit would take it for such.
    void markupInANameIsShownAsItIs()
    {
        QVERIFY(flow->showCard("anna"));
        const QString name = "<b>Nowakowska</b>-Konstantynopolitańczykiewiczówna & Brzęczyszczykiewicz";
        flow->label("lsurnameVal")->setText(name);

        flow->window->loadedCerts({}, {}, {}, {});

        const QString tip = flow->label("lsurnameVal")->toolTip();
        QVERIFY(Qt::mightBeRichText(tip));
        QTextDocument shown;
        shown.setHtml(tip);
        QCOMPARE(shown.toPlainText(), name);
    }

    void namesOfADg13ThatCannotBeReadComeFromTheCertificate()
    {
        QVERIFY(flow->showCard("anna"));
        dataGroups("\x01\x02");
        QVERIFY(!flow->label("lCommonNameVal")->text().isEmpty());
        QVERIFY(flow->label("lsurnameVal")->text().isEmpty());

        flow->window->loadedCerts({}, QByteArray::fromBase64(longNames), {}, {});

        QCOMPARE(flow->label("lCommonNameVal")->toolTip(), QString("Maksymiliana Konstancja Aleksandra Wilhelmina"));
        QCOMPARE(flow->label("lsurnameVal")->text(), QString("Nowakowska"));
    }

    void nameIsSpokenAsAnyTextOfTheTiles()
    {
        QVERIFY(flow->showCard("anna"));
        flow->label("lsurnameVal")->setText("Mikanowska");

        flow->window->loadedPhoto({});

        QVERIFY(flow->widget("widgetBlurICAO")->accessibleName().endsWith(" nazwisko: MiCANowska"));
    }

    void nextStepOfTheReadIsSpoken()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadAll();
        flow->button("bMinimalize")->setFocus();

        flow->window->loadedCertsCount(1, 1, 1, 1);

        QCOMPARE(flow->window->focusWidget(), flow->widget("loadingDesc"));
        QCOMPARE(flow->label("loadingDesc")->accessibleName(), QString("Trwa odczyt danych ICAO"));
        QVERIFY(flow->waitForCard());
    }

    void keypadIsThatOfTheReaderThatTheCardIsReadIn()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedConteinersAndICAO("Zmień PIN", "Zmień PIN", "Zmień PIN", 3, 3, 3, 3, true, 4, {}, {}, {},
                                              {});
        hideLoader();

        flow->button("bChangePinAuthenCert")->click();

        QCOMPARE(flow->find<QStackedWidget>("pagerPinPadOrApp")->currentWidget(), flow->widget("pagePinPad"));
    }

    void longNamesFromTheCertificateAreCutToo()
    {
        QVERIFY(flow->showCard("anna"));
        dataGroups({});

        flow->window->loadedCerts({}, QByteArray::fromBase64(longNames), {}, {});

        const QLabel *names = flow->label("lCommonNameVal");
        QCOMPARE(names->toolTip(), QString("Maksymiliana Konstancja Aleksandra Wilhelmina"));
        QVERIFY2(names->text().endsWith("..."), qPrintable(names->text()));
        QVERIFY(names->toolTip().startsWith(names->text().chopped(3)));
        QCOMPARE(flow->label("lsurnameVal")->text(), QString("Nowakowska"));
    }
};

VELMOR_TEST(TestWindowHomeDetails)
#include "tst_window_home_details.moc"
