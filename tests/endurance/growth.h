#pragma once

#include "endurance/own_resources.h"

#include <QStringList>

// What a process holds more of than it may, in words. cost is what is to grow, in KiB.
QStringList growthBeyondLimits(const OwnResources &first, const OwnResources &last, long cost);
