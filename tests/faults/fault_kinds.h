#pragma once

#include "simworld/sim_world.h"

#include <string>
#include <vector>

// The ways in which a call of the library goes wrong.
struct FaultKind {
    enum Nature { Fails, FailsAfterwards, Garbage, Blocks, LosesCard, LosesReader, Dies };

    std::string name; // "CKR_DEVICE_ERROR", "block", "count=7" ...
    Nature nature;
    // Of these functions only; empty for all.
    std::vector<std::string> functions;

    bool isFor(const std::string &function) const;
    // The n-th call from now on, whatever it is.
    sim::Fault atCall(int nth, const std::string &reader) const;
};

const std::vector<FaultKind> &faultKinds();
// Null if there is none of this name.
const FaultKind *faultKind(const std::string &name);
