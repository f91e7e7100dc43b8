#include "support/flow.h"

#include "app/app.h"
#include "base/ipc_msg.h"
#include "base/settings.h"
#include "gui/anim_widget.h"
#include "gui/gui_base.h"
#include "gui/hover_parameter.h"
#include "ipc/ipc.h"

#include <QAccessible>
#include <QFontDatabase>
#include <QIcon>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QStyle>
#include <QSvgRenderer>
#include <QTextBrowser>

// The window as it comes up, what it is made of, and the titles of its pages.
class TestWindow : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    static QString link(const QString &document, const QString &title)
    {
        const QString path = VELMOR_TEST_ROOT + document;
        return "<a href='file:///" + path.mid(path.startsWith('/') ? 1 : 0) + "' style='color:#2b9eeb;'>" + title
            + "</a>";
    }
    static void useTheme(const QString &name)
    {
        Settings::instance()->setValue(SettingsKey::theme, name);
        GuiBase::instance()->load();
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup()
    {
        flow.reset();
        useTheme("");
    }

    void windowIsFramelessAndTransparentAroundItsFrame()
    {
        flow->openWindow();

        const int flags = 0x4901; // window, fixed size, frameless, with a minimise button
        QCOMPARE(int(flow->window->windowFlags()) & flags, flags);
        QVERIFY(flow->window->testAttribute(Qt::WA_TranslucentBackground));
        QCOMPARE(flow->widget("mainFrame")->size(), QSize(900, 697));
        QCOMPARE(flow->window->size(), QSize(940, 717));
        QCOMPARE(flow->widget("mainFrame")->mapTo(flow->window.get(), QPoint(0, 0)), QPoint(20, 0));
        QCOMPARE(flow->widget("header")->height(), 80);
    }

    void titleVersionAndLinksAreSetAtTheStart()
    {
        flow->openWindow();

        QCOMPARE(flow->title(), QString("velmor Menedżer "));
        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QCOMPARE(flow->label("lMainTitle")->geometry(), QRect(35, 25, 422, 31));
        QCOMPARE(flow->label("lVersion")->text(), QString("Wersja aplikacji: <b>4.3.5</b>"));
        QCOMPARE(flow->label("lGuide")->text(), link("/statics/instrukcja.html", "Instrukcja"));
        QCOMPARE(flow->label("lLicense")->text(), link("/Licenses/license.html", "Umowa  Licencyjna"));
        QCOMPARE(flow->label("lChangelog")->text(), link("/statics/historia_zmian.html", "Historia Zmian"));
        QCOMPARE(flow->find<QTextBrowser>("tDiagnosticsRaport")->document()->defaultStyleSheet(),
                 QString("a { color:#2c9eeb; font-weight:bold; }"));
        QVERIFY(!flow->label("lError")->isHidden());
        QCOMPARE(flow->label("lError")->text(), QString());
    }

    void windowIsDressedInItsThemesStyle()
    {
        flow->openWindow();

        const QString style = GuiBase::instance()->file("styles-window.css");
        QVERIFY(!style.isEmpty());
        QCOMPARE(flow->widget("mainFrame")->styleSheet(), style);
    }

    void fontAndWordsOfTheToolkitAreItsOwn()
    {
        flow->openWindow();

        QVERIFY(QFontDatabase().families().contains("Poppins"));
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Close"), QString("Zamknij"));
    }

    void windowHasTheIconOfTheProgram()
    {
        flow->openWindow();

        const QImage icon(":/icons/Manager.iconset/Manager.ico");
        QVERIFY(!icon.isNull());
        QCOMPARE(flow->window->windowIcon().pixmap(icon.size()).toImage(), QPixmap::fromImage(icon).toImage());
    }

    void windowStandsInTheMiddleOfItsScreen()
    {
        flow->openWindow();

        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(flow->window->geometry(),
                 QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(940, 717), screen));
    }

    void familyIsLookedForOnce()
    {
        const LogCatcher log;

        flow->openWindow();

        // There is none in the tree of the tests.
        QCOMPARE(log.count("runApp(), application: *monitor not found"), 1);
        QCOMPARE(log.count("Application velmor_monitor could not be found"), 1);
        QCOMPARE(log.count("Checking for Kzr update"), 1);
    }

    void workerAnswers()
    {
        flow->openWindow();
        const LogCatcher log;

        emit flow->window->loadSsl();

        QTRY_VERIFY(log.has("SSL loaded"));
    }

    void animationsAreThere_data()
    {
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("loader") << QByteArray("loadingGif");
        QTest::newRow("photo") << QByteArray("lPhoto");
    }

    void animationsAreThere()
    {
        QFETCH(QByteArray, place);
        flow->openWindow();

        const auto *picture = flow->label(place.constData())->findChild<AnimSvgWidget *>();
        QVERIFY(picture);
        QVERIFY(picture->renderer()->isValid());
        QCOMPARE(picture->renderer()->framesPerSecond(), 10);
    }

    // Its own accessible name is kept for what was wrong with a repetition.
    void repetitionIsNamedByALabelThatNobodySees()
    {
        flow->openWindow();
        auto *field = flow->find<QLineEdit>("lineRepeatPin");

        QCOMPARE(field->accessibleName(), QString());
        QCOMPARE(QAccessible::queryAccessibleInterface(field)->text(QAccessible::Name), QString("Powtórz nowy PIN"));
        for (const QLabel *label : field->parentWidget()->findChildren<QLabel *>()) {
            if (label->buddy() == field)
                QVERIFY(label->isHidden());
        }
    }

    // Drawn anew from their files, at the size that the form gives them.
    void fixedPicturesAreDrawnInTheirDesignSize_data()
    {
        QTest::addColumn<QString>("label");
        for (const char *name : { "lfooter", "lostrel", "lno_connection", "lpinpad", "lchange_card", "lPinPadImg_2" })
            QTest::newRow(name) << name;
    }
    void fixedPicturesAreDrawnInTheirDesignSize()
    {
        QFETCH(QString, label);
        flow->openWindow();

        const QLabel *picture = flow->label(qPrintable(label));
        QVERIFY(!picture->property("pixmapSize").toSize().isEmpty());
        QCOMPARE(picture->pixmap(Qt::ReturnByValue).size(), picture->property("pixmapSize").toSize());
    }

    void fixedPicturesAreThoseOfTheTheme_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("file");
        const struct {
            const char *label;
            const char *file;
        } rows[] = {
            { "lfooter", "footer.svg" },
            { "lostrel", "ostrel.svg" },
            { "lno_connection", "no_connection.svg" },
            { "lpinpad", "pinpad.svg" },
            { "lchange_card", "change_card.svg" },
            { "lPinPadImg_2", "pinpad.svg" },
        };
        for (const char *theme : { "dark", "highContrast" }) {
            for (const auto &row : rows)
                QTest::addRow("%s, %s", theme, row.label) << theme << row.label << row.file;
        }
    }
    void fixedPicturesAreThoseOfTheTheme()
    {
        QFETCH(QString, theme);
        QFETCH(QString, label);
        QFETCH(QString, file);
        useTheme(theme);
        flow->openWindow();

        const QLabel *picture = flow->label(qPrintable(label));
        const QSize size = picture->property("pixmapSize").toSize();
        const auto drawn = [&size](const QString &path) {
            QFile svg(path);
            return svg.open(QIODevice::ReadOnly) ? GuiBase::renderSvg(svg.readAll(), size).toImage() : QImage();
        };
        const QString own = ":/themes/" + QString(theme == "dark" ? "dark/" : "hc/") + file;
        QVERIFY(!drawn(own).isNull());
        QVERIFY(drawn(own) != drawn(":/images/" + file));
        QCOMPARE(picture->pixmap(Qt::ReturnByValue).toImage(), drawn(own));
    }

    void widgetsThatWaitForTheirTimeAreHidden()
    {
        flow->openWindow();
        for (const char *name : { "bWroc", "lNewPinInfo", "lPinInfoPuk", "lNewPinInfoPuk", "lActualPinInfo",
                                  "lRepeatPinInfo", "bArrowICAO", "bUpdate", "bUpdateArrow", "warningFrame" })
            QVERIFY2(flow->widget(name)->isHidden(), name);
    }

    void pagesStandInTheirOrder()
    {
        flow->openWindow();
        const auto *pager = flow->find<QStackedWidget>("pager");
        const QStringList pages { "pageHome",        "pageAllData",      "pageCertInfo",
                                  "pageChangePin",   "pageUnblockPin",   "pageCorrectChange",
                                  "pageDisconected", "pageBlockedPuk_2", "pageNoElectricLayer",
                                  "pageSettings",    "pageHelp",         "pageIntegration" };
        QCOMPARE(pager->count(), pages.size());
        for (int i = 0; i < pages.size(); ++i)
            QCOMPARE(pager->widget(i)->objectName(), pages[i]);
        QCOMPARE(flow->find<QStackedWidget>("pagerBlockedPuk")->currentWidget()->objectName(), QString("pageValidPuk"));
        QCOMPARE(flow->find<QStackedWidget>("pagerPinPadOrApp")->currentIndex(), 0);
        QCOMPARE(flow->find<QStackedWidget>("pagerPinOrPinPadPuk")->currentIndex(), 0);
    }

    void messagesArriveThroughTheSegmentOfTheLock()
    {
        QVERIFY(App::instance()->lock());
        flow->openWindow();
        Ipc sibling;
        sibling.setName("velmor_monitor");
        LogCatcher log;
        QVERIFY(sibling.send(IpcMsg { { "to", "velmor_manager" }, { "readers", "NO_CARD" } }));
        QTRY_COMPARE(flow->readersBox()->currentText(), QString("brak karty w czytniku"));
        QVERIFY(log.has("recv from:velmor_monitor, readers:NO_CARD, to:velmor_manager"));
        flow->closeWindow();
        App::instance()->unlock();
    }

    void drawingStandsForThePhotoInEachTheme_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<QByteArray>("place");
        QTest::addColumn<QString>("file");
        for (const char *place : { "lPhoto", "lPhotoLarge" }) {
            QTest::addRow("light, %s", place) << "light" << QByteArray(place) << ":/images/no_photo.svg";
            QTest::addRow("dark, %s", place) << "dark" << QByteArray(place) << ":/themes/dark/no_photo.svg";
        }
    }
    void drawingStandsForThePhotoInEachTheme()
    {
        QFETCH(QString, theme);
        QFETCH(QByteArray, place);
        QFETCH(QString, file);
        useTheme(theme);
        flow->openWindow();

        const QLabel *photo = flow->label(place.constData());
        const QImage drawing = QIcon(file).pixmap(photo->size()).toImage();
        QVERIFY(!drawing.isNull());
        QCOMPARE(photo->pixmap(Qt::ReturnByValue).toImage(), drawing);
    }

    void settingsPageShowsTheStoredOptions()
    {
        Settings::instance()->setValue("hideCheckboxCANRemember", true);
        Settings::instance()->setValue("useCSPforRSA", false);
        flow->openWindow();
        QVERIFY(flow->find<QAbstractButton>("cbCANStorage")->isChecked());
        QVERIFY(!flow->find<QAbstractButton>("cbCSPChoose")->isChecked());

        flow->find<QAbstractButton>("cbCSPChoose")->setChecked(true);
        flow->button("bSettings")->click();
        QVERIFY(!flow->find<QAbstractButton>("cbCSPChoose")->isChecked());
        QCOMPARE(flow->title(), QString("Ustawienia"));
        QVERIFY(flow->widget("bWroc")->isHidden());
        QVERIFY(flow->widget("bSettings")->isEnabled());
        Settings::instance()->setValue("hideCheckboxCANRemember", false);
    }

    void hoverOfTheTilesGoesWithTheWindow()
    {
        flow->openWindow();
        const QPointer<HoverParameter> hover = flow->window->findChild<HoverParameter *>();
        QVERIFY(hover);

        flow->closeWindow();

        QVERIFY(!hover);
    }
};

VELMOR_TEST(TestWindow)
#include "tst_window.moc"
