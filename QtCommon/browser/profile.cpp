#include "browser/profile.h"

#include "base/common.h"
#include "browser/profile_text.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

Profile::~Profile() = default;

bool Profile::load(const QString &appName, const QString &folder, const QString &module32, const QString &module64)
{
    app = appName;
    directory = folder;
    const QSettings browser(directory + "/compatibility.ini", QSettings::IniFormat);
    const bool narrow = browser.value("Compatibility/LastOSABI").toString().contains("x86-msvc");
    bits = narrow ? 32 : 64;
    module = narrow ? module32 : module64;
    // Without a point there is no major version, even where the text is a number: it is meant.
    version = sliceText(browser.value("Compatibility/LastVersion").toString(), "^.^", "0").toInt();
    return checkIntegrate(integrated);
}

bool Profile::dirPrepare(const QString &folder)
{
    constexpr auto owner = QFile::ReadOwner | QFile::WriteOwner;
    const QString path = Common::chopSuffix(folder, "/");
    if (!QFile::exists(path)) {
        QDir().mkpath(path);
        if (!QFile::exists(path))
            return false;
        // The browsers will keep keys in it.
        QFile::setPermissions(path, owner | QFile::ExeOwner);
    }
    for (const QString &name : dbFiles()) {
        const QString file = path + '/' + name;
        if (QFile::exists(file))
            continue;
        createEmptyFile(file);
        QFile::setPermissions(file, owner);
    }
    return true;
}

bool Profile::userjsSetValue(const QString &key, const QString &value)
{
    qDebug().noquote() << "dir " << directory;
    const QString path = directory + "/user.js";
    // Latin-1, as the browser wants it: what it cannot hold is lost.
    const bool done = rewriteFile(path, ProfileText::withPreference(readFileText(path), key, value).toLatin1());
    qDebug().noquote() << "Result of f write " << done;
    return done;
}

bool Profile::rewriteFile(const QString &path, const QByteArray &content)
{
    QFile old(path);
    const bool existed = old.exists();
    const QByteArray before = old.open(QIODevice::ReadOnly) ? old.readAll() : QByteArray();
    old.close();
    if (!writeFileBytes(path, content))
        return false;
    if (QFileInfo(path).size() == content.size())
        return true;
    // Half a file would be worse for the browser than no change, and there was room for the old content.
    if (existed)
        writeFileBytes(path, before);
    else
        QFile::remove(path);
    return false;
}
