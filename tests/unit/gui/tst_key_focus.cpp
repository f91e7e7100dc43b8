#include "gui/key_focus.h"
#include "support/testmain.h"

#include <QComboBox>
#include <QProxyStyle>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

// Counts how often a widget is styled.
class CountingStyle : public QProxyStyle {
public:
    int styled = 0;
    using QProxyStyle::polish;
    void polish(QWidget *) override { ++styled; }
};

// Counts what comes to a widget itself, behind whoever watches the application.
class Seen : public QObject {
public:
    QList<QEvent::Type> types;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        types << event->type();
        return false;
    }
};

} // namespace

// Rings round plain text are for who moves by Tab.
class TestKeyFocus : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        KeyFocus::watch();
        KeyFocus::watch();
        QCOMPARE(qApp->findChildren<KeyFocus *>().size(), 1);
    }

    void init()
    {
        window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(window.get());
        for (QWidget *widget : std::initializer_list<QWidget *> { button = new QPushButton("a"), text = new QLabel("b"),
                                                                  frame = new QFrame, field = new QLineEdit }) {
            layout->addWidget(widget);
            widget->setFocusPolicy(widget == button || widget == field ? Qt::StrongFocus : Qt::TabFocus);
        }
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTest::mouseClick(button, Qt::LeftButton);
    }

    void tabShowsTheRingAndLeavingTakesIt()
    {
        QTest::keyClick(button, Qt::Key_Tab);
        QVERIFY(text->hasFocus() && isMarked(text));

        QTest::keyClick(text, Qt::Key_Tab);
        QVERIFY(!isMarked(text) && isMarked(frame));

        QTest::keyClick(frame, Qt::Key_Tab, Qt::ShiftModifier);
        QVERIFY(isMarked(text) && !isMarked(frame));
    }

    void aWindowThatOpensShowsNone()
    {
        QLabel *first = new QLabel("a");
        QWidget other;
        (new QVBoxLayout(&other))->addWidget(first);
        first->setFocusPolicy(Qt::TabFocus);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QTRY_VERIFY(first->hasFocus());
        QVERIFY(!isMarked(first));
    }

    // As pages do it when they are entered: the screen reader speaks, the eye sees no frame.
    void theProgramsOwnFocusShowsNoneAfterAClick()
    {
        text->setFocus();
        QVERIFY(text->hasFocus() && !isMarked(text));
    }

    void theProgramsOwnFocusShowsItToWhoMovesByTab()
    {
        QTest::keyClick(button, Qt::Key_Tab);
        field->setFocus();
        text->setFocus();
        QVERIFY(isMarked(text));

        QTest::mouseClick(button, Qt::LeftButton);
        text->setFocus();
        QVERIFY(!isMarked(text));
    }

    void onlyTabMovesByTab_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("shown");
        QTest::newRow("Tab") << int(Qt::Key_Tab) << true;
        QTest::newRow("Backtab") << int(Qt::Key_Backtab) << true;
        QTest::newRow("letter") << int(Qt::Key_A) << false;
        QTest::newRow("Shift") << int(Qt::Key_Shift) << false;
    }
    void onlyTabMovesByTab()
    {
        QFETCH(int, key);
        QTest::keyClick(button, Qt::Key(key));

        field->setFocus();
        text->setFocus();

        QTEST(isMarked(text), "shown");
    }

    void textIsStyledOnlyAsItsRingComesAndGoes()
    {
        CountingStyle style;
        text->setStyle(&style);
        style.styled = 0;

        text->setFocus();
        field->setFocus();
        QCOMPARE(style.styled, 0);

        QTest::keyClick(field, Qt::Key_Tab);
        text->setFocus();
        QCOMPARE(style.styled, 1);
        field->setFocus();
        QCOMPARE(style.styled, 2);
    }

    void eventsGoOnToTheirWidgets()
    {
        Seen seen;
        for (QWidget *widget : { text, field }) {
            widget->installEventFilter(&seen);
            seen.types.clear();

            widget->setFocus();
            QTest::keyClick(widget, Qt::Key_A);
            button->setFocus();

            for (auto type : { QEvent::FocusIn, QEvent::KeyPress, QEvent::FocusOut })
                QVERIFY2(seen.types.contains(type), qPrintable(QString::number(type)));
        }
    }

    void whatIsWorkedIsLeftToItsStyle_data()
    {
        QTest::addColumn<QWidget *>("worked");
        QTest::newRow("button") << static_cast<QWidget *>(new QPushButton);
        QTest::newRow("list") << static_cast<QWidget *>(new QComboBox);
        QTest::newRow("field") << static_cast<QWidget *>(new QLineEdit);
        QTest::newRow("area that scrolls") << static_cast<QWidget *>(new QScrollArea);
    }
    void whatIsWorkedIsLeftToItsStyle()
    {
        QFETCH(QWidget *, worked);
        worked->setFocusPolicy(Qt::StrongFocus);
        window->layout()->addWidget(worked);
        worked->show();
        QTest::keyClick(button, Qt::Key_Tab);
        QVERIFY(isMarked(text));

        worked->setFocus();

        QVERIFY(worked->hasFocus());
        QVERIFY(!worked->property("KeyFocus").isValid());
    }

private:
    static bool isMarked(const QWidget *widget) { return widget->property("KeyFocus").toBool(); }

    std::unique_ptr<QWidget> window;
    QWidget *button;
    QWidget *text;
    QWidget *frame;
    QWidget *field;
};

VELMOR_TEST(TestKeyFocus)
#include "tst_key_focus.moc"
