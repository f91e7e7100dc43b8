#pragma once

#include "browser/integrator.h"

#include "app/app.h"
#include "base/platform.h"
#include "platform/os.h"
#include "shared.h"
#include "support/fake_programs.h"
#include "support/popup_closer.h"
#include "support/profile_folder.h"
#include "support/testmain.h"

#include <QCheckBox>
#include <QVBoxLayout>

#include <memory>

// The browser integration on a home with hand-made profiles, where Firefox is installed.
class IntegratorFixture {
protected:
    static constexpr const char *family = "Chrome, Chromium, Edge";
    static constexpr const char *on = "user_pref(\"security.osclientcerts.autoload\", true);\r\n";
    static constexpr const char *off = "user_pref(\"security.osclientcerts.autoload\", false);\r\n";
    static constexpr const char *noChangeConnecting = "Ustawienia pozostały bez zmian dla aplikacji \"Firefox\".";
    static constexpr const char *noChangeDisconnecting = "Ustawienia pozostały bez zmian dla aplikacji \"Firefox\"";
    static QString connected(const QString &app)
    {
        return "Podłączono moduł obsługujący kartę velmor<br/> w programie \"" + app
            + "\".<br/>Zmiany będą widoczne po ponownym uruchomieniu przeglądarki.";
    }
    static QString disconnected(const QString &app)
    {
        return "Odłączono moduł obsługujący kartę velmor<br/> w programie \"" + app
            + "\".<br/>Zmiany będą widoczne po ponownym uruchomieniu przeglądarki.";
    }
    static QString noProfile(const QString &app)
    {
        return "<span style=\"color:#EA0449;\">Nie udało się odnaleźć profilu aplikacji, uruchom aplikacje \"" + app
            + "\" i spróbuj ponownie.</span>";
    }
    static QByteArray entry(const QByteArray &library)
    {
        QByteArray slots_;
        for (const char *slot : { "0xffffffff", "0x0", "0x1", "0x2", "0x3", "0x4", "0x5", "0x6", "0x7", "0x8", "0x9",
                                  "0xa", "0xb", "0xc", "0xd", "0xe", "0xf" })
            slots_ += QByteArray(" ") + slot + "=[slotFlags=PublicCerts]";
        return "\r\nlibrary=" + library + "\r\nname=velmor (64 bits)\r\nNSS=slotParams={" + slots_.mid(1) + "}\r\n";
    }

    std::unique_ptr<FakePrograms> programs;
    std::unique_ptr<PopupCloser> popups;
    std::unique_ptr<Integrator> integrator;
    std::unique_ptr<QWidget> page;
    QVBoxLayout *layout = nullptr;

    static QByteArray module() { return App::instance()->pkcsLibPath("x86_64").toLocal8Bit(); }
    static ProfileFolder profile(const QString &name, const QByteArray &version)
    {
        return { Os().profilesRoot("Firefox") + name, version };
    }
    static ProfileFolder sharedDatabase() { return ProfileFolder(QDir::homePath() + "/.pki/nssdb"); }

    int createChecks()
    {
        Integrator::checksClear(layout);
        return integrator->checksCreate(layout, nullptr);
    }
    QCheckBox *check(const char *app) { return page->findChild<QCheckBox *>(app); }
    // The page's way: boxes, a click of the user, the button.
    QString submit(const char *app, bool ticked)
    {
        createChecks();
        check(app)->setChecked(ticked);
        integrator->checksSubmit(layout);
        return integrator->resultText();
    }

    // Left by a former version, which was installed elsewhere.
    static QByteArray oldEntry() { return entry("/old/velmor-pkcs11-64.so"); }

    // The family's row is one of Linux alone.
    static bool hasFamily() { return Platform::word() == "lin"; }
    static QStringList rows() { return hasFamily() ? QStringList { "Firefox", family } : QStringList { "Firefox" }; }
    static void setUpApplication()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
        App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
    }
    void setUp()
    {
        TestHome::empty();
        programs = std::make_unique<FakePrograms>();
        programs->installFirefox();
        popups = std::make_unique<PopupCloser>();
        integrator = std::make_unique<Integrator>(App::instance(), nullptr);
        page = std::make_unique<QWidget>();
        layout = new QVBoxLayout(page.get());
    }
    void tearDown()
    {
        page.reset();
        integrator.reset();
        popups.reset();
        programs.reset();
        TestHome::empty();
    }
};
