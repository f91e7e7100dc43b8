#include "platform/open_outside.h"

#include "base/own_environment.h"

#include <QDesktopServices>
#include <QUrl>

bool openOutside(const QUrl &address)
{
    const OwnEnvironment::Lent environment;
    return QDesktopServices::openUrl(address);
}
