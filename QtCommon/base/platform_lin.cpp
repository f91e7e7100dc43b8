#include "base/platform.h"

#include "base/own_environment.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char openGlVariable[] = "QT_XCB_GL_INTEGRATION";

// A base folder of the XDG rules: the variable if it names an absolute path, else the default below the home folder.
QString xdgDir(const char *variable, const QString &fallback)
{
    const QString folder = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(folder) ? QDir::cleanPath(folder) : QDir::homePath() + '/' + fallback;
}

// Made now, or there already and then made ours alone.
bool isPrivateFolder(const QByteArray &folder)
{
    return mkdir(folder.constData(), 0700) == 0 || (errno == EEXIST && chmod(folder.constData(), 0700) == 0);
}

} // namespace

namespace Platform {

QString word()
{
    return "lin";
}

QString executablePath()
{
    return QFile::symLinkTarget("/proc/self/exe");
}

QString programSuffix()
{
    return {};
}

QString libraryExtension()
{
    return "so";
}

QString libraryPath(const QString &path)
{
    return path;
}

QString logsDir(const QString &product)
{
    return xdgDir("XDG_STATE_HOME", ".local/state") + '/' + product;
}

QString readersConfPath(const QString &product)
{
    return xdgDir("XDG_CONFIG_HOME", ".config") + '/' + product + "/readers.conf";
}

std::optional<quint64> folderCreated(const QString &path)
{
    struct statx status = {};
    if (statx(AT_FDCWD, QFile::encodeName(path).constData(), 0, STATX_BTIME | STATX_CTIME, &status) != 0)
        return std::nullopt;
    // The change time of a folder moves with every new file in it, so it only stands in where no birth time is kept.
    const auto &time = (status.stx_mask & STATX_BTIME) ? status.stx_btime : status.stx_ctime;
    return static_cast<quint64>(time.tv_sec);
}

void usePrivateTempDir(const QByteArray &product)
{
    if (!qEnvironmentVariableIsEmpty("TMPDIR"))
        return;
    const QByteArray runtimeDir = qgetenv("XDG_RUNTIME_DIR");
    const QString stateDir = xdgDir("XDG_STATE_HOME", ".local/state");
    // Not within the log folder, whose existence alone would switch the log on.
    const QByteArray folders[] = { runtimeDir.startsWith('/') ? runtimeDir + '/' + product : QByteArray(),
                                   QFile::encodeName(stateDir) + '/' + product + "-run" };
    for (const QByteArray &folder : folders) {
        if (folder.isEmpty())
            continue;
        if (&folder == &folders[1])
            QDir().mkpath(stateDir);
        if (isPrivateFolder(folder)) {
            OwnEnvironment::set("TMPDIR", folder);
            return;
        }
    }
}

bool threadsCanRefuseToEnd()
{
    return true;
}

void leaveAtOnce(int exitCode)
{
    _exit(exitCode);
}

void avoidOpenGl()
{
    if (qEnvironmentVariableIsEmpty(openGlVariable))
        OwnEnvironment::set(openGlVariable, "none");
}

void allowOpenGl()
{
    OwnEnvironment::restore(openGlVariable);
}

void appendLine(const QString &path, const QByteArray &line)
{
    constexpr mode_t everyone = 0666; // less what the user's mask takes
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, everyone);
    if (descriptor < 0)
        return;
    const QByteArray whole = line + '\n';
    // A full disk cuts the line; there is nobody to tell.
    const ssize_t written = write(descriptor, whole.constData(), static_cast<size_t>(whole.size()));
    Q_UNUSED(written)
    close(descriptor);
}

void distrustCurrentFolder()
{
    // The loader never looks there.
}

void keepOutOfCoreFiles()
{
    // No limit on the size of core files: that one would go on to the programs that this one starts.
    prctl(PR_SET_DUMPABLE, 0);
}

void choosePlatformPlugin() { }

} // namespace Platform
