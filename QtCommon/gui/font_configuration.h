#pragma once

// Which fonts there are, and which stands in for which, is told by some sixty files of the system. Read as the toolkit
// has it read, twice in a program that asks for its screens first, that is an eighth of a start. On Windows neither
// does anything.

// While it lives, the configuration of this process is empty; who asks for one afterwards has it read. For the end of
// an application that never drew a letter: the toolkit asks there for the whole configuration, only to drop it.
class EmptyFontConfiguration {
public:
    EmptyFontConfiguration();
    ~EmptyFontConfiguration();
    EmptyFontConfiguration(const EmptyFontConfiguration &) = delete;
    EmptyFontConfiguration &operator=(const EmptyFontConfiguration &) = delete;
};

// Reads the configuration for this process, less the templates, half of the files, from which nothing is taken but what
// a program for its settings would show. Where it cannot be read the library goes its own way when it is asked first.
// Before the first font is asked for.
void readFontConfiguration();
