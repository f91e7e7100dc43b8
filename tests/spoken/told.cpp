#include "spoken/told.h"

#include <QMap>

QString spokenRole(const QString &role)
{
    static const QMap<QString, QString> words {
        { "push button", "przycisk" },
        { "check box", "pole wyboru" },
        { "combo box", "lista rozwijana" },
        { "list", "lista" },
        { "list item", "pozycja listy" },
        { "label", "tekst" },
        { "link", "odnośnik" },
        { "password text", "pole hasła" },
        { "text", "tekst do czytania" },
        { "document text", "tekst do czytania" },
        { "panel", "grupa" },
        { "grouping", "grupa" },
        { "frame", "okno" },
        { "dialog", "okno dialogowe" },
    };
    return words.value(role);
}

QString spokenLine(const Heard &heard)
{
    const QString role = spokenRole(heard.role);
    QStringList parts;
    if (!heard.groups.isEmpty())
        parts << "[" + heard.groups.join("; ") + "]";
    if (!heard.name.isEmpty())
        parts << heard.name.simplified();
    parts << (role.isEmpty() ? "?" + heard.role : role);
    if (heard.role == "check box")
        parts << (heard.states.contains("CHECKED") ? "zaznaczone" : "niezaznaczone");
    if (!heard.states.contains("ENABLED") && heard.kind == "focus")
        parts << "niedostępne";
    if (heard.role == "password text")
        parts << (heard.text.isEmpty() ? QString("puste") : "znaków: " + QString::number(heard.text.size()));
    if (!heard.description.isEmpty())
        parts << heard.description.simplified();
    QString line = parts.join(", ");
    if (!heard.text.isEmpty() && heard.role != "password text" && heard.text != heard.name)
        line += ":\n        " + heard.text.trimmed().replace('\n', "\n        ");
    return line;
}

QStringList onlySpoken()
{
    return {
        // The title of the window.
        "velmor Menedżer",
        // Signs without a text.
        "Minimalizuj",
        "Zamknij",
        "Dane z velmor",
        "przejdź do rozszerzonego widoku danych z velmor",
        "Szczegóły",
        "zobacz szczegóły certyfikatu",
        "Ostrzeżenie o czytniku",
        "Wybór czytnika",
        "Aktualizuj aplikację",
        // What to do, and what a button is for.
        "Wprowadź aktualny cztero cyfrowy PIN",
        "Wprowadź aktualny sześcio cyfrowy PIN",
        "Wprowadź aktualny ośmio cyfrowy PIN",
        "Wprowadź nowy czterocyfrowy PIN",
        "Wprowadź nowy sześciocyfrowy PIN",
        "Wprowadź nowy ośmiocyfrowy PIN",
        "Powtórz nowy PIN",
        "Wprowadź ośmiocyfrowy PUK",
        "zapisuje zmiany",
        "link",
        "przycisk odśwież raport",
        "przycisk kopiuj raport do schowka",
        // The page in one sentence.
        "Twoje dane z velmor: zdjęcie",
        "masz 1 certyfikat kwalifikowany",
        "masz 3 certyfikaty kwalifikowane",
        "masz 0 certyfikaty kwalifikowane",
        "dla kontenera certyfikatów kwalifikowanych",
        "Powtórzony nowy PIN różni się",
        "Masz 3 próby na prawidłowe wpisanie",
        "Masz 2 próby na prawidłowe wpisanie",
        "Masz 1 próby na prawidłowe wpisanie",
        "numer PUK znajdziesz w dokumentach które dostałeś/aś w urzędzie podczas odbierania dowodu osobistego",
        "twój velmor został zablokowany, dowodu nie da się odblokować, dowiedz się jak uzyskać nowy dowód osobisty",
        "postępuj zgodnie z komunikatami na czytniku, podaj aktualny czterocyfrowy PIN następnie powtórz aktualny PIN "
        "następnie podaj nowy czterocyfrowy PIN następnie powtórz nowy PIN",
        "masz 6 certyfikaty kwalifikowane",
        // A woman's row too: known and kept.
        "mężczyzna",
    };
}

QString toldInsteadOf(const QString &shown)
{
    static const QMap<QString, QString> others {
        // Known and kept.
        { "KOBIETA", "Płeć: mężczyzna" },
        { "X", "Płeć: mężczyzna" },
        { "Kopiuj do schowka", "przycisk kopiuj raport do schowka" },
        { "Masz 3 próby na prawidłowe wpisanie. 3-krotne wpisanie nieprawidłowego PUK-u zablokuje dowód. Numer PUK "
          "znajdziesz w dokumentach, które dostałeś/aś w urzędzie podczas odbierania dowodu osobistego.",
          "trzykrotne wpisanie nieprawidłowego PUK-u zablokuje dowód, numer PUK znajdziesz w dokumentach które "
          "dostałeś/aś w urzędzie podczas odbierania dowodu osobistego" },
    };
    return others.value(shown.simplified(), shown);
}
