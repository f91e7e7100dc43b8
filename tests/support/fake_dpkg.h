#pragma once

#include "support/testmain.h"

#include <QFile>
#include <QTemporaryDir>

// A package database of a test's own: a dpkg-query in front of the machine's, which prints what it is given and counts
// how often it was asked.
class FakeDpkg {
public:
    FakeDpkg() : path(qgetenv("PATH"))
    {
        setOutput({});
        qputenv("PATH", folder.path().toLocal8Bit() + ':' + path);
    }
    ~FakeDpkg() { qputenv("PATH", path); }
    FakeDpkg(const FakeDpkg &) = delete;
    FakeDpkg &operator=(const FakeDpkg &) = delete;

    // A line a package: status, name, version, architecture and summary with tabs between them.
    void setOutput(const QByteArray &output, int exitCode = 0)
    {
        write("output", output);
        setScript("[ \"$1 $2\" = '--show --showformat' ] || exit 2\ncat '" + folder.path().toLocal8Bit()
                  + "/output'\nexit " + QByteArray::number(exitCode));
    }
    void setScript(const QByteArray &script)
    {
        write("dpkg-query", "#!/bin/sh\necho x >>'" + folder.path().toLocal8Bit() + "/asked'\n" + script + '\n');
        QFile::setPermissions(folder.filePath("dpkg-query"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    // No such program anywhere.
    void remove() { qputenv("PATH", folder.path().toLocal8Bit() + "/none"); }

    int timesAsked() const
    {
        QFile file(folder.filePath("asked"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().count('x') : 0;
    }

private:
    void write(const char *name, const QByteArray &content)
    {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", name);
    }

    QTemporaryDir folder;
    QByteArray path;
};
