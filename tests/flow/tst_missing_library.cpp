#include "support/flow.h"

#include "app/app.h"

#include <QDir>

// No library where it should be, or a file that is none: told in the log, and the window waits for better times.
class TestMissingLibrary : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void unusableFileIsToldInTheLogAndTheWindowStays_data()
    {
        QTest::addColumn<bool>("present");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("missing") << false << QByteArray();
        QTest::newRow("empty") << true << QByteArray();
        QTest::newRow("text") << true << QByteArray("this is no library\n");
        QTest::newRow("cut") << true
                             << QByteArray("\x7f"
                                           "ELF\x02\x01\x01",
                                           7);
    }
    void unusableFileIsToldInTheLogAndTheWindowStays()
    {
        QFETCH(bool, present);
        QFETCH(QByteArray, content);
        const QString root = TestHome::path() + "/empty-root";
        App::instance()->init("Menedżer", root, "x86_64", "Manager");
        QFile file(App::instance()->pkcsLibPath());
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        file.remove();
        if (present) {
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
            file.close();
        }
        Flow flow;
        flow.openWindow();
        LogCatcher log;

        flow.window->loadedReaders({ "Czytnik Alfa" });

        QTRY_VERIFY(log.has("reader checked "));
        QVERIFY(log.has("Pkcs11 err:  #2 Nie można załadować biblioteki: "));
        QVERIFY(log.has(App::instance()->pkcsLibPath()));
        QVERIFY(log.has("initialize failed !"));
        QVERIFY(flow.window->isVisible());
        QVERIFY(flow.loaderShown());
    }
};

VELMOR_TEST(TestMissingLibrary)
#include "tst_missing_library.moc"
