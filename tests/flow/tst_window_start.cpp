#include "support/flow.h"

#include "app/app.h"
#include "app/app_lock.h"
#include "base/ipc_msg.h"
#include "base/settings.h"
#include "gui/gui_base.h"
#include "ipc/ipc.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QGraphicsDropShadowEffect>
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
        App::instance()->unlock();
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

    void bothPlacesOfThePhotoBeginWithThePictureOfNone()
    {
        flow->openWindow();
        for (const char *name : { "lPhoto", "lPhotoLarge" }) {
            const QLabel *label = flow->label(name);
            const QPixmap wanted = QIcon(GuiBase::instance()->picture("no_photo.svg")).pixmap(label->size());

            QCOMPARE(label->pixmap(Qt::ReturnByValue).toImage(), wanted.toImage());
        }
    }

    void tilesCarryTheirShadowsAndTheHolderNone_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("blur");
        QTest::addColumn<int>("offset");
        QTest::newRow("authentication") << "widgetBlurAuthen" << 20 << 1;
        QTest::newRow("authorization") << "widgetBlurAuthor" << 20 << 1;
        QTest::newRow("qualified") << "widgetBlurQualified" << 20 << 1;
        QTest::newRow("presence") << "presenceCert" << 20 << 1;
        QTest::newRow("large photo") << "widgetLargePhoto" << 40 << 3;
    }

    void tilesCarryTheirShadowsAndTheHolderNone()
    {
        QFETCH(QString, name);
        flow->openWindow();
        auto *shadow =
            qobject_cast<QGraphicsDropShadowEffect *>(flow->widget(name.toLatin1().constData())->graphicsEffect());

        QVERIFY(shadow);
        QCOMPARE(shadow->color(), QColor(186, 187, 188));
        QTEST(int(shadow->blurRadius()), "blur");
        QFETCH(int, offset);
        QCOMPARE(shadow->offset(), QPointF(offset, offset));
        QVERIFY(!flow->widget("widgetBlurICAO")->graphicsEffect());
    }

    void shadowsOfTheButtonsAreSmallAndOnInTheLightTheme()
    {
        flow->openWindow();
        for (const char *name : { "bChangePin", "bCancel", "bChangePinPuk", "bCancel_2", "bWrocPin", "bWrocPuk" }) {
            auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(flow->widget(name)->graphicsEffect());
            QVERIFY2(shadow, name);
            QCOMPARE(shadow->blurRadius(), 10.0);
            QCOMPARE(shadow->offset(), QPointF(1, 1));
            QVERIFY2(shadow->isEnabled(), name);
        }
        for (const char *name :
             { "widgetBlurAuthen", "widgetBlurAuthor", "widgetBlurQualified", "presenceCert", "widgetLargePhoto" })
            QVERIFY2(flow->widget(name)->graphicsEffect()->isEnabled(), name);
    }

    void monitorThatRunsIsNotStartedAgain()
    {
        CommonAppLock monitor("velmor_monitor", 500);
        QVERIFY(monitor.lock());
        LogCatcher log;

        flow->openWindow();

        QCOMPARE(log.count("Monitor is running"), 1);
    }

    void destructorRemovesTheTemporaryCertificate()
    {
        flow->openWindow();
        const QString path = QDir::tempPath() + "/cert.cer";
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();

        flow->closeWindow();

        QVERIFY(!QFile::exists(path));
    }

    void ringOfAPinFieldIsMarkedAsTheFocusComes()
    {
        flow->openWindow();
        const QWidget *ring = flow->widget("fieldActualPin");
        QVERIFY(!ring->property("FocusInside").toBool());

        emit qApp->focusChanged(nullptr, flow->widget("lineActualPin"));

        QVERIFY(ring->property("FocusInside").toBool());
    }

    // This system has TLS.
    void nothingIsSaidOfTls()
    {
        const LogCatcher log;

        flow->openWindow();
        QCoreApplication::processEvents();

        QVERIFY(!log.has("SSL not supported"));
    }

    // It has come since the lock was taken; the constructor looks into the inbox before it has connected anything.
    void messageThatWasThereFirstIsTaken_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("page");
        const struct {
            const char *key;
            const char *value;
            const char *page;
        } rows[] = {
            { "help", "1", "pageHelp" },
            { "settings", "1", "pageSettings" },
            { "windowFocus", "1", "pageSettings" },
            { "readers", "0:Czytnik Alfa||", "pageSettings" },
            { "readers", "NO_CARD", "pageSettings" },
            { "diagnoseReaders", "1", "pageSettings" },
            { "checkForUpdate", "1", "pageSettings" },
            { "close", "1", "pageSettings" },
        };
        for (const auto &row : rows)
            QTest::addRow("%s %s", row.key, row.value) << QByteArray(row.key) << QByteArray(row.value) << row.page;
    }
    void messageThatWasThereFirstIsTaken()
    {
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, value);
        flow->world.insertCard("Czytnik Alfa", "anna");
        QVERIFY(App::instance()->lock());
        Ipc sibling;
        sibling.setName("velmor_monitor");
        QVERIFY(sibling.send(IpcMsg { { "to", "velmor_manager" }, { key, value } }));
        LogCatcher log;

        flow->openWindow();
        QCOMPARE(log.count("from:velmor_monitor"), 1);
        flow->window->getReadersFromMonitor();
        QVERIFY(sibling.send(IpcMsg { { "to", "velmor_manager" }, { "readers", "0:Czytnik Alfa||" } }));

        QTRY_COMPARE(log.count("from:velmor_monitor"), 2);
        QTEST(flow->page(), "page");
        QVERIFY(!flow->loaderShown());
        flow->button("bWroc")->click();
        QVERIFY(flow->waitForCard());
        QCOMPARE(flow->page(), QString("pageHome"));
    }

    void crossBeginsTheEnd()
    {
        flow->openWindow();

        flow->button("bClose")->click();

        QVERIFY(flow->loaderShown());
        QTRY_VERIFY(!flow->window->isVisible());
    }

    void errorStandsInItsLine()
    {
        flow->openWindow();

        QVERIFY(QMetaObject::invokeMethod(flow->window.get(), "setError", Q_ARG(QString, "Coś poszło nie tak")));

        QCOMPARE(flow->label("lError")->text(), QString("Coś poszło nie tak"));
    }
};

QString TestWindowStart::told;

VELMOR_TEST(TestWindowStart)
#include "tst_window_start.moc"
