#include <thread>

#include "devkit/panel_fixture.h"
#include "devkit/sim_fixture.h"
#include "look/widget_walk.h"
#include "panel/lesson.h"

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QTextBrowser>

// What the trainer's window shows, and how it is worked without a mouse.
class TestPanel : public QObject, private PanelFixture {
    Q_OBJECT

private:
    QString code(const char *word) const { return find<QLabel>(QString("lCode") + word)->text(); }
    QListWidgetItem *card(const QString &name) const
    {
        auto *list = find<QListWidget>("listCards");
        for (int row = 0; row < list->count(); ++row) {
            if (list->item(row)->data(Qt::UserRole).toString() == name)
                return list->item(row);
        }
        qFatal("no card %s", qPrintable(name));
    }
    QString spokenOf(const QString &name) const { return card(name)->data(Qt::AccessibleTextRole).toString(); }

    // Object names on the way by Tab from the row of tabs until it comes back there.
    QStringList wayByTab() const
    {
        QStringList way;
        find("tabs")->setFocus();
        do {
            way << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget()->objectName() != way.first() && way.size() < 40);
        return way;
    }

private slots:
    void initTestCase() { loadLook(); }
    void cleanup() { window.reset(); }

    void everyCardStandsInTheListWithItsPortrait()
    {
        begin("insert anna", Cards);

        QCOMPARE(find<QListWidget>("listCards")->count(), int(world.cards().size()));
        QVERIFY(world.cards().size() > 25);
        const QImage portrait = card("anna")->data(Qt::DecorationRole).value<QImage>();
        QVERIFY(portrait.width() > 100 && portrait.height() > portrait.width());
        QVERIFY(portrait != card("jan")->data(Qt::DecorationRole).value<QImage>());
        QVERIFY(card("no-photo")->data(Qt::DecorationRole).value<QImage>().isNull());
    }

    void stateOfACardIsTold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("told");
        QTest::newRow("good") << "jan"
                              << "Jan Stanisław Dąbrowski. Wszystkie kody działają.";
        QTest::newRow("in the reader") << "anna"
                                       << "Anna Maria Wiśniewska. W czytniku. Wszystkie kody działają.";
        QTest::newRow("several") << "zaneta"
                                 << "Żaneta Józefina Święcicka-Łącka. Zablokowane: podpis osobisty. Bez PIN-u: podpis "
                                    "kwalifikowany.";
        QTest::newRow("all") << "locked-puk"
                             << "Zygmunt Alojzy Ćwikła. Zablokowane: uwierzytelnianie, podpis osobisty, podpis "
                                "kwalifikowany, PUK.";
        QTest::newRow("last try") << "ewa"
                                  << "Ewa Ida Łoś. Ostatnia próba: podpis osobisty, PUK.";
        QTest::newRow("not initialized") << "not-initialized"
                                         << "Zygmunt Alojzy Ćwikła. Bez PIN-u: podpis kwalifikowany.";
        QTest::newRow("no layer") << "no-certificates"
                                  << "Zygmunt Alojzy Ćwikła. Bez warstwy elektronicznej.";
        QTest::newRow("no photo") << "no-photo"
                                  << "Ewa Ida Łoś. Wszystkie kody działają. Bez zdjęcia.";
        QTest::newRow("foreign") << "foreign"
                                 << "Obca karta. To nie jest dowód velmor. Bez zdjęcia.";
    }
    void stateOfACardIsTold()
    {
        QFETCH(QString, name);
        QFETCH(QString, told);
        begin("insert anna\ntries ewa Authorization 1\ntries ewa PUK 1", Cards);

        QCOMPARE(spokenOf(name), told);
    }

    void codesAreHiddenUntilAskedFor()
    {
        begin("insert first-pin\npin Authentication 4826", Pins);
        QCOMPARE(find<QLabel>("lHolder")->text(), QString("Ewa Ida Łoś"));
        QCOMPARE(code("Authentication"), QString(4, QChar(0x2022)));
        QCOMPARE(code("PUK"), QString(8, QChar(0x2022)));
        QCOMPARE(code("Qualified"), QString("nienadany"));

        click("cbShow");

        QCOMPARE(code("Authentication"), QString("4826"));
        QCOMPARE(code("Authorization"), QString("123456"));
        QCOMPARE(code("PUK"), QString("87654321"));
        QCOMPARE(code("Qualified"), QString("nienadany"));
    }

    void onlyWhatIsPossibleIsEnabled()
    {
        begin("insert zaneta", Pins);
        QVERIFY(find("bLockAuthentication")->isEnabled() && find("cTriesAuthentication")->isEnabled());
        QVERIFY(!find("bLockAuthorization")->isEnabled() && find("cTriesAuthorization")->isEnabled());
        QVERIFY(!find("bLockQualified")->isEnabled() && !find("cTriesQualified")->isEnabled());
        QVERIFY(!find("frameKeypad")->isEnabled());

        world.removeCard("Czytnik Alfa");

        QTRY_COMPARE(find<QLabel>("lHolder")->text(), QString("W czytniku nie ma dowodu"));
        for (const char *name : { "bLockAuthentication", "cTriesPUK", "bRestore" })
            QVERIFY2(!find(name)->isEnabled(), name);
        QVERIFY(find("cbPinpad")->isEnabled());

        world.removeReader("Czytnik Alfa");

        QTRY_COMPARE(find<QLabel>("lStatus")->text(), QString("Nie ma czytnika"));
        QVERIFY(!find("cbPinpad")->isEnabled());
    }

    void newPinHasTheDigitsOfItsContainer()
    {
        begin("readers add A pinpad\ninsert anna", ReaderAndKeypad);
        auto *line = find<QLineEdit>("lineNewPin");
        QCOMPARE(line->text(), QString("4321"));

        QTest::keyClick(line, Qt::Key_Backspace);
        QVERIFY(!find("bPadChange")->isEnabled() && find("bPadWrong")->isEnabled());
        QTest::keyClicks(line, "x99");
        QCOMPARE(line->text(), QString("4329"));
        QVERIFY(find("bPadChange")->isEnabled());
        QTest::keyClick(find("cContainer"), Qt::Key_Down);

        QCOMPARE(line->text(), QString("654321"));
    }

    void changesByOthersAreSeen()
    {
        begin("insert anna", Cards);

        QVERIFY(world.removeCard("Czytnik Alfa"));
        QVERIFY(world.insertCard("Czytnik Alfa", "ewa"));
        QVERIFY(world.setPinpad("Czytnik Alfa", true));
        QVERIFY(world.setTries("ewa", sim::Authentication, 2));
        QVERIFY(world.setDelay(77));

        QTRY_COMPARE(find<QComboBox>("cSpeed")->currentText(), QString("77 ms na polecenie"));
        QCOMPARE(find<QComboBox>("cTriesAuthentication")->currentText(), QString("2 próby"));
        QVERIFY(find<QCheckBox>("cbPinpad")->isChecked() && find("frameKeypad")->isEnabled());
        QCOMPARE(find<QLabel>("lStatus")->text(), QString("W czytniku: Ewa Ida Łoś"));
        QVERIFY(spokenOf("ewa").contains("W czytniku") && !spokenOf("anna").contains("W czytniku"));
    }

    void waitAtTheKeypadIsToldAndEndedByAClick()
    {
        SimFixture sim;
        sim.start("anna", true);
        open(ReaderAndKeypad);
        QCOMPARE(find<QLabel>("lWaits")->text(), QString("Program nie czeka na klawisze."));
        const CK_SESSION_HANDLE session = sim.open("Authentication");
        CK_RV result = 0x9999;
        std::thread caller([&] { result = sim.login(session, CKU_USER, ""); });

        const auto toldToWait = [this] { return find<QLabel>("lWaits")->text() == "Program czeka na klawisze."; };
        const bool told = QTest::qWaitFor(toldToWait, 5000);
        click("bPadChange");

        caller.join();
        QVERIFY(told);
        QCOMPARE(result, CK_RV(CKR_OK));
        QTRY_COMPARE(find<QLabel>("lWaits")->text(), QString("Klawisze czekają na program: 1."));
    }

    void lessonsTellWhatToShow()
    {
        begin("insert anna", Lessons);
        const QVector<Lesson> lessons = allLessons();
        QStringList titles;
        for (const Lesson &lesson : lessons) {
            titles << lesson.title;
            QVERIFY(lesson.paragraphs.size() >= 3);
            QVERIFY(lesson.scenario.contains("\nreset\n"));
        }
        QCOMPARE(
            titles,
            QStringList({ "Zapomniany PIN", "Pierwszy PIN", "Zablokowany PUK", "Dowód bez warstwy elektronicznej" }));

        const auto *list = find<QListWidget>("listLessons");
        QCOMPARE(list->viewport()->height(), list->count() * list->sizeHintForRow(0));
        for (int i = 0; i < lessons.size(); ++i) {
            find<QListWidget>("listLessons")->setCurrentRow(i);
            QCOMPARE(find<QLabel>("lLesson")->text(), titles[i]);
            QCOMPARE(find<QTextBrowser>("textLesson")->toPlainText().split('\n'), lessons[i].paragraphs);
        }
    }

    void lessonIsTheCommentsOfItsScenario()
    {
        const Lesson lesson = lessonOf("# Tytuł\n#\n#  Pierwszy akapit.\nreset\n# Drugi.\ninsert anna\n");

        QCOMPARE(lesson.title, QString("Tytuł"));
        QCOMPARE(lesson.paragraphs, QStringList({ "Pierwszy akapit.", "Drugi." }));
        QVERIFY(lessonOf("").title.isEmpty() && lessonOf("reset").paragraphs.isEmpty());
    }

    void tabLeadsThroughAPageInTheOrderOfReading_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<QStringList>("way");
        QTest::newRow("cards") << int(Cards) << QStringList { "tabs", "listCards" };
        QStringList pins { "tabs" };
        for (const char *word : { "Authentication", "Authorization", "Qualified", "PUK" })
            pins << QString("cTries") + word << QString("bLock") + word;
        QTest::newRow("pins") << int(Pins) << pins + QStringList { "cbShow", "bRestore" };
        QTest::newRow("reader") << int(ReaderAndKeypad)
                                << QStringList { "tabs",       "cbPinpad",     "bPadClear",   "cContainer",
                                                 "lineNewPin", "bPadChange",   "bPadUnblock", "bPadFirst",
                                                 "bPadWrong",  "bPadMismatch", "bPadCancel",  "cSpeed" };
        QTest::newRow("lessons") << int(Lessons) << QStringList { "tabs", "listLessons", "textLesson", "bPrepare" };
    }
    void tabLeadsThroughAPageInTheOrderOfReading()
    {
        QFETCH(int, page);
        QFETCH(QStringList, way);
        begin("readers add A pinpad\ninsert anna\npad cancel", Page(page));

        QCOMPARE(wayByTab(), way);
    }

    void pagesAreReachedByArrowsFromTheTabs()
    {
        begin("insert anna", Cards);
        QCOMPARE(QApplication::focusWidget(), find("tabs"));

        for (int page : { Pins, ReaderAndKeypad, Lessons }) {
            QTest::keyClick(find("tabs"), Qt::Key_Right);
            QCOMPARE(find<QTabWidget>("pages")->currentIndex(), page);
        }
    }

    void whateverTakesTheFocusHasAName()
    {
        begin("readers add A pinpad\ninsert anna", Cards);
        int seen = 0;
        for (QWidget *widget : window->findChildren<QWidget *>()) {
            const bool inside = widget->objectName().startsWith("qt_") || widget->inherits("QComboBoxPrivateContainer")
                || widget->inherits("QComboBoxListView");
            if (inside || widget->focusPolicy() == Qt::NoFocus || qobject_cast<QTabWidget *>(widget)
                || widget->inherits("QStackedWidget") || widget->inherits("QToolButton"))
                continue;
            QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(widget);
            QVERIFY2(spoken && !spoken->text(QAccessible::Name).isEmpty(), qPrintable(widget->objectName()));
            if (qobject_cast<QComboBox *>(widget))
                QVERIFY2(!spoken->text(QAccessible::Description).isEmpty(), qPrintable(widget->objectName()));
            ++seen;
        }
        QVERIFY2(seen >= 25, qPrintable(QString::number(seen)));
    }

    void nothingIsCutOrCovered_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("scenario");
        for (int page = Cards; page <= Lessons; ++page) {
            QTest::addRow("page %d", page) << page << "insert long-names\ntries Authorization 0\npinpad on";
            QTest::addRow("page %d, nothing there", page) << page << "";
        }
    }
    void nothingIsCutOrCovered()
    {
        QFETCH(int, page);
        QFETCH(QString, scenario);
        begin(scenario, Page(page));

        QCOMPARE(WidgetWalk::faults(window.get()), QStringList());
    }
};

VELMOR_TEST(TestPanel)
#include "tst_panel.moc"
