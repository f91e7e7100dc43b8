// Between the tries and the result the card worker waits, so that the window has shown the ones before it gets the
// other. The wait is read from what the system is asked for, and not measured.
#include "support/scripted_pkcs11/pkcs11_world.h"
#include "thproxy.h"

#include <cerrno>
#include <ctime>

namespace {

// On the test's own thread, which is the worker here.
thread_local QList<qint64> *sleeps = nullptr;

} // namespace

// The toolkit's sleep ends here.
extern "C" __attribute__((visibility("default"))) int nanosleep(const timespec *wanted, timespec *left)
{
    constexpr qint64 second = 1000000000;
    if (sleeps)
        *sleeps << wanted->tv_sec * second + wanted->tv_nsec;
    errno = clock_nanosleep(CLOCK_MONOTONIC, 0, wanted, left);
    return errno == 0 ? 0 : -1;
}

class TestThProxyPause : public QObject, private Pkcs11World {
    Q_OBJECT

private slots:
    void triesHaveFiftyMillisecondsBeforeTheResult()
    {
        startUp();
        insert(CKF_TOKEN_INITIALIZED | CKF_USER_PIN_INITIALIZED);
        ThProxy worker(pkcs11.get());
        QList<qint64> asked;

        sleeps = &asked;
        worker.refreshCerts(reader);
        sleeps = nullptr;

        constexpr qint64 millisecond = 1000000;
        QCOMPARE(asked, QList<qint64> { 50 * millisecond });
        tearDown();
    }
};

// A program of its own, for the nanosleep() in it.
int main(int argc, char *argv[])
{
    TestHome home;
    QCoreApplication application(argc, argv);
    TestThProxyPause test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_thproxy_pause_linux.moc"
