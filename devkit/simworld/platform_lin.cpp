#include "simworld/platform.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sim::platform {

namespace {

class Descriptor {
public:
    Descriptor(const std::string &path, int flags) : value(open(path.c_str(), flags | O_CLOEXEC, 0600)) { }
    ~Descriptor()
    {
        if (value >= 0)
            close(value);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    const int value;
};

bool writeAll(int descriptor, const std::string &bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

std::string variable(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

std::string defaultWorldFolder()
{
    const std::string state = variable("XDG_STATE_HOME");
    return (state.empty() ? variable("HOME") + "/.local/state" : state) + "/velmor-sim";
}

std::string moduleFolder()
{
    Dl_info info;
    if (!dladdr(reinterpret_cast<void *>(&moduleFolder), &info) || !info.dli_fname)
        return {};
    char *real = realpath(info.dli_fname, nullptr);
    // A program started by its bare name is known by that name only.
    const std::string path = real ? real : "/proc/self/exe";
    std::free(real);
    if (path != "/proc/self/exe")
        return path.substr(0, path.find_last_of('/'));
    char target[4096];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    const std::string program(target, length > 0 ? static_cast<std::size_t>(length) : 0);
    return program.substr(0, program.find_last_of('/') == std::string::npos ? 0 : program.find_last_of('/'));
}

std::string familyProgramsFolder()
{
    const std::string folder = moduleFolder();
    return folder.substr(0, folder.find_last_of('/'));
}

int runProgram(const std::string &path, const std::vector<std::string> &arguments)
{
    std::vector<std::string> words { path };
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    argv.reserve(words.size() + 1);
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawn(&process, path.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
        return -1;
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) { }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> programArguments(int argc, char *argv[])
{
    return { argv + (argc > 0 ? 1 : 0), argv + argc };
}

int processId()
{
    return getpid();
}

void die()
{
    for (;;)
        kill(getpid(), SIGKILL);
}

bool processAlive(int id)
{
    return id > 0 && (kill(id, 0) == 0 || errno == EPERM);
}

long long msSinceEpoch()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

bool readFile(const std::string &path, std::string &bytes)
{
    const Descriptor file(path, O_RDONLY);
    if (file.value < 0)
        return false;
    bytes.clear();
    // Not on the stack, where it would stay: it may be of a card.
    std::vector<char> buffer(16384);
    while (true) {
        const ssize_t count = read(file.value, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count == 0;
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

bool replaceFile(const std::string &path, const std::string &bytes)
{
    const std::string fresh = path + ".new";
    {
        const Descriptor file(fresh, O_WRONLY | O_CREAT | O_TRUNC);
        if (file.value < 0 || !writeAll(file.value, bytes))
            return false;
    }
    return std::rename(fresh.c_str(), path.c_str()) == 0;
}

bool appendFile(const std::string &path, const std::string &bytes)
{
    const Descriptor file(path, O_WRONLY | O_CREAT | O_APPEND);
    return file.value >= 0 && writeAll(file.value, bytes);
}

bool truncateFile(const std::string &path)
{
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
    return file.value >= 0;
}

FileLock::FileLock(const std::string &path) : handle(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
{
    if (handle < 0)
        return;
    int result = 0;
    do {
        result = flock(static_cast<int>(handle), LOCK_EX);
    } while (result != 0 && errno == EINTR);
    held = result == 0;
}

FileLock::~FileLock()
{
    // Closing gives the lock back: every FileLock has an open file of its own.
    if (handle >= 0)
        close(static_cast<int>(handle));
}

CancelGuard::CancelGuard()
{
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
}

CancelGuard::~CancelGuard()
{
    int ignored = 0;
    pthread_setcancelstate(before, &ignored);
}

void waitCancellable(const std::function<bool()> &done, int pollMs)
{
    while (!done())
        sleepCancellable(pollMs);
}

void sleepCancellable(int ms)
{
    int before = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before);
    timespec rest { ms / 1000, (ms % 1000) * 1000000L };
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) { }
    int ignored = 0;
    pthread_setcancelstate(before, &ignored);
}

} // namespace sim::platform
