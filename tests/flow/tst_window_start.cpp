#include "support/flow.h"

#include "base/settings.h"
#include "gui/gui_base.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QLineEdit>

// What the window brings along from its construction, before anybody has done anything.
class TestWindowStart : public QObject {
    Q_OBJECT

private:
    static QString told; // as an insertion, to a screen reader

    std::unique_ptr<Flow> flow;

    static void note(QAccessibleEvent *event)
    {
        if (event->type() == QAccessible::TextInserted)
            told = static_cast<QAccessibleTextInsertEvent *>(event)->textInserted();
    }
    static bool isGroup(QWidget *widget)
    {
        return QAccessible::queryAccessibleInterface(widget)->role() == QAccessible::Grouping;
    }
    static QList<QByteArray> secrets()
    {
        return { "lineActualPin", "lineNewPin", "lineRepeatPin", "lineInsertPuk", "lineNewPinPuk", "lineRepeatPinPuk" };
    }
    void useTheme(const QString &name)
    {
        Settings::instance()->setValue(SettingsKey::theme, name);
        GuiBase::instance()->load();
    }

private slots:
    void initTestCase()
    {
        Flow::setUpApplication();
        // Before the first window: that one hands on to whoever was there.
        QAccessible::installUpdateHandler(note);
    }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup()
    {
        flow.reset();
        useTheme("");
    }
    void linkInATextHasTheColourOfItsTheme_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QString>("colour");
        QTest::newRow("light") << "light"
                               << "#0f6aab";
        QTest::newRow("dark") << "dark"
                              << "#4db2f5";
        QTest::newRow("high contrast") << "highContrast"
                                       << "#4dc3ff";
    }
    void linkInATextHasTheColourOfItsTheme()
    {
        QFETCH(QString, theme);
        QFETCH(QString, colour);
        useTheme(theme);
        flow->openWindow();

        for (const char *name : { "lPukBlocked", "lPukBlocked_2" })
            QVERIFY2(flow->label(name)->text().contains(QString("<a style=\"color:%1;\" href").arg(colour)), name);
    }

    void linkThatTheKeyboardReachesIsTheDescription_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name : { "lPukBlocked", "lPukBlocked_2" })
            QTest::newRow(name) << QByteArray(name);
    }
    void linkThatTheKeyboardReachesIsTheDescription()
    {
        QFETCH(QByteArray, name);
        flow->openWindow();
        QLabel *text = flow->label(name.constData());
        for (QWidget *page = text; page != flow->window.get(); page = page->parentWidget()) {
            if (auto *pager = qobject_cast<QStackedWidget *>(page->parentWidget()))
                pager->setCurrentWidget(page);
        }

        QTest::keyClick(text, Qt::Key_Tab);

        QTRY_COMPARE(text->accessibleDescription(), QString("Dowiedz się, jak uzyskać nowy dowód osobisty"));
    }

    void sentenceBesideAWidgetIsItsDescription_data()
    {
        QTest::addColumn<QString>("sentence");
        QTest::newRow("cbCSPChoose")
            << "Mechanizm jest potrzebny niektórym aplikacjom do podpisu kwalifikowanego i może spowolnić niektóre "
               "operacje.";
        QTest::newRow("bRaport") << "Zgłoś problem na stronie pomocy. Otworzysz ją przyciskiem „Zgłoś problem”.";
        QTest::newRow("tDiagnosticsRaport") << "Skopiuj poniższe informacje do zgłoszenia problemu.";
    }
    void sentenceBesideAWidgetIsItsDescription()
    {
        flow->openWindow();

        QTEST(flow->widget(QTest::currentDataTag())->accessibleDescription(), "sentence");
    }

    void listOfReadersHasTheNameOfItsBox()
    {
        flow->openWindow();

        QCOMPARE(flow->readersBox()->view()->accessibleName(), QString("Wybór czytnika"));
    }

    void screenReaderFindsGroupsInsteadOfFramesAndTables()
    {
        flow->openWindow();

        QVERIFY(isGroup(flow->widget("footer")));
        QVERIFY(isGroup(flow->widget("tableCert")));
    }

    void screenReaderIsToldASecretAsBullets()
    {
        flow->openWindow();
        const QAccessible::UpdateHandler handler = QAccessible::installUpdateHandler(note);
        QAccessible::installUpdateHandler(handler);
        QVERIFY(handler);

        QAccessibleTextInsertEvent typed(flow->widget("lineActualPin"), 0, "1234");
        handler(&typed);

        QCOMPARE(told, QString(4, QChar(0x2022)));
    }

    void textShowsItsRingToWhoMovesByTab()
    {
        flow->openWindow();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        QWidget *text = flow->widget("lPukBlocked_4");
        QTest::mouseClick(flow->button("bHelp"), Qt::LeftButton);
        QCOMPARE(QApplication::focusWidget(), text);
        QVERIFY(!text->property("KeyFocus").toBool());

        QTest::keyClick(text, Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);

        QCOMPARE(QApplication::focusWidget(), text);
        QVERIFY(text->property("KeyFocus").toBool());
    }

    // Else the first digits would stay behind where the text and its history grow.
    void secretFieldHasItsRoomBeforeTheFirstDigit_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const QByteArray &name : secrets())
            QTest::newRow(name.constData()) << name;
    }
    void secretFieldHasItsRoomBeforeTheFirstDigit()
    {
        QFETCH(QByteArray, name);
        flow->openWindow();
        auto *field = flow->find<QLineEdit>(name.constData());
        QVERIFY(field->text().capacity() < 32);
        QFocusEvent focus(QEvent::FocusIn);

        QCoreApplication::sendEvent(field, &focus);

        QVERIFY(field->text().capacity() >= 32);
    }

    // Whichever of them is filled in last.
    void buttonOfThePinPageIsToldOfEachField()
    {
        QVERIFY(flow->showCard("anna"));
        flow->window->chooseAuthenticationCertPIN();
        for (const QByteArray &name : secrets()) {
            const bool unblocking = name.endsWith("Puk");
            QPushButton *button = flow->button(unblocking ? "bChangePinPuk" : "bChangePin");
            button->setEnabled(true);
            QVERIFY2(button->isEnabled(), name.constData());

            emit flow->find<QLineEdit>(name.constData())->textEdited({});

            QVERIFY2(!button->isEnabled(), name.constData());
        }
    }
};

QString TestWindowStart::told;

VELMOR_TEST(TestWindowStart)
#include "tst_window_start.moc"
