#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

// The number behind "NAME:" in a status file of /proc, 0 if there is none.
inline long numberInStatus(const QString &path, const QByteArray &name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed().split(' ').first().toLong();
    }
    return 0;
}
