#include "gui/link_focus.h"
#include "support/armed_timers.h"
#include "support/testmain.h"

#include <QVBoxLayout>

// Reached by Tab, a label that is one link has the focus on its link.
class TestLinkFocus : public QObject {
    Q_OBJECT

private:
    LinkFocus focus;
    std::unique_ptr<QWidget> window;
    QPushButton *before = nullptr;
    QLabel *label = nullptr;
    QPushButton *after = nullptr;

    // The link is reached once the label has seen its focus.
    static void press(QWidget *widget, Qt::Key key)
    {
        QTest::keyClick(widget, key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
        QCoreApplication::processEvents();
    }

private slots:
    void init()
    {
        window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(window.get());
        layout->addWidget(before = new QPushButton("a"));
        layout->addWidget(label = new QLabel("<a href='x'>Instrukcja</a>"));
        layout->addWidget(after = new QPushButton("b"));
        label->setTextInteractionFlags(Qt::LinksAccessibleByKeyboard | Qt::LinksAccessibleByMouse);
        label->setFocusPolicy(Qt::StrongFocus);
        focus.watch(label);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void enterOpensTheLinkThatTabHasReached_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("from before") << int(Qt::Key_Tab);
        QTest::newRow("from behind") << int(Qt::Key_Backtab);
    }
    void enterOpensTheLinkThatTabHasReached()
    {
        QFETCH(int, key);
        QWidget *start = key == Qt::Key_Tab ? before : after;
        start->setFocus();
        const QSignalSpy opened(label, &QLabel::linkActivated);

        press(start, Qt::Key(key));

        QVERIFY(label->hasFocus());
        QCOMPARE(label->selectedText(), QString("Instrukcja"));
        press(label, Qt::Key_Return);
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened.first().first().toString(), QString("x"));
    }

    void tabGoesOnFromTheLink()
    {
        before->setFocus();
        press(before, Qt::Key_Tab);

        press(label, Qt::Key_Tab);

        QVERIFY(after->hasFocus());
    }

    // Nothing that the program or the mouse does marks a link.
    void otherFocusLeavesTheLinkAlone_data()
    {
        QTest::addColumn<int>("reason");
        QTest::newRow("program") << int(Qt::OtherFocusReason);
        QTest::newRow("mouse") << int(Qt::MouseFocusReason);
        QTest::newRow("window") << int(Qt::ActiveWindowFocusReason);
    }
    void otherFocusLeavesTheLinkAlone()
    {
        QFETCH(int, reason);
        before->setFocus();

        label->setFocus(Qt::FocusReason(reason));
        QCoreApplication::processEvents();

        QVERIFY(label->hasFocus());
        QVERIFY(!label->hasSelectedText());
    }

    // A key that follows at once finds the link.
    void theLinkIsReachedWithoutAWait()
    {
        before->setFocus();

        const QList<int> waits = waitsArmedBy([this] { QTest::keyClick(before, Qt::Key_Tab); });

        for (int wait : waits)
            QCOMPARE(wait, 0);
        QVERIFY(label->hasFocus());
    }
};

VELMOR_TEST(TestLinkFocus)
#include "tst_link_focus.moc"
