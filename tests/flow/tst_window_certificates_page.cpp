#include "support/flow.h"

#include "cert_widget.h"

#include <QAccessible>
#include <QGraphicsDropShadowEffect>
#include <QPointer>
#include <QSslCertificate>
#include <QTableWidget>

#include <ctime>

// The cards of one container's certificates, on the real window.
class TestWindowCertificatesPage : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    QTableWidget *table() const { return flow->find<QTableWidget>("tableCert"); }
    CertWidget *card(int row, int column) const { return qobject_cast<CertWidget *>(table()->cellWidget(row, column)); }
    QLabel *cardLabel(int row, int column, const char *name) const
    {
        return card(row, column)->findChild<QLabel *>(name);
    }
    QString issuer(int row, int column) const { return cardLabel(row, column, "lOrganizationName")->text(); }
    QList<QByteArray> qualified(const char *name) const
    {
        QList<QByteArray> result;
        const std::optional<sim::Card> card = flow->world.card(name);
        for (const sim::Object &object : card->objects.at(sim::Qualified)) {
            if (object.objectClass == 1)
                result << QByteArray::fromStdString(object.value);
        }
        return result;
    }
    static void collectNames(QAccessibleInterface *from, QStringList &names)
    {
        if (from->state().focusable && !from->text(QAccessible::Name).isEmpty())
            names << from->text(QAccessible::Name);
        for (int i = 0; i < from->childCount(); ++i)
            collectNames(from->child(i), names);
    }
    // A window whose card has these qualified certificates.
    void showQualified(const QList<QByteArray> &certificates)
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->loadedCerts({}, {}, {}, certificates);
        flow->window->chooseQualifiedCertInfo();
    }

private slots:
    void initTestCase()
    {
        // A machine in Poland, without a table of its time zones.
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        tzset();
        Flow::setUpApplication();
    }
    void init() { flow = std::make_unique<Flow>(); }

    void whatCannotBeReadIsSaidToEyeAndEar()
    {
        const QLabel *sentence = nullptr;
        showQualified({ QByteArray("no certificate") });
        sentence = flow->label("lCertUnreadable");
        QVERIFY(sentence->isVisible());
        QCOMPARE(table()->rowCount(), 0);
        QTRY_VERIFY(sentence->hasFocus());
        QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(flow->label("lCertUnreadable"));
        QCOMPARE(spoken->text(QAccessible::Name), QString("Nie udało się odczytać certyfikatu z karty."));
        QVERIFY(!spoken->state().invisible);

        // Not beside one that can be read, and not where there is none.
        flow->window->loadedCerts({}, {}, {}, qualified("anna"));
        flow->window->chooseQualifiedCertInfo();
        QVERIFY(!sentence->isVisible());
        flow->window->loadedCerts({}, {}, {}, {});
        flow->window->chooseQualifiedCertInfo();
        QVERIFY(!sentence->isVisible());
    }
    void cleanup() { flow.reset(); }

    void arrowOpensThePageOfItsContainer_data()
    {
        QTest::addColumn<QString>("subtitle");
        QTest::newRow("bArrowAuthenCert") << "Certyfikat do identyfikacji i uwierzytelniania";
        QTest::newRow("bArrowAuthorCert") << "Certyfikat do podpisu osobistego";
        QTest::newRow("bArrowPresenceCert") << "Certyfikat do potwierdzania obecności";
        QTest::newRow("bArrowQualifiedCert") << "Certyfikat kwalifikowany";
    }
    void arrowOpensThePageOfItsContainer()
    {
        QVERIFY(flow->showCard("anna"));
        flow->readersBox()->setEnabled(true);

        flow->button(QTest::currentDataTag())->click();

        QCOMPARE(flow->page(), QString("pageCertInfo"));
        QCOMPARE(flow->title(), QString("Szczegóły"));
        QTEST(flow->label("lSubTitle")->text(), "subtitle");
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(flow->widget("bWroc")->isVisible());
        QVERIFY(card(0, 0));

        flow->button("bWroc")->click();
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void doubleClickOnATileOpensThePageToo()
    {
        QVERIFY(flow->showCard("anna"));
        QEvent doubleClick(QEvent::MouseButtonDblClick);

        QCoreApplication::sendEvent(flow->widget("presenceCert"), &doubleClick);

        QCOMPARE(flow->page(), QString("pageCertInfo"));
        QCOMPARE(flow->label("lSubTitle")->text(), QString("Certyfikat do potwierdzania obecności"));
    }

    void unknownContainerHasNeitherSubtitleNorCards()
    {
        QVERIFY(flow->showCard("anna"));

        flow->window->moveToCertInfoPage(); // none was chosen yet

        QCOMPARE(flow->page(), QString("pageCertInfo"));
        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QCOMPARE(table()->rowCount(), 0);
    }

    void cardsStandTwoBesideEachOther_data()
    {
        QTest::addColumn<int>("certificates");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("rows");
        QTest::newRow("one") << 1 << 1 << 1;
        QTest::newRow("two") << 2 << 2 << 1;
        QTest::newRow("three") << 3 << 2 << 2;
    }
    void cardsStandTwoBesideEachOther()
    {
        QFETCH(int, certificates);

        showQualified(qualified("three-qualified").mid(0, certificates));

        QTEST(table()->columnCount(), "columns");
        QTEST(table()->rowCount(), "rows");
        for (int i = 0; i < table()->rowCount() * table()->columnCount(); ++i) {
            const int row = i / table()->columnCount();
            const int column = i % table()->columnCount();
            QCOMPARE(card(row, column) != nullptr, i < certificates);
            QCOMPARE(table()->columnWidth(column), 428);
            QCOMPARE(table()->rowHeight(row), 240);
        }
    }

    void threeQualifiedCertificatesFillTheirRowsFromTheLeft()
    {
        QVERIFY(flow->showCard("three-qualified"));

        flow->button("bArrowQualifiedCert")->click();

        QCOMPARE(issuer(0, 0), QString("Ostrel Podpis Kwalifikowany WZÓR, Ostrel Certyfikacja WZÓR, PL"));
        QCOMPARE(issuer(0, 1), QString("Centrum Zaufania Kwarc WZÓR, Kwarc i Synowie, Usługi Zaufania, PL"));
        QCOMPARE(issuer(1, 0), QString("Pieczęć i Podpis WZÓR, Spółdzielnia Pieczęć, PL"));
        QVERIFY(!card(1, 1));
    }

    // One value of the card with two certificates in it.
    void certificatesBehindEachOtherAreAllShown()
    {
        const QList<QByteArray> some = qualified("three-qualified");

        showQualified({ some.at(0) + some.at(1), some.at(2) });

        QCOMPARE(table()->columnCount(), 2);
        QCOMPARE(table()->rowCount(), 2);
        QVERIFY(issuer(0, 0).startsWith("Ostrel Podpis Kwalifikowany"));
        QVERIFY(issuer(0, 1).startsWith("Centrum Zaufania Kwarc"));
        QVERIFY(issuer(1, 0).startsWith("Pieczęć i Podpis"));
    }

    void otherContainersShowOneCardAtMost_data()
    {
        QTest::addColumn<QByteArray>("container");
        QTest::addColumn<int>("cards");
        QTest::newRow("bArrowAuthenCert") << QByteArray(sim::Authentication) << 1;
        QTest::newRow("bArrowAuthorCert") << QByteArray(sim::Authorization) << 1;
        QTest::newRow("bArrowPresenceCert") << QByteArray(sim::Presence) << 1;
        QTest::newRow("bArrowQualifiedCert") << QByteArray(sim::Qualified) << 3;
    }
    void otherContainersShowOneCardAtMost()
    {
        QFETCH(QByteArray, container);
        sim::Card many = *flow->world.card("anna");
        many.name = "many";
        std::vector<sim::Object> &objects = many.objects[container.toStdString()];
        objects = flow->world.card("three-qualified")->objects.at(sim::Qualified);
        QVERIFY2(flow->world.defineCard(many), flow->world.error().c_str());
        QVERIFY(flow->showCard("many"));

        flow->button(QTest::currentDataTag())->click();

        QTEST(table()->findChildren<CertWidget *>().size(), "cards");
        QVERIFY(issuer(0, 0).startsWith("Ostrel Podpis Kwalifikowany"));
    }

    void cardShowsAndSpeaksIssuerAndDays()
    {
        QVERIFY(flow->showCard("anna"));

        flow->button("bArrowAuthenCert")->click();

        const QString text =
            "Wzorcowe Centrum Certyfikacji Dowodów, Urząd Wzorów Dokumentów, Wydział Dowodów Osobistych, PL";
        QCOMPARE(issuer(0, 0), text);
        QCOMPARE(cardLabel(0, 0, "lOrganizationName")->accessibleName(), text);
        // Valid from midnight to the last second of a day in Greenwich, which is a day later in Poland.
        QCOMPARE(cardLabel(0, 0, "lValidFromVal")->text(), QString("17 października 2023"));
        QCOMPARE(cardLabel(0, 0, "lValidToVal")->text(), QString("18 października 2033"));
        const auto *from = card(0, 0)->findChild<QWidget *>("ValidFromFrame");
        const auto *to = card(0, 0)->findChild<QWidget *>("ValidToFrame");
        QCOMPARE(from->accessibleName(), QString("Ważny od: 17 października 2023"));
        QCOMPARE(to->accessibleName(), QString("Ważny do: 18 października 2033"));
        QVERIFY(card(0, 0)->findChild<QWidget *>("detailsCert")->isVisible());
    }

    // Names of what can take the focus, in the tree that a screen reader walks.
    void screenReaderFindsTheCards()
    {
        QVERIFY(flow->showCard("three-qualified"));
        flow->button("bArrowQualifiedCert")->click();

        QStringList found;
        collectNames(QAccessible::queryAccessibleInterface(table()), found);

        const QString from = "Ważny od: 12 czerwca 2023";
        const QString to = "Ważny do: 13 czerwca 2033";
        const QString button = "zobacz szczegóły certyfikatu";
        QCOMPARE(found,
                 (QStringList { "Ostrel Podpis Kwalifikowany WZÓR, Ostrel Certyfikacja WZÓR, PL", from, to, button,
                                "Centrum Zaufania Kwarc WZÓR, Kwarc i Synowie, Usługi Zaufania, PL", from, to, button,
                                "Pieczęć i Podpis WZÓR, Spółdzielnia Pieczęć, PL", from, to, button }));
    }

    void cardHasItsShadow()
    {
        QVERIFY(flow->showCard("anna"));

        flow->button("bArrowAuthenCert")->click();

        const auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(
            card(0, 0)->findChild<QWidget *>("detailsCert")->graphicsEffect());
        QVERIFY(shadow);
        QCOMPARE(shadow->blurRadius(), 15.0);
        QCOMPARE(shadow->color(), QColor(186, 187, 188, 255));
        QCOMPARE(shadow->offset(), QPointF(1, 1));
    }

    void firstCardTakesTheFocusALittleLater()
    {
        QVERIFY(flow->showCard("three-qualified"));

        flow->button("bArrowQualifiedCert")->click();

        QVERIFY(flow->window->focusWidget() != cardLabel(0, 0, "lOrganizationName"));
        QTRY_COMPARE(flow->window->focusWidget(), cardLabel(0, 0, "lOrganizationName"));
        QCOMPARE(table()->focusPolicy(), Qt::NoFocus);
    }

    void focusOfACardThatIsGoneDoesNothing()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bArrowAuthenCert")->click();

        flow->window->loadedReaders({}, "NO_CARD");

        // The focus of the message comes last, a second later.
        QTRY_COMPARE(flow->window->focusWidget(), flow->widget("lDisconnect"));
    }

    void keyboardGoesThroughTheCardsAndBringsThemIntoSight()
    {
        showQualified(qualified("odd-certificates"));
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        QTRY_COMPARE(QApplication::focusWidget(), cardLabel(0, 0, "lOrganizationName"));
        QCOMPARE(table()->rowCount(), 3);

        QStringList reached;
        for (int i = 0; i < 5 * 4; ++i) {
            QWidget *focus = QApplication::focusWidget();
            const QWidget *shown = card(i / 4 / 2, i / 4 % 2);
            QVERIFY2(shown->isAncestorOf(focus), qPrintable(QString::number(i)));
            QVERIFY2(table()->viewport()->rect().contains(shown->geometry()), qPrintable(QString::number(i)));
            reached << focus->objectName();
            QTest::keyClick(focus, Qt::Key_Tab);
        }

        const QStringList parts { "lOrganizationName", "ValidFromFrame", "ValidToFrame", "bDetailsCert" };
        QCOMPARE(reached, parts + parts + parts + parts + parts);
    }

    void cardsAreBuiltAnewAtEachEntry()
    {
        QVERIFY(flow->showCard("three-qualified"));
        flow->button("bArrowQualifiedCert")->click();
        const QPointer<QWidget> first = card(0, 0);
        const QPointer<QWidget> last = card(1, 0);
        flow->button("bWroc")->click();

        flow->button("bArrowAuthenCert")->click();

        QTRY_VERIFY(!first && !last);
        QCOMPARE(table()->columnCount(), 1);
        QCOMPARE(table()->findChildren<CertWidget *>().size(), 1);
    }

    void brokenCertificatesShowWhatCanBeShown()
    {
        QVERIFY(flow->showCard("odd-certificates"));

        flow->button("bArrowQualifiedCert")->click();

        // Six on the card, and the one that is cut off has no card.
        QCOMPARE(table()->findChildren<CertWidget *>().size(), 5);
        QCOMPARE(issuer(0, 1), QString(", Kwarc i Synowie, Usługi Zaufania, PL"));
        QVERIFY(issuer(1, 0).size() > 10000);
        QVERIFY(issuer(1, 0).startsWith("Centrum, Urząd, WWWW") && issuer(1, 0).endsWith("WWWW, PL"));
        QCOMPARE(cardLabel(1, 0, "lOrganizationName")->accessibleName(), issuer(1, 0));
        QCOMPARE(cardLabel(1, 0, "lOrganizationName")->size(), cardLabel(0, 0, "lOrganizationName")->size());
        QCOMPARE(cardLabel(1, 1, "lValidToVal")->text(), QString("01 stycznia 10000"));
        QCOMPARE(cardLabel(2, 0, "lValidFromVal")->text(), QString("02 maja 2023"));
        QCOMPARE(cardLabel(2, 0, "lValidToVal")->text(), QString());
        QCOMPARE(card(2, 0)->findChild<QWidget *>("ValidToFrame")->accessibleName(), QString("Ważny do: "));
        for (int i = 0; i < 5; ++i)
            QVERIFY(card(i / 2, i % 2)->findChild<QPushButton *>("bDetailsCert")->isEnabled());
    }

    void certificateThatIsCutOffHasNoCard()
    {
        QVERIFY(flow->showCard("odd-certificates"));

        flow->button("bArrowAuthenCert")->click();

        QCOMPARE(flow->page(), QString("pageCertInfo"));
        QCOMPARE(table()->rowCount(), 0);
        QVERIFY(flow->widget("bWroc")->isVisible());
    }

    void everyTruncationAndEveryDamagedByteIsSurvived()
    {
        const QByteArray whole = qualified("anna").first();
        QVERIFY(flow->showCard("anna"));
        for (int at = 0; at < whole.size(); ++at) {
            QByteArray damaged = whole;
            damaged[at] = static_cast<char>(~damaged[at]);
            flow->window->loadedCerts({}, {}, {}, { whole.left(at), damaged });
            flow->window->chooseQualifiedCertInfo();
            QVERIFY(table()->findChildren<CertWidget *>().size() >= 0);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    void cardWithoutAWindowIsEmpty()
    {
        const QSslCertificate certificate(qualified("anna").first(), QSsl::Der);
        CertWidget alone(nullptr, certificate, nullptr, true);

        alone.show();

        QVERIFY(alone.findChild<QWidget *>("detailsCert")->isHidden());
        QCOMPARE(alone.findChild<QLabel *>("lOrganizationName")->text(), QString("Nazwa wystawcy"));
        QVERIFY(!alone.findChild<QWidget *>("detailsCert")->graphicsEffect());
    }

    void clickAfterTheTimeOfADoubleClickOpensAnother()
    {
        flow->openWindow();
        CertWidget empty(flow->window.get(), QSslCertificate(), nullptr, false);
        const int interval = QApplication::doubleClickInterval();
        QApplication::setDoubleClickInterval(0);
        const LogCatcher log;

        // Within one millisecond, which is all of that time.
        for (int i = 0; i < 5; ++i)
            QMetaObject::invokeMethod(&empty, "openCertDetails");

        QApplication::setDoubleClickInterval(interval);
        QCOMPARE(log.count("open cert win"), 5);
    }

    void cardOfANullCertificateIsEmpty()
    {
        flow->openWindow();
        CertWidget empty(flow->window.get(), QSslCertificate(), nullptr, false);

        empty.show();

        QVERIFY(empty.findChild<QWidget *>("detailsCert")->isHidden());
        QCOMPARE(empty.findChild<QLabel *>("lOrganizationName")->text(), QString("Nazwa wystawcy"));
    }

    void nothingOfTheCardStaysWhenItGoes()
    {
        QVERIFY(flow->showCard("anna"));
        flow->button("bArrowICAO")->click();
        flow->button("bWroc")->click();
        flow->button("bArrowAuthenCert")->click();
        const QPointer<QWidget> shown = card(0, 0);
        QFile file(QDir::tempPath() + "/cert.cer");
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("DER") == 3);
        file.close();

        flow->window->loadedReaders({}, "NO_CARD");

        QTRY_VERIFY(!shown);
        QVERIFY(!file.exists());
        QCOMPARE(flow->page(), QString("pageDisconected"));
        const QStringList personal { "Anna",   "Wiśniewska",  "Zając",     "Tadeusz", "Krystyna",
                                     "KRAKÓW", "87042341229", "CAA100017", "2033",    "Wzorcowe" };
        for (const QWidget *widget : flow->window->findChildren<QWidget *>()) {
            const QStringList texts {
                widget->property("text").toString(), widget->toolTip(),   widget->accessibleName(),
                widget->accessibleDescription(),     widget->statusTip(), widget->whatsThis()
            };
            for (const QString &word : personal)
                QVERIFY2(!texts.join('\n').contains(word), qPrintable(widget->objectName() + ": " + word));
        }
    }
};

VELMOR_TEST(TestWindowCertificatesPage)
#include "tst_window_certificates_page.moc"
