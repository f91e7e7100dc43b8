#pragma once

#include "system/program_runs.h"

#include <QDirIterator>
#include <QSettings>

#include <windows.h>

// An installation as an administrator makes it: by the system's installer, from the packages of ./dev package and from
// variants of them with other versions, which tests/packages/run has made.
class Installation : protected ProgramRuns {
protected:
    static constexpr int patience = 120000;
    // Blanks and Polish letters, as the folder of a user may have; "Program Files" has only the blank.
    static constexpr char oddFolder[] = "C:/Programy żółte i białe/velmor";
    static constexpr char usualFolder[] = "C:/Program Files/velmor";

    enum ErrorCode { Success = 0, InstallFailure = 1603, PackageOpenFailed = 1619, PackageInvalid = 1620 };

    static QString package() { return QStringLiteral(VELMOR_TEST_PACKAGES "/velmor-" VELMOR_TEST_VERSION "-x64.msi"); }
    static QString variant(const QString &name) { return QStringLiteral(VELMOR_TEST_VARIANTS "/") + name; }
    // What the package ships, unpacked.
    static QDir shipped() { return QDir(QStringLiteral(VELMOR_TEST_SHIPPED)); }

    // Exit code of the installer, silently.
    static int msiexec(const QStringList &words)
    {
        QProcess process;
        process.start("msiexec.exe", words + QStringList { "/qn" });
        return outcomeOf(process, patience).code;
    }
    static int install(const QString &file, const QStringList &words = {})
    {
        return msiexec(QStringList { "/i", QDir::toNativeSeparators(file) } + words);
    }
    static int installInto(const QString &folder)
    {
        return install(package(), { "INSTALLDIR=" + QDir::toNativeSeparators(folder) });
    }
    // "msiexec /f PACKAGE" comes to this; Wine has no /f.
    static int repair(const QString &file = package())
    {
        return install(file, { "REINSTALL=ALL", "REINSTALLMODE=amus" });
    }
    static int removeProduct() { return msiexec({ "/x", entry("ProductCode") }); }

    // Of the system's list of programs: how many entries are ours, and a value of the first.
    static QStringList entries()
    {
        QStringList found;
        QSettings list(uninstall(), QSettings::NativeFormat);
        for (const QString &group : list.childGroups()) {
            if (list.value(group + "/Publisher").toString() == "Ostrel")
                found << group;
        }
        return found;
    }
    static QString entry(const QString &name)
    {
        const QString code = entries().value(0);
        return name == "ProductCode"
            ? code
            : QSettings(uninstall(), QSettings::NativeFormat).value(code + '/' + name).toString();
    }

    // Files below a folder as relative paths, sorted.
    static QStringList filesOf(const QDir &folder)
    {
        QStringList files;
        QDirIterator it(folder.path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (it.hasNext())
            files << folder.relativeFilePath(it.next());
        files.sort();
        return files;
    }
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be opened");
    }
    // What differs from the shipped tree, one word a file; foreign files are none of it.
    static QStringList damageOf(const QString &folder)
    {
        QStringList damage;
        for (const QString &file : filesOf(shipped())) {
            if (!QFile::exists(folder + '/' + file))
                damage << "missing: " + file;
            else if (contentOf(folder + '/' + file) != contentOf(shipped().filePath(file)))
                damage << "changed: " + file;
        }
        return damage;
    }

    static bool put(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
    }

    // The closed library's stand-in, where the maker's would lie.
    static bool layLibrary(const QString &folder)
    {
        const QString file = folder + "/64/velmor-pkcs11-64.dll";
        return QFile::exists(file) || QFile::copy(VELMOR_TEST_ROOT "/64/velmor-pkcs11-64.dll", file);
    }

    static QString uninstall()
    {
        return QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
    }
};
