#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

// Starts child programs and forgets them: nothing waits, a failed start is told to nobody, and an end is a log line.
class CommonProcess : public QObject {
    Q_OBJECT

public:
    void start(const QString &program, const QStringList &args = {});
    void startShell(const QString &program, const QStringList &args = {});
};

// The shell's call for a program; the child's output goes nowhere where it would otherwise hang on our pipe.
struct ShellCall {
    QString program;
    QStringList args;
};

ShellCall shellCall(const QString &program, const QStringList &args);
