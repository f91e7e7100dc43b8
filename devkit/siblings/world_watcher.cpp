#include "siblings/world_watcher.h"

#include <QDir>

#include <chrono>

WorldWatcher::WorldWatcher(QObject *parent) : QObject(parent), folder(QString::fromStdString(simWorld.directory()))
{
    QDir().mkpath(folder);
    // The folder alone: every change replaces a file in it.
    watcher.addPath(folder);
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, &WorldWatcher::look);
    // On Windows an event that follows another at its heels can fall between two waits of the watcher. So each is
    // followed by a second look.
    afterwards.setSingleShot(true);
    afterwards.setInterval(std::chrono::milliseconds(50));
    connect(&watcher, &QFileSystemWatcher::directoryChanged, &afterwards, qOverload<>(&QTimer::start));
    connect(&afterwards, &QTimer::timeout, this, &WorldWatcher::look);
}

void WorldWatcher::look()
{
    // On Windows a folder that is watched stays, empty, until the watch ends.
    if (QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        emit gone();
    else
        emit changed();
}
