#include "app/process.h"

namespace {

QString quoted(QString text)
{
    return '\'' + text.replace('\'', "'\\''") + '\'';
}

} // namespace

ShellCall shellCall(const QString &program, const QStringList &args)
{
    QString line = "exec " + quoted(program);
    for (const QString &arg : args)
        line += ' ' + quoted(arg);
    return { "/bin/sh", { "-c", line + " >/dev/null 2>&1" } };
}
