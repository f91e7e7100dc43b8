#include "spoken/story_test.h"

// The pages behind the arrows of the home page: personal data and certificates.
namespace {

void cardGoes(Driver &driver)
{
    driver.window->loadedReaders({}, "NO_CARD");
}

const Happenings happenings {
    { "karta znika", cardGoes },
};

QStringList data()
{
    return { ">Dane z velmor", "space", "=pageAllData", "read", ">Wróć", "space", "=pageHome", "?Twoje dane" };
}

QStringList certificates(const QString &container, const QString &issuer)
{
    return { ">Szczegóły: certyfikat " + container,
             "space",
             "=pageCertInfo",
             "?" + issuer,
             "read",
             ">Wróć",
             "space",
             "=pageHome",
             "?Twoje dane" };
}

QVector<Story> stories()
{
    return {
        { "personal-data", "Wszystkie dane i zdjęcie", "anna", nullptr, data() },
        { "personal-data", "Mężczyzna", "jan", nullptr, data() },
        { "personal-data", "Bez zdjęcia", "no-photo", nullptr, data() },
        { "personal-data", "Długie nazwy", "long-names", nullptr, data() },
        { "personal-data", "Bez miejsca urodzenia", "no-dg11", nullptr, data() },
        { "personal-data", "Bez organu wydającego", "no-dg12", nullptr, data() },
        { "personal-data", "Bez danych z odczytu zdalnego", "no-dg13", nullptr, data() },
        { "personal-data", "Cudzoziemiec", "foreigner", nullptr, data() },
        { "personal-data", "Karta bez danych", "no-data", nullptr, data() },
        { "personal-data",
          "Karta znika",
          "anna",
          nullptr,
          { ">Dane z velmor", "space", "=pageAllData", "!karta znika", "&Brak połączenia" } },
        { "certificates", "Do identyfikacji i uwierzytelniania", "anna", nullptr,
          certificates("do identyfikacji", "Wzorcowe") },
        { "certificates", "Do podpisu osobistego", "jan", nullptr, certificates("do podpisu", "Wzorcowe") },
        { "certificates", "Do potwierdzania obecności", "ewa", nullptr, certificates("do potwierdzania", "Wzorcowe") },
        { "certificates", "Kwalifikowane", "three-qualified", nullptr, certificates("kwalifikowany", "PL") },
        { "certificates", "Niezwykłe", "odd-certificates", nullptr, certificates("kwalifikowany", "Ostrel") },
        { "certificates", "Nie do odczytania", "odd-certificates", nullptr,
          certificates("do identyfikacji", "Nie udało się") },
        { "certificates",
          "Otwieranie, przerwane zdjęciem karty",
          "anna",
          nullptr,
          { ">Szczegóły: certyfikat do iden", "space", "?Wzorcowe", ">zobacz szczegóły", "space",
            "?Trwa otwieranie certyfikatu", "read", "!karta znika", "&Brak połączenia" } },
    };
}

} // namespace

class TestSpokenPages : public QObject, private StoryTest {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(teller.start());
        // No viewer is there to be found.
        qputenv("PATH", {});
    }
    void cleanup() { teller.close(); }
    void cleanupTestCase() { teller.writeProtocols(); }

    void pageIsHeard_data() { addRows(stories()); }
    void pageIsHeard() { tell(happenings); }
};

VELMOR_TEST(TestSpokenPages)
#include "tst_spoken_pages_linux.moc"
