#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What differs between the two platforms below the level of Os: names, paths and the few process-wide switches that are
// set before any application object exists. All functions work without a QCoreApplication.
namespace Platform {

// "win" or "lin": the key of the folder tables.
QString word();

// Path of the running program's file, with the platform's own separators.
QString executablePath();

// ".exe" or nothing.
QString programSuffix();

// "dll" or "so".
QString libraryExtension();

// The spelling in which the Cryptoki library's path is handed to the loader: backslashes where the platform wants them.
QString libraryPath(const QString &path);

// Folder that switches the file log on by its existence, without a trailing separator.
QString logsDir(const QString &product);

// The table of readers with their APDU sizes.
QString readersConfPath(const QString &product);

// Time of creation of a folder in seconds since 1970, nothing if the system does not tell.
std::optional<quint64> folderCreated(const QString &path);

// A private folder for temporary files and shared-memory keys, unless the user has named one: that of the login, or one
// beside the log folder where a login has none.
void usePrivateTempDir(const QByteArray &product);

// Whether a terminated thread can go on: cancellation is a request on some systems.
bool threadsCanRefuseToEnd();

// Ends the process without destructors and exit handlers.
void leaveAtOnce(int exitCode);

// Keeps the toolkit from setting up OpenGL for a window that is painted without it, unless the user wants it so: that
// is a quarter of the time to the first window, and most of its memory. Before the first application object; undone
// when the window is shown, for the sake of programs that this one starts.
void avoidOpenGl();
void allowOpenGl();

// Appends a line to a file, which is made if it is not there, in one write that no other can get into. The line ends as
// lines do on the platform.
void appendLine(const QString &path, const QByteArray &line);

// From here on the system's loader looks for libraries beside the program and in the system's folders, not in the
// current folder, nor in those of PATH before them. First of all in main().
void distrustCurrentFolder();

// From here on the system takes no picture of this process's memory should it crash, neither as a file nor as a report;
// on Linux no other program of the user may look into it either.
void keepOutOfCoreFiles();

// Names the platform plugin, where the program insists on one.
void choosePlatformPlugin();

} // namespace Platform
