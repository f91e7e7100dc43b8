#pragma once

#include "support/testmain.h"

#include "base/platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <memory>
#include <vector>

using StringMap = QMap<QString, QString>;
Q_DECLARE_METATYPE(StringMap)

// What the tests of the program as a process share: starting it, its log, and its end with the test's.
class ProgramRuns {
public:
    struct Outcome {
        int code; // -1: it crashed, -1000: it had to be killed
        QByteArray output; // lines end in \n on every platform
        QByteArray errors;
    };

#ifdef Q_OS_WIN
    static constexpr bool onWindows = true;
#else
    static constexpr bool onWindows = false;
#endif

    // Path of the program below the root of an installation.
    static QString programIn(const QString &root)
    {
        return root + (onWindows ? "/64/" : "/bin/") + "Manager" + Platform::programSuffix();
    }

    static QString program()
    {
        return programIn(VELMOR_TEST_ROOT);
    }

    // By its existence the log is switched on.
    static QString logFolder()
    {
        return Platform::logsDir("velmor");
    }
    static QString logPath()
    {
        return logFolder() + "/velmor_manager.log";
    }

    static QStringList logLines()
    {
        QFile file(logPath());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLocal8Bit(file.readAll()).remove('\r').split('\n', Qt::SkipEmptyParts);
    }

    static QString logText()
    {
        return logLines().join('\n');
    }
    static bool logHas(const QString &text)
    {
        return !logLines().filter(text).isEmpty();
    }

    // A variable with a null text is taken out of the environment.
    static QProcessEnvironment environmentWith(const StringMap &variables)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.begin(); it != variables.end(); ++it) {
            if (it.value().isNull())
                environment.remove(it.key());
            else
                environment.insert(it.key(), it.value());
        }
        return environment;
    }

    static Outcome runToEnd(const QStringList &args, const StringMap &variables = {}, const QString &path = program())
    {
        QProcess process;
        process.setProcessEnvironment(environmentWith(variables));
        process.start(path, args);
        return outcomeOf(process);
    }

    // Waits for the end of a program that runs.
    static Outcome outcomeOf(QProcess &process, int milliseconds = 20000)
    {
        int code = -1000;
        if (process.state() == QProcess::NotRunning || process.waitForFinished(milliseconds)) {
            code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        } else {
            process.kill();
            process.waitForFinished();
        }
        return { code, process.readAllStandardOutput().replace("\r", ""), process.readAllStandardError() };
    }

    QProcess *startProgram(const QStringList &args = {}, const StringMap &variables = {},
                           const QString &path = program())
    {
        running.push_back(std::make_unique<QProcess>());
        QProcess *process = running.back().get();
        process->setProcessEnvironment(environmentWith(variables));
        process->start(path, args);
        process->waitForStarted();
        return process;
    }

    void killAll()
    {
        for (auto &process : running) {
            process->kill();
            process->waitForFinished();
        }
        running.clear();
    }

private:
    std::vector<std::unique_ptr<QProcess>> running;
};
