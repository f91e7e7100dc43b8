#include "gui/gui_base.h"
#include "gui/popup.h"
#include "shared.h"
#include "support/testmain.h"

#include <QGraphicsDropShadowEffect>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QSvgWidget>

namespace {

// Higher than what stands in it, so that scaling need not make room.
constexpr QSize content(320, 150);
constexpr QSize frameSize(320 + 30, 150 + 60 + 30);
constexpr QSize outerSize(320 + 30 + 40, 150 + 60 + 30 + 40);

QWidget *part(const Popup &popup, const char *name)
{
    return popup.findChild<QWidget *>(name);
}

QLayout *layoutOf(const Popup &popup, const char *name)
{
    return popup.findChild<QLayout *>(name);
}

QPushButton *button(const Popup &popup, QDialogButtonBox::StandardButton code)
{
    return popup.findChild<QDialogButtonBox *>("buttonBox")->button(code);
}

int spacerWidth(const Popup &popup)
{
    const QLayout *layout = layoutOf(popup, "textAndIconLayout");
    for (int i = 0; i < layout->count(); ++i) {
        if (layout->itemAt(i)->spacerItem())
            return layout->itemAt(i)->spacerItem()->sizeHint().width();
    }
    return -1;
}

int pixelSize(QWidget *widget)
{
    widget->ensurePolished();
    return widget->font().pixelSize();
}

void setUp(Popup &popup)
{
    popup.setIconMessage(Popup::Warning, "Jeden<br>Dwa<informative>Trzy", QDialogButtonBox::Yes | QDialogButtonBox::No);
}

} // namespace

class TestPopupLayout : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
        QCOMPARE(QGuiApplication::primaryScreen()->logicalDotsPerInch(), 96.0);
    }

    void contentSizeAddsUpWhatIsThere_data()
    {
        QTest::addColumn<int>("icon");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("buttons");

        QTest::newRow("text") << 0 << "Jeden" << 0;
        QTest::newRow("icon") << 2 << "Jeden" << 0;
        QTest::newRow("icon beside a tall text") << 2 << "1<br>2<br>3<br>4<br>5" << 0;
        QTest::newRow("informative") << 0 << "Jeden<informative>Dwa" << 0;
        QTest::newRow("wide informative") << 0 << "a<informative>" + QString("Dwa i trzy ").repeated(12) << 0;
        QTest::newRow("button") << 0 << "Jeden" << int(QDialogButtonBox::Ok);
        QTest::newRow("all") << 1 << "Jeden<informative>Dwa" << int(QDialogButtonBox::Yes | QDialogButtonBox::No);
        QTest::newRow("many buttons") << 0 << "a" << 0x3fec00;
    }

    void contentSizeAddsUpWhatIsThere()
    {
        QFETCH(int, icon);
        QFETCH(QString, text);
        QFETCH(int, buttons);
        Popup popup;
        popup.setIconMessage(icon, text, QDialogButtonBox::StandardButtons(buttons));

        const QSize size = popup.contentSize();

        QWidget *box = part(popup, "buttonBox");
        for (QWidget *one : { part(popup, "lText"), part(popup, "lInformativeText"), box })
            one->adjustSize();
        int width = part(popup, "lText")->width();
        int height = part(popup, "lText")->height();
        if (icon != 0) {
            width += layoutOf(popup, "textAndIconLayout")->spacing() + 40;
            height = qMax(height, 40);
        }
        if (text.contains("informative")) {
            width = qMax(width, part(popup, "lInformativeText")->width());
            height += part(popup, "lInformativeText")->height() + 0;
        }
        width += 15 + 15;
        if (buttons != 0) {
            width = qMax(width, box->width());
            height += box->height() + 15 + 15;
        }
        QCOMPARE(size, QSize(width, height));
    }

    void frameStandsInATransparentMargin()
    {
        Popup popup;
        setUp(popup);
        LogCatcher log;

        popup.show(content.width(), content.height());

        QWidget *frame = part(popup, "mainFrame");
        QCOMPARE(frame->size(), frameSize);
        QCOMPARE(frame->minimumSize(), frameSize);
        QCOMPARE(frame->maximumSize(), frameSize);
        QCOMPARE(frame->property("sizeBeforeScaling"), QVariant(frameSize));
        QCOMPARE(frame->pos(), QPoint(20, 20));
        QCOMPARE(popup.size(), outerSize);
        QCOMPARE(popup.minimumSize(), outerSize);
        QCOMPARE(popup.layout()->contentsMargins(), QMargins(20, 20, 20, 20));
        QCOMPARE(part(popup, "lMainTitle")->height(), 42);
        QVERIFY(log.has("show size: 350 240"));
        QVERIFY(!log.has("Resize window failed"));
    }

    void frameCastsAShadow()
    {
        Popup popup;
        setUp(popup);

        popup.show(content.width(), content.height());

        auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(part(popup, "mainFrame")->graphicsEffect());
        QVERIFY(shadow);
        QCOMPARE(shadow->blurRadius(), 20.0);
        QCOMPARE(shadow->offset(), QPointF(3, 3));
    }

    void theShadowIsSeenBesideTheFrame()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        QCoreApplication::processEvents();

        QImage image(popup.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        popup.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);

        const QRect frame = part(popup, "mainFrame")->geometry();
        const int middle = frame.center().y();
        QCOMPARE(qAlpha(image.pixel(frame.left() + 5, middle)), 255);
        for (int beside : { 1, 2, 5 }) {
            const int alpha = qAlpha(image.pixel(frame.right() + beside, middle));
            QVERIFY2(alpha > 10 && alpha < 200, qPrintable(QString("%1 beside the frame").arg(alpha)));
        }
        QVERIFY(qAlpha(image.pixel(image.width() - 1, middle)) < 40);
    }

    void windowIsFramelessAndTransparent()
    {
        Popup popup;
        setUp(popup);

        popup.show(content.width(), content.height());

        QVERIFY(popup.windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(popup.windowFlags().testFlag(Qt::NoDropShadowWindowHint));
        QVERIFY(popup.testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(!part(popup, "bClose")->hasFocus());
    }

    // It was ended by its cross, with the keyboard.
    void shownAgainItHasNoFocusOnItsCross()
    {
        Popup popup;
        setUp(popup);
        part(popup, "bClose")->setFocus();

        popup.show(content.width(), content.height());

        QVERIFY(popup.focusWidget() != part(popup, "bClose"));
    }

    void standsInTheMiddleOfItsParent()
    {
        QWidget window;
        window.setGeometry(100, 50, 600, 500);
        Popup popup(&window, "");
        setUp(popup);

        popup.show(content.width(), content.height());

        QCOMPARE(popup.geometry(), QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, outerSize, window.geometry()));
    }

    void showingAgainKeepsItsPlaceAndSize()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        const QRect before = popup.geometry();

        popup.show(content.width(), content.height());

        QVERIFY(popup.isVisible());
        QCOMPARE(popup.geometry(), before);
    }

    void buttonShadowsAreTheProductsChoice_data()
    {
        QTest::addColumn<bool>("wanted");
        QTest::newRow("wanted") << true;
        QTest::newRow("not wanted") << false;
    }

    void buttonShadowsAreTheProductsChoice()
    {
        QFETCH(bool, wanted);
        Popup popup;
        popup.setProperty("shadowButtons", wanted);
        setUp(popup);

        popup.show(content.width(), content.height());

        for (auto code : { QDialogButtonBox::Yes, QDialogButtonBox::No }) {
            auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(button(popup, code)->graphicsEffect());
            QCOMPARE(shadow != nullptr, wanted);
            if (wanted) {
                QCOMPARE(shadow->blurRadius(), 10.0);
                QCOMPARE(shadow->offset(), QPointF(1, 1));
            }
        }
    }

    void aHiddenDialogIgnoresADensityChange()
    {
        Popup popup;
        setUp(popup);
        QSignalSpy scaled(&popup, &Popup::logicalDotsPerInchChanged);

        popup.guiScale(192);

        QCOMPARE(scaled.size(), 0);
        QVERIFY(!part(popup, "header")->property("heightBeforeScaling").isValid());

        popup.show(content.width(), content.height());
        QCOMPARE(scaled.size(), 1);
        QCOMPARE(scaled.last().first().toDouble(), 96.0);

        popup.close();
        popup.guiScale(192);
        QCOMPARE(scaled.size(), 1);
        QCOMPARE(part(popup, "header")->height(), 60);
    }

    void densityScalesEverything()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        const QSize close = part(popup, "bClose")->size();
        const QSize yes = button(popup, QDialogButtonBox::Yes)->size();
        const int footer = part(popup, "footer")->height();
        const int title = pixelSize(part(popup, "lMainTitle"));
        const int text = pixelSize(part(popup, "lText"));
        const int note = pixelSize(part(popup, "lInformativeText"));
        const int caption = pixelSize(button(popup, QDialogButtonBox::Yes));
        const QMargins header = part(popup, "header")->layout()->contentsMargins();
        QVERIFY(title > 0 && text > 0 && note > 0 && caption > 0);
        QSignalSpy scaled(&popup, &Popup::logicalDotsPerInchChanged);
        LogCatcher log;

        popup.guiScale(192);
        QCoreApplication::processEvents(); // sizes must outlive the layouts' own opinion

        QCOMPARE(part(popup, "mainFrame")->size(), frameSize * 2);
        QCOMPARE(part(popup, "header")->height(), 120);
        QCOMPARE(part(popup, "footer")->height(), footer * 2);
        QCOMPARE(part(popup, "header")->layout()->contentsMargins(), header * 2);
        QCOMPARE(part(popup, "footer")->layout()->contentsMargins(), QMargins(60, 10, 60, 30));
        QCOMPARE(part(popup, "bClose")->size(), close * 2);
        QCOMPARE(pixelSize(part(popup, "lMainTitle")), title * 2);
        QCOMPARE(pixelSize(part(popup, "lText")), text * 2);
        QCOMPARE(pixelSize(part(popup, "lInformativeText")), note * 2);
        QCOMPARE(layoutOf(popup, "contentLayout")->contentsMargins(), QMargins(30, 30, 30, 30));
        QCOMPARE(spacerWidth(popup), 30);
        QCOMPARE(part(popup, "lIcon")->size(), QSize(80, 80));
        QCOMPARE(part(popup, "lIcon")->findChild<QSvgWidget *>()->size(), QSize(80, 80));
        for (auto code : { QDialogButtonBox::Yes, QDialogButtonBox::No })
            QCOMPARE(pixelSize(button(popup, code)), caption * 2);
        QCOMPARE(button(popup, QDialogButtonBox::Yes)->size(), yes * 2);
        QVERIFY(log.has("scale 2"));
        QCOMPARE(scaled.size(), 1);
        QCOMPARE(scaled.first().first().toDouble(), 192.0);
    }

    void aButtonThatIsNotSeenKeepsItsSize()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        button(popup, QDialogButtonBox::No)->hide();
        const QSize no = button(popup, QDialogButtonBox::No)->size();
        const QSize yes = button(popup, QDialogButtonBox::Yes)->size();

        popup.guiScale(192);

        QCOMPARE(button(popup, QDialogButtonBox::No)->size(), no);
        QCOMPARE(button(popup, QDialogButtonBox::Yes)->size(), yes * 2);
    }

    void margins15AndTheHeaderAreCutAndTheFrameIsRounded()
    {
        Popup popup;
        setUp(popup);
        popup.show(321, 150);

        popup.guiScale(120); // 1.25: 15 gives 18.75, 351 gives 438.75

        QCOMPARE(layoutOf(popup, "contentLayout")->contentsMargins(), QMargins(18, 18, 18, 18));
        QCOMPARE(spacerWidth(popup), 18);
        QCOMPARE(part(popup, "mainFrame")->size(), QSize(439, 300));
    }

    void theWindowFollowsItsFrameAndKeepsItsMiddle_data()
    {
        QTest::addColumn<double>("dpi");
        QTest::addColumn<QSize>("frame");
        QTest::newRow("larger") << 192.0 << frameSize * 2;
        QTest::newRow("smaller") << 72.0 << QSize(263, 180);
    }

    void theWindowFollowsItsFrameAndKeepsItsMiddle()
    {
        QFETCH(double, dpi);
        QFETCH(QSize, frame);
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        const QPoint middle = popup.geometry().center();

        popup.guiScale(dpi);

        QCOMPARE(part(popup, "mainFrame")->size(), frame);
        QCOMPARE(popup.size(), frame + QSize(40, 40));
        QVERIFY((popup.geometry().center() - middle).manhattanLength() <= 2);
        QTRY_COMPARE(part(popup, "mainFrame")->geometry(), QRect(QPoint(20, 20), frame));
    }

    void goingBackGivesTheFirstSizes()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        const QSize yes = button(popup, QDialogButtonBox::Yes)->size();
        const int text = pixelSize(part(popup, "lText"));

        popup.guiScale(192);
        popup.guiScale(120);
        popup.guiScale(96);

        QCOMPARE(popup.size(), outerSize);
        QCOMPARE(part(popup, "header")->height(), 60);
        QCOMPARE(button(popup, QDialogButtonBox::Yes)->size(), yes);
        QCOMPARE(pixelSize(part(popup, "lText")), text);
        QCOMPARE(spacerWidth(popup), 15);
    }

    void showingAfterScalingStartsFromTheUnscaledHeader()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        popup.guiScale(192);

        popup.show(content.width(), content.height());

        QCOMPARE(part(popup, "mainFrame")->property("sizeBeforeScaling"), QVariant(frameSize));
        QCOMPARE(popup.size(), outerSize);
    }

    void theScreensDensityIsFollowed()
    {
        Popup popup;
        setUp(popup);
        popup.show(content.width(), content.height());
        QScreen *screen = QGuiApplication::primaryScreen();

        emit screen->logicalDotsPerInchChanged(192);

        QCOMPARE(part(popup, "mainFrame")->size(), frameSize * 2);
    }

    void aCustomWidgetIsScaledAndNothingElseOfTheContent()
    {
        Popup popup;
        setUp(popup);
        auto *custom = new QWidget;
        custom->resize(200, 80);
        popup.setCustomWidget(custom);
        popup.show(content.width(), content.height());
        custom->setProperty("sizeBeforeScaling", QSize(200, 80));
        QSignalSpy scaled(&popup, &Popup::logicalDotsPerInchChanged);

        popup.guiScale(192);

        QCOMPARE(custom->minimumSize(), QSize(400, 160));
        QCOMPARE(custom->maximumSize(), QSize(400, 160));
        QCOMPARE(layoutOf(popup, "contentLayout")->contentsMargins(), QMargins(30, 30, 30, 30));
        QVERIFY(!part(popup, "lText")->property("fontSizeBeforeScaling").isValid());
        QCOMPARE(spacerWidth(popup), 15);
        QCOMPARE(scaled.size(), 1);
    }
};

VELMOR_TEST(TestPopupLayout)
#include "tst_popup_layout.moc"
