#include "gui/hover_parameter.h"
#include "support/testmain.h"

#include <QFrame>
#include <QLabel>
#include <QProxyStyle>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

const char hoverStyle[] = "QFrame, QLabel { background-color: #ecedee; font-size: 11px; }"
                          "QFrame[MouseOver=\"true\"], QLabel[MouseOver=\"true\"]"
                          " { background-color: #404040; font-size: 17px; }";

QColor colourOf(QWidget *widget)
{
    return widget->grab().toImage().pixelColor(1, 1);
}

bool send(QObject *target, QEvent::Type type)
{
    QEvent event(type);
    return QCoreApplication::sendEvent(target, &event);
}

void doubleClick(QWidget *widget)
{
    QMouseEvent event(QEvent::MouseButtonDblClick, QPointF(1, 1), Qt::LeftButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(widget, &event);
}

// Takes note of the events that reach the frame in spite of the filter.
class Frame : public QFrame {
public:
    using QFrame::QFrame;
    QList<QEvent::Type> seen;

protected:
    bool event(QEvent *event) override
    {
        seen << event->type();
        return QFrame::event(event);
    }
};

} // namespace

class TestHoverParameter : public QObject {
    Q_OBJECT

    std::unique_ptr<Frame> frame;
    QLabel *child = nullptr;
    QLabel *grandChild = nullptr;
    HoverParameter hover;

    static bool isHovered(const QWidget *widget) { return widget->property("MouseOver").toBool(); }

private slots:
    void init()
    {
        frame = std::make_unique<Frame>();
        frame->resize(100, 60);
        child = new QLabel(frame.get());
        child->resize(80, 40);
        grandChild = new QLabel(child);
        grandChild->resize(20, 20);
        frame->setStyleSheet(hoverStyle);
    }

    void aNullWidgetAnswersFalse()
    {
        QVERIFY(!HoverParameter::setHover(nullptr, true));
        QVERIFY(!HoverParameter::clear(nullptr));
    }

    void hoverReachesAllChildren()
    {
        QVERIFY(HoverParameter::setHover(frame.get(), true));

        QVERIFY(isHovered(frame.get()));
        QVERIFY(isHovered(child));
        QVERIFY(isHovered(grandChild));
    }

    void clearTakesItFromAllChildren()
    {
        HoverParameter::setHover(frame.get(), true);

        QVERIFY(HoverParameter::clear(frame.get()));

        QVERIFY(!isHovered(frame.get()));
        QVERIFY(!isHovered(child));
        QVERIFY(!isHovered(grandChild));
        QVERIFY(child->property("MouseOver").isValid());
    }

    void styleIsTakenOffAndPutOn()
    {
        class CountingStyle : public QProxyStyle {
        public:
            QStringList done;
            using QProxyStyle::polish;
            using QProxyStyle::unpolish;
            void polish(QWidget *) override { done << "on"; }
            void unpolish(QWidget *) override { done << "off"; }
        };
        QWidget plain;
        CountingStyle style;
        plain.setStyle(&style);
        style.done.clear();

        HoverParameter::setHover(&plain, true);

        QCOMPARE(style.done, QStringList({ "off", "on" }));
    }

    void styleRulesApplyAtOnce()
    {
        QCOMPARE(colourOf(child), QColor(0xec, 0xed, 0xee));

        HoverParameter::setHover(frame.get(), true);
        QCOMPARE(grandChild->font().pixelSize(), 17);
        QCOMPARE(colourOf(child), QColor(0x40, 0x40, 0x40));
        QCOMPARE(colourOf(grandChild), QColor(0x40, 0x40, 0x40));

        HoverParameter::clear(frame.get());
        QCOMPARE(colourOf(child), QColor(0xec, 0xed, 0xee));
        QCOMPARE(grandChild->font().pixelSize(), 11);
    }

    void enteringAnEnabledFrameHovers()
    {
        frame->installEventFilter(&hover);

        QVERIFY(send(frame.get(), QEvent::Enter));

        QVERIFY(isHovered(frame.get()));
        QVERIFY(isHovered(grandChild));
    }

    void enteringADisabledFrameDoesNot()
    {
        frame->installEventFilter(&hover);
        frame->setEnabled(false);

        QVERIFY(send(frame.get(), QEvent::Enter));

        QVERIFY(!isHovered(frame.get()));
    }

    void leavingClearsWhateverTheState_data()
    {
        QTest::addColumn<bool>("enabled");
        QTest::newRow("enabled") << true;
        QTest::newRow("disabled") << false;
    }

    void leavingClearsWhateverTheState()
    {
        QFETCH(bool, enabled);
        frame->installEventFilter(&hover);
        send(frame.get(), QEvent::Enter);
        QVERIFY(isHovered(child));
        frame->setEnabled(enabled);

        QVERIFY(send(frame.get(), QEvent::Leave));

        QVERIFY(!isHovered(frame.get()));
        QVERIFY(!isHovered(child));
    }

    void doubleClickClicksTheFirstArrow_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("as named") << "bArrowICAO";
        QTest::newRow("in small letters") << "barrow";
        QTest::newRow("in capitals") << "MYARROWS";
    }

    void doubleClickClicksTheFirstArrow()
    {
        QFETCH(QString, name);
        QPushButton other("x", frame.get());
        other.setObjectName("bChangePin");
        QPushButton arrow(child);
        arrow.setObjectName(name);
        QPushButton second(child);
        second.setObjectName(name + "2");
        QSignalSpy clicks(&arrow, &QPushButton::clicked);
        QSignalSpy others(&other, &QPushButton::clicked);
        QSignalSpy seconds(&second, &QPushButton::clicked);
        frame->installEventFilter(&hover);

        doubleClick(frame.get());

        QCOMPARE(clicks.size(), 1);
        QCOMPARE(clicks.first().first().toBool(), false);
        QVERIFY(others.isEmpty());
        QVERIFY(seconds.isEmpty());
    }

    void doubleClickWorksOnAHiddenOrDisabledArrow_data()
    {
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<bool>("disabled");
        QTest::newRow("hidden") << true << false;
        QTest::newRow("disabled") << false << true;
    }

    void doubleClickWorksOnAHiddenOrDisabledArrow()
    {
        QFETCH(bool, hidden);
        QFETCH(bool, disabled);
        QPushButton arrow(frame.get());
        arrow.setObjectName("bArrowICAO");
        arrow.setHidden(hidden);
        arrow.setDisabled(disabled);
        QSignalSpy clicks(&arrow, &QPushButton::clicked);
        frame->installEventFilter(&hover);

        doubleClick(frame.get());

        QCOMPARE(clicks.size(), 1);
    }

    void doubleClickOnADisabledFrameDoesNothing()
    {
        QPushButton arrow(frame.get());
        arrow.setObjectName("bArrowICAO");
        QSignalSpy clicks(&arrow, &QPushButton::clicked);
        frame->installEventFilter(&hover);
        frame->setEnabled(false);

        doubleClick(frame.get());

        QVERIFY(clicks.isEmpty());
    }

    void doubleClickWithoutAnArrowDoesNothing()
    {
        QPushButton button(frame.get());
        button.setObjectName("bChangePin");
        QLabel label(frame.get());
        label.setObjectName("lArrow");
        QSignalSpy clicks(&button, &QPushButton::clicked);
        frame->installEventFilter(&hover);

        doubleClick(frame.get());

        QVERIFY(clicks.isEmpty());
        QVERIFY(!frame->seen.contains(QEvent::MouseButtonDblClick));
    }

    void everyEventOfTheFrameIsSwallowed_data()
    {
        QTest::addColumn<int>("type");
        QTest::newRow("paint") << int(QEvent::Paint);
        QTest::newRow("press") << int(QEvent::MouseButtonPress);
        QTest::newRow("release") << int(QEvent::MouseButtonRelease);
        QTest::newRow("resize") << int(QEvent::Resize);
        QTest::newRow("enter") << int(QEvent::Enter);
        QTest::newRow("leave") << int(QEvent::Leave);
        QTest::newRow("user") << int(QEvent::User);
    }

    void everyEventOfTheFrameIsSwallowed()
    {
        QFETCH(int, type);
        frame->installEventFilter(&hover);
        QEvent event { QEvent::Type(type) };

        QVERIFY(hover.eventFilter(frame.get(), &event));
        frame->seen.clear();
        send(frame.get(), QEvent::Type(type));

        QVERIFY(!frame->seen.contains(QEvent::Type(type)));
    }

    void childrenArePaintedAllTheSame()
    {
        frame->installEventFilter(&hover);
        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame.get()));

        const QImage image = frame->screen()->grabWindow(frame->winId()).toImage();

        QCOMPARE(image.pixelColor(30, 30), QColor(0xec, 0xed, 0xee));
    }

    void anObjectThatIsNoWidgetCountsAsNull()
    {
        QObject object;
        object.setProperty("enabled", true);
        QEvent enter(QEvent::Enter);
        QEvent leave(QEvent::Leave);
        QEvent other(QEvent::User);

        QVERIFY(!hover.eventFilter(&object, &enter));
        QVERIFY(!hover.eventFilter(&object, &leave));
        QVERIFY(hover.eventFilter(&object, &other));
        QVERIFY(!object.property("MouseOver").isValid());
    }
};

VELMOR_TEST(TestHoverParameter)
#include "tst_hover_parameter.moc"
