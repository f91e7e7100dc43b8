#include "app/process.h"

#include "base/own_environment.h"

#include <QDebug>
#include <QFileInfo>

namespace {

// That the last started process has finished; kept although nothing reads it today.
bool processFinished = false;

void logEnd(QProcess *process, int exitCode, QProcess::ExitStatus exitStatus)
{
    qDebug().noquote() << QFileInfo(process->program()).fileName() << "exit code:" << exitCode;
    processFinished = true;
    if (exitStatus == QProcess::CrashExit)
        qDebug().noquote() << "crash";
    if (exitCode == 0)
        return;
    const QByteArray errors = process->readAllStandardError();
    if (!errors.isEmpty())
        qDebug().noquote() << QString::fromLocal8Bit(errors);
}

} // namespace

void CommonProcess::start(const QString &program, const QStringList &args)
{
    processFinished = false;
    // Without a parent and never deleted: a resident child must outlive whoever started it.
    auto *process = new QProcess;
    QObject::connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), process,
                     [process](int exitCode, QProcess::ExitStatus status) { logEnd(process, exitCode, status); });
    process->setProcessEnvironment(OwnEnvironment::forChild(OwnEnvironment::Child::Sibling));
    qDebug().noquote() << "run:" << program << '(' + args.join(", ") + ')';
    process->start(program, args, QIODevice::ReadWrite);
}

void CommonProcess::startShell(const QString &program, const QStringList &args)
{
    const ShellCall call = shellCall(program, args);
    start(call.program, call.args);
}
