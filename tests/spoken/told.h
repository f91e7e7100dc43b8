#pragma once

#include "spoken/ear.h"

// As a voice says it: role and states in Polish words. An empty string for what has no such word.
QString spokenRole(const QString &role);
QString spokenLine(const Heard &heard);

// What is said without being shown: names of pictures and icons, what a button is for, and the sentences that stand for
// a page's. Each is the program's, and each is heard in some story.
QStringList onlySpoken();

// What stands for a text that is told in other words; the text itself for any other.
QString toldInsteadOf(const QString &shown);
