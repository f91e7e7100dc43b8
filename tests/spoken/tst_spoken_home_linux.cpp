#include "spoken/story_test.h"

#include "support/raw_inbox.h"

// The home page, and what is shown while there is no card on it.
namespace {

constexpr char second[] = "Czytnik Beta";
constexpr char third[] = "Czytnik Gamma";

void reading(Driver &driver)
{
    driver.world.setDelay(15);
    driver.world.insertCard(StoryTeller::reader, "jan");
    driver.window->loadedReaders({ StoryTeller::reader });
}

void heldReading(Driver &driver)
{
    driver.world.block("C_Initialize");
    reading(driver);
}

void goesOn(Driver &driver)
{
    driver.world.release();
    driver.waitForCard();
}

template <const char *error>
void noCard(Driver &driver)
{
    driver.window->loadedReaders({}, error);
}

constexpr char noReader[] = "NO_READER";
constexpr char emptyReader[] = "NO_CARD";
constexpr char strangeCard[] = "NO_SUPPORTED_CARD";
constexpr char canAsked[] = "CAN";

void twoReaders(Driver &driver)
{
    Driver::writeReadersConf(QByteArray(StoryTeller::reader) + "=E65535\r\n" + second + "=E65535\r\n");
    driver.world.insertCard(second, "jan");
    driver.window->loadedReaders({ StoryTeller::reader, second });
}

void threeReaders(Driver &driver)
{
    driver.world.insertCard(third, "ewa");
    twoReaders(driver);
    driver.window->loadedReaders({ StoryTeller::reader, second, third });
}

// The program that asks for the number.
void canAskedElsewhere(Driver &driver)
{
    const RawInbox can("velmor_can", 500);
    driver.window->loadedReaders({}, canAsked);
}

// No line names the reader.
void unknownReader(Driver &driver)
{
    Driver::writeReadersConf({});
    driver.window->loadAll();
    driver.waitForCard();
}

const Happenings happenings {
    { "karta leży na czytniku", reading },
    { "karta leży na czytniku, który się zaciął", heldReading },
    { "czytnik działa dalej", goesOn },
    { "czytnika nie ma", noCard<noReader> },
    { "karty nie ma", noCard<emptyReader> },
    { "jest karta innego rodzaju", noCard<strangeCard> },
    { "karta nie odpowiada", noCard<canAsked> },
    { "inny program pyta o numer CAN", canAskedElsewhere },
    { "są dwa czytniki", twoReaders },
    { "są trzy czytniki", threeReaders },
    { "czytnika nie ma w pliku konfiguracyjnym", unknownReader },
};

QVector<Story> stories()
{
    const QStringList away { ">Ustawienia", "space", "=pageSettings" };
    const QStringList toHelp { "read", ">Pomoc", "space", "=pageHelp" };
    return {
        { "home", "Karta z czterema certyfikatami", "anna", nullptr, QStringList { "read" } + away },
        { "home", "Karta bez zdjęcia", "no-photo", nullptr, QStringList { "read" } + away },
        { "home", "Karta bez danych osobowych", "no-dg13", nullptr, QStringList { "read" } + away },
        { "home", "Trzy certyfikaty kwalifikowane", "three-qualified", nullptr, QStringList { "read" } + away },
        { "home", "Karta z samym certyfikatem obecności", "presence-only", nullptr, QStringList { "read" } + away },
        { "home", "Zablokowane PIN-y", "locked-pins", nullptr, QStringList { "read" } + away },
        { "home", "Karta bez pierwszego PIN-u", "first-pin", nullptr, QStringList { "read" } + away },
        { "home",
          "Wybór jednego z dwóch czytników",
          "anna",
          nullptr,
          { "!są dwa czytniki", "read", ">Czytnik Alfa", "space", "Down", "Return", "?Jan", "read" } },
        { "home",
          "Wybór trzeciego z trzech czytników",
          "anna",
          nullptr,
          { "!są trzy czytniki", "read", ">Czytnik Alfa", "space", "Down", "Down", "?Czytnik Gamma", "Return", "?Ewa",
            "read" } },
        { "home", "Długie nazwy", "long-names", nullptr, QStringList { "read" } + away },
        { "home",
          "Czytnik, który może nie działać w pełni",
          "anna",
          nullptr,
          { "!czytnika nie ma w pliku konfiguracyjnym", "read", ">Ostrzeżenie o czytniku", "(space", "?Upewnij się",
            "read", "Escape", ")", ">Czytnik może", "(space", "?Upewnij się", ">OK", "space", ")", "read" } },
        { "reading", "Odczyt karty", "", nullptr, { "!karta leży na czytniku", "?Twoje dane z velmor", "read" } },
        { "reading",
          "Odczyt, który stoi",
          "",
          nullptr,
          { "!karta leży na czytniku, który się zaciął", "?Trwa łączenie z czytnikami", "read", "!czytnik działa dalej",
            "?Twoje dane z velmor" } },
        { "no-card", "Bez czytnika", "anna", nullptr, QStringList { "!czytnika nie ma", "&Brak połączenia" } + toHelp },
        { "no-card", "Czytnik bez karty", "anna", nullptr,
          QStringList { "!karty nie ma", "&Brak połączenia" } + toHelp },
        { "no-card", "Karta innego rodzaju", "anna", nullptr,
          QStringList { "!jest karta innego rodzaju", "&Brak połączenia" } + toHelp },
        { "no-card", "Karta, która nie odpowiada", "anna", nullptr,
          QStringList { "!karta nie odpowiada", "&Brak połączenia" } + toHelp },
        { "no-card", "Karta, która czeka na numer CAN", "anna", nullptr,
          QStringList { "!inny program pyta o numer CAN", "&Oczekiwanie na wprowadzenie" } + toHelp },
        { "no-card",
          "Karta znów leży na czytniku",
          "anna",
          nullptr,
          { "!karty nie ma", "&Brak połączenia", "!karta leży na czytniku", "?Twoje dane z velmor" } },
        { "no-electronic-layer", "Karta bez warstwy elektronicznej", "no-certificates", nullptr,
          QStringList { "read" } + toHelp },
    };
}

} // namespace

class TestSpokenHome : public QObject, private StoryTest {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(teller.start()); }
    void cleanup() { teller.close(); }
    void cleanupTestCase() { teller.writeProtocols(); }

    void pageIsHeard_data() { addRows(stories()); }
    void pageIsHeard() { tell(happenings); }
};

VELMOR_TEST(TestSpokenHome)
#include "tst_spoken_home_linux.moc"
