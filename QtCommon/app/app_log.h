#pragma once

#include <QString>

// The file log. It is on only if its folder exists and is at most three days old: a user switches it on by making the
// folder, and it ends by itself. Every start begins a new file. A line holds date and time, the source file's base name
// in 15 columns and the message; all levels are written alike.
namespace AppLog {

// Decides whether this run writes a file, and removes the one of the run before. `logName` is "velmor Manager" or the
// like.
void setUp(const QString &logName);

// Restarts the clock of the lines on standard output.
void restartTimer();

// The rule of three days, in seconds since 1970. A folder from the future counts as old, since the age is unsigned.
bool isFresh(quint64 now, quint64 created);

// Name in 15 columns, a blank, message.
QString compose(const char *sourceFile, const QString &message);

void write(const char *sourceFile, const QString &message);

} // namespace AppLog
