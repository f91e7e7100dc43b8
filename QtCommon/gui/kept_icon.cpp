#include "gui/kept_icon.h"

#include <QCoreApplication>
#include <QHash>

namespace {

QHash<QString, QIcon> &icons()
{
    static QHash<QString, QIcon> all;
    return all;
}

// What draws them lies in a plugin, which is gone by the end of the process.
void forgetIcons()
{
    icons().clear();
}

} // namespace

QIcon keptIcon(const QString &path)
{
    if (icons().isEmpty())
        qAddPostRoutine(forgetIcons);
    auto icon = icons().find(path);
    if (icon == icons().end())
        icon = icons().insert(path, QIcon(path));
    return *icon;
}
