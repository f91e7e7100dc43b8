#pragma once

#include <QSharedMemory>

// Segments of this user alone. Their names come from files in the folder of temporary files; where that folder is
// shared, another account can make such a file, or the segment, first. What is not this user's counts as absent. On
// Windows a segment belongs to the user's session, so nobody else can make one.
namespace OwnSegment {

// Whether the name, or the segment as far as the last try to attach has shown, belongs to somebody else.
bool isForeign(const QSharedMemory &segment);

// Attaches for reading and writing. What belongs to somebody else is let go again, and the log says so.
bool attach(QSharedMemory &segment);

// Makes it, unless its name belongs to somebody else; the log says so then.
bool create(QSharedMemory &segment, int size);

} // namespace OwnSegment
