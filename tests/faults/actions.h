#pragma once

#include "faults/fault_kinds.h"
#include "faults/rig.h"

#include <QString>

#include <functional>
#include <vector>

// What a user, or a card, does to the program, in the two parts before and after which faults lie in wait.
struct Action {
    enum From { NewWindow, NoCard, CardShown };
    enum Secret { None, Pin, Puk };

    QString name {};
    From from = NoCard;
    std::string card {};
    bool pinpad = false;
    std::string reader = Rig::reader; // that goes, or whose card does
    // The one secret that is entered, how often, and for which container.
    Secret secret = None;
    std::string container {};
    int entries = 0;

    // The program is told to end, and is judged by how it goes: at once, or in the middle of a card's read.
    bool quits = false;
    // What the library did not do at its end, another process alone can make good.
    bool endsTheProcess = false;
    // Of which faults at which call it can be made; of all if empty.
    std::function<bool(const FaultKind &, int call)> takes {};

    std::function<void(Rig &)> prepare {}; // the world, before the card is shown
    std::function<void(Rig &)> begin {}; // up to where the faults lie
    std::function<void(Rig &)> act {};
    // What has to be so at the end of a run in which nothing went wrong; empty if it is.
    std::function<QString(Rig &)> achieved {};
};

const std::vector<Action> &actions();
const Action *actionOf(const QString &name);

// Puts the card of that name in, tells the window and brings it to the home page.
void showCard(Rig &rig, const std::string &card, bool pinpad = false);
