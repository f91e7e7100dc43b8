// What keeps the demonstration apart from an installed program on Windows, where places are fixed in the program: the
// linker puts what stands here before what the program calls by those names (--wrap, see CMakeLists.txt). So its
// objects are those of the product, and only its places have other names.
#include <QDir>
#include <QSettings>
#include <QSharedMemory>

namespace {

QString product()
{
    return QStringLiteral("velmor-demo");
}

constexpr QLatin1String prefix("demo_");

// Below the user's folder for data of this computer.
QString place(const QString &folder)
{
    const QString path =
        QDir::fromNativeSeparators(qEnvironmentVariable("LOCALAPPDATA")) + '/' + product() + '/' + folder;
    QDir().mkpath(path);
    return path;
}

// A constructor is a function whose first argument is the object.
using MakeSettings = void(QSettings *, QSettings::Format, QSettings::Scope, const QString &, const QString &,
                          QObject *);
using MakeSegment = void(QSharedMemory *, const QString &, QObject *);
using SegmentName = QString(const QSharedMemory *);
using Path = QString();

} // namespace

// Names of the toolkit's functions as they stand in the import library: pointers, which the system fills.
extern MakeSettings *toolkitSettings asm("__real___imp__ZN9QSettingsC1ENS_6FormatENS_5ScopeERK7QStringS4_P7QObject");
extern MakeSettings *ownSettings asm("__wrap___imp__ZN9QSettingsC1ENS_6FormatENS_5ScopeERK7QStringS4_P7QObject");
extern MakeSegment *toolkitSegment asm("__real___imp__ZN13QSharedMemoryC1ERK7QStringP7QObject");
extern MakeSegment *ownSegment asm("__wrap___imp__ZN13QSharedMemoryC1ERK7QStringP7QObject");
extern SegmentName *toolkitName asm("__real___imp__ZNK13QSharedMemory3keyEv");
extern SegmentName *ownName asm("__wrap___imp__ZNK13QSharedMemory3keyEv");
extern Path *ownHome asm("__wrap___imp__ZN4QDir8homePathEv");
extern Path *ownTemp asm("__wrap___imp__ZN4QDir8tempPathEv");
// Functions of the program itself.
QString ownLogs(const QString &) asm("__wrap__ZN8Platform7logsDirERK7QString");
QString ownReadersConf(const QString &) asm("__wrap__ZN8Platform15readersConfPathERK7QString");

MakeSettings *ownSettings = [](QSettings *settings, QSettings::Format format, QSettings::Scope scope, const QString &,
                               const QString &application, QObject *parent) {
    toolkitSettings(settings, format, scope, product(), application, parent);
};

MakeSegment *ownSegment = [](QSharedMemory *segment, const QString &key, QObject *parent) {
    toolkitSegment(segment, prefix + key, parent);
};

// By it the programs address each other, so it is the one that they know.
SegmentName *ownName = [](const QSharedMemory *segment) { return toolkitName(segment).mid(prefix.size()); };

// Profiles of browsers are looked for below it.
Path *ownHome = [] { return place("home"); };
Path *ownTemp = [] { return place("temp"); };

QString ownLogs(const QString &)
{
    return "C:\\tmp\\" + product();
}

QString ownReadersConf(const QString &)
{
    return QDir::toNativeSeparators(place("config")) + "\\readers.conf";
}
