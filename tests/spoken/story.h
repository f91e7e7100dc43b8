#pragma once

#include "driver/driver.h"
#include "spoken/ear.h"

#include <QMap>
#include <QStringList>

// A page in one of its states, worked by keys alone.
//
// The steps are words: a key by its name for X ("space", "shift+Tab"); ">NAME", Tab as often as it takes to hear a stop
// whose name begins so; "#1234", digits that are typed; "?TEXT", waiting until that is said; "&TEXT", the same, and
// that it is the first stop that is heard since the last key or happening; "=PAGE", waiting for the page; "read", all
// stops once round with Tab; "!NAME", something that happens in the world, from the story's own list.
// "(KEY" opens a dialog, and what follows up to ")" is done in it.
struct Story {
    const char *page; // of the protocol
    QString state;
    const char *card; // empty for none
    void (*prepare)(sim::SimWorld &world);
    QStringList steps;
};

Q_DECLARE_METATYPE(Story)

using Happenings = QMap<QString, void (*)(Driver &driver)>;

// Plays stories on one display and compares at each step what is said with what is shown.
class StoryTeller {
public:
    StoryTeller();
    ~StoryTeller();

    static constexpr char reader[] = "Czytnik Alfa";

    bool start() { return ear.start(); }

    // A window with the story's card, its home page heard. What does not go as it should is in faults().
    void open(const Story &story);
    void play(const Story &story, const Happenings &happenings);
    void close();

    QStringList faults() const { return wrong; }
    // Leaves what was heard in FOLDER/PAGE.txt, the states one after the other.
    void writeProtocols() const;

    Driver driver;

private:
    class AnswerWatch;

    void step(const QString &words, const Happenings &happenings);
    void playDialog(const QString &key, const QStringList &steps, const Happenings &happenings);
    void listen();
    void note(const Heard &heard);
    void press(const QString &key);
    void tabTo(const QString &name);
    void waitFor(const QString &text);
    void waitForFirst(const QString &text);
    void readAll();
    void compareWithShown();
    void snapshot();
    void fault(const QString &text);
    QWidget *shownWindow() const;

    std::unique_ptr<AnswerWatch> answers;
    Ear ear;
    QMap<QString, QStringList> protocols; // lines by page
    QStringList lines;
    QStringList wrong;
    QStringList heardHere; // since the last reading began
    QStringList stops; // since the last key or happening
    QStringList seen; // shown at any moment at which what is heard next was said
    QStringList seenSinceBell; // that part of it which the next comparison needs too
    QStringList used;
    Heard last;
    int utterances = 0;
    bool loaderSeen = false; // of a card that is read
};
