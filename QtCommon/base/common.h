#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Text and file helpers shared by the programs of the family. None needs an application object; none shows anything.

namespace Common {

// "velmor": the word that files, segments, settings and texts carry.
QString productName();

// Folder above the one that holds the executable, with forward slashes. A path without a separator stays as it is.
QString installRoot();

// The rule behind installRoot, for any executable's path.
QString installRootOf(const QString &executable);

// Development mode: a file named Makefile stands in the install root. Looked up once in a process.
bool isDev();

// Polish letters by their plain forms; for file names.
QString foldPolish(const QString &text);

// Text for a screen reader: no markup, and "CAN" as "kan", which is how it is spoken.
QString plainText(const QString &text);

// The text without `suffix`, if it ends in it.
QString chopSuffix(const QString &text, const QString &suffix);

// The reader's name alone out of a slot description or a list entry: what stands before the first " #", behind which
// the containers of one reader are told apart.
QString readerName(const QString &text);

// Opens the file for writing and closes it; a missing file is thereby created.
bool isWritable(const QString &path);

// Whether the bytes are valid UTF-8 and fit to be printed in a log as they stand. The test for printing looks at single
// bytes, as many as the text has characters, so most Polish text does not pass.
bool isPrintableUtf8(const QByteArray &bytes);

// Content of readers.conf, empty if there is none.
QString readReadersConf();

// Empties readers.conf. True if it is empty or missing afterwards.
bool clearReadersConf();

// How large an APDU the reader takes, as the text of its line in readers.conf; a value with "E" marks extended APDUs.
// "200" for a reader that no line names. The first line whose key is part of the name decides.
QString maxApduSize(const QString &reader);

} // namespace Common

// A part of `text` beside a mark. The pattern is "^mark$" and its kin: "^" in front searches the first occurrence,
// anything else the last; "$" behind keeps what follows the mark, anything else what stands before it. A pattern under
// three characters, or a mark that is not found, gives `fallback`.
QString sliceText(const QString &text, const QString &pattern, const QString &fallback = {});

// Each pattern applied to the result of the one before. An empty end gives `fallback`.
QString sliceTextChain(const QString &text, const QStringList &patterns, const QString &fallback = {});

// The whole file as UTF-8, empty if it cannot be opened.
QString readFileText(const QString &path);

// Empties the file by name, then writes. False if it cannot be opened, and then the old content is already lost.
bool writeFileBytes(const QString &path, const QByteArray &bytes);

// Creates the file, or empties it.
void createEmptyFile(const QString &path);
