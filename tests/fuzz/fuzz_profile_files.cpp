#include "base/common.h"
#include "browser/profile_sql.h"
#include "browser/profile_text.h"
#include "fuzz/fuzz_home.h"
#include "fuzz/fuzz_target.h"
#include "platform/os.h"
#include "platform/profile_dirs.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

// The files of a profile as they lie on the disk: what compatibility.ini says of the browser decides which of two files
// is edited, and profiles.ini, which may lead anywhere, is neither read nor written. An input is compatibility.ini,
// profiles.ini, pkcs11.txt and user.js.
namespace {

using Fuzz::require;

enum Part { Compatibility, Profiles, Modules, UserJs, Parts };
const char *const names[Parts] = { "p/compatibility.ini", "profiles.ini", "p/pkcs11.txt", "p/user.js" };
const QString narrowModule("/opt/velmor/velmor-pkcs11-32.so");
const QString wideModule("/opt/velmor/velmor-pkcs11-64.so");

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// What a file that holds nothing but plain lines says; nothing of any other.
struct Browser {
    int major = 0;
    int width = 64;
};
std::optional<Browser> readPlainly(const QByteArray &ini)
{
    static const QRegularExpression plain("\\A(\\[Compatibility\\]\\n)(\\w+=[\\w./-]*\\n)*\\z");
    // With its size, or a zero byte would hide the rest.
    const QString text = QString::fromLatin1(ini.constData(), ini.size());
    if (!plain.match(text).hasMatch())
        return {};
    // Windows does not tell large letters from small ones here.
    for (const QString key : { "LastVersion", "LastOSABI" }) {
        if (text.count(key, Qt::CaseInsensitive) != text.count(key))
            return {};
    }
    Browser browser;
    bool told = false;
    for (const QString &line : text.split('\n')) {
        const QString value = line.section('=', 1);
        if (line.startsWith("LastOSABI=")) {
            browser.width = value.contains("x86-msvc") ? 32 : 64;
        } else if (line.startsWith("LastVersion=")) {
            if (told)
                return {};
            told = true;
            bool number = false;
            const int major = value.section('.', 0, 0).toInt(&number);
            browser.major = number && value.contains('.') ? major : 0;
        }
    }
    return text.count("LastOSABI") > 1 ? std::nullopt : std::optional<Browser>(browser);
}

void checkEdits(const QString &folder, const QString &app, const QList<QByteArray> &parts)
{
    const QString profileFolder = folder + "/p";
    ProfileSql profile;
    require(profile.load(app, profileFolder, narrowModule, wideModule), "a profile with a list of modules is none");
    require(profile.appName() == app, "the profile is another application's");
    require(profile.width() == 32 || profile.width() == 64, "a width that there is not");
    if (const std::optional<Browser> browser = readPlainly(parts[Compatibility])) {
        require(profile.majorVersion() == browser->major, "another version than read plainly");
        require(profile.width() == browser->width, "another width than read plainly");
    }
    const bool byPreference = app == "Firefox" && profile.majorVersion() > Profile::lastVersionWithEntry;
    const auto unchanged = [&](Part part) { return bytesOf(folder + '/' + names[part]) == parts[part]; };

    bool connected = false;
    require(profile.checkIntegrate(connected), "the list of modules cannot be read");
    if (!connected) {
        require(profile.integrate("velmor (64 bits)", "p"), "the profile cannot be connected");
        require(profile.checkIntegrate(connected) && connected, "the profile is not connected");
    }
    require(unchanged(byPreference ? Modules : UserJs), "the other file was edited");
    require(profile.disintegrate(), "the profile cannot be disconnected");
    require(unchanged(byPreference ? Modules : UserJs), "the other file was edited");
    require(profile.checkIntegrate(connected), "the list of modules has gone");
    if (byPreference) {
        require(!connected, "the preference stays");
        require(profile.moduleRemove(), "old entries cannot be taken out");
    }
    require(!ProfileText::withoutModule(readFileText(profileFolder + "/pkcs11.txt")), "an entry stays");
    require(unchanged(Compatibility) && unchanged(Profiles), "a file of the browser's own was written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // A folder for each input: the toolkit takes a file of the same size and millisecond for the one it has read.
    static int number = 0;
    const QString folder = Fuzz::home() + "/profiles" + QString::number(++number);
    Fuzz::silence();
    const QList<QByteArray> parts = Fuzz::parts(data, size, Parts);

    for (const QString &app : { QString("Firefox"), QString("Thunderbird") }) {
        QDir().mkpath(folder + "/p");
        for (int part = 0; part < Parts; ++part) {
            QFile::remove(folder + '/' + names[part]);
            // An empty user.js stands for one that is not there.
            if (part != UserJs || !parts[part].isEmpty())
                writeFileBytes(folder + '/' + names[part], parts[part]);
        }
        // Beside it, what is no profile: an empty folder, and one without a list of modules.
        QDir().mkpath(folder + "/other");
        require(profileDirsIn(folder + '/') == QStringList(folder + "/p"), "other folders than the one with the list");
        checkEdits(folder, app, parts);
        ProfileSql other;
        require(!other.load(app, folder + "/other", narrowModule, wideModule), "a folder without a list is a profile");
    }

    QDir(folder).removeRecursively();

    // The database that no browser has made: what is there stays, the rest is made empty.
    const QString shared = Fuzz::home() + "/nssdb";
    QDir(shared).removeRecursively();
    if (size % 2 == 0) {
        QDir().mkpath(shared);
        writeFileBytes(shared + "/pkcs11.txt", parts[Modules]);
    }
    ProfileSql profile;
    require(profile.dirPrepare(shared + '/'), "the folder is not made");
    require(bytesOf(shared + "/pkcs11.txt") == (size % 2 == 0 ? parts[Modules] : QByteArray()), "a list was changed");
    for (const QString &file : profile.dbFiles())
        require(QFile::exists(shared + '/' + file), "a file of the database is missing");
    require(!profile.dirPrepare(shared + "/cert9.db/below"), "a folder below a file");
    require(!QFile::exists(shared + "/user.js") && profile.typeName() == "sql", "a database of another kind");
    return 0;
}
