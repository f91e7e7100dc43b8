#include "base/platform.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char openGlVariable[] = "QT_XCB_GL_INTEGRATION";
constexpr char fontVariable[] = "FONTCONFIG_FILE";
bool openGlAvoided = false;

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
    if (!qEnvironmentVariableIsEmpty("TMPDIR") || !runtimeDir.startsWith('/'))
        return;
    const QByteArray folder = runtimeDir + '/' + product;
    // One that is there already must be ours alone as well.
    if (mkdir(folder.constData(), 0700) == 0 || (errno == EEXIST && chmod(folder.constData(), 0700) == 0))
        qputenv("TMPDIR", folder);
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
    openGlAvoided = qEnvironmentVariableIsEmpty(openGlVariable);
    if (openGlAvoided)
        qputenv(openGlVariable, "none");
}

void allowOpenGl()
{
    if (openGlAvoided)
        qunsetenv(openGlVariable);
}

QProcessEnvironment childEnvironment()
{
    auto environment = QProcessEnvironment::systemEnvironment();
    if (openGlAvoided)
        environment.remove(openGlVariable);
    return environment;
}

EmptyFontConfiguration::EmptyFontConfiguration()
{
    if (qEnvironmentVariableIsSet(fontVariable))
        return;
    // A file with a name: the library resolves what it is given and opens it again.
    file = QFile::encodeName(QDir::tempPath()) + "/fonts-XXXXXX";
    const int descriptor = mkstemp(file.data());
    if (descriptor < 0) {
        file.clear();
        return;
    }
    constexpr char nothing[] = "<fontconfig/>";
    if (write(descriptor, nothing, sizeof nothing - 1) > 0)
        qputenv(fontVariable, file);
    close(descriptor);
}

EmptyFontConfiguration::~EmptyFontConfiguration()
{
    if (file.isEmpty())
        return;
    qunsetenv(fontVariable);
    unlink(file.constData());
}

std::FILE *openForAppending(const QString &path)
{
    return std::fopen(QFile::encodeName(path).constData(), "a+");
}

void choosePlatformPlugin() { }

} // namespace Platform
