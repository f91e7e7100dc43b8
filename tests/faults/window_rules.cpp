#include "faults/window_rules.h"

#include <QImage>
#include <QSslCertificate>

namespace {

constexpr char homeTitle[] = "velmor Menedżer";

QString titleOf(const QString &container)
{
    return container == sim::Authentication ? "Certyfikat do identyfikacji i uwierzytelniania"
        : container == sim::Authorization   ? "Certyfikat do podpisu osobistego"
        : container == sim::Presence        ? "Certyfikat do potwierdzania obecności"
                                            : "Certyfikat kwalifikowany";
}

} // namespace

QString Request::text() const
{
    static const char *const names[] = { "readers",      "select", "count",  "data",
                                         "certificates", "photo",  "change", "unblock" };
    QStringList words { names[kind], reader };
    if (kind == Readers)
        words << QString::number(flags[0]) << QString::number(flags[1]);
    if (kind == Certs) {
        for (const bool one : wanted)
            words << (one ? "yes" : "no");
    }
    if (kind == Change || kind == Unblock)
        words << container << (typed ? "typed" : "keypad");
    return words.join(' ');
}

void WindowRules::open()
{
    shown = Shown();
    shown.page = "pageSettings";
    shown.box = "brak czytnika lub karty";
    shown.arrow = false;
    reader.clear();
    readers.clear();
    tries.clear();
    readersRequested = newReaders = padDelayRuns = pinPad = false;
    chip = 0;
    counts = {};
    certs = {};
    data.clearDg();
}

void WindowRules::clearPerson()
{
    shown.number.clear();
    shown.expiry.clear();
    shown.names.clear();
    shown.surname.clear();
    shown.photo = false;
    counts = {};
    certs = {};
    data.clearDg();
}

void WindowRules::askMonitor()
{
    readersRequested = true;
    ++monitorAsked;
}

void WindowRules::loadAll()
{
    clearPerson();
    shown.loader = "Trwa łączenie z czytnikami";
    readersRequested = true;
    Request request { Request::Readers, {} };
    request.flags[0] = 1;
    request.flags[1] = 256;
    ask(request);
}

void WindowRules::homeParams()
{
    shown.page = "pageHome";
    shown.title = homeTitle;
    shown.subtitle.clear();
}

void WindowRules::enter(const QString &page, const QString &title, bool ofContainer)
{
    shown.page = page;
    shown.title = title;
    shown.subtitle = ofContainer ? titleOf(container) : QString();
}

void WindowRules::listFromMonitor(const QString &message)
{
    QStringList names;
    QString problem;
    if (message.contains("||")) {
        for (const QString &part : message.split("||"))
            names << part.section(':', 1);
    } else {
        problem = message;
    }
    const bool current = !shown.box.isEmpty() && names.contains(shown.box);
    const bool reload =
        problem.isEmpty() && !needsNoCard() && (!isReader() || !current || shown.page == "pageNoElectricLayer");
    if (reload)
        loadAll();
    else if (problem.isEmpty() && shown.page != "pageHome" && shown.page != "pageDisconected")
        newReaders = true;
    else
        loadedReaders(names, problem);
}

void WindowRules::loadedReaders(const QStringList &entries, const QString &problem)
{
    const QString previous = shown.box;
    if (isReader() && !entries.contains(previous))
        clearPerson();
    reader.clear();
    readers.clear();
    for (const QString &name : entries) {
        if (name.section(" #", 0, 0).size() > 1)
            readers << name.section(" #", 0, 0);
    }
    shown.box = readers.value(0);
    if (problem == "NO_READER") {
        disconnect("brak podłączonego czytnika", "Podłącz poprawnie czytnik");
    } else if (problem == "NO_CARD" || problem == "NO_SUPPORTED_CARD") {
        disconnect(problem == "NO_CARD" ? "brak karty w czytniku" : "brak wspieranej karty w czytniku",
                   "Umieść velmor na podłączonym czytniku");
    } else if (!problem.isEmpty()) {
        disconnect("brak połączenia z kartą", "Zdejmij i przyłóż ponownie velmor do czytnika");
    }
    if (!problem.isEmpty())
        return;
    if (shown.page != "pageHome")
        homeParams();
    const bool stays = readers.contains(previous);
    if (stays)
        shown.box = previous;
    reader = shown.box;
    if (stays && !readersRequested)
        return;
    if (!readersRequested) {
        loadAll();
        return;
    }
    readersRequested = false;
    shown.loader = "Trwa odczyt danych z karty";
    ask({ Request::Select, reader });
}

void WindowRules::disconnect(const QString &item, const QString &message)
{
    readers = QStringList(item);
    shown.box = item;
    shown.loader.clear();
    if (needsNoCard())
        return;
    enter("pageDisconected", homeTitle);
    clearPerson();
    shown.disconnected = "Brak połączenia \n" + message;
}

void WindowRules::back()
{
    if (isReader()) {
        goHome();
        return;
    }
    newReaders = false;
    loadAll();
}

void WindowRules::goHome()
{
    if (newReaders && isReader())
        ++monitorAsked;
    newReaders = false;
    if (isReader())
        homeParams();
    else
        askMonitor();
}

void WindowRules::chooseReader(const QString &name)
{
    shown.box = name;
    if (name == reader)
        return;
    reader = name;
    loadAll();
}

void WindowRules::allData()
{
    enter("pageAllData", "Dane  z  velmor");
}

void WindowRules::certificates(const QString &name)
{
    container = name;
    enter("pageCertInfo", "Szczegóły", true);
    QByteArrayList stored { name == sim::Authentication      ? certs.auth
                                : name == sim::Authorization ? certs.author
                                                             : certs.pres };
    if (name == sim::Qualified)
        stored = certs.qual;
    shown.certificates = 0;
    for (const QByteArray &der : stored)
        shown.certificates += QSslCertificate::fromData(der, QSsl::Der).size();
}

void WindowRules::settings()
{
    enter("pageSettings", "Ustawienia");
}

void WindowRules::help()
{
    enter("pageHelp", "Pomoc");
}

void WindowRules::answer(const Request &request)
{
    switch (request.kind) {
    case Request::Readers: {
        const WorkerRules::Readers found = worker.readers(quint32(request.flags[0]), quint32(request.flags[1]));
        if (found.success && found.names.isEmpty())
            askMonitor();
        else
            loadedReaders(found.names, {});
        break;
    }
    case Request::Select:
        if (worker.selectReader(request.reader))
            ask({ Request::Counts, reader });
        else
            askMonitor();
        break;
    case Request::Counts:
        loadedCounts(worker.certsCount(request.reader));
        break;
    case Request::Data:
        loadedData(worker.containersAndGroups(request.reader));
        break;
    case Request::Certs:
        loadedCerts(
            worker.certs(request.reader, request.wanted[0], request.wanted[1], request.wanted[2], request.wanted[3]));
        break;
    case Request::Photo:
        loadedPhoto(worker.photo(request.reader));
        break;
    case Request::Change: {
        const WorkerRules::PinResult result = worker.changePin(request.reader, request.container, request.typed);
        pinsAre(result.pins);
        changed(result.code);
        break;
    }
    case Request::Unblock: {
        const WorkerRules::PinResult result = worker.unblockPin(request.reader, request.container, request.typed);
        pinsAre(result.pins);
        unblocked(result.code);
        break;
    }
    }
}

void WindowRules::loadedCounts(const WorkerRules::Counts &found)
{
    if (cardHasGone())
        return;
    clearPerson();
    counts = found;
    shown.arrow = false;
    if (counts.auth == 0 && counts.author == 0 && counts.pres == 0 && counts.qual == 0) {
        shown.page = "pageNoElectricLayer";
        shown.loader.clear();
        return;
    }
    shown.loader = "Trwa odczyt danych ICAO";
    ask({ Request::Data, reader });
}

void WindowRules::loadedData(const WorkerRules::Data &found)
{
    if (cardHasGone())
        return;
    data.clearDg();
    for (const char *name : { "DG1", "DG11", "DG12", "DG13" })
        data.loadDg(name, found.groups.value(name));
    if (counts.pres > 0) {
        const bool named = !found.groups.value("DG13").isEmpty();
        shown.number = data.documentNumber();
        shown.expiry = data.expiryDate(true);
        shown.names = named ? data.firstName() + ' ' + data.secondName() : QString();
        shown.surname = named ? data.surname() : QString();
    }
    pinsAre(found.pins);
    pinPad = found.pinPad;
    chip = found.chip;
    Request request { Request::Certs, reader };
    request.wanted[0] = counts.auth > 0;
    request.wanted[1] = counts.pres > 0;
    request.wanted[2] = counts.author > 0;
    request.wanted[3] = counts.qual > 0;
    ask(request);
}

void WindowRules::loadedCerts(const WorkerRules::Certs &found)
{
    if (cardHasGone())
        return;
    certs = found;
    const QList<QSslCertificate> presence = QSslCertificate::fromData(found.pres, QSsl::Der);
    if (!presence.isEmpty() && (shown.names.isEmpty() || shown.surname.isEmpty())) {
        shown.surname = presence.first().subjectInfo("SN").join(' ');
        QString name = presence.first().subjectInfo("CN").join(' ');
        name.chop(shown.surname.size());
        shown.names = name.trimmed();
    }
    shown.loader.clear();
    shown.photo = false;
    ask({ Request::Photo, reader });
}

void WindowRules::loadedPhoto(const QByteArray &file)
{
    if (cardHasGone())
        return;
    data.loadDg("DG2", file);
    shown.photo = !QImage::fromData(data.photo()).isNull();
    shown.arrow = true;
}
