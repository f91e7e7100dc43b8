#pragma once

#include "faults/stall_watch.h"
#include "faults/window_rules.h"

#include "driver/driver.h"
#include "support/raw_inbox.h"

#include <functional>
#include <memory>
#include <vector>

// The real window on the simulated library, with a Monitor that answers, and beside it the rules of window and worker.
// What happens to the window is handed to both; `judge` then says where they differ.
class Rig : public Driver {
public:
    static constexpr const char *reader = "Czytnik Alfa";
    static constexpr const char *otherReader = "Czytnik Beta";

    Rig();
    ~Rig();

    void openWindow();
    // Its way out, with the calls that belong to it. Complaints, if any.
    QStringList closeWindow();

    // The same by the user's own button, whatever the worker is at.
    QStringList quit();

    // The card lies in the reader of that name, as the world will have it; the Monitor has yet to tell.
    void putCard(const std::string &card, bool pinpad = false, const std::string &where = reader);
    void takeCard();
    void tellReaders(); // what a Monitor sends of itself

    // Something that happens to the window, and to the rules.
    void happen(const std::function<void(WindowRules &)> &rule, const std::function<void()> &deed);
    void happenByClick(const std::function<void(WindowRules &)> &rule, const char *button);

    // Until worker and Monitor have nothing left to do. False if that does not come.
    bool settle();
    // Until a call of the library waits, or nothing is left to do.
    bool waitForBlock();
    // Turns of the event loop until that is so.
    bool runUntil(const std::function<bool()> &condition, int milliseconds = patience);

    // Until the window has asked the worker for something more.
    bool waitForRequest();

    // Compares what has happened since the last time with the rules; the reasons why not.
    QStringList judge();
    // The card has come to where the next one can be read.
    bool asksWithoutEnd() const { return endless; }
    bool isStuck() const { return worker.isStuck(); }
    std::vector<sim::TraceEntry> lastCalls() const { return calls; }
    int takeLongestStall() { return watch.takeLongest(); }
    // Where the button, or the page behind it, does not let the user through.
    QStringList takeRefusals();

    WindowRules rules { worker };

private:
    struct Step {
        std::function<void(WindowRules &)> rule; // none for a request
        bool afterAll = false; // nothing was under way when it happened
        Request request;
    };

    void forgetWindow();
    void record(const Request &request) { steps.push_back({ {}, false, request }); }
    void listen();
    bool workerIsDone();
    bool answerAsMonitor();
    void replay(QStringList &wrong);
    void compare(QStringList &wrong) const;
    Shown seen() const;

    StallWatch watch;
    WorkerRules worker;
    RawInbox monitor;
    std::vector<Step> steps;
    std::vector<sim::TraceEntry> calls;
    QStringList refusals;
    bool underWay = false;
    bool endless = false;
    int answered = 0;
};
