#include "reader_list.h"

#include "base/common.h"

namespace {

struct KnownProblem {
    const char *error;
    const char *item;
    const char *message;
};

const KnownProblem knownProblems[] = {
    { "NO_READER", "brak podłączonego czytnika", "Podłącz poprawnie czytnik" },
    { "NO_CARD", "brak karty w czytniku", "Umieść velmor na podłączonym czytniku" },
    { "NO_SUPPORTED_CARD", "brak wspieranej karty w czytniku", "Umieść velmor na podłączonym czytniku" },
};

const KnownProblem *findProblem(const QString &error)
{
    for (const KnownProblem &problem : knownProblems) {
        if (error == problem.error)
            return &problem;
    }
    return nullptr;
}

} // namespace

ReaderList parseReaders(const QString &text)
{
    const QString separator = "||";
    if (!text.contains(separator))
        return { {}, text };
    ReaderList list;
    for (const QString &part : text.split(separator)) {
        const int colon = part.indexOf(':');
        list.names << (colon < 0 ? QString() : part.mid(colon + 1));
    }
    return list;
}

QStringList readerNames(QStringList entries)
{
    for (QString &entry : entries)
        entry = Common::readerName(entry);
    return entries;
}

bool namesReader(const QString &comboText)
{
    return !comboText.toLower().contains("brak");
}

ReadersRule readersRule(const QString &value, const QString &comboText, ReaderPage page)
{
    const ReaderList list = parseReaders(value);
    if (!list.error.isEmpty())
        return ReadersRule::Take;
    if (page == ReaderPage::NeedsNoCard)
        return ReadersRule::Note;
    const bool hasReader = namesReader(comboText);
    if (!value.isEmpty() && !hasReader)
        return ReadersRule::Reload;
    // An empty box is in no list, though the text behind the last "||" is empty too. Names are compared as they are
    // shown, without the mark of a container.
    const bool isThere = !comboText.isEmpty() && readerNames(list.names).contains(comboText);
    if ((!value.isEmpty() || hasReader) && !isThere)
        return ReadersRule::Reload;
    if (page == ReaderPage::NoElectricLayer)
        return ReadersRule::Reload;
    return page == ReaderPage::ShowsList ? ReadersRule::Take : ReadersRule::Note;
}

bool isCanProblem(const QString &error)
{
    return !findProblem(error);
}

ReaderProblem readerProblem(const QString &error, bool waitingForCan)
{
    if (const KnownProblem *problem = findProblem(error))
        return { problem->item, problem->message, false };
    return { "brak połączenia z kartą",
             waitingForCan ? "Oczekiwanie na wprowadzenie numeru CAN" : "Zdejmij i przyłóż ponownie velmor do czytnika",
             true };
}
