#pragma once

#include <QString>

#include <optional>

// The texts of a browser profile's two files: what an edit makes of them, and what tells that the module is connected.
// Lines are those that end in CR LF, on every system: a file written with LF alone is a single line to these edits,
// and is kept or dropped as one.
namespace ProfileText {

// The preference by which a newer browser loads the modules of the system.
constexpr char autoloadKey[] = "security.osclientcerts.autoload";

// Four lines for the end of pkcs11.txt, the list of modules of NSS: an empty one, library=, name= and NSS=.
QString moduleEntry(const QString &module, const QString &name, const QString &params);

// Whether the whole path of the module stands anywhere in pkcs11.txt. A module of another folder is another one.
bool hasModule(const QString &pkcs11, const QString &module);

// pkcs11.txt without any entry of our module, whatever its folder and width, and without empty lines. Nothing if there
// is no such entry, for then the file is not to be touched.
std::optional<QString> withoutModule(const QString &pkcs11);

// user.js without its empty lines and all lines that name the autoload preference, and with one for `key` as its last.
QString withPreference(const QString &userJs, const QString &key, const QString &value);

// Whether what stands between the comma and the bracket behind the first mention of the autoload preference is true. A
// mention in a comment counts as well.
bool autoloads(const QString &userJs);

} // namespace ProfileText
