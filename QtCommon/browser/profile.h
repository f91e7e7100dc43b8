#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// One folder of a browser seen as a database of NSS: whether the card's Cryptoki module is connected to it, and the
// edits of its files that connect and disconnect. A Firefox newer than 76 is told by a preference in user.js to load
// the modules of the system; everything else gets an entry in pkcs11.txt. Nothing here waits for the browser or locks
// against it: what is written shows when the browser is started again.
//
// A file that cannot be written is told to the user by a dialog where an entry in pkcs11.txt is meant, and by the
// answer false where user.js is.
class Profile {
public:
    // The last version of Firefox that is connected by an entry.
    static constexpr int lastVersionWithEntry = 76;

    // Whether this is a profile that can be worked on: its pkcs11.txt is there and readable. `connected` is the answer.
    virtual bool checkIntegrate(bool &connected) = 0;
    // True if the files were changed.
    virtual bool disintegrate() = 0;
    // Takes entries of the module out of pkcs11.txt, whatever folder they name. Always true.
    virtual bool moduleRemove() = 0;
    // True if the files were changed. Does not look whether the module is connected already.
    virtual bool integrate(const QString &name, const QString &params) = 0;
    virtual QString typeName() = 0;
    // Names of the files that make a folder a database.
    virtual QStringList dbFiles() = 0;
    virtual ~Profile() = 0;

    // Takes in the folder, given without "/" at its end, and what its compatibility.ini tells of the browser. Answers
    // what checkIntegrate does.
    bool load(const QString &appName, const QString &folder, const QString &module32, const QString &module64);

    // Makes a folder that no browser has made: the folder and empty database files, as far as they are missing. False
    // if there is no folder afterwards.
    bool dirPrepare(const QString &folder);

    // Leaves one line with the preference in user.js, as its last. False if the file could not be written.
    bool userjsSetValue(const QString &key, const QString &value);

    QString appName() const { return app; }
    // Of the browser, the number before the first point; 0 if it is not known.
    int majorVersion() const { return version; }
    // Of the browser: 32 or 64.
    int width() const { return bits; }

protected:
    // Replaces the whole file. False if that failed; a file for which the disk had no room has its old content then.
    static bool rewriteFile(const QString &path, const QByteArray &content);

    int bits = 64;
    int version = 0;
    bool integrated = false;
    QString directory;
    QString app;
    QString module;
};
