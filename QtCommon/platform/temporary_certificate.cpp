#include "platform/temporary_certificate.h"

#include <QDir>
#include <QFile>

namespace TemporaryCertificate {

QString path()
{
    return QDir::tempPath() + QDir::separator() + "cert." + "cer";
}

void removeFile()
{
    QFile::remove(path());
}

} // namespace TemporaryCertificate
