#include "gui/link_focus.h"
#include "support/armed_timers.h"
#include "support/testmain.h"

#include <QAccessible>
#include <QTextBrowser>
#include <QVBoxLayout>

// Each link of a text that the keyboard reaches is told, in a label as its description, in a browser as its selection.
class TestLinkFocusSpeech : public QObject {
    Q_OBJECT

private:
    static QStringList *told;
    static QAccessible::UpdateHandler handlerBefore;

    std::unique_ptr<QWidget> window;
    LinkSpeech speech;
    QPushButton *button = nullptr;
    QLabel *label = nullptr;
    QTextBrowser *browser = nullptr;
    QStringList heard;

    static void note(QAccessibleEvent *event)
    {
        if (event->type() == QAccessible::Focus) {
            auto *widget = static_cast<QWidget *>(event->object());
            told->append(QStringList { "focus", widget->objectName(), widget->accessibleDescription() }.join(' '));
        } else if (event->type() == QAccessible::TextSelectionChanged) {
            const auto *selection = static_cast<QAccessibleTextSelectionEvent *>(event);
            told->append(QString("selected %1-%2").arg(selection->selectionStart()).arg(selection->selectionEnd()));
        }
    }

    // What a key makes is told once the text has gone on.
    void press(Qt::Key key)
    {
        heard.clear();
        QTest::keyClick(QApplication::focusWidget(), key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
        QCoreApplication::processEvents();
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
        auto *layout = new QVBoxLayout(window.get());
        layout->addWidget(button = new QPushButton("a"));
        layout->addWidget(label = new QLabel("Zobacz <a href='x'>pierwszy</a> i <a href='y'>drugi</a>."));
        layout->addWidget(browser = new QTextBrowser);
        label->setObjectName("label");
        label->setTextInteractionFlags(Qt::LinksAccessibleByKeyboard);
        label->setFocusPolicy(Qt::StrongFocus);
        browser->setObjectName("browser");
        browser->setTabChangesFocus(true);
        browser->setHtml("Jest <a href='z'>trzeci</a> tu.");
        speech.watch(label);
        speech.watch(browser);
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    void cleanup()
    {
        window.reset();
        QAccessible::installUpdateHandler(handlerBefore);
    }

    void linksOfALabelAreToldAsItsDescription()
    {
        label->setFocus();
        press(Qt::Key_Tab);
        QCOMPARE(heard, QStringList { "focus label pierwszy" });
        press(Qt::Key_Tab);
        QCOMPARE(heard, QStringList { "focus label drugi" });
        press(Qt::Key_Backtab);
        QCOMPARE(heard, QStringList { "focus label pierwszy" });
    }

    void otherKeysTellNothing()
    {
        label->setFocus();
        press(Qt::Key_Tab);
        press(Qt::Key_Shift);
        QCOMPARE(heard, QStringList());
    }

    // Who listens waits for nothing but the label itself.
    void linkIsToldWithoutAWait()
    {
        label->setFocus();

        const QList<int> waits = waitsArmedBy([this] { QTest::keyClick(label, Qt::Key_Tab); });

        for (int wait : waits)
            QCOMPARE(wait, 0);
    }

    void labelThatIsLeftKeepsNoLink()
    {
        label->setFocus();
        press(Qt::Key_Tab);
        QCOMPARE(label->accessibleDescription(), QString("pierwszy"));

        button->setFocus();

        QCOMPARE(label->accessibleDescription(), QString());
    }

    void tabThatLeavesALabelTellsNoLinkOfIt()
    {
        label->setFocus();
        press(Qt::Key_Tab);
        press(Qt::Key_Tab);
        press(Qt::Key_Tab);
        QVERIFY(browser->hasFocus());
        QVERIFY2(heard.filter("label").isEmpty(), qPrintable(heard.join('\n')));
    }

    // Alone in the window: Tab leads nowhere.
    void labelWithoutALinkKeepsItsDescription()
    {
        button->hide();
        browser->hide();
        label->setText("Nic tu nie ma.");
        label->setAccessibleDescription("opis");
        label->setFocus();

        press(Qt::Key_Tab);

        QVERIFY(label->hasFocus());
        QCOMPARE(heard, QStringList());
        QCOMPARE(label->accessibleDescription(), QString("opis"));
    }

    void linkOfABrowserIsToldAsSelected()
    {
        browser->setFocus();
        browser->moveCursor(QTextCursor::Start);
        press(Qt::Key_Tab);
        QCOMPARE(browser->textCursor().selectedText(), QString("trzeci"));
        QVERIFY2(heard.contains("selected 5-11"), qPrintable(heard.join('\n')));
    }

    void browserThatIsLeftTellsNothingMoreAndKeepsItsDescription()
    {
        browser->setAccessibleDescription("opis");
        browser->setFocus();
        browser->moveCursor(QTextCursor::Start);
        press(Qt::Key_Tab);

        press(Qt::Key_Tab);

        QVERIFY(!browser->hasFocus());
        QVERIFY2(heard.filter("selected").isEmpty(), qPrintable(heard.join('\n')));
        QCOMPARE(browser->accessibleDescription(), QString("opis"));
    }

    void browserWithoutALinkTellsNothing()
    {
        button->hide();
        label->hide();
        browser->setPlainText("Nic");
        browser->setFocus();

        press(Qt::Key_Tab);

        QVERIFY(browser->hasFocus());
        QCOMPARE(heard, QStringList());
    }
};

QStringList *TestLinkFocusSpeech::told = nullptr;
QAccessible::UpdateHandler TestLinkFocusSpeech::handlerBefore = nullptr;

VELMOR_TEST(TestLinkFocusSpeech)
#include "tst_link_focus_speech_linux.moc"
