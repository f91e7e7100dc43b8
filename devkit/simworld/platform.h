#pragma once

#include <functional>
#include <string>
#include <vector>

// What the simulated world needs of the operating system. Paths are UTF-8 with "/" between the parts.
namespace sim::platform {

// Environment variable, empty if unset.
std::string variable(const char *name);

// The user's own folder for the world when VELMOR_SIM_WORLD is unset.
std::string defaultWorldFolder();

// Folder of the file (program or library) that this code is linked into.
std::string moduleFolder();

// Where the family's programs lie in an installation in whose devkit folder this program lies.
std::string familyProgramsFolder();

// Runs a program of this path, without its ending, to its end; -1 if it cannot be started.
int runProgram(const std::string &path, const std::vector<std::string> &arguments);

// The words of the command line after the program's name, and a console that shows UTF-8.
std::vector<std::string> programArguments(int argc, char *argv[]);

int processId();
// Ends this process without a word and without anything of its own running, as a crash does.
[[noreturn]] void die();
bool processAlive(int id);
long long msSinceEpoch();

// False if there is no such file or it cannot be read.
bool readFile(const std::string &path, std::string &bytes);
// Whole file in one step: a reader finds the old or the new content, never a part.
bool replaceFile(const std::string &path, const std::string &bytes);
// One write at the end of the file, so that lines of several processes do not mix.
bool appendFile(const std::string &path, const std::string &bytes);
bool truncateFile(const std::string &path);

// Exclusive between processes and between threads, waits for its turn, freed by the system when its process dies.
class FileLock {
public:
    explicit FileLock(const std::string &path);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    bool isHeld() const { return held; }

private:
    bool held = false;
    long long handle = -1;
};

// Keeps a forced end of the thread (pthread_cancel) away while the library works, since it could strike in any file
// access and leave the world half changed. Only the two functions below let it in.
class CancelGuard {
public:
    CancelGuard();
    ~CancelGuard();
    CancelGuard(const CancelGuard &) = delete;
    CancelGuard &operator=(const CancelGuard &) = delete;

private:
    int before = 0;
};

// Waits until `done` says yes; it is asked at once and then every `pollMs`. A cancellation point as below. On Windows
// another thread asks: one that is ended by force while it opens a file or allocates memory would keep locks of the
// system for ever, one that only waits keeps none.
void waitCancellable(const std::function<bool()> &done, int pollMs);

// A cancellation point, also inside a CancelGuard. Never call it with a lock held or in a function that is noexcept.
void sleepCancellable(int ms);

} // namespace sim::platform
