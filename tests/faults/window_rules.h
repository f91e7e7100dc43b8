#pragma once

#include "faults/worker_rules.h"

#include "card/card-parser.h"

#include <QQueue>
#include <QStringList>

// What the window asks of the card worker, as it left the window.
struct Request {
    enum Kind { Readers, Select, Counts, Data, Certs, Photo, Change, Unblock };
    Kind kind;
    QString reader;
    QString container {}; // Change, Unblock
    bool typed = false; // Change, Unblock: PINs came along, none for the keypad
    int flags[2] = {}; // Readers
    bool wanted[4] = {}; // Certs: Authentication, Presence, Authorization, Qualified

    QString text() const;
    bool operator==(const Request &other) const { return text() == other.text(); }
};

// What has to be on the window, as far as it hangs on the card.
struct Shown {
    QString page;
    QString title;
    QString subtitle;
    QString loader; // empty while none is shown
    QString box; // current text of the list of readers
    QString number, expiry, names, surname; // of the home page
    QStringList words; // of the PIN buttons
    bool arrow = false; // to all data: the photo has come, or there is none
    bool photo = false;
    QString result; // of a PIN operation
    QString disconnected;
    int certificates = 0; // on their page
};

// The rules by which the window follows reader lists, answers and the user's choices, told a second time and without a
// widget. Each step says what is asked of the worker next; `answer` lets the worker's rules say what it answers.
class WindowRules {
public:
    explicit WindowRules(WorkerRules &rules) : worker(rules) { open(); }

    // A new window, on the settings page.
    void open();

    // What happens to the window.
    void listFromMonitor(const QString &message);
    void back();
    void chooseReader(const QString &name);
    void choosePin(const QString &name);
    void typed(); // the page's entries are sent
    void padDelayOver();
    void allData();
    void certificates(const QString &name);
    void goHome();
    void settings();
    void help();

    // The requests that have to be made now, oldest first, and the answer to one of them.
    QQueue<Request> expected;
    void answer(const Request &request);

    // The Monitor has been asked for the readers so many times.
    int monitorAsked = 0;
    // The keypad is asked for the PUK in a second.
    bool padDelayRuns = false;

    Shown shown;
    const QStringList &items() const { return readers; }

private:
    bool isReader() const { return !shown.box.toLower().contains("brak"); }
    bool needsNoCard() const { return shown.page == "pageSettings" || shown.page == "pageHelp"; }
    bool cardHasGone() const { return reader.isEmpty() && !isReader(); }
    bool pukIsBlocked() const { return tries.value(3) == 0 || tries.value(3) == 4; }
    bool pukOnPad() const { return pinPad && chip != 16 && !(chip == 4 && tries.value(3) == 1); }
    int triesHere() const;
    void ask(Request request) { expected.enqueue(std::move(request)); }
    void askMonitor();
    void loadAll();
    void loadedReaders(const QStringList &entries, const QString &problem);
    void disconnect(const QString &item, const QString &message);
    void homeParams();
    void clearPerson();
    void enter(const QString &page, const QString &title, bool ofContainer = false);
    void loadedCounts(const WorkerRules::Counts &answer);
    void loadedData(const WorkerRules::Data &answer);
    void loadedCerts(const WorkerRules::Certs &answer);
    void loadedPhoto(const QByteArray &file);
    void pinsAre(const WorkerRules::Pins &pins);
    void changed(int code);
    void unblocked(int code);
    void unblockPage();
    void blockedPuk();
    void resultPage(const QString &text, const QString &title);

    WorkerRules &worker;
    QString reader;
    QStringList readers;
    bool readersRequested = false;
    bool newReaders = false;
    QString container;
    QList<int> tries;
    bool pinPad = false;
    int chip = 0;
    WorkerRules::Counts counts;
    WorkerRules::Certs certs;
    DGParser data; // reads the groups; it has tests of its own, with tables from other sources
};
