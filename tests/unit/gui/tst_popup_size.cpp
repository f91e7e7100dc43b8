#include "base/settings.h"
#include "gui/gui_base.h"
#include "gui/popup.h"
#include "shared.h"
#include "support/picture_difference.h"
#include "support/testmain.h"
#include "tst_popup_parts.h"

#include <QGraphicsDropShadowEffect>
#include <QLayout>
#include <QScreen>

using namespace PopupParts;

namespace {

// A window manager with an opinion of its own about the size of a window.
class StubbornManager : public QObject {
public:
    explicit StubbornManager(QWidget *watched) : window(watched) { window->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Resize && window->size() != given)
            window->resize(given);
        return false;
    }

    const QSize given { 777, 666 };

private:
    QWidget *window;
};

} // namespace

// How large a dialog becomes that finds its size by itself, and what it says of a size that it did not get.
class TestPopupSize : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
        QCOMPARE(QGuiApplication::primaryScreen()->logicalDotsPerInch(), 96.0);
    }

    void init() { Settings::instance()->setValue("theme", "light"); }

    void aSizeThatItDoesNotGetIsLogged()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(320, 110);
        const StubbornManager manager(&popup);
        LogCatcher log;

        popup.show(400, 150);

        const QString frame = "430 240"; // 30 more, and the header of 60
        QVERIFY2(log.has("show size: " + frame), qPrintable(log.text()));
        QCOMPARE(log.count("Resize window failed:"), 1);
        const QString line = log.lines().filter("Resize window failed:").first();
        const QRegularExpression form("^Resize window failed: QSize\\(777, 666\\) *, expected: QSize\\(470, 280\\) *, "
                                      "content size: QSize\\(400, 150\\)$");
        QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
        QVERIFY(popup.isVisible());
    }

    void ownDialogsAreAsLargeAsTheirContent_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("buttons");
        QTest::newRow("one button") << "Jeden" << int(QDialogButtonBox::Ok);
        QTest::newRow("no button") << "Jeden" << int(QDialogButtonBox::NoButton);
        QTest::newRow("two buttons") << "Jeden" << int(QDialogButtonBox::Yes | QDialogButtonBox::No);
        QTest::newRow("two buttons below a long text") << "Jeden jeden jeden jeden jeden jeden jeden jeden jeden"
                                                       << int(QDialogButtonBox::Yes | QDialogButtonBox::No);
        QTest::newRow("informative") << "Jeden<informative>Dwa" << int(QDialogButtonBox::Ok);
    }
    void ownDialogsAreAsLargeAsTheirContent()
    {
        QFETCH(QString, text);
        QFETCH(int, buttons);
        const auto standard = QDialogButtonBox::StandardButtons(buttons);
        const QSize content = contentOf(text, standard);

        const QSize frame = frameShownFor(text, standard);

        QCOMPARE(frame, content + QSize(30, 60 + 30));
    }

    // The content knows nothing of the footer's margins, so three buttons below a short text would be cut.
    void manyButtonsMakeAShortDialogWider()
    {
        const auto standard = QDialogButtonBox::Yes | QDialogButtonBox::No | QDialogButtonBox::Cancel;
        const QSize content = contentOf("Jeden", standard);

        const QSize frame = frameShownFor("Jeden", standard);

        QVERIFY2(frame.width() > content.width() + 30, qPrintable(QString::number(frame.width())));
        QCOMPARE(frame.height(), content.height() + 60 + 30);
        QVERIFY(buttonsAreWhole);
        QCOMPARE(frame.width(), widthForButtons);
    }

    void aLongTitleMakesAShortDialogWider()
    {
        int given = 0;
        int needed = 0;
        whenShown([&](Popup &shown) {
            QCoreApplication::processEvents();
            given = label(shown, "lMainTitle")->width();
            needed = label(shown, "lMainTitle")->sizeHint().width();
            shown.done(0);
        });

        Popup::information(nullptr, QString("Zamykanie aplikacji ").repeated(2), "Jeden", QDialogButtonBox::Ok);

        QVERIFY2(given >= needed, qPrintable(QString("%1 < %2").arg(given).arg(needed)));
    }

    // A message of one line on a dense screen.
    void contentIsAsHighAsItsIcon()
    {
        Popup popup;
        popup.setIconMessage(Popup::Warning, "Jeden", QDialogButtonBox::NoButton);
        popup.show(300, 100);
        popup.guiScale(192);
        popup.setIconMessage(Popup::Warning, "Jeden", QDialogButtonBox::NoButton);
        QVERIFY(label(popup, "lText")->height() < 80);

        QCOMPARE(popup.contentSize().height(), 80);
    }

    void aSmallerSizeIsTakenToo()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(400, 150);
        const LogCatcher log;

        popup.show(320, 120);

        QVERIFY2(!log.has("Resize window failed"), qPrintable(log.text()));
        QCOMPARE(popup.size(), QSize(320 + 30 + 40, 120 + 60 + 30 + 40));
    }

    // At 96 dots per inch.
    void aCallersOwnSizeStands_data()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("narrow") << 200;
        // With the margins for the shadow on both sides.
        QTest::newRow("as wide as the screen")
            << QGuiApplication::primaryScreen()->availableGeometry().width() - 2 * 20 - 30;
    }
    void aCallersOwnSizeStands()
    {
        QFETCH(int, width);
        Popup popup;
        popup.setMessage("Information", QString("Jeden<br>").repeated(20), QDialogButtonBox::Ok);

        popup.show(width, 20);

        QCOMPARE(find<QWidget>(popup, "mainFrame")->size(), QSize(width + 30, 20 + 60 + 30));
    }

    void aCustomWidgetHasTheRoomThatItNeeds()
    {
        Popup popup;
        auto *custom = new QWidget;
        custom->setFixedSize(300, 80);
        popup.setCustomWidget(custom);
        popup.show(200, 10);

        popup.guiScale(192);

        const auto *frame = find<QWidget>(popup, "mainFrame");
        QCOMPARE(custom->minimumSize(), QSize(600, 160));
        // Margins of 30 on both sides, and nothing besides.
        QCOMPARE(frame->contentsRect().width(), 600 + 2 * 30);
        QCOMPARE(frame->contentsRect().height(), frame->layout()->minimumSize().height());
    }

    void shownAgainItComesToTheFront()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));

        popup.show(300, 100);

        QVERIFY(QTest::qWaitForWindowActive(&popup));
    }

    // The corners of the themes' frames have this radius.
    void shadowHasTheFramesCorners()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);
        QCoreApplication::processEvents();
        const QImage own = popup.grab().toImage();

        GuiBase::shadowSet(find<QWidget>(popup, "mainFrame"), 20, 12);

        QCOMPARE(popup.grab().toImage(), own);
    }

    void shadowLooksLikeTheToolkitsOwn()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);
        QCoreApplication::processEvents();
        const QImage own = popup.grab().toImage();
        auto *frame = find<QWidget>(popup, "mainFrame");
        const auto *drawn = qobject_cast<QGraphicsDropShadowEffect *>(frame->graphicsEffect());
        auto *toolkits = new QGraphicsDropShadowEffect;
        toolkits->setColor(drawn->color());
        toolkits->setBlurRadius(drawn->blurRadius());
        toolkits->setOffset(drawn->offset());

        frame->setGraphicsEffect(toolkits);

        QCOMPARE(differenceInGrey(own, popup.grab().toImage(), 5), QString());
    }

    void changedClassIsSeenAtOnce()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);
        const QLabel *text = label(popup, "lText");
        const QColor error("#EA0449"); // of the light theme
        QVERIFY(text->palette().color(text->foregroundRole()) != error);

        popup.setMessage("Critical", "Jeden", QDialogButtonBox::Ok);

        QCOMPARE(text->palette().color(text->foregroundRole()), error);
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        QVERIFY(text->palette().color(text->foregroundRole()) != error);
    }

    void theCrossIsAsLargeAsTheProductWants_data()
    {
        QTest::addColumn<QString>("theme");
        for (const char *theme : { "light", "dark", "highContrast" })
            QTest::newRow(theme) << theme;
    }
    void theCrossIsAsLargeAsTheProductWants()
    {
        QFETCH(QString, theme);
        Settings::instance()->setValue("theme", theme);
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);

        popup.show(300, 100);

        QCOMPARE(find<QPushButton>(popup, "bClose")->size(), QSize(40, 40));
        popup.guiScale(192);
        QCOMPARE(find<QPushButton>(popup, "bClose")->size(), QSize(80, 80));
    }

private:
    bool buttonsAreWhole = false;
    int widthForButtons = 0; // of the frame, with the margins of the footer

    static QSize contentOf(const QString &text, QDialogButtonBox::StandardButtons buttons)
    {
        Popup popup;
        popup.setIconMessage(Popup::Information, text, buttons);
        return popup.contentSize();
    }

    QSize frameShownFor(const QString &text, QDialogButtonBox::StandardButtons buttons)
    {
        QSize size;
        whenShown([&](Popup &shown) {
            size = find<QWidget>(shown, "mainFrame")->size();
            buttonsAreWhole = true;
            for (QPushButton *button : find<QDialogButtonBox>(shown, "buttonBox")->findChildren<QPushButton *>())
                buttonsAreWhole = buttonsAreWhole && button->width() >= button->sizeHint().width();
            const auto *frame = find<QWidget>(shown, "mainFrame");
            const int border = frame->width() - frame->contentsRect().width();
            widthForButtons = find<QDialogButtonBox>(shown, "buttonBox")->sizeHint().width() + 2 * 30 + border;
            shown.done(0);
        });
        Popup::information(nullptr, "", text, buttons);
        return size;
    }
};

VELMOR_TEST(TestPopupSize)
#include "tst_popup_size.moc"
