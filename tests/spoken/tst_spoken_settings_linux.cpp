#include "spoken/story_test.h"

#include "base/ipc_msg.h"
#include "base/settings.h"
#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/profile_folder.h"

#include <QDir>

// Settings and help, which need no card.
namespace {

void cardComes(Driver &driver)
{
    driver.window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "readers", "0:Czytnik Alfa||" } });
}

void cardGoes(Driver &driver)
{
    driver.window->loadedReaders({}, "NO_CARD");
}

void monitorAnswers(Driver &driver)
{
    driver.window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" },
                                       { "diagnoseReaders", "Liczba czytników: 1\n- Czytnik Alfa: karta gotowa" } });
}

const Happenings happenings {
    { "jest czytnik z kartą", cardComes },
    { "karta znika", cardGoes },
    { "są wiadomości o czytnikach", monitorAnswers },
};

const QString firefox = "Przeglądarce Firefox";
const QStringList toSettings { ">Ustawienia", "space", "=pageSettings", "?Ustawienia" };
const QStringList toHelp { ">Pomoc", "space", "=pageHelp", "?Pomoc techniczna" };
const QStringList backHome { ">Wróć", "space", "=pageHome", "?Twoje dane" };

QStringList onResult(const QString &text)
{
    return { "space", "?" + text, "=pageIntegration", "read", ">Wróć", "space", "=pageSettings" };
}

QVector<Story> settingsStories()
{
    return {
        { "settings", "Z kartą", "anna", nullptr, toSettings + QStringList { "read" } + backHome },
        { "settings", "Bez karty, jak po uruchomieniu", "", nullptr, { "read", "!jest czytnik z kartą", "read" } },
        { "settings", "Karta znika", "anna", nullptr, toSettings + QStringList { "!karta znika", "read" } },
        { "settings", "Nic nie zmienione w przeglądarkach", "anna", nullptr,
          toSettings + QStringList { ">Ustaw" } + onResult("pozostały bez zmian") + backHome },
        { "settings", "Firefox podłączony i odłączony", "anna", nullptr,
          toSettings + QStringList { ">" + firefox, "space", ">Ustaw" } + onResult("Podłączono")
              + QStringList { ">" + firefox, "space", ">Ustaw" } + onResult("Odłączono") + backHome },
        { "settings", "Nic nie zmienione w dodatkowych ustawieniach", "anna", nullptr,
          toSettings + QStringList { ">Używaj starszego", "Tab" } + onResult("pozostały bez zmian") + backHome },
        { "settings", "Numer CAN nie będzie zapamiętywany", "anna", nullptr,
          toSettings + QStringList { ">Wyłącz możliwość", "space", "Tab", "Tab" } + onResult("zostały zapisane")
              + backHome },
        { "settings", "Starszy mechanizm", "anna", nullptr,
          toSettings + QStringList { ">Używaj starszego", "space", "Tab" } + onResult("Zdejmij i przyłóż") + backHome },
    };
}

QVector<Story> helpStories()
{
    return {
        { "help", "Z kartą", "anna", nullptr, toHelp + QStringList { "read" } + backHome },
        { "help", "Bez karty", "", nullptr, toHelp + QStringList { "read" } },
        { "help", "Z wiadomościami o czytnikach", "anna", nullptr,
          toHelp
              + QStringList { "!są wiadomości o czytnikach", "read", ">przycisk odśwież", "space", "?przycisk kopiuj",
                              "space" }
              + backHome },
        { "help", "Zbieranie logów", "anna", nullptr,
          toHelp + QStringList { ">Informacje o systemie", "Tab", "Return", "read" } + backHome },
    };
}

} // namespace

class TestSpokenSettings : public QObject, private StoryTest {
    Q_OBJECT

private:
    std::unique_ptr<FakePrograms> programs; // the ear and the keyboard are found before
    std::unique_ptr<ProfileFolder> profile;

private slots:
    void initTestCase()
    {
        QVERIFY(teller.start());
        programs = std::make_unique<FakePrograms>();
        programs->install("bin/firefox");
        profile = std::make_unique<ProfileFolder>(Os().profilesRoot("Firefox") + "a.default", "128.0");
    }
    void cleanup()
    {
        teller.close();
        QDir(Os().logsDir()).removeRecursively();
        for (const char *key : { SettingsKey::hideCheckboxCanRemember, SettingsKey::useCspForRsa })
            Settings::instance()->setValue(key, false);
    }
    void cleanupTestCase() { teller.writeProtocols(); }

    void settingsAreHeard_data() { addRows(settingsStories()); }
    void settingsAreHeard() { tell(happenings); }
    void helpIsHeard_data() { addRows(helpStories()); }
    void helpIsHeard() { tell(happenings); }
};

VELMOR_TEST(TestSpokenSettings)
#include "tst_spoken_settings_linux.moc"
