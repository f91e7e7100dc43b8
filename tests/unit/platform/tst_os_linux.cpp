#include "platform/os.h"

#include "base/own_environment.h"
#include "platform/temporary_certificate.h"
#include "support/ordinary_user.h"
#include "support/viewers.h"

#include <QScopeGuard>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// How Linux shows a certificate, and what the number of certificate windows follows there.
class TestOsLinux : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Viewers> viewers;
    Os os;
    int before = 0;

    int windows() { return os.certWindowCount() - before; }
    static QString path() { return QDir::tempPath() + "/cert.cer"; }
    static QByteArray content()
    {
        QFile file(path());
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

private slots:
    void init()
    {
        viewers = std::make_unique<Viewers>();
        before = os.certWindowCount();
    }
    void cleanup()
    {
        viewers.reset();
        unlink(QFile::encodeName(path()).constData());
    }

    void nothingIsOpenAtFirst() { QCOMPARE(os.certWindowCount(), 0); }

    void nullCertificateIsRefused()
    {
        viewers->install("gcr-viewer");

        QVERIFY(!os.certOpen({}));

        QVERIFY(!QFile::exists(path()));
        QCOMPARE(viewers->started(), 0);
    }

    // Only a null one is: what is in it is the viewer's affair.
    void emptyCertificateIsNotRefused()
    {
        viewers->install("gcr-viewer");

        QVERIFY(os.certOpen(QByteArray("")));

        QTRY_COMPARE(viewers->started(), 1);
        QCOMPARE(viewers->call(0), "gcr-viewer " + path());
        QVERIFY(QFile::exists(path()));
        QCOMPARE(content(), QByteArray());
    }

    void certificateIsHandedOverInAFile()
    {
        viewers->install("gcr-viewer");
        const QByteArray der("\x30\x03\x00\x01\x02", 5);

        QVERIFY(os.certOpen(der));

        QTRY_COMPARE(viewers->started(), 1);
        QCOMPARE(viewers->call(0), "gcr-viewer " + path());
        QCOMPARE(TemporaryCertificate::path(), path());
        QCOMPARE(content(), der);
    }

    // Else it would end with us, or wait for somebody to read what it writes.
    void viewerHoldsNoPipeOfOurs()
    {
        viewers->install("gcr-viewer");

        QVERIFY(os.certOpen("DER"));

        QTRY_COMPARE(viewers->started(), 1);
        for (int number = 0; number < 3; ++number)
            QCOMPARE(viewers->stream(0, number), QString("/dev/null"));
    }

    // It would be drawn at the size that this program has chosen for itself.
    void viewerGetsNoneOfTheProgramsOwnVariables()
    {
        viewers->install("gcr-viewer");
        OwnEnvironment::set("QT_SCREEN_SCALE_FACTORS", "2");

        const bool opened = os.certOpen("DER");

        OwnEnvironment::restore("QT_SCREEN_SCALE_FACTORS");
        QVERIFY(opened);
        QTRY_COMPARE(viewers->started(), 1);
        QByteArrayList variables;
        QTRY_VERIFY((variables = viewers->environment(0)).contains("PATH=" + qgetenv("PATH")));
        QVERIFY(!variables.contains("QT_SCREEN_SCALE_FACTORS=2"));
    }

    void fileIsForItsUserAlone()
    {
        viewers->install("gcr-viewer");
        const mode_t mask = umask(0);
        const bool opened = os.certOpen("DER");
        umask(mask);

        QTRY_COMPARE(viewers->started(), 1);
        struct stat status = {};
        QCOMPARE(stat(QFile::encodeName(path()).constData(), &status), 0);
        QVERIFY(opened);
        QCOMPARE(status.st_mode & 0777, 0600U);
    }

    void formerFileIsReplacedAndALinkIsNotFollowed()
    {
        viewers->install("gcr-viewer");
        QFile other(QDir::tempPath() + "/other");
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write("of someone else");
        other.close();
        QVERIFY(other.link(path()));

        QVERIFY(os.certOpen("first"));
        QCOMPARE(content(), QByteArray("first"));
        QVERIFY(os.certOpen("2"));
        QCOMPARE(content(), QByteArray("2"));

        QVERIFY(!QFileInfo(path()).isSymLink());
        QTRY_COMPARE(viewers->started(), 2);
        QVERIFY(other.open(QIODevice::ReadOnly));
        QCOMPARE(other.readAll(), QByteArray("of someone else"));
    }

    // In a folder where nobody else removes it; whoever laid it there could read what is written into it.
    void fileThatCannotBeRemovedIsNotWritten()
    {
        QVERIFY(OrdinaryUser::letIn());
        const QString folder = TestHome::path() + "/of-someone-else";
        QVERIFY(QDir().mkpath(folder));
        QFile file(folder + "/cert.cer");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("of someone else");
        file.close();
        QVERIFY(file.setPermissions(QFile::Permissions(0x6666)));
        const QByteArray folderBefore = qgetenv("TMPDIR");
        qputenv("TMPDIR", QFile::encodeName(folder));
        const auto back = qScopeGuard([&] {
            qputenv("TMPDIR", folderBefore);
            chmod(QFile::encodeName(folder).constData(), 0755);
        });
        QCOMPARE(chmod(QFile::encodeName(folder).constData(), 0555), 0);

        {
            const OrdinaryUser user;
            if (geteuid() == 0)
                QSKIP("Whoever runs this may write everything");
            QVERIFY(!os.certOpen("DER"));
        }

        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("of someone else"));
    }

    // Then the file is the first that the process has open.
    void certificateIsWrittenThoughStandardInputIsClosed()
    {
        const int input = dup(STDIN_FILENO);
        close(STDIN_FILENO);

        os.certOpen("DER");

        if (input >= 0) {
            dup2(input, STDIN_FILENO);
            close(input);
        }
        QCOMPARE(content(), QByteArray("DER"));
    }

    void fileIsClosedOnceItIsWritten()
    {
        const auto firstFree = [] {
            const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
            close(descriptor);
            return descriptor;
        };
        const int expected = firstFree();

        os.certOpen("DER");

        QCOMPARE(content(), QByteArray("DER"));
        QCOMPARE(firstFree(), expected);
    }

    void placeThatCannotBeWrittenStartsNoViewer()
    {
        viewers->install("gcr-viewer");
        QVERIFY(QDir().mkpath(path()));

        QVERIFY(!os.certOpen("DER"));

        QDir().rmdir(path());
        QCOMPARE(windows(), 0);
        QCOMPARE(viewers->started(), 0);
    }

    void viewersAreTriedInTheirOrder_data()
    {
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<QString>("started");
        QTest::newRow("all") << QStringList { "xdg-open", "gcr-viewer-gtk4", "gcr-viewer" } << "gcr-viewer";
        QTest::newRow("newer name") << QStringList { "xdg-open", "gcr-viewer-gtk4" } << "gcr-viewer-gtk4";
        QTest::newRow("desktop's own") << QStringList { "xdg-open" } << "xdg-open";
    }
    void viewersAreTriedInTheirOrder()
    {
        QFETCH(QStringList, installed);
        QFETCH(QString, started);
        for (const QString &name : installed)
            viewers->install(name);

        QVERIFY(os.certOpen("DER"));

        QTRY_COMPARE(viewers->started(), 1);
        QCOMPARE(viewers->call(0), started + ' ' + path());
    }

    void withoutAViewerNothingOpens()
    {
        QVERIFY(!os.certOpen("DER"));

        QCOMPARE(windows(), 0);
    }

    void countFollowsTheLifeOfTheViewers()
    {
        viewers->install("gcr-viewer");

        os.certOpen("one");
        QCOMPARE(windows(), 0); // not before it has had the time to fail
        QTRY_COMPARE(windows(), 1);
        os.certOpen("two");
        QTRY_COMPARE(windows(), 2);

        viewers->close(0);
        QTRY_COMPARE(windows(), 1);
        viewers->close(1);
        QTRY_COMPARE(windows(), 0);
    }

    void viewerThatFailsNeverCounts_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("viewer") << "gcr-viewer";
        QTest::newRow("desktop's own") << "xdg-open";
    }
    void viewerThatFailsNeverCounts()
    {
        QFETCH(QString, program);
        viewers->installEnding(program, 3);

        QVERIFY(os.certOpen("DER"));
        QTRY_COMPARE(viewers->started(), 1);
        QTRY_COMPARE(viewers->running(), 0);

        constexpr int longerThanSettling = 700;
        QTest::qWait(longerThanSettling);
        QCOMPARE(windows(), 0);
    }

    void viewerThatIsClosedAtOnceIsGone_data()
    {
        QTest::addColumn<QString>("program");
        for (const char *program : { "gcr-viewer", "gcr-viewer-gtk4" })
            QTest::newRow(program) << program;
    }
    void viewerThatIsClosedAtOnceIsGone()
    {
        QFETCH(QString, program);
        viewers->installEnding(program, 0);
        os.certOpen("DER");
        QTRY_COMPARE(viewers->started(), 1);
        QTRY_COMPARE(viewers->running(), 0);

        constexpr int longerThanSettling = 700;
        QTest::qWait(longerThanSettling);
        QCOMPARE(windows(), 0);
    }

    // Of the viewer that a desktop starts nothing is known but that it was started.
    void handOverToTheDesktopCountsForGood()
    {
        viewers->installEnding("xdg-open", 0);

        os.certOpen("one");
        QTRY_COMPARE(windows(), 1);
        os.certOpen("two");
        QTRY_COMPARE(windows(), 2);
    }

    void programThatCannotRunNeverCounts()
    {
        viewers->installEnding("xdg-open", 0);
        QFile script(QStandardPaths::findExecutable("xdg-open"));
        QVERIFY(script.open(QIODevice::WriteOnly | QIODevice::Truncate));
        script.write("#!/no/such/interpreter\n");
        script.close();

        os.certOpen("DER");

        constexpr int longerThanSettling = 700;
        QTest::qWait(longerThanSettling);
        QCOMPARE(windows(), 0);
    }
};

VELMOR_TEST(TestOsLinux)
#include "tst_os_linux.moc"
