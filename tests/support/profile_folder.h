#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

// A browser's profile made by hand: the files of one folder, byte for byte.
class ProfileFolder {
public:
    // Two modules that a browser's own list holds, as it writes them.
    static QByteArray otherModules(const QByteArray &lineEnd)
    {
        return QByteArray("library=|name=NSS Internal PKCS #11 "
                          "Module|parameters=configdir='sql:/home/anna'|NSS=Flags=internal|"
                          "|library=/usr/lib/p11-kit-proxy.so|name=p11-kit-proxy|")
            .replace("|", lineEnd);
    }

    // What is left of them, with line ends of CR LF, when an entry is taken out: the empty lines go as well.
    static QByteArray otherModulesRewritten() { return otherModules("\r\n").replace("\r\n\r\n", "\r\n"); }

    // Makes the folder.
    explicit ProfileFolder(const QString &path) : folder(path) { QDir().mkpath(path); }

    // With a list of modules and what a browser of this version writes about itself.
    ProfileFolder(const QString &path, const QByteArray &version, const QByteArray &abi = "Linux_x86_64-gcc3") :
        ProfileFolder(path)
    {
        put("pkcs11.txt", otherModules("\r\n"));
        put("compatibility.ini",
            "[Compatibility]\nLastVersion=" + version + "_20260101000000/20260101000000\nLastOSABI=" + abi + "\n");
    }

    QString path(const QString &name = {}) const { return name.isEmpty() ? folder : folder + '/' + name; }
    bool has(const QString &name) const { return QFile::exists(path(name)); }

    void put(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path(name)));
    }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be opened");
    }

private:
    QString folder;
};
