#pragma once

#include "tour.h"

#include <QVector>

// One picture: a window with this card (empty: without one), brought into the state by `enter`, which is null for the
// home page as it stands. It answers false if it does not get there.
struct State {
    const char *name;
    const char *card;
    bool (*enter)(Tour &tour) = nullptr;
    // What is done to the world between the insertion of the card and its reading: a pinpad, tries that are left.
    void (*prepare)(sim::SimWorld &world) = nullptr;
};

// The states of one part of the window, in the order in which they are walked.
QVector<State> homeStates();
QVector<State> pageStates();
QVector<State> pinStates();
QVector<State> helpStates();
QVector<State> settingsStates();
QVector<State> shellStates();
// The trainer's window, beside the program.
QVector<State> panelStates();

// All of them.
QVector<State> allStates();
