#include "support/flow.h"

#include <QThread>

namespace {

QList<unsigned long> pauses; // in seconds, that somebody wanted to make

}

// The definition of a program stands before the toolkit's.
void QThread::sleep(unsigned long seconds)
{
    constexpr unsigned long second = 1000;
    pauses << seconds;
    msleep(second);
}

// A window that goes without having quit, as at the end of a session: how long it takes whoever waits for that.
class TestWindowEnd : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void threadIsLookedForOnceASecond()
    {
        Flow flow;
        flow.openWindow();

        flow.window.reset();

        QVERIFY(!pauses.isEmpty());
        for (const unsigned long pause : pauses)
            QCOMPARE(pause, 1UL);
    }
};

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    TestWindowEnd test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window_end_linux.moc"
