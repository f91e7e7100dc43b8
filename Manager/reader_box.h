#pragma once

class QComboBox;
class QPushButton;

// The box with the names of the readers. Its list has rows that a finger hits, and shows the names whole as long as the
// window has the room.

// Once, before the first name.
void prepareReaderBox(QComboBox *box);

// After each change of the names: the box gets the width of its present text, its list that of the longest name. What
// is said beside the box goes if it would be cut; its sign, which has the same tool tip, stays.
void fitReaderBox(QComboBox *box, QPushButton *words);
