#pragma once

#include "simworld/sim_world.h"

#include <QByteArrayList>
#include <QMap>
#include <QStringList>

#include <vector>

// What the card worker has to do, told a second time and independently: which calls of the library belong to a request,
// in which order, whatever each of them answers, and what the request is then answered with. It is fed with the calls
// that were made and their answers (the library's trace), and says where they leave the rules.
class WorkerRules {
public:
    // The card in that reader from now on; the trace does not hold its values.
    void putCard(const std::string &reader, const sim::Card &card) { cards[reader] = card; }

    struct Readers {
        bool success = false;
        QStringList names;
    };
    struct Counts {
        int auth = 0;
        int author = 0;
        int pres = 0;
        int qual = 0;
    };
    struct Pins {
        QStringList words; // Authentication, Authorization, Qualified
        QList<int> tries; // the same, then the PUK
    };
    struct Data {
        Pins pins;
        bool pinPad = false;
        int chip = 0;
        QMap<QString, QByteArray> groups;
    };
    struct Certs {
        QByteArray auth;
        QByteArray pres;
        QByteArray author;
        QByteArrayList qual;
    };
    struct PinResult {
        int code = 0;
        Pins pins;
    };

    // The calls made since, in their order; what is left of the ones before must have been used up.
    void feed(std::vector<sim::TraceEntry> calls);

    // The requests. Each uses up the calls that belong to it.
    Readers readers(quint32 required, quint32 refused);
    bool selectReader(const QString &reader);
    Counts certsCount(const QString &reader);
    Data containersAndGroups(const QString &reader);
    Certs certs(const QString &reader, bool auth, bool pres, bool author, bool qual);
    QByteArray photo(const QString &reader);
    PinResult changePin(const QString &reader, const QString &container, bool typed);
    PinResult unblockPin(const QString &reader, const QString &container, bool typed);
    // The end of the program: its library is loaded once at most, and ended whatever state it is in.
    void end();
    // The next program, or the next run after a complaint.
    void startAnew();

    // A library that did not end when it was told to answers that it runs already, and that is a failure: known and
    // kept. Nothing but a new start of the program helps then.
    bool isStuck() const { return libraryRefusesToStart; }

    // Calls that stand beyond what the requests account for, or in their way. Empty if all is well.
    QStringList violations() const { return wrong; }
    void expectNoMoreCalls();

private:
    struct Slot {
        quint32 id = 0;
        QString name;
        quint32 flags = 0;
    };
    struct Token {
        QString reader;
        QString label;
        quint32 slot = 0;
        quint32 flags = 0;
        qint32 session = -1;
    };
    struct Found {
        QString label;
        QByteArray value;
    };
    using Answer = const sim::TraceEntry *;

    Answer call(const char *function);
    Answer callWith(const char *function, const char *argument, const QString &value);
    Answer callOnSlot(const char *function, quint32 slot);
    Answer callOnSession(const char *function, qint32 session);
    static bool good(Answer answer) { return answer && answer->result == 0; }
    void complain(const QString &text);

    bool initialize();
    bool detectSlots();
    void detectTokens();
    Token *find(const QString &reader, const QString &part);
    bool open(Token &token);
    bool beginSearch(Token *token);
    int countOf(const QString &reader, const char *container);
    QList<Found> objects(const QString &reader, const char *container, int wantedClass, const QStringList &names);
    QMap<QString, QByteArray> groups(const QString &reader, const QStringList &names);
    int objectClass(const Token &token, const char *container);
    QByteArray attribute(const Token &token, const char *container, const char *name);
    const sim::Object *objectOf(Answer asked, const char *container) const;
    Pins pins(const QString &reader);
    int login(const QString &reader, const QString &container, bool typed, bool officer);
    Token *lookUp(const QString &reader, const QString &container);

    std::map<std::string, sim::Card> cards; // by reader
    std::vector<sim::TraceEntry> trace;
    std::size_t next = 0;
    QStringList wrong;
    bool lost = false; // after a call that does not belong there nothing more can be said
    bool loaded = false;
    bool initialized = false;
    bool libraryRefusesToStart = false;
    std::vector<Slot> slotList;
    std::vector<Token> tokens;
    QString selected;
};
