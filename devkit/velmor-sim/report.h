#pragma once

#include <string>

#include "simworld/sim_world.h"

// Texts for a person at a shell.
std::string describeWorld(const sim::SimWorld &world);
std::string describeCards(const sim::SimWorld &world);
std::string describeEvents(const sim::SimWorld &world);
std::string describeTrace(const sim::SimWorld &world, const std::string &function);
