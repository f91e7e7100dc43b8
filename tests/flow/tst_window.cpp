#include "support/flow.h"

#include "gui/anim_widget.h"
#include "gui/gui_base.h"

#include <QAccessible>
#include <QIcon>
#include <QLineEdit>
#include <QScreen>
#include <QStyle>
#include <QSvgRenderer>
#include <QTextBrowser>

// The window as it comes up, before there is a reader or a card.
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

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

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
};

VELMOR_TEST(TestWindow)
#include "tst_window.moc"
