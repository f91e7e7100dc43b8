#include "shared.h"

#include <QDebug>
#include <QResource>

// An archive of rcc, compiled in as plain bytes.
extern const unsigned char sharedArchive[];

void Shared::loadResources()
{
    static const bool loaded = QResource::registerResource(sharedArchive);
    if (!loaded)
        qDebug().noquote() << "Resources could not be loaded";
}
