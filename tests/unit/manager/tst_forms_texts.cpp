#include "form_fixture.h"

// What the forms themselves say, to the eye and to a screen reader. Everything else is filled in by the window.
class TestFormsTexts : public QObject, private FormFixture {
    Q_OBJECT

private slots:
    void initTestCase() { setUpForm(); }
    void fixedTextsAreThoseOfTheProgram_data();
    void fixedTextsAreThoseOfTheProgram();
    void accessibleTextsAreFixedInTheForm_data();
    void accessibleTextsAreFixedInTheForm();
};

void TestFormsTexts::fixedTextsAreThoseOfTheProgram_data()
{
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, const char *text) { QTest::newRow(name) << QString::fromUtf8(text); };
    add("bWroc", "Wróć");
    add("bWrocPin", "Wróć");
    add("bWrocPuk", "Wróć");
    add("bIntegrationFinnish", "Wróć");
    add("bCancel", "Anuluj");
    add("bCancel_2", "Anuluj");
    add("bChangePin", "Zmień PIN");
    add("lReaderDesc", "Czytnik:");
    add("bReaderWarning", "Czytnik może nie działać w pełni prawidłowo");
    add("lActualPin", "Aktualny PIN");
    add("lNewPin", "Nowy PIN");
    add("lRepeatPin", "Powtórz nowy PIN");
    add("lSTryNum", "Trzykrotne wpisanie nieprawidłowego PIN-u zablokuje go.");
    add("lSTryNumpinpad", "Trzykrotne wpisanie nieprawidłowego PIN-u zablokuje go.");
    add("lSTryNumPUK", "Trzykrotne wpisanie nieprawidłowego PUK-u zablokuje dowód.");
    add("lSTryNumPUKpinpad", "Trzykrotne wpisanie nieprawidłowego PUK-u zablokuje dowód.");
    add("lPukBlocked_3", "Twój dowód nie ma warstwy elektronicznej");
    add("cbCSPChoose", "Używaj starszego mechanizmu (CSP)\ndla certyfikatów kwalifikowanych");
    add("labelTitleAuthenCert", "Certyfikat do \nidentyfikacji i uwierzytelniania");
    add("labelTitleAuthorCert", "Certyfikat do \npodpisu osobistego");
    add("labelTitlePresenceCert", "Certyfikat do \npotwierdzania obecności");
    add("labelTitleQualifiedCert", "Certyfikat \nkwalifikowany");
    add("lTextAuthenCert", "<p>Możesz potwierdzać swoją tożsamość w internecie (na przykład korzystać z e-usług) </p>");
    add("lTextAuthorCert", "<p>Możesz podpisywać dokumenty (służy jako elektroniczny podpis) </p>");
    add("lTextPresenceCert", "<p>Możesz potwierdzać swoją obecność (na przykład w placówce medycznej)</p>");
    add("lTextQualifiedCert", "<p>Możesz dodawać certyfikaty kwalifikowane </p>");
    add("lTryNumDesc_2",
        "Postępuj zgodnie z komunikatami na czytniku:\n1. Podaj aktualny PIN\n2. Powtórz aktualny PIN\n"
        "3. Podaj nowy PIN\n4. Powtórz nowy PIN");
    add("lCancelDesc",
        "Jeśli chcesz anulować operację zmiany PIN-u, naciśnij czerwony przycisk C na klawiaturze czytnika.");
    add("lCancelDesc_2",
        "Jeśli chcesz anulować operacje zmiany PINu, naciśnij czerwony przycisk C na klawiaturze czytnika.");
    add("lPukInfoPinPad", "Postępuj zgodnie z komunikatami na czytniku:\n\n1. Podaj PUK");
    add("lPukInfoPinPad_3", "2. Podaj nowy PIN");
    add("lPukInfoPinPad_5", "3. Powtórz nowy PIN");
    add("lPuk", "Wpisz PUK");
    add("lNewPin_2", "Nowy PIN");
    add("lRepeatPin_2", "Powtórz nowy PIN");
    add("label", "<html><head/><body>Integracja velmor<br>z przeglądarkami</body></html>");
    add("lDesc",
        "<html><head/><body><p>Jeśli chcesz używać velmor korzystając </p><p>z usług dostępnych przez internet "
        "zintegruj aplikację z przeglądarką internetową.</p></body></html>");
    add("lDesc2", "Używaj velmor w:");
    add("label_2", "Dodatkowe ustawienia");
    add("cbCANStorage", "Wyłącz możliwość zapamiętywania numeru CAN");
    add("bIntegrate", "Ustaw");
    add("bCANSettings", "Ustaw");
    add("lPukBlocked_4", "Pomoc techniczna");
    add("bRaport", "Zgłoś problem");
    add("lPukBlocked_8", "Informacje o systemie");
    add("bDiagnosticStart", "Odśwież");
    add("bCopyRaport", "Kopiuj do\n schowka");
    // Until the window knows where the documents lie.
    const char *help = "<a href='https://pomoc.velmor.example/' style='color:#2b9eeb;'>%1</a>";
    for (const auto &link : std::initializer_list<std::pair<const char *, const char *>> {
             { "lGuide", "Instrukcja" }, { "lLicense", "Umowa  Licencyjna" }, { "lChangelog", "Historia Zmian" } })
        add(link.first, qUtf8Printable(QString(help).arg(link.second)));
    const char *captions[][2] = { { "nameFrame_2", "Imiona:  " },
                                  { "surnameFrame_2", "Nazwisko:  " },
                                  { "familyNameFrame", "Nazwisko rodowe:  " },
                                  { "fatherNameFrame", "Imię ojca:  " },
                                  { "motherNameFrame", "Imię matki:  " },
                                  { "brthDateFrame", "Data urodzenia:  " },
                                  { "birthPlaceFrame", "Miejsce urodzenia:  " },
                                  { "sexFrame", "Płeć:  " },
                                  { "peselFrame", "PESEL:  " },
                                  { "nationalityFrame", "Obywatelstwo:  " },
                                  { "numIdFrame_2", "Seria i numer dowodu:  " },
                                  { "expDateFrame_2", "Data ważności:  " },
                                  { "issueDateFrame", "Data wydania:  " },
                                  { "issuingAuthorityFrame", "Organ wydający:  " } };
    for (const auto &caption : captions)
        add(caption[0], caption[1]);
}

void TestFormsTexts::fixedTextsAreThoseOfTheProgram()
{
    QFETCH(QString, text);

    const auto *widget = find<QWidget>(QTest::currentDataTag());
    QVERIFY(widget);
    if (QString(widget->metaObject()->className()) == "QFrame")
        widget = widget->findChild<QLabel *>(); // a row of the personal data: its caption comes first

    QCOMPARE(widget->property("text").toString(), text);
}

void TestFormsTexts::accessibleTextsAreFixedInTheForm_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("description");
    const auto add = [](const char *widget, const char *name, const char *description = "") {
        QTest::newRow(widget) << QString::fromUtf8(name) << QString::fromUtf8(description);
    };
    add("bClose", "Zamknij");
    add("bMinimalize", "Minimalizuj");
    add("bWroc", "Wróć");
    add("bArrowICAO", "Dane z velmor", "przejdź do rozszerzonego widoku danych z velmor");
    add("bArrowAuthenCert", "Szczegóły: certyfikat do identyfikacji i uwierzytelniania",
        "zobacz szczegóły certyfikatu");
    add("bArrowAuthorCert", "Szczegóły: certyfikat do podpisu osobistego", "zobacz szczegóły certyfikatu");
    add("bArrowPresenceCert", "Szczegóły: certyfikat do potwierdzania obecności", "zobacz szczegóły certyfikatu");
    add("bArrowQualifiedCert", "Szczegóły: certyfikat kwalifikowany", "zobacz szczegóły certyfikatu");
    add("bChangePinAuthenCert", "Zmień PIN: certyfikat do identyfikacji i uwierzytelniania");
    add("bChangePinAuthorCert", "Zmień PIN: certyfikat do podpisu osobistego");
    add("bChangePinQualifiedCert", "Zmień PIN: certyfikat kwalifikowany");
    add("bIntegrate", "", "zapisuje zmiany");
    add("bCANSettings", "", "zapisuje zmiany");
    add("bDiagnosticStart", "przycisk odśwież raport");
    add("bCopyRaport", "przycisk kopiuj raport do schowka");
    add("lGuide", "link instrukcja");
    add("lLicense", "link umowa licencyjna");
    add("lChangelog", "link historia zmian");
    add("lpinpad", "Używasz czytnika z pinpadem (klawiaturą)");
}

void TestFormsTexts::accessibleTextsAreFixedInTheForm()
{
    QFETCH(QString, name);
    QFETCH(QString, description);

    const auto *widget = find<QWidget>(QTest::currentDataTag());

    QCOMPARE(widget->accessibleName(), name);
    QCOMPARE(widget->accessibleDescription(), description);
}

VELMOR_TEST(TestFormsTexts)
#include "tst_forms_texts.moc"
