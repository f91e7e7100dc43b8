#include "support/flow.h"
#include "support/popup_closer.h"
#include "support/stand_in_wm.h"

#include "gui/popup.h"

#include <QStandardPaths>

#include <unistd.h>

namespace {

StandInWm *manager = nullptr;

bool xdotool(const QStringList &arguments)
{
    return QProcess::execute("xdotool", arguments) == 0;
}

// That the application has seen a button let go: then it has seen all that came before.
class ReleaseWatch : public QObject {
public:
    ReleaseWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        seen = seen || (event->type() == QEvent::MouseButtonRelease && object->isWindowType());
        return false;
    }

    bool seen = false;
};

} // namespace

// The frameless windows on a real display, worked by a real pointer and real keys: what they ask of a window manager,
// and what they do as it tells them.
class TestWindowManager : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        // One for all that leave it open, since opening takes long.
        if (!flow) {
            flow = std::make_unique<Flow>();
            flow->openWindow();
        }
        QVERIFY(QTest::qWaitForWindowExposed(flow->window.get()));
        flow->window->activateWindow();
        QCoreApplication::processEvents();
        manager->moveRequests();
        manager->minimiseRequests();
    }
    void cleanup()
    {
        if (!flow->window->isVisible())
            flow.reset();
    }
    void cleanupTestCase() { flow.reset(); }

    void headerAndOnlyItMovesTheWindow_data()
    {
        QTest::addColumn<QPoint>("press"); // in the frame
        QTest::addColumn<QPoint>("moveTo");
        QTest::addColumn<int>("button");
        QTest::addColumn<bool>("moves");
        QTest::newRow("header") << QPoint(450, 40) << QPoint(460, 45) << 1 << true;
        QTest::newRow("title") << QPoint(60, 40) << QPoint(70, 45) << 1 << true;
        QTest::newRow("header's lower edge") << QPoint(450, 78) << QPoint(450, 60) << 1 << true;
        QTest::newRow("pointer leaves the header") << QPoint(450, 40) << QPoint(450, 400) << 1 << true;
        QTest::newRow("page") << QPoint(450, 600) << QPoint(460, 605) << 1 << false;
        QTest::newRow("from the page to the header") << QPoint(450, 600) << QPoint(450, 40) << 1 << false;
        QTest::newRow("footer") << QPoint(450, 670) << QPoint(460, 672) << 1 << false;
        QTest::newRow("other button") << QPoint(450, 40) << QPoint(460, 45) << 3 << false;
    }
    void headerAndOnlyItMovesTheWindow()
    {
        QFETCH(QPoint, press);
        QFETCH(QPoint, moveTo);
        QFETCH(int, button);
        QFETCH(bool, moves);
        const QWidget *frame = flow->widget("mainFrame");

        QVERIFY(drag(frame->mapToGlobal(press), frame->mapToGlobal(moveTo), button));

        QCOMPARE(manager->moveRequests() > 0, moves);
        // Let go, the window follows no more.
        QVERIFY(pointAt(frame->mapToGlobal(QPoint(450, 30))));
        QCOMPARE(manager->moveRequests(), 0);
    }

    void titleBarAndOnlyItMovesADialog_data()
    {
        QTest::addColumn<QPoint>("press"); // in the frame
        QTest::addColumn<bool>("moves");
        QTest::newRow("header") << QPoint(120, 30) << true;
        QTest::newRow("below it") << QPoint(4, 100) << false;
        QTest::newRow("bottom") << QPoint(4, 190) << false;
    }
    void titleBarAndOnlyItMovesADialog()
    {
        QFETCH(QPoint, press);
        QFETCH(bool, moves);
        Popup popup(flow->window.get(), "Tytuł");
        popup.setIconMessage(Popup::Warning, "Jeden", QDialogButtonBox::Ok);
        popup.show(320, 120);
        QVERIFY(QTest::qWaitForWindowExposed(&popup));
        const QWidget *frame = popup.findChild<QWidget *>("mainFrame");

        QVERIFY(drag(frame->mapToGlobal(press), frame->mapToGlobal(press + QPoint(9, 5)), 1));

        QCOMPARE(manager->moveRequests() > 0, moves);
    }

    void minimisedAndRestoredItStandsWhereItStood()
    {
        Window *window = flow->window.get();
        const QRect before = window->geometry();

        QVERIFY(clickOn(flow->widget("bMinimalize")));
        int requests = 0;
        QTRY_VERIFY((requests += manager->minimiseRequests()) > 0);
        QCOMPARE(requests, 1);
        manager->minimise(xcb_window_t(window->winId()));
        QTRY_VERIFY(!window->windowHandle()->isExposed());

        manager->restore(xcb_window_t(window->winId()));
        QTRY_VERIFY(window->windowHandle()->isExposed());
        QCOMPARE(window->geometry(), before);
        QVERIFY(window->isVisible());
    }

    void altF4Closes()
    {
        manager->askToClose(xcb_window_t(flow->window->winId()));
        QTRY_VERIFY(!flow->window->isVisible());
    }

    void keysEndADialog_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("result");
        QTest::newRow("Enter") << "Return" << int(QDialogButtonBox::Ok);
        QTest::newRow("Enter of the keypad") << "KP_Enter" << int(QDialogButtonBox::Ok);
        QTest::newRow("Escape") << "Escape" << 0;
    }
    void keysEndADialog()
    {
        QFETCH(QString, key);
        QFETCH(int, result);
        // Once the display has handed it the keyboard.
        QTimer look;
        connect(&look, &QTimer::timeout, &look, [&look, key] {
            const QWidget *dialog = QApplication::activeModalWidget();
            if (!dialog || QGuiApplication::focusWindow() != dialog->windowHandle())
                return;
            look.stop();
            QVERIFY(xdotool({ "key", key }));
        });
        look.start(10);
        QTimer::singleShot(8000, flow->window.get(), [this] { emit flow->window->closePopups(); });

        const int ended = Popup::warning(flow->window.get(), {}, "Jeden", QDialogButtonBox::Ok);

        QCOMPARE(ended, result);
        QVERIFY(flow->window->isVisible());
    }

private:
    static QStringList pointer(QPoint to) { return { "mousemove", QString::number(to.x()), QString::number(to.y()) }; }

    static bool pointAt(QPoint to)
    {
        const bool done = xdotool(pointer(to));
        QTest::qWait(30);
        return done;
    }

    static bool drag(QPoint from, QPoint to, int button)
    {
        const ReleaseWatch watch;
        const QString number = QString::number(button);
        const bool done = xdotool(pointer(from) + QStringList { "mousedown", number } + pointer((from + to) / 2)
                                  + pointer(to) + QStringList { "mouseup", number })
            && QTest::qWaitFor([&watch] { return watch.seen; });
        QTest::qWait(10); // what it has asked for meanwhile leaves for the display
        return done;
    }

    static bool clickOn(const QWidget *widget)
    {
        return xdotool(pointer(widget->mapToGlobal(widget->rect().center())) + QStringList { "click", "1" });
    }

    std::unique_ptr<Flow> flow;
};

// On a display of its own, where no other window is in the way.
int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("VELMOR_TEST_DISPLAY")) {
        for (const char *tool : { "xvfb-run", "xdotool" }) {
            if (QStandardPaths::findExecutable(tool).isEmpty()) {
                std::fprintf(stderr, "skipped: no %s\n", tool);
                return 0;
            }
        }
        qputenv("VELMOR_TEST_DISPLAY", "1");
        qputenv("QT_QPA_PLATFORM", "xcb");
        std::vector<char *> arguments;
        for (const char *word : { "xvfb-run", "-a", "-s", "-screen 0 1600x1200x24 -dpi 96" })
            arguments.push_back(const_cast<char *>(word));
        arguments.insert(arguments.end(), argv, argv + argc);
        arguments.push_back(nullptr);
        execvp("xvfb-run", arguments.data());
        return 1;
    }
    TestHome home;
    StandInWm standIn;
    manager = &standIn;
    QApplication application(argc, argv);
    TestWindowManager test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window_manager_linux.moc"
