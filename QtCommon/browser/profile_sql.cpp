#include "browser/profile_sql.h"

#include "base/common.h"
#include "browser/profile_text.h"
#include "gui/popup.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

namespace {

void warnUnwritable(const QString &path)
{
    // The dialog shows rich text; a folder may be named as its user likes.
    const QString shown = QString(path).replace('&', "&amp;").replace('<', "&lt;");
    Popup::warning(nullptr, {}, "Nie można zapisać pliku: " + shown, QDialogButtonBox::Close);
}

bool isReadableFile(const QString &path)
{
    // Opening is what tells the truth where access lists are in use.
    return QFileInfo(path).isFile() && QFile(path).open(QIODevice::ReadOnly);
}

// All of it or nothing: on a full disk the file gets back the length that it had.
bool appendToFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::Append | QIODevice::Unbuffered))
        return false;
    const qint64 before = file.size();
    if (file.write(bytes) == bytes.size())
        return true;
    file.resize(before);
    return false;
}

} // namespace

ProfileSql::~ProfileSql() = default;

bool ProfileSql::usesPreference() const
{
    return app.contains("firefox", Qt::CaseInsensitive) && version > lastVersionWithEntry;
}

bool ProfileSql::checkIntegrate(bool &connected)
{
    connected = false;
    if (!isReadableFile(modulesFile()))
        return false;
    if (!usesPreference()) {
        connected = ProfileText::hasModule(readFileText(modulesFile()), module);
        return true;
    }
    const QString userJs = directory + "/user.js";
    if (QFile::exists(userJs))
        connected = ProfileText::autoloads(readFileText(userJs));
    else
        qDebug().noquote() << "user.js not found in dir";
    return true;
}

bool ProfileSql::integrate(const QString &name, const QString &params)
{
    if (usesPreference())
        return userjsSetValue(ProfileText::autoloadKey, "true");
    if (appendToFile(modulesFile(), ProfileText::moduleEntry(module, name, params).toUtf8()))
        return true;
    warnUnwritable(modulesFile());
    return false;
}

bool ProfileSql::disintegrate()
{
    if (!usesPreference())
        return moduleRemove();
    qDebug().noquote() << "disable osclientcerts.autoload";
    return userjsSetValue(ProfileText::autoloadKey, "false");
}

bool ProfileSql::moduleRemove()
{
    const std::optional<QString> rest = ProfileText::withoutModule(readFileText(modulesFile()));
    if (rest && !rewriteFile(modulesFile(), rest->toUtf8()))
        warnUnwritable(modulesFile());
    return true;
}

QString ProfileSql::typeName()
{
    return "sql";
}

QStringList ProfileSql::dbFiles()
{
    return { "pkcs11.txt", "key4.db", "cert9.db" };
}
