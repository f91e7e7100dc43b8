#include "browser/integrator.h"

#include "app/app.h"
#include "platform/os.h"
#include "shared.h"
#include "support/installed_programs.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QLabel>
#include <QVBoxLayout>

using namespace InstalledPrograms;

// Where browsers and their profiles are found by the list of installed programs.
class TestOsBrowsersWin : public QObject {
    Q_OBJECT

private:
    Os os;

    static QMap<QString, QString> entry(const QString &name, const QString &version, const QString &folder)
    {
        QMap<QString, QString> values { { "DisplayName", name } };
        if (!version.isEmpty())
            values["DisplayVersion"] = version;
        if (!folder.isEmpty())
            values["InstallLocation"] = folder;
        return values;
    }

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
    }
    void init() { uninstall(); }
    void cleanup()
    {
        uninstall();
        QDir(os.profilesRoot("Firefox")).removeRecursively();
    }

    void nothingIsFoundWhereNothingIsInstalled() { QCOMPARE(os.which("Firefox"), QString()); }

    void programIsItsNameInItsFolder_data()
    {
        QTest::addColumn<QString>("displayName");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("path");
        QTest::newRow("plain") << "Mozilla Firefox (x64 pl)"
                               << "C:\\Mozilla"
                               << "C:\\Mozilla\\firefox.exe";
        QTest::newRow("ESR") << "Mozilla Firefox ESR (x64 pl)"
                             << "C:\\ESR"
                             << "C:\\ESR\\firefox.exe";
        QTest::newRow("other case") << "MOZILLA FIREFOX"
                                    << "C:\\Mozilla"
                                    << "C:\\Mozilla\\firefox.exe";
        QTest::newRow("backslash at the end") << "Firefox"
                                              << "C:\\Mozilla\\"
                                              << "C:\\Mozilla\\firefox.exe";
    }

    void programIsItsNameInItsFolder()
    {
        QFETCH(QString, displayName);
        QFETCH(QString, folder);
        QFETCH(QString, path);
        install({ { 64, "a", entry(displayName, "128.0", folder) } });
        LogCatcher log;
        QCOMPARE(os.which("Firefox"), path);
        QVERIFY(log.has("inst dir  " + folder));
        QVERIFY(log.has("which Firefox " + path));
    }

    void folderIsTakenFromTheNarrowListIfTheWideHasNone()
    {
        install({ { 64, "a", entry("Firefox", "128.0", "") }, { 32, "a", entry("Firefox", "128.0", "C:\\Narrow") } });
        QCOMPARE(os.which("Firefox"), QString("C:\\Narrow\\firefox.exe"));
    }

    void programWithoutAFolderIsNotOffered()
    {
        install({ { 64, "a", entry("Firefox", "128.0", "") } });
        QCOMPARE(os.which("Firefox"), QString());
        Integrator integrator(App::instance(), nullptr);
        QCOMPARE(integrator.findApps(), 0);
    }

    void entryWithoutVersionIsPassedOver()
    {
        install({ { 64, "a", entry("Firefox", "", "") }, { 64, "b", entry("Firefox", "128.0", "C:\\Later") } });
        QCOMPARE(os.which("Firefox"), QString("C:\\Later\\firefox.exe"));
    }

    void entryWithAFolderAndNoVersionIsPassedOverToo()
    {
        install({ { 64, "a", entry("Firefox", "", "C:\\Folder") },
                  { 64, "b", entry("Firefox", "128.0", "C:\\Later") },
                  { 32, "a", entry("Firefox", "", "C:\\Narrow") } });
        QCOMPARE(os.appInfo("Firefox", true, 64).value("version"), QString("128.0"));
        QCOMPARE(os.which("Firefox"), QString("C:\\Later\\firefox.exe"));
        QVERIFY(os.appInfo("Firefox", true, 32).isEmpty());
    }

    void programWithAFolderAndNoVersionAnywhereIsNotOffered()
    {
        install({ { 64, "a", entry("Firefox", "", "C:\\Wide") }, { 32, "a", entry("Firefox", "", "C:\\Narrow") } });
        QCOMPARE(os.which("Firefox"), QString());
    }

    void rootsLieInTheRoamingFolder()
    {
        const QString roaming = QDir::homePath() + "/AppData/Roaming/";
        QCOMPARE(os.profilesRoot("Firefox"), roaming + "Mozilla/Firefox/Profiles/");
        QCOMPARE(os.profilesRoot("Thunderbird"), roaming + "Thunderbird/Profiles/");
        QCOMPARE(os.profilesRoot("Chrome, Chromium, Edge"), QString());
        QCOMPARE(os.profileDirs("Chrome, Chromium, Edge"), QStringList());
    }

    void withoutABrowserALabelSaysSo()
    {
        QWidget page;
        auto *layout = new QVBoxLayout(&page);
        Integrator integrator(App::instance(), nullptr);
        QCOMPARE(integrator.checksCreate(layout, nullptr), 0);
        QCOMPARE(qobject_cast<QLabel *>(layout->itemAt(0)->widget())->text(),
                 QString("Brak zainstalowanych przeglądarek wymagających integracji"));
        integrator.checksSubmit(layout);
        QCOMPARE(integrator.resultText(), QString());
    }

    // A profile as the browser leaves it here, byte for byte.
    void profileIsConnectedAndDisconnected()
    {
        install({ { 64, "a", entry("Mozilla Firefox", "70.0", "C:\\Mozilla") } });
        const ProfileFolder files(os.profilesRoot("Firefox") + "a.default", "70.0", "WINNT_x86-msvc");
        QCOMPARE(os.profileDirs("Firefox"), QStringList { files.path() });
        QWidget page;
        auto *layout = new QVBoxLayout(&page);
        Integrator integrator(App::instance(), nullptr);
        QCOMPARE(integrator.checksCreate(layout, nullptr), 1);
        auto *box = page.findChild<QCheckBox *>("Firefox");
        QVERIFY(!box->isChecked());

        box->setChecked(true);
        integrator.checksSubmit(layout);

        const QByteArray module = App::instance()->pkcsLibPath("i386").toUtf8();
        QVERIFY(module.endsWith("\\velmor-pkcs11-32.dll") && !module.contains('/'));
        const QByteArray after = files.content("pkcs11.txt");
        QVERIFY(after.startsWith(ProfileFolder::otherModules("\r\n") + "\r\nlibrary=" + module
                                 + "\r\nname=velmor (32 bits)\r\nNSS=slotParams={0xffffffff=[slotFlags=PublicCerts] "));
        QVERIFY(after.endsWith(" 0xf=[slotFlags=PublicCerts]}\r\n"));

        box->setChecked(false);
        integrator.checksSubmit(layout);
        QCOMPARE(files.content("pkcs11.txt"), ProfileFolder::otherModulesRewritten());
    }
};

VELMOR_TEST(TestOsBrowsersWin)
#include "tst_os_browsers_win.moc"
