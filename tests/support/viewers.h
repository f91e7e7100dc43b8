#pragma once

#include "support/testmain.h"

#include <QDir>
#include <QFile>

#include <csignal>

// Stand-ins for the system's viewers of certificates: shell scripts under the names that the program looks for, in a
// PATH that holds nothing else. What each was called with, and its process, stand in files; those that still run are
// ended with this object.
class Viewers {
public:
    Viewers() : pathBefore(qgetenv("PATH")) { qputenv("PATH", folder.path().toLocal8Bit()); }
    ~Viewers()
    {
        for (int i = 0; i < started(); ++i)
            close(i);
        qputenv("PATH", pathBefore);
        // The program has to learn of it before the next test counts.
        if (!QTest::qWaitFor([this] { return running() == 0; }))
            qFatal("a viewer does not end");
    }
    Viewers(const Viewers &) = delete;
    Viewers &operator=(const Viewers &) = delete;

    // A viewer that stays until it is closed.
    void install(const QString &name) { write(name, "exec /bin/sleep 60"); }
    // A program that ends at once.
    void installEnding(const QString &name, int exitCode) { write(name, QString("exit %1").arg(exitCode)); }

    int started() const { return lines().size(); }
    // Name and argument of a call.
    QString call(int index) const { return lines().value(index).section(' ', 1); }
    // What its standard input (0), output or errors are.
    QString stream(int index, int number) const
    {
        return QFile::symLinkTarget(QString("/proc/%1/fd/%2").arg(process(index)).arg(number));
    }
    // The variables that it was started with, each with its value.
    QByteArrayList environment(int index) const
    {
        QFile file(QString("/proc/%1/environ").arg(process(index)));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return file.readAll().split('\0');
    }
    void close(int index) const { kill(process(index), SIGTERM); }
    // Those that this process has not learnt of that they have ended.
    int running() const
    {
        int count = 0;
        for (int i = 0; i < started(); ++i)
            count += kill(process(i), 0) == 0;
        return count;
    }

private:
    pid_t process(int index) const { return lines().value(index).section(' ', 0, 0).toInt(); }
    QString log() const { return folder.filePath("calls"); }
    QStringList lines() const
    {
        QFile file(log());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLocal8Bit(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }
    void write(const QString &name, const QString &end)
    {
        QFile file(folder.filePath(name));
        file.open(QIODevice::WriteOnly);
        file.write(QString("#!/bin/sh\necho \"$$ %1 $*\" >>'%2'\n%3\n").arg(name, log(), end).toLocal8Bit());
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QTemporaryDir folder;
    QByteArray pathBefore;
};
