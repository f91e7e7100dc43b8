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
    // On Windows a folder that is watched stays, empty, until the watch ends.
    if (QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        emit gone();
    else
        emit changed();
}
