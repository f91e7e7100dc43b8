#include "support/dg_builder.h"
#include "support/flow.h"

#include <QFrame>

// The extended view of the holder's data, on the real window.
class TestPersonalDataPage : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    void enter()
    {
        flow->button("bArrowICAO")->click();
        QCOMPARE(flow->page(), QString("pageAllData"));
    }

    // Anna's card with this DG1 alone of all data groups, or none if it is empty.
    void showDg1Alone(const QByteArray &dg1, bool presence)
    {
        sim::Card card = *flow->world.card("anna");
        card.name = "changed";
        card.objects.erase(sim::Emrtd);
        if (!presence)
            card.objects.erase(sim::Presence);
        if (!dg1.isEmpty()) {
            sim::Object object;
            object.label = "DG1";
            object.value = dg1.toStdString();
            card.objects[sim::Emrtd] = { object };
        }
        QVERIFY2(flow->world.defineCard(card), flow->world.error().c_str());
        QVERIFY(flow->showCard("changed"));
    }

    QFrame *frame(const char *name) const { return flow->find<QFrame>(name); }
    int top(const char *name) const { return frame(name)->y(); }

    // Frames of the rows that are shown, from the top of the page down.
    QStringList shownRows() const
    {
        QMap<int, QString> rows;
        QCoreApplication::processEvents(); // the blocks lay their rows out
        for (const char *block : { "personalData_2", "personalData_3", "personalData_4" }) {
            for (const QFrame *row : frame(block)->findChildren<QFrame *>(QString(), Qt::FindDirectChildrenOnly)) {
                if (row->isVisible())
                    rows.insert(row->mapTo(flow->widget("pageAllData"), QPoint()).y(), row->objectName());
            }
        }
        return rows.values();
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void everyRowShowsAndSpeaksItsValue()
    {
        const struct {
            const char *frame;
            const char *label;
            const char *value;
            const char *accessibleName;
        } rows[] = {
            { "nameFrame_2", "lnameVal_2", "Anna Maria", "Imiona: Anna Maria" },
            { "surnameFrame_2", "lsurnameVal_2", "Wiśniewska", "Nazwisko: Wiśniewska" },
            { "familyNameFrame", "lfamilyNameVal", "Zając", "Nazwisko rodowe: Zając" },
            { "fatherNameFrame", "lfatherNameVal", "Tadeusz", "Imię ojca: Tadeusz" },
            { "motherNameFrame", "lmotherNameVal", "Krystyna", "Imię matki: Krystyna" },
            { "brthDateFrame", "lbrthDateVal", "23.04.1987", "Data urodzenia: 23.04.1987" },
            { "birthPlaceFrame", "lbirthPlaceVal", "KRAKÓW", "Miejsce urodzenia: KRAKÓW" },
            { "sexFrame", "lsexVal", "KOBIETA", "Płeć: mężczyzna" },
            { "peselFrame", "lpeselVal", "87042341229", "Pesel: 87042341229" },
            { "nationalityFrame", "lnationalityVal", "POLSKIE", "Obywatelstwo: POLSKIE" },
            { "numIdFrame_2", "lnumIdVal_2", "CAA100017", "Seria i numer dowodu: CAA100017" },
            { "expDateFrame_2", "lexpDateVal_2", "17.10.2033", "Data ważności: 17.10.2033" },
            { "issueDateFrame", "lissueDateVal", "17.10.2023", "Data wydania: 17.10.2023" },
            { "issuingAuthorityFrame", "lissuingAuthVal", "PREZYDENT MIASTA KRAKOWA",
              "Organ wydający: PREZYDENT MIASTA KRAKOWA" },
        };
        QVERIFY(flow->showCard("anna"));

        enter();

        QStringList names;
        for (const auto &row : rows) {
            names << row.frame;
            const QLabel *shown = flow->label(row.label);
            QCOMPARE(shown->parentWidget(), frame(row.frame));
            QVERIFY2(shown->isVisible(), row.label);
            QCOMPARE(shown->text(), QString(row.value));
            QCOMPARE(shown->toolTip(), QString());
            QCOMPARE(frame(row.frame)->accessibleName(), QString(row.accessibleName));
        }
        QCOMPARE(shownRows(), names);
        QCOMPARE(flow->window->focusWidget(), frame("nameFrame_2"));
    }

    void pageHasItsTitleAndCanBeLeft()
    {
        QVERIFY(flow->showCard("anna"));
        flow->readersBox()->setEnabled(true);

        enter();

        QCOMPARE(flow->title(), QString("Dane  z  velmor"));
        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(flow->widget("bWroc")->isVisible());
        flow->button("bWroc")->click();
        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(flow->widget("bWroc")->isHidden());
        QCOMPARE(flow->window->focusWidget(), flow->widget("widgetBlurICAO"));
    }

    void firstRowTakesTheFocusFromWhereverItWas()
    {
        QVERIFY(flow->showCard("anna"));
        flow->widget("bSettings")->setFocus();

        flow->window->moveToAllDataPage();

        QCOMPARE(flow->window->focusWidget(), frame("nameFrame_2"));
    }

    void blocksCloseUpAroundWhatIsMissing_data()
    {
        QTest::addColumn<QStringList>("missing");
        QTest::addColumn<QList<int>>("heights");
        QTest::addColumn<QList<int>>("tops"); // line, block, line, block
        QTest::newRow("anna") << QStringList() << QList<int> { 150, 150, 120 } << QList<int> { 190, 200, 360, 370 };
        QTest::newRow("no-dg11") << QStringList { "birthPlaceFrame" } << QList<int> { 150, 120, 120 }
                                 << QList<int> { 190, 200, 330, 340 };
        // The date of issue stays, with two full stops.
        QTest::newRow("no-dg12") << QStringList { "issuingAuthorityFrame" } << QList<int> { 150, 150, 90 }
                                 << QList<int> { 190, 200, 360, 370 };
        QTest::newRow("no-dg13") << QStringList { "familyNameFrame", "fatherNameFrame", "motherNameFrame" }
                                 << QList<int> { 60, 150, 120 } << QList<int> { 100, 110, 270, 280 };
        QTest::newRow("no-data") << QStringList { "familyNameFrame",  "fatherNameFrame", "motherNameFrame",
                                                  "birthPlaceFrame",  "sexFrame",        "peselFrame",
                                                  "nationalityFrame", "numIdFrame_2",    "issuingAuthorityFrame" }
                                 << QList<int> { 60, 30, 60 } << QList<int> { 100, 110, 150, 160 };
    }
    void blocksCloseUpAroundWhatIsMissing()
    {
        QFETCH(QStringList, missing);
        QFETCH(QList<int>, heights);
        QVERIFY(flow->showCard(QTest::currentDataTag()));

        enter();

        for (const QString &name : missing)
            QVERIFY2(flow->widget(qPrintable(name))->isHidden(), qPrintable(name));
        QCOMPARE(shownRows().size(), 14 - missing.size());
        QCOMPARE(top("personalData_2"), 30);
        QCOMPARE((QList<int> { frame("personalData_2")->height(), frame("personalData_3")->height(),
                               frame("personalData_4")->height() }),
                 heights);
        QTEST((QList<int> { top("greyLine_5"), top("personalData_3"), top("greyLine_6"), top("personalData_4") }),
              "tops");
        QVERIFY(frame("greyLine_5")->isVisible() && frame("greyLine_6")->isVisible());
    }

    void blocksKeepTheirColumn()
    {
        QVERIFY(flow->showCard("anna"));
        QList<int> before;
        const char *const moved[] = { "greyLine_5", "personalData_3", "greyLine_6", "personalData_4" };
        for (const char *name : moved)
            before << frame(name)->x();

        enter();

        for (int i = 0; i < before.size(); ++i)
            QCOMPARE(frame(moved[i])->x(), before[i]);
    }

    void cardWithoutDg11TakesTheBirthDateFromThePesel()
    {
        QVERIFY(flow->showCard("no-dg11"));

        enter();

        // Born on 14 February 2001: the PESEL begins with 012214.
        QVERIFY(flow->label("lpeselVal")->text().startsWith("012214"));
        QCOMPARE(flow->label("lbrthDateVal")->text(), QString("14.02.2001"));
    }

    void cardWithoutDg12ShowsTwoFullStopsForTheDateOfIssue()
    {
        QVERIFY(flow->showCard("no-dg12"));

        enter();

        QCOMPARE(flow->label("lissueDateVal")->text(), QString(".."));
        QVERIFY(frame("issueDateFrame")->isVisible());
    }

    void namesFromTheCertificateAreTakenOver()
    {
        QVERIFY(flow->showCard("no-dg13"));

        enter();

        QCOMPARE(flow->label("lnameVal_2")->text(), QString("Jan Stanisław"));
        QCOMPARE(flow->label("lsurnameVal_2")->text(), QString("Dąbrowski"));
        QCOMPARE(frame("surnameFrame_2")->accessibleName(), QString("Nazwisko: Dąbrowski"));
    }

    void emptyFirstBlockGoesWithItsLine()
    {
        // Without a Presence certificate the labels of the home page stay empty.
        showDg1Alone(DgBuilder::Dg1().file(), false);

        enter();

        QVERIFY(frame("personalData_2")->isHidden());
        QVERIFY(frame("greyLine_5")->isHidden());
        QCOMPARE(top("personalData_3"), 30);
        QCOMPARE(shownRows(),
                 (QStringList { "brthDateFrame", "sexFrame", "peselFrame", "nationalityFrame", "expDateFrame_2",
                                "issueDateFrame" }));
        QCOMPARE(top("greyLine_6"), 30 + 120 + 10);
        QCOMPARE(top("personalData_4"), 170);
        QCOMPARE(flow->window->focusWidget(), frame("brthDateFrame"));

        // And the block comes back with the next card.
        QVERIFY(flow->showCard("jan", "Czytnik Beta"));
        enter();
        QVERIFY(frame("personalData_2")->isVisible() && frame("greyLine_5")->isVisible());
        QCOMPARE(top("personalData_3"), 200);
    }

    void datesShowEvenWithoutAnyDataGroup()
    {
        showDg1Alone({}, false);

        enter();

        QCOMPARE(shownRows(), (QStringList { "brthDateFrame", "expDateFrame_2", "issueDateFrame" }));
        QCOMPARE(flow->label("lbrthDateVal")->text(), QString("..00"));
        QCOMPARE(flow->label("lexpDateVal_2")->text(), QString("..20"));
        QCOMPARE(flow->label("lissueDateVal")->text(), QString(".."));
        QCOMPARE(top("personalData_4"), 80);
    }

    void letterThatIsNoWordIsShownAsItStands()
    {
        DgBuilder::Dg1 dg1;
        dg1.sex = "K";
        showDg1Alone(dg1.file(), true);

        enter();

        QCOMPARE(flow->label("lsexVal")->text(), QString("K"));
        QCOMPARE(frame("sexFrame")->accessibleName(), QString("Płeć: kobieta"));
    }

    void longTextsAreCutAndSpokenWhole()
    {
        QVERIFY(flow->showCard("long-names"));

        enter();

        const QString authority = "PREZYDENT MIASTA KĘDZIERZYN-KOŹLE, WYDZIAŁ SPRAW OBYWATELSKICH";
        const QLabel *label = flow->label("lissuingAuthVal");
        QVERIFY2(label->text().endsWith("..."), qPrintable(label->text()));
        QVERIFY(authority.startsWith(label->text().chopped(3)));
        QCOMPARE(label->toolTip(), authority);
        QCOMPARE(frame("issuingAuthorityFrame")->accessibleName(), "Organ wydający: " + authority);
        // The surname is the text of the home page, which was cut there.
        QCOMPARE(flow->label("lsurnameVal_2")->text(), flow->label("lsurnameVal")->text());
        QVERIFY(flow->label("lsurnameVal_2")->text().endsWith("..."));
    }

    void photoFillsItsPlace()
    {
        QVERIFY(flow->showCard("anna"));

        enter();

        const QLabel *place = flow->label("lPhotoLarge");
        const QSize size = place->pixmap(Qt::ReturnByValue).size();
        const QSize small = flow->label("lPhoto")->pixmap(Qt::ReturnByValue).size();
        QVERIFY(size.width() >= place->width() && size.height() >= place->height());
        QVERIFY(size.width() == place->width() || size.height() == place->height());
        QVERIFY(qAbs(double(size.width()) / size.height() - double(small.width()) / small.height()) < 0.02);
        QVERIFY(!place->styleSheet().contains("76,83,88"));
    }

    void missingPhotoShowsItsPictureAndAddsABorderEachTime()
    {
        QVERIFY(flow->showCard("no-photo"));
        const QString rule = " border: 1px solid rgb(76,83,88);";
        QLabel *place = flow->label("lPhotoLarge");
        const QString before = place->styleSheet();

        enter();
        QCOMPARE(place->styleSheet(), before + rule);
        flow->button("bWroc")->click();
        enter();

        QCOMPARE(place->styleSheet(), before + rule + rule);
        QCOMPARE(place->pixmap(Qt::ReturnByValue).toImage(),
                 QIcon(":/images/no_photo.svg").pixmap(place->size()).toImage());
    }

    void pageIsBuiltAnewAtEachEntry()
    {
        QVERIFY(flow->showCard("anna"));
        enter();
        flow->button("bWroc")->click();
        QVERIFY(flow->showCard("no-dg13", "Czytnik Beta"));

        enter();

        QCOMPARE(flow->label("lnameVal_2")->text(), QString("Jan Stanisław"));
        QVERIFY(frame("familyNameFrame")->isHidden());
        QCOMPARE(flow->label("lfamilyNameVal")->text(), QString());
        QCOMPARE(frame("familyNameFrame")->accessibleName(), QString());
        QCOMPARE(frame("personalData_2")->height(), 60);
    }

    // From the home page through every row and back, without a mouse.
    void pageIsWorkedByKeyboardAlone()
    {
        QVERIFY(flow->showCard("no-dg11"));
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        QCOMPARE(QApplication::focusWidget(), flow->widget("widgetBlurICAO"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), flow->widget("bArrowICAO"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(flow->page(), QString("pageAllData"));

        QStringList reached;
        while (QApplication::focusWidget() != flow->widget("bWroc") && reached.size() < 30) {
            reached << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }

        const QStringList rows = shownRows();
        QCOMPARE(rows.size(), 13);
        QCOMPARE(reached.mid(0, rows.size()), rows);
        QCOMPARE(reached.mid(rows.size()), (QStringList { "bWarningIcon", "bReaderWarning", "bSettings", "bHelp" }));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(flow->page(), QString("pageHome"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("widgetBlurICAO"));
    }
};

VELMOR_TEST(TestPersonalDataPage)
#include "tst_personal_data_page.moc"
