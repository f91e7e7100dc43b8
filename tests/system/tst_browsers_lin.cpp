#include "app/app.h"
#include "browser/integrator.h"
#include "platform/os.h"
#include "shared.h"
#include "simworld/sim_world.h"
#include "support/popup_closer.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>
#include <QVBoxLayout>

#include <memory>

// What is written is read by those it is written for: Firefox, Chromium and the tools of NSS.
class TestBrowsersLin : public QObject {
    Q_OBJECT

private:
    static constexpr const char *family = "Chrome, Chromium, Edge";
    static constexpr const char *preference = "security.osclientcerts.autoload";
    static constexpr int patience = 90000;

    sim::SimWorld world;
    std::unique_ptr<PopupCloser> popups;
    std::unique_ptr<QWidget> page;
    std::unique_ptr<Integrator> integrator;
    QVBoxLayout *layout = nullptr;
    QByteArray output;

    static bool isInstalled(const char *program) { return !QStandardPaths::findExecutable(program).isEmpty(); }
    static QString firefoxRoot() { return Os().profilesRoot("Firefox"); }
    static QString sharedDatabase() { return QDir::homePath() + "/.pki/nssdb"; }

    // On its own, away from the screen and the session of this machine.
    static void start(QProcess &process, const QString &program, const QStringList &args, bool loadsModule = false)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *variable : { "QT_QPA_PLATFORM", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS" })
            environment.remove(variable);
        environment.insert("LC_ALL", "C.UTF-8");
        // A program that is not ours to compile loads a library under a sanitizer.
        if (loadsModule && environment.contains("VELMOR_SANITIZER_LIBRARY"))
            environment.insert("LD_PRELOAD", environment.value("VELMOR_SANITIZER_LIBRARY"));
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(program, args);
    }
    int run(const QString &program, const QStringList &args, bool loadsModule = false)
    {
        QProcess process;
        start(process, program, args, loadsModule);
        const bool ended = process.waitForFinished(patience);
        output = process.readAll();
        if (!ended)
            qWarning("%s did not end", qPrintable(program));
        return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    // A start that makes the profile whole and applies its user.js, and ends.
    bool runFirefox(const QString &profile)
    {
        QDir().mkpath(profile);
        return run("firefox-esr",
                   { "--headless", "--profile", profile, "--screenshot", TestHome::path() + "/shot.png",
                     "about:blank" })
            == 0;
    }
    // Such a start ends as soon as its picture is taken, and then does not always write its preferences down.
    template <typename Condition>
    bool firefoxComesTo(const QString &profile, Condition condition)
    {
        constexpr int starts = 8;
        for (int i = 0; i < starts; ++i) {
            if (!runFirefox(profile))
                return false;
            if (condition())
                return true;
        }
        return false;
    }
    // The modules as NSS loads them, in its own words.
    QString modules(const QString &folder)
    {
        if (run("modutil", { "-list", "-dbdir", "sql:" + folder }, true) != 0)
            return "modutil: " + output;
        return output;
    }
    bool certutilReads(const QString &folder)
    {
        return run("certutil", { "-L", "-d", "sql:" + folder }, true) == 0 && output.contains("Certificate Nickname");
    }

    static QStringList chromiumArguments(const QStringList &last)
    {
        return QStringList { "--headless=new", "--no-sandbox",
                             "--disable-gpu",  "--enable-logging=stderr",
                             "--v=0",          "--user-data-dir=" + QDir::homePath() + "/chromium" }
        + last;
    }
    static QString freePort()
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        return QString::number(server.serverPort());
    }
    // A server on this machine that wants to see its visitor's certificate. False if it does not come up.
    bool startServer(QProcess &server, const QString &port)
    {
        const QString key = TestHome::path() + "/key.pem";
        const QString certificate = TestHome::path() + "/certificate.pem";
        if (run("openssl",
                { "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key, "-out", certificate, "-subj",
                  "/CN=localhost" })
            != 0)
            return false;
        start(server, "openssl",
              { "s_server", "-accept", port, "-key", key, "-cert", certificate, "-Verify", "1", "-www" });
        return QTest::qWaitFor([&server] { return server.readAll().contains("ACCEPT"); }, patience);
    }

    void submit(const char *app, bool ticked)
    {
        Integrator::checksClear(layout);
        integrator->checksCreate(layout, nullptr);
        page->findChild<QCheckBox *>(app)->setChecked(ticked);
        integrator->checksSubmit(layout);
    }
    void checkOffered(const QString &list) const
    {
        QVERIFY2(list.contains("velmor (64 bits)"), qPrintable(list));
        QVERIFY(list.contains("library name: " + App::instance()->pkcsLibPath("x86_64")));
        for (const char *token : { "Authentication", "Presence", "Authorization", "Qualified" })
            QVERIFY2(list.contains(QString("token: ") + token), token);
        QVERIFY(list.contains("NSS Internal PKCS #11 Module"));
    }

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
        App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
    }
    void init()
    {
        world.reset();
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));
        popups = std::make_unique<PopupCloser>();
        page = std::make_unique<QWidget>();
        layout = new QVBoxLayout(page.get());
        integrator = std::make_unique<Integrator>(App::instance(), nullptr);
    }
    void cleanup()
    {
        QVERIFY(popups->messages.isEmpty());
        integrator.reset();
        page.reset();
        TestHome::empty();
    }

    void firefoxTakesThePreferenceAndLosesItAgain()
    {
        if (!isInstalled("firefox-esr"))
            QSKIP("firefox-esr is not installed");
        const QString path = firefoxRoot() + "test.default";
        QVERIFY2(runFirefox(path), output);
        const ProfileFolder profile(path);
        QVERIFY(profile.has("prefs.js"));
        const QByteArray modulesBefore = profile.content("pkcs11.txt");

        // In the browser's own file. Recent versions do not record the value true, which is their default.
        const auto switchedOff = [&profile] {
            return profile.content("prefs.js").contains(QByteArray("user_pref(\"") + preference + "\", false);");
        };

        submit("Firefox", true);
        QVERIFY(integrator->resultText().startsWith("<span>Podłączono"));
        QVERIFY2(runFirefox(path), output);
        QVERIFY(!switchedOff());
        // A start of the browser changes nothing about it.
        submit("Firefox", true);
        QVERIFY(integrator->resultText().startsWith("<span>Ustawienia pozostały bez zmian"));

        submit("Firefox", false);
        QVERIFY(integrator->resultText().startsWith("<span>Odłączono"));
        QVERIFY2(firefoxComesTo(path, switchedOff), output);

        submit("Firefox", true);
        QVERIFY2(firefoxComesTo(path, [&switchedOff] { return !switchedOff(); }), output);
        QCOMPARE(profile.content("pkcs11.txt"), modulesBefore);
    }

    void moduleOfAnOldFirefoxIsOfferedAndGone()
    {
        if (!isInstalled("firefox-esr") || !isInstalled("modutil"))
            QSKIP("firefox-esr or libnss3-tools is not installed");
        const QString path = firefoxRoot() + "test.default";
        QVERIFY2(runFirefox(path), output);
        const ProfileFolder profile(path);
        profile.put("compatibility.ini",
                    profile.content("compatibility.ini").replace("LastVersion=", "LastVersion=76.0_"));

        submit("Firefox", true);
        QVERIFY(!profile.has("user.js"));
        checkOffered(modules(path));

        submit("Firefox", false);
        const QString list = modules(path);
        QVERIFY2(list.contains("NSS Internal PKCS #11 Module") && !list.contains("velmor"), qPrintable(list));
        QVERIFY2(certutilReads(path), output);
        // And the browser still starts on it.
        QVERIFY2(runFirefox(path), output);
    }

    // The database of somebody who has used such a browser before.
    void moduleIsOfferedFromADatabaseThatNssMade()
    {
        if (!isInstalled("modutil"))
            QSKIP("libnss3-tools is not installed");
        QDir().mkpath(sharedDatabase());
        QCOMPARE(run("certutil", { "-N", "-d", "sql:" + sharedDatabase(), "--empty-password" }), 0);

        submit(family, true);
        checkOffered(modules(sharedDatabase()));
        QVERIFY2(certutilReads(sharedDatabase()), output);

        submit(family, false);
        const QString list = modules(sharedDatabase());
        QVERIFY2(list.contains("NSS Internal PKCS #11 Module") && !list.contains("velmor"), qPrintable(list));
        QVERIFY2(certutilReads(sharedDatabase()), output);
    }

    // The files are empty until NSS opens them for writing the first time, as a browser does.
    void moduleIsOfferedFromADatabaseThatWasPrepared()
    {
        if (!isInstalled("modutil"))
            QSKIP("libnss3-tools is not installed");
        submit(family, true);
        QCOMPARE(run("certutil", { "-N", "-d", "sql:" + sharedDatabase(), "--empty-password" }, true), 0);
        checkOffered(modules(sharedDatabase()));

        submit(family, false);
        const QString list = modules(sharedDatabase());
        QVERIFY2(list.contains("NSS Internal PKCS #11 Module") && !list.contains("velmor"), qPrintable(list));
        QVERIFY2(certutilReads(sharedDatabase()), output);
    }

    void chromiumStartsOnThatHomeWithoutComplaint()
    {
        if (!isInstalled("chromium"))
            QSKIP("chromium is not installed");
        if (qEnvironmentVariableIsSet("VELMOR_SANITIZER_LIBRARY"))
            QSKIP("Its processes cannot load a library under a sanitizer");
        submit(family, true);
        const QString picture = TestHome::path() + "/shot.png";
        QCOMPARE(run("chromium", chromiumArguments({ "--screenshot=" + picture, "about:blank" })), 0);
        QVERIFY2(QFile::exists(picture), output);
        for (const QByteArray &line : output.split('\n')) {
            for (const char *word : { "nss", "pkcs", "velmor", "certificate" })
                QVERIFY2(!line.toLower().contains(word), line);
        }
    }

    void chromiumLooksForCertificatesOnTheCard()
    {
        for (const char *program : { "chromium", "openssl" }) {
            if (!isInstalled(program))
                QSKIP(program);
        }
        if (qEnvironmentVariableIsSet("VELMOR_SANITIZER_LIBRARY"))
            QSKIP("Its processes cannot load a library under a sanitizer");
        submit(family, true);
        QVERIFY(world.trace().empty());
        const QString port = freePort();
        QProcess server;
        QVERIFY2(startServer(server, port), output);

        QProcess chromium;
        start(chromium, "chromium", chromiumArguments({ "--ignore-certificate-errors", "https://localhost:" + port }));

        QTRY_VERIFY2_WITH_TIMEOUT(!world.trace("C_FindObjects").empty(), chromium.peek(2000), patience);
        for (QProcess *process : { &chromium, &server }) {
            process->terminate();
            QVERIFY(process->waitForFinished());
        }
    }
};

VELMOR_TEST(TestBrowsersLin)
#include "tst_browsers_lin.moc"
