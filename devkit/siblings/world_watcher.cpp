#include "siblings/world_watcher.h"

#include <QDir>

WorldWatcher::WorldWatcher(QObject *parent) : QObject(parent), folder(QString::fromStdString(simWorld.directory()))
{
    QDir().mkpath(folder);
    // The folder alone: every change replaces a file in it.
    watcher.addPath(folder);
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, &WorldWatcher::look);
}

void WorldWatcher::look()
{
    if (QDir(folder).exists())
        emit changed();
    else
        emit gone();
}
