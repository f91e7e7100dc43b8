#pragma once

#include "app/app_lock.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTranslator>

#include <memory>

class QSettings;
class Settings;

// Who this program of the family is, where its files are, and how its log works. One object a process, made on first
// use and deleted at process exit; set up before any application object exists and still usable after the last has
// gone. Nothing here reports to the user: a missing program or file is a log line and an empty or false result.
class App {
public:
    ~App();
    App(const App &) = delete;
    App &operator=(const App &) = delete;

    static App *instance();

    // Step one, without an application object: identity, log, settings. An empty id is made from the name.
    void init(const QString &name, const QString &root, const QString &arch, const QByteArray &id);

    // Step two, with the lasting application object: names, fonts, translation.
    void initQApp();

    // Takes the lock that only one instance of a program can hold.
    bool lock();
    void unlock();
    // Of the lock; after `init`.
    QSharedPointer<QSharedMemory> lockSegment() const { return appLock.segment(); }

    static QString productName();
    QString rootDir() const { return root; }
    QByteArray id() const { return appId; }
    // "velmor_manager": key of the lock, and this program's address on the message bus.
    QByteArray key() const { return appKey; }

    // Development mode: the settings of one component's build, empty if there is no file.
    std::unique_ptr<QSettings> devGetConfig(const QString &name) const;

    // Full path of a program of the family, empty if it is not there. A leading "*" stands for a sibling of the
    // product.
    QString findApp(const QString &name) const;

    // True if the program was found; whether it really started is not known. Through the shell, the caller sleeps 200
    // ms.
    bool runApp(const QString &name, bool throughShell, const QStringList &args = {});
    bool runMonitor();

    // Folder of the libraries, and the Cryptoki library's file in it; no argument means this program's architecture.
    QString libDir(const QString &architecture = {}) const;
    QString pkcsLibPath(const QString &architecture = {}) const;

    QString changelogPath() const;
    QString manualPath() const;
    QString licensePath() const;

    static void messageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message);

private:
    App();

    QString documentPath(const QString &file) const;
    QString devBuildDir(const QString &component) const;
    void loadFonts();

    // Filled and read by nobody; part of what the siblings expect of the object.
    QMap<QString, bool> languages { { "en", true }, { "pl", true } };
    CommonAppLock appLock;
    QByteArray productId;
    QByteArray appId;
    QByteArray appKey;
    QString arch;
    QString name;
    QString root;
    QString docDir;
    QString coreBuildDir;
    QString buildType;
    QTranslator translators[3];
    Settings *settings = nullptr;
};
