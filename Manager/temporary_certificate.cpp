#include "temporary_certificate.h"

#include <QDir>
#include <QFile>

namespace TemporaryCertificate {

QString path()
{
    return QDir::tempPath() + QDir::separator() + "cert." + "cer";
}

void remove()
{
    if (QFile::exists(path()))
        QFile::remove(path());
}

} // namespace TemporaryCertificate
