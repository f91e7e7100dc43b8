#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QVector>

// A computer on which just these programs are installed: PATH and the folders of flatpaks are of its own while it
// lives. Their files do nothing.
class FakePrograms {
public:
    // With others behind them if a PATH is given.
    explicit FakePrograms(const QString &others = {})
    {
        folder = QDir::homePath() + "/programs";
        QDir(folder).removeRecursively();
        QDir().mkpath(folder + "/bin");
        replace("PATH", others.isEmpty() ? folder + "/bin" : folder + "/bin:" + others);
        replace("FLATPAK_USER_DIR", folder + "/flatpak-user");
        replace("FLATPAK_SYSTEM_DIR", folder + "/flatpak-system");
    }
    ~FakePrograms()
    {
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

private:
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
