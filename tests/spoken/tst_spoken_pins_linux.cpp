#include "spoken/story_test.h"

#include "gui/spoken_focus.h"

// The pages of the PINs, filled by keys and at a keypad, and what each result is told as.
namespace {

void pinpad(sim::SimWorld &world)
{
    world.setPinpad(StoryTeller::reader, true);
}

void lastTry(sim::SimWorld &world)
{
    world.setTries("anna", sim::Authentication, 1);
}

void lastPukTry(sim::SimWorld &world)
{
    world.setPukTries("locked-authorization", 1);
}

void answer(Driver &driver, sim::PadAnswer::Kind kind)
{
    sim::PadAnswer answer;
    answer.kind = kind;
    driver.waitForPad();
    driver.world.pad(answer);
}

void padChange(Driver &driver)
{
    driver.waitForPad();
    driver.world.padChange("1234", "4826");
}

void padUnblock(Driver &driver)
{
    driver.waitForPad();
    driver.world.padUnblock("87654321", "48261537");
}

void padFirstPin(Driver &driver)
{
    driver.waitForPad();
    driver.world.padFirstPin("87654321", "48261537");
}

// For the PUK it begins a second after the page has been entered, and the buttons of the footer go off.
void padWaits(Driver &driver)
{
    driver.waitForPad();
}

void padMismatch(Driver &driver)
{
    answer(driver, sim::PadAnswer::Kind::Mismatch);
}

void padReject(Driver &driver)
{
    answer(driver, sim::PadAnswer::Kind::Reject);
}

// The user is quick: on the footer before the reader begins.
void quickUser(Driver &driver)
{
    {
        const FocusPause pause;
        driver.click("bChangePinQualifiedCert");
        driver.find("bSettings")->setFocus();
    }
    driver.waitForPad();
}

void padCancel(Driver &driver)
{
    answer(driver, sim::PadAnswer::Kind::Cancel);
}

void slowCard(Driver &driver)
{
    driver.world.block("C_Login");
}

void goesOn(Driver &driver)
{
    driver.world.release();
}

void cardGoes(Driver &driver)
{
    driver.window->loadedReaders({}, "NO_CARD");
}

const Happenings happenings {
    { "PIN zmieniony na klawiaturze czytnika", padChange },
    { "PIN odblokowany na klawiaturze czytnika", padUnblock },
    { "PIN nadany na klawiaturze czytnika", padFirstPin },
    { "czytnik czeka na klawisze", padWaits },
    { "czytnik zaczyna, gdy fokus jest na „Ustawieniach”", quickUser },
    { "dwa różne PIN-y na klawiaturze czytnika", padMismatch },
    { "czytnik przerywa", padReject },
    { "czerwony przycisk C na klawiaturze czytnika", padCancel },
    { "karta działa wolno", slowCard },
    { "karta działa dalej", goesOn },
    { "karta znika", cardGoes },
};

const QStringList back { ">Wróć", "space", "=pageHome", "?Twoje dane" };
const QStringList cancelled { ">Anuluj", "space", "=pageHome", "?Twoje dane" };

QStringList change(const QString &container)
{
    return { ">Zmień PIN" + container, "space", "=pageChangePin", "?Wprowadź aktualny" };
}

QStringList digits(const QString &secret, const QString &fresh, const QString &repeat)
{
    return { "#" + secret, "Tab", "#" + fresh, "Tab", "#" + repeat };
}

QStringList unblock(const QString &container)
{
    return { ">" + container, "space", "=pageUnblockPin", "?PIN" };
}

const QString authentication = ": certyfikat do iden";
const QString authorization = ": certyfikat do podpisu";

QVector<Story> changeStories()
{
    const QStringList filled = change(authentication) + digits("1234", "4826", "4826");
    return {
        { "pin-change", "Puste pola, cztery cyfry", "anna", nullptr,
          change(authentication) + QStringList { "read", "#12" } + cancelled },
        { "pin-change", "Sześć cyfr", "anna", nullptr, change(authorization) + QStringList { "read" } + cancelled },
        { "pin-change", "Osiem cyfr", "anna", nullptr,
          QStringList { ">Szczegóły: certyfikat kwalifikowany", "Tab", "space", "=pageChangePin", "?Wprowadź", "read" }
              + cancelled },
        { "pin-change", "Wypełnione pola i udana zmiana", "anna", nullptr,
          filled + QStringList { "read", ">Zmień PIN", "space", "?PIN został zmieniony", "read" } + back },
        { "pin-change", "Trwa zmiana", "anna", nullptr,
          filled
              + QStringList { "!karta działa wolno", ">Zmień PIN", "Return", "?Proszę czekać", "read",
                              "!karta działa dalej", "?PIN został zmieniony" } },
        { "pin-change", "Powtórzony PIN różni się", "anna", nullptr,
          change(authentication) + digits("1234", "4826", "4827")
              + QStringList { ">Zmień PIN", "space", "?Powtórzony nowy PIN różni się", "read" } + cancelled },
        { "pin-change", "Nieprawidłowy PIN", "anna", nullptr,
          change(authentication) + digits("9753", "4826", "4826")
              + QStringList { ">Zmień PIN", "space", "?Niepoprawny aktualny PIN", "read" } + back
              + change(authentication) + QStringList { "read" } },
        { "pin-change", "Ostatnia próba i zablokowany PIN", "anna", lastTry,
          change(authentication) + digits("9753", "4826", "4826")
              + QStringList { ">Zmień PIN", "space", "=pageUnblockPin", "?PIN jest zablokowany", "read" } },
        { "pin-change", "Została jedna próba", "anna", lastTry,
          change(authentication) + QStringList { "read" } + cancelled },
        { "pin-change", "Karta znika", "anna", nullptr,
          change(authentication) + QStringList { "#12", "!karta znika", "&Brak połączenia" } },
        { "pin-change-pinpad",
          "Na klawiaturze czytnika",
          "anna",
          pinpad,
          { ">Zmień PIN" + authentication, "space", "=pageChangePin", "?postępuj zgodnie", "read",
            "!PIN zmieniony na klawiaturze czytnika", "&PIN został zmieniony", "read", ">Wróć", "space",
            "=pageHome" } },
        { "pin-change-pinpad",
          "Przerwana na czytniku",
          "anna",
          pinpad,
          { ">Zmień PIN" + authentication, "space", "=pageChangePin", "?postępuj zgodnie",
            "!czerwony przycisk C na klawiaturze czytnika", "&anulowana", "read", ">Wróć", "space", "=pageHome" } },
        { "pin-change-pinpad",
          "Dwa różne PIN-y",
          "anna",
          pinpad,
          { ">Zmień PIN" + authentication, "space", "=pageChangePin", "?postępuj zgodnie",
            "!dwa różne PIN-y na klawiaturze czytnika", "&Podane PINy różnią się", "read", ">Wróć", "space",
            "=pageHome" } },
        { "pin-change-pinpad",
          "Zamknięcie programu w czasie zmiany",
          "anna",
          pinpad,
          { ">Zmień PIN" + authentication, "space", "=pageChangePin", "?postępuj zgodnie", ">Zamknij", "(space",
            "?Zakończ najpierw", "read", "Escape", ")", "read", "!czerwony przycisk C na klawiaturze czytnika",
            "&anulowana" } },
    };
}

QVector<Story> unblockStories()
{
    const QString button = "Odblokuj PIN" + authorization;
    return {
        { "pin-unblock", "Puste pola", "locked-authorization", nullptr,
          unblock(button) + QStringList { "read" } + cancelled },
        { "pin-unblock", "Osiem cyfr", "locked-qualified", nullptr,
          unblock("Odblokuj PIN") + QStringList { "read" } + cancelled },
        { "pin-unblock", "Wypełnione pola i udane odblokowanie", "locked-authorization", nullptr,
          unblock(button) + QStringList { "Tab" } + digits("87654321", "482615", "482615")
              + QStringList { "read", ">Zmień PIN", "space", "?PIN został odblokowany", "read" } + back },
        { "pin-unblock", "Powtórzony PIN różni się", "locked-authorization", nullptr,
          unblock(button) + QStringList { "Tab" } + digits("87654321", "482615", "482616")
              + QStringList { ">Zmień PIN", "space", "?Powtórzony nowy PIN różni się", "read" } + cancelled },
        { "pin-unblock", "Nieprawidłowy PUK", "locked-authorization", nullptr,
          unblock(button) + QStringList { "Tab" } + digits("97531975", "482615", "482615")
              + QStringList { ">Zmień PIN", "space", "?Niepoprawny PUK", "read" } + back + unblock(button)
              + QStringList { "read" } },
        { "pin-unblock", "Ostatnia próba i zablokowany dowód", "locked-authorization", lastPukTry,
          unblock(button) + QStringList { "Tab" } + digits("97531975", "482615", "482615")
              + QStringList { ">Zmień PIN", "space", "=pageBlockedPuk_2", "?zablokowany", "read" } + back },
        { "pin-unblock", "Na klawiaturze czytnika", "locked-qualified", pinpad,
          unblock("Odblokuj PIN")
              + QStringList { "!czytnik czeka na klawisze", "read", "!PIN odblokowany na klawiaturze czytnika",
                              "&PIN został odblokowany", "read" }
              + back },
        { "pin-unblock",
          "Fokus na przycisku, który staje się nieczynny",
          "locked-qualified",
          pinpad,
          { "!czytnik zaczyna, gdy fokus jest na „Ustawieniach”", "&Minimalizuj",
            "!czerwony przycisk C na klawiaturze czytnika", "&anulowane" } },
        { "pin-unblock", "Przerwane na czytniku", "locked-qualified", pinpad,
          unblock("Odblokuj PIN") + QStringList { "!czerwony przycisk C na klawiaturze czytnika", "&anulowane", "read" }
              + back },
        { "pin-first", "Puste pola", "first-pin", nullptr, unblock("Nadaj PIN") + QStringList { "read" } + cancelled },
        { "pin-first", "Udane nadanie", "first-pin", nullptr,
          unblock("Nadaj PIN") + QStringList { "Tab" } + digits("87654321", "48261537", "48261537")
              + QStringList { "read", ">Nadaj PIN", "space", "?PIN został nadany", "read" } + back },
        { "pin-first", "Nieprawidłowy PUK", "first-pin", nullptr,
          unblock("Nadaj PIN") + QStringList { "Tab" } + digits("97531975", "48261537", "48261537")
              + QStringList { ">Nadaj PIN", "space", "?Niepoprawny PUK", "read" } + back },
        { "pin-first", "Na klawiaturze czytnika", "first-pin", pinpad,
          unblock("Nadaj PIN")
              + QStringList { "!czytnik czeka na klawisze", "read", "!PIN nadany na klawiaturze czytnika",
                              "&PIN został nadany", "read" }
              + back },
        { "pin-first", "Przerwane przez czytnik", "first-pin", pinpad,
          unblock("Nadaj PIN") + QStringList { "!czytnik przerywa", "&przerwane", "read" } + back },
        { "puk-blocked", "Zablokowany dowód", "locked-puk", nullptr,
          QStringList { ">Szczegóły: certyfikat kwalifikowany", "Tab", "space", "=pageBlockedPuk_2", "?zablokowany",
                        "read" }
              + back },
    };
}

} // namespace

class TestSpokenPins : public QObject, private StoryTest {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(teller.start()); }
    void cleanup() { teller.close(); }
    void cleanupTestCase() { teller.writeProtocols(); }

    void changeIsHeard_data() { addRows(changeStories()); }
    void changeIsHeard() { tell(happenings); }
    void unblockingIsHeard_data() { addRows(unblockStories()); }
    void unblockingIsHeard() { tell(happenings); }
};

VELMOR_TEST(TestSpokenPins)
#include "tst_spoken_pins_linux.moc"
