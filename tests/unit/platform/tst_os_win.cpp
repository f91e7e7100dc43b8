#include "platform/os.h"

#include "support/testmain.h"

#include <QDir>
#include <QFile>

#include <windows.h>

// How Windows shows a certificate: the exact command line, by a program that stands in for rundll32, and the number of
// certificate windows, by the windows that the system really lists.
class TestOsWin : public QObject {
    Q_OBJECT

private:
    Os os;

    static QString path() { return QDir::tempPath() + "\\cert.cer"; }
    static QString logPath() { return QDir::tempPath() + "/command-line"; }
    static QByteArray content(const QString &file)
    {
        QFile opened(file);
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
    }
    static void closeWindow(const char *title)
    {
        const HWND window = FindWindowW(L"StandInForRundll32", reinterpret_cast<LPCWSTR>(QString(title).utf16()));
        QVERIFY(window);
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    static HWND makeWindow(const QString &title)
    {
        return CreateWindowW(L"STATIC", reinterpret_cast<LPCWSTR>(title.utf16()), WS_OVERLAPPEDWINDOW, 0, 0, 100, 50,
                             nullptr, nullptr, nullptr, nullptr);
    }
    // cmd.exe may put a second blank behind the program's name.
    static QString commandLine() { return QString::fromUtf8(content(logPath())).simplified(); }

private slots:
    void initTestCase()
    {
        const QString folder = QCoreApplication::applicationDirPath() + "/rundll32";
        QVERIFY(QFile::exists(folder + "/rundll32.exe"));
        // The shell looks into the current folder first, then along the path.
        QVERIFY(QDir::setCurrent(folder));
        qputenv("PATH", QDir::toNativeSeparators(folder).toLocal8Bit() + ';' + qgetenv("PATH"));
    }
    void init()
    {
        qputenv("RUNDLL32_LOG", QDir::toNativeSeparators(logPath()).toLocal8Bit());
        qputenv("RUNDLL32_TITLE", "Certificate");
        QFile::remove(logPath());
        QFile::remove(path());
        QCOMPARE(os.certWindowCount(), 0);
    }

    void nullCertificateIsRefused()
    {
        QVERIFY(!os.certOpen({}));

        QVERIFY(!QFile::exists(path()));
    }

    // Only a null one is: what is in it is the system's affair.
    void emptyCertificateIsNotRefused()
    {
        LogCatcher log;

        QVERIFY(os.certOpen(QByteArray("")));

        QVERIFY(QFile::exists(path()));
        QCOMPARE(content(path()), QByteArray());
        QVERIFY(log.has("startDetached cmd.exe, args="));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(logPath()), 20000);
        QCOMPARE(commandLine(), "rundll32.exe cryptext.dll,CryptExtOpenCER " + path());
        QTRY_COMPARE(os.certWindowCount(), 1);
        closeWindow("Certificate");
        QTRY_COMPARE(os.certWindowCount(), 0);
    }

    void certificateIsHandedToTheSystemByItsCommandLine()
    {
        const QByteArray der("\x30\x03\x00\x01\x02", 5);
        LogCatcher log;

        QVERIFY(os.certOpen(der));

        QCOMPARE(content(path()), der);
        QVERIFY(log.has("startDetached cmd.exe, args="));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(logPath()), 20000);
        QCOMPARE(commandLine(), "rundll32.exe cryptext.dll,CryptExtOpenCER " + path());
        QTRY_COMPARE(os.certWindowCount(), 1);
        closeWindow("Certificate");
        QTRY_COMPARE(os.certWindowCount(), 0);
    }

    void folderWithABlankIsHandedOverAsItStands()
    {
        const QByteArray before = qgetenv("TMP");
        QVERIFY(QDir().mkpath(QDir::tempPath() + "/Jan Kowalski"));
        qputenv("TMP", QDir::toNativeSeparators(QDir::tempPath() + "/Jan Kowalski").toLocal8Bit());

        const bool opened = os.certOpen("DER");
        const QString file = path();
        qputenv("TMP", before);

        QVERIFY(opened);
        QVERIFY(file.endsWith("/Jan Kowalski\\cert.cer"));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(logPath()), 20000);
        QCOMPARE(commandLine(), "rundll32.exe cryptext.dll,CryptExtOpenCER " + file);
        closeWindow("Certificate");
        QTRY_COMPARE(os.certWindowCount(), 0);
    }

    void formerFileIsReplaced()
    {
        QFile former(path());
        QVERIFY(former.open(QIODevice::WriteOnly) && former.write("a longer one") == 12);
        former.close();

        QVERIFY(os.certOpen("new"));

        QCOMPARE(content(path()), QByteArray("new"));
        QTRY_COMPARE_WITH_TIMEOUT(os.certWindowCount(), 1, 20000);
        closeWindow("Certificate");
        QTRY_COMPARE(os.certWindowCount(), 0);
    }

    void windowOpenedByAnotherProgramCountsByItsTitle()
    {
        qputenv("RUNDLL32_TITLE", "Zertifikat");
        QVERIFY(os.certOpen("DER"));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(logPath()), 20000);

        QVERIFY(FindWindowW(L"StandInForRundll32", L"Zertifikat"));
        QCOMPARE(os.certWindowCount(), 0);
        closeWindow("Zertifikat");
        QTRY_VERIFY(!FindWindowW(L"StandInForRundll32", L"Zertifikat"));
    }

    void windowsCountByTheirExactTitle_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("count");
        QTest::newRow("Polish") << "Certyfikat" << 1;
        QTest::newRow("English") << "Certificate" << 1;
        QTest::newRow("another language") << "Zertifikat" << 0;
        QTest::newRow("lower case") << "certificate" << 0;
        QTest::newRow("longer") << "Certificate " << 0;
        QTest::newRow("part") << "Certificates" << 0;
        QTest::newRow("none") << "" << 0;
        QTest::newRow("beyond the buffer") << QString("Certificate").repeated(200) << 0;
    }
    void windowsCountByTheirExactTitle()
    {
        QFETCH(QString, title);
        const HWND window = makeWindow(title);
        QVERIFY(window);

        QTEST(os.certWindowCount(), "count");
        DestroyWindow(window);
        QCOMPARE(os.certWindowCount(), 0);
    }

    void everyWindowCountsOnce()
    {
        const HWND first = makeWindow("Certificate");
        const HWND second = makeWindow("Certyfikat");
        const HWND third = makeWindow("Certificate");

        QCOMPARE(os.certWindowCount(), 3);
        QCOMPARE(os.certWindowCount(), 3);
        for (const HWND window : { first, second, third })
            DestroyWindow(window);
    }
};

VELMOR_TEST(TestOsWin)
#include "tst_os_win.moc"
