#include "base/platform.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A base folder of the XDG rules: the variable if it names an absolute path, else the default below the home folder.
QString xdgDir(const char *variable, const QString &fallback)
{
    const QString value = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(value) ? QDir::cleanPath(value) : QDir::homePath() + '/' + fallback;
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
    const QByteArray runtimeDir = qgetenv("XDG_RUNTIME_DIR");
    if (!qEnvironmentVariableIsEmpty("TMPDIR") || runtimeDir.isEmpty())
        return;
    const QByteArray folder = runtimeDir + '/' + product;
    if (mkdir(folder.constData(), 0700) == 0 || QDir(QFile::decodeName(folder)).exists())
        qputenv("TMPDIR", folder);
}

void leaveWithStuckThread(int exitCode)
{
    // A thread is only cancelled where it looks for it; a library that never does would keep the process for ever.
    _exit(exitCode);
}

void avoidOpenGl()
{
    if (qEnvironmentVariableIsEmpty("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
}

void choosePlatformPlugin() { }

} // namespace Platform
