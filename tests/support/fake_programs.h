#pragma once

#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QString>
#include <QVector>

// A computer on which just these programs are installed: PATH and the folders of flatpaks are of its own while it
// lives. Their files do nothing. On Windows the system's list of installed programs tells, and is cleared at the end.
class FakePrograms {
public:
    // With others behind them if a PATH is given.
    explicit FakePrograms(const QString &others = {})
    {
        folder = TestHome::path() + "/programs";
        QDir(folder).removeRecursively();
        QDir().mkpath(folder + "/bin");
        replace("PATH", others.isEmpty() ? folder + "/bin" : folder + "/bin:" + others);
        replace("FLATPAK_USER_DIR", folder + "/flatpak-user");
        replace("FLATPAK_SYSTEM_DIR", folder + "/flatpak-system");
    }
    ~FakePrograms()
    {
#ifdef Q_OS_WIN
        QSettings(uninstallList, QSettings::NativeFormat).remove(firefoxGroup);
#endif
        for (const Variable &variable : before) {
            if (variable.value.isNull())
                qunsetenv(variable.name);
            else
                qputenv(variable.name, variable.value);
        }
    }
    FakePrograms(const FakePrograms &) = delete;
    FakePrograms &operator=(const FakePrograms &) = delete;

    // A path below the folder, such as "bin/firefox"; the answer is the whole one.
    QString install(const QString &path) const
    {
        const QString file = folder + '/' + path;
        QDir().mkpath(QFileInfo(file).path());
        QFile program(file);
        if (!program.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(file));
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return file;
    }

    void installFirefox() const
    {
#ifdef Q_OS_WIN
        QSettings list(uninstallList, QSettings::NativeFormat);
        list.beginGroup(firefoxGroup);
        list.setValue("DisplayName", "Mozilla Firefox (x64 pl)");
        list.setValue("DisplayVersion", "128.0");
        list.setValue("InstallLocation", "C:\\Program Files\\Mozilla Firefox");
#else
        install("bin/firefox");
#endif
    }

private:
#ifdef Q_OS_WIN
    static constexpr const char *uninstallList =
        "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
    static constexpr const char *firefoxGroup = "Mozilla Firefox 128.0 (x64 pl)";
#endif
    struct Variable {
        const char *name;
        QByteArray value;
    };
    void replace(const char *name, const QString &value)
    {
        before.append({ name, qgetenv(name) });
        qputenv(name, value.toLocal8Bit());
    }

    QString folder;
    QVector<Variable> before;
};
