#include "app/app_log.h"

#include "base/common.h"
#include "base/platform.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

namespace {

struct LogState {
    QString logDir;
    QString logFile;
    QElapsedTimer timer;
};

// Never destroyed: the last lines are written while the process-wide objects go.
LogState &state()
{
    static LogState *const log = new LogState;
    return *log;
}

void appendLine(const QString &path, const QString &text)
{
    const QString line = QDateTime::currentDateTime().toString(Qt::ISODateWithMs) + ' ' + text;
    // Both threads write here, without taking turns: one that was ended by force in its turn would silence the other.
    Platform::appendLine(path, line.toLocal8Bit());
}

void printLine(const QString &text)
{
    std::fprintf(stdout, "%09lld %s\n", static_cast<long long>(state().timer.elapsed()),
                 text.toLocal8Bit().constData());
    std::fflush(stdout);
}

} // namespace

namespace AppLog {

bool isFresh(quint64 now, quint64 created)
{
    constexpr quint64 threeDays = 259200;
    return now - created <= threeDays;
}

void restartTimer()
{
    state().timer.start();
}

void setUp(const QString &logName)
{
    LogState &log = state();
    log.logDir = Platform::logsDir(Common::productName().remove('-'));
    log.logFile.clear();
    if (!QDir(log.logDir).exists())
        return;
    const quint64 now = static_cast<quint64>(QDateTime::currentSecsSinceEpoch());
    if (!isFresh(now, Platform::folderCreated(log.logDir).value_or(now)))
        return;
    const QString name = Common::foldPolish(logName.toLower().replace(' ', '_') + ".log");
    log.logFile = log.logDir + QDir::separator() + name;
    QFile::remove(log.logFile);
}

QString compose(const char *sourceFile, const QString &message)
{
    constexpr int nameWidth = 14;
    QString name = QString::fromLocal8Bit(sourceFile);
    name.remove(".cpp").remove("qrc:").remove("/qml/");
    // The compiler writes "/" into the names on both platforms.
    name = name.mid(qMax(name.lastIndexOf('/'), name.lastIndexOf(QDir::separator())) + 1);
    if (name.isEmpty())
        name = "common";
    return name.left(nameWidth).leftJustified(nameWidth + 1) + ' ' + message;
}

void write(const char *sourceFile, const QString &message)
{
    const QString text = compose(sourceFile, message);
    if (!state().logFile.isEmpty())
        appendLine(state().logFile, text);
    if (Common::isDev() || message.contains("[test]"))
        printLine(text);
}

} // namespace AppLog
