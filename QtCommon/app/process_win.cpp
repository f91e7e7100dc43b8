#include "app/process.h"

ShellCall shellCall(const QString &program, const QStringList &args)
{
    return { "cmd.exe", QStringList { "/c", program } + args };
}
