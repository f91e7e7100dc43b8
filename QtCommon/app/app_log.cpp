#include "app/app_log.h"

#include "base/common.h"
#include "base/platform.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>

#include <cstdio>

namespace {

struct LogState {
    QString logDir;
    QString logFile;
    QElapsedTimer timer;
    QMutex turn; // to append
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
    // Not every system appends as one step, so the threads take turns. A thread that was ended by force while it had
    // the turn must not silence the others: they wait a moment and write all the same.
    QMutex &turn = state().turn;
    constexpr int patience = 1000;
    const bool mine = turn.tryLock(patience);
    if (std::FILE *file = Platform::openForAppending(path)) {
        std::fprintf(file, "%s\n", line.toLocal8Bit().constData());
        std::fclose(file);
    }
    if (mine)
        turn.unlock();
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
