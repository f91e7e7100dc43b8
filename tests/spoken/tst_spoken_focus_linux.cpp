#include "gui/spoken_focus.h"
#include "support/testmain.h"

#include <QAccessible>

// What a screen reader is told of the focus, and what not.
class TestSpokenFocus : public QObject {
    Q_OBJECT

private:
    static QStringList *told; // type and object of each event
    static QAccessible::UpdateHandler handlerBefore;

    std::unique_ptr<QWidget> window;
    QPushButton *first = nullptr;
    QPushButton *second = nullptr;
    QStringList heard;

    static void note(QAccessibleEvent *event)
    {
        if (event->type() == QAccessible::Focus)
            told->append("focus " + event->object()->objectName());
        else if (event->type() == QAccessible::NameChanged)
            told->append("name " + event->object()->objectName());
    }
    // As another part of a program may stand in the way of the events.
    static void noteAndPutBack(QAccessibleEvent *event)
    {
        note(event);
        QAccessible::installUpdateHandler(noteAndPutBack);
    }

private slots:
    void initTestCase()
    {
        QAccessible::setActive(true);
        told = &heard;
    }

    void init()
    {
        handlerBefore = QAccessible::installUpdateHandler(note);
        window = std::make_unique<QWidget>();
        first = new QPushButton("a", window.get());
        second = new QPushButton("b", window.get());
        first->setObjectName("first");
        second->setObjectName("second");
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        first->setFocus();
        heard.clear();
    }
    void cleanup()
    {
        window.reset();
        QAccessible::installUpdateHandler(handlerBefore);
    }

    void focusThatGoesIsToldOnce()
    {
        focusAloud(second);
        QVERIFY(second->hasFocus());
        QCOMPARE(heard, QStringList { "focus second" });
    }

    void focusThatIsThereAlreadyIsToldAnew()
    {
        focusAloud(first);
        QCOMPARE(heard, QStringList { "focus first" });
    }

    void focusIsLeftSilently()
    {
        leaveFocus(window.get());
        QVERIFY(!first->hasFocus() && !second->hasFocus());
        QCOMPARE(heard, QStringList());

        second->setFocus();
        QCOMPARE(heard, QStringList { "focus second" });
    }

    void inAPauseTheFocusGoesSilently()
    {
        const FocusPause pause;
        second->setFocus();
        QVERIFY(second->hasFocus());
        QCOMPARE(heard, QStringList());
    }

    void whatElseHappensInAPauseIsTold()
    {
        const FocusPause pause;
        for (int i = 0; i < 2; ++i) {
            second->setAccessibleName(QString::number(i));
            second->setFocus();
            first->setFocus();
        }
        QCOMPARE(heard, (QStringList { "name second", "name second" }));
    }

    void afterAPauseAllIsTold()
    {
        {
            const FocusPause pause;
            second->setAccessibleName("c");
        }
        heard.clear();
        second->setFocus();
        QCOMPARE(heard, QStringList { "focus second" });
    }

    void ofPausesTheOuterDecides()
    {
        {
            const FocusPause outer;
            {
                const FocusPause inner;
                second->setAccessibleName("c");
            }
            second->setFocus();
            second->setAccessibleName("d");
        }
        QCOMPARE(heard, (QStringList { "name second", "name second" }));
        first->setFocus();
        QCOMPARE(heard.last(), QString("focus first"));
    }

    void handlerThatPutsItselfBackEndsNoPause()
    {
        QAccessible::installUpdateHandler(noteAndPutBack);
        {
            const FocusPause pause;
            second->setAccessibleName("c");
            second->setFocus();
        }
        QCOMPARE(heard, QStringList { "name second" });
        first->setFocus();
        QCOMPARE(heard.last(), QString("focus first"));
    }
};

QStringList *TestSpokenFocus::told = nullptr;
QAccessible::UpdateHandler TestSpokenFocus::handlerBefore = nullptr;

VELMOR_TEST(TestSpokenFocus)
#include "tst_spoken_focus_linux.moc"
