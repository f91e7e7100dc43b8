#include "spoken/story_test.h"

#include "app/app.h"
#include "base/ipc_msg.h"
#include "base/settings.h"
#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/profile_folder.h"

#include <QDir>
#include <QWindow>

// Settings and help, which need no card, and what comes from other programs.
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

void libraryMissing(Driver &driver)
{
    App::instance()->init("Menedżer", TestHome::path() + "/empty-root", "x86_64", "Manager");
    driver.window->loadedReaders({ StoryTeller::reader });
}

void newVersion(Driver &driver)
{
    Settings::instance()->setValue(SettingsKey::updateAvailable, "true");
    driver.window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "checkForUpdate", "" } });
}

std::unique_ptr<QWindow> otherProgram;

void otherProgramHasKeys(Driver &driver)
{
    otherProgram = std::make_unique<QWindow>();
    otherProgram->resize(10, 10);
    otherProgram->show();
    otherProgram->requestActivate();
    Driver::waitFor([&] { return !driver.window->isActiveWindow(); });
}

// What a second program sends before it ends.
void startedAgain(Driver &driver)
{
    driver.window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "windowFocus", 1 } });
    Driver::waitFor([&] { return driver.window->isActiveWindow(); });
}

QString profilePath()
{
    return Os().profilesRoot("Firefox") + "a.default";
}

// One of those into whose list of modules is written.
void profileIsOld(Driver &)
{
    const ProfileFolder files(profilePath(), "60.0");
}

void listIsAFolder(Driver &)
{
    QFile::remove(profilePath() + "/pkcs11.txt");
    QDir().mkpath(profilePath() + "/pkcs11.txt");
}

const Happenings happenings {
    { "nie ma biblioteki karty", libraryMissing },
    { "jest nowa wersja programu", newVersion },
    { "klawiaturę ma inny program", otherProgramHasKeys },
    { "program jest uruchamiany drugi raz", startedAgain },
    { "profil jest ze starego Firefoksa", profileIsOld },
    { "pliku przeglądarki nie można zapisać", listIsAFolder },
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
        { "settings", "Firefox bez profilu", "anna", nullptr,
          toSettings + QStringList { ">" + firefox, "space", ">Ustaw" } + onResult("Nie udało się odnaleźć profilu")
              + backHome },
        { "settings", "Nic nie zmienione w dodatkowych ustawieniach", "anna", nullptr,
          toSettings + QStringList { ">Używaj starszego", "Tab" } + onResult("pozostały bez zmian") + backHome },
        { "settings", "Numer CAN nie będzie zapamiętywany", "anna", nullptr,
          toSettings + QStringList { ">Wyłącz możliwość", "space", "Tab", "Tab" } + onResult("zostały zapisane")
              + backHome },
        { "settings", "Plik przeglądarki, którego nie można zapisać", "anna", nullptr,
          QStringList { "!profil jest ze starego Firefoksa" } + toSettings
              + QStringList { ">" + firefox, "space", "!pliku przeglądarki nie można zapisać", ">Ustaw", "(space",
                              "?Nie można zapisać", "read", "Escape", ")", "=pageIntegration", "read" } },
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
                              "space", "read" }
              + backHome },
        { "help", "Zbieranie logów", "anna", nullptr,
          toHelp + QStringList { ">Informacje o systemie", "Tab", "Return", "read" } + backHome },
    };
}

QVector<Story> otherStories()
{
    return {
        { "update",
          "Nowa wersja programu",
          "anna",
          nullptr,
          { "!jest nowa wersja programu", "read", ">Aktualizuj aplikację", "Tab", "space", "?Aktualizuję", "Tab",
            "?Twoje dane", "read" } },
        { "update",
          "Nowa wersja programu, strzałką",
          "anna",
          nullptr,
          { "!jest nowa wersja programu", ">Aktualizuj aplikację", "space", "&Aktualizuję", "Tab", "&Twoje dane" } },
        { "second-start",
          "Ze stroną główną",
          "anna",
          nullptr,
          { "!klawiaturę ma inny program", "!program jest uruchamiany drugi raz", "?Twoje dane", "read" } },
        { "second-start", "Z ustawieniami", "anna", nullptr,
          toSettings
              + QStringList { "!klawiaturę ma inny program", "!program jest uruchamiany drugi raz", "?Ustawienia",
                              "read" } },
        { "second-start",
          "Bez karty, jak po uruchomieniu",
          "",
          nullptr,
          { "!klawiaturę ma inny program", "!program jest uruchamiany drugi raz", "read" } },
        { "no-library",
          "Bez biblioteki karty",
          "",
          nullptr,
          { "!nie ma biblioteki karty", "?Trwa odczyt danych z karty", "read" } },
        { "closing", "Zamknięcie programu", "anna", nullptr, { ">Zamknij", "space", "?Zamykanie aplikacji" } },
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
    }
    void init()
    {
        // The window looks for it when it opens.
        if (!QString(QTest::currentDataTag()).contains("bez profilu"))
            profile = std::make_unique<ProfileFolder>(profilePath(), "128.0");
    }
    void cleanup()
    {
        otherProgram.reset();
        teller.close();
        App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
        QDir(Os().logsDir()).removeRecursively();
        QDir(profilePath()).removeRecursively();
        for (const char *key : { SettingsKey::hideCheckboxCanRemember, SettingsKey::useCspForRsa })
            Settings::instance()->setValue(key, false);
        Settings::instance()->setValue(SettingsKey::updateAvailable, "false");
    }
    void cleanupTestCase() { teller.writeProtocols(); }

    void settingsAreHeard_data() { addRows(settingsStories()); }
    void settingsAreHeard() { tell(happenings); }
    void helpIsHeard_data() { addRows(helpStories()); }
    void helpIsHeard() { tell(happenings); }
    void othersAreHeard_data() { addRows(otherStories()); }
    void othersAreHeard() { tell(happenings); }
};

VELMOR_TEST(TestSpokenSettings)
#include "tst_spoken_settings_linux.moc"
