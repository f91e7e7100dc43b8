#include "app/app.h"

#include "app/app_log.h"
#include "app/app_paths.h"
#include "app/process.h"
#include "app/version.h"
#include "base/common.h"
#include "base/ipc_msg.h"
#include "base/own_environment.h"
#include "base/platform.h"
#include "base/segment.h"
#include "base/settings.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QThread>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds shellStartPause { 200 };

} // namespace

App::App()
{
    // Makes the toolkit's calendars before this object, so that they outlive it and its last lines carry their time.
    QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
}

App::~App()
{
    qDebug().noquote() << "app destruct";
}

App *App::instance()
{
    static const std::unique_ptr<App> app(new App);
    return app.get();
}

void App::unlock()
{
    appLock.unlock();
}

QString App::productName()
{
    return Common::productName();
}

void App::init(const QString &displayName, const QString &installRoot, const QString &architecture,
               const QByteArray &programId)
{
    AppLog::restartTimer();
    name = displayName;
    appId = programId.isEmpty() ? Common::foldPolish(displayName).toLatin1() : programId;
    const QString logName = productName() + ' ' + QString::fromLatin1(appId);
    AppLog::setUp(logName);
    qInstallMessageHandler(messageHandler);
    root = installRoot;
    qDebug().noquote() << "root:" << root;
    arch = architecture;
    productId = productName().toLatin1();
    appKey = Segment::key(productId, appId);
    buildType = Common::isDev() ? "dev" : "prod";
    appLock.set(QString::fromLatin1(appKey), Segment::size);
    qRegisterMetaType<IpcMsg>("IpcMsg");
    qDebug().noquote() << name << appId << logName << appKey << Version::fullText << arch << buildType;
    settings = Settings::instance();
    if (Common::isDev()) {
        docDir = devGetConfig("doc")->value("DOC_DIR").toString().trimmed() + "/../Projects/" + productId + '/';
        coreBuildDir = devBuildDir("core");
    }
}

void App::initQApp()
{
    QCoreApplication::setApplicationName(productName() + ' ' + appId + "64");
    QCoreApplication::setOrganizationName("Ostrel");
    // One path a letter, which adds no useful path. It is meant and must not become the whole folder. Such a path is a
    // folder of wherever the user has started the program, or the root of the drive: no plugin comes from there.
    const QStringList paths = QCoreApplication::libraryPaths();
    for (const QChar letter : libDir(arch))
        QCoreApplication::addLibraryPath(QString(letter));
    QCoreApplication::setLibraryPaths(paths);
    qDebug().noquote() << "used platform plugin: " << QGuiApplication::platformName();
    if (QGuiApplication::platformName() == "minimal")
        return;
    OwnEnvironment::set("QT_QPA_FONTDIR", ":/");
    loadFonts();
    settings->value(SettingsKey::language);
    if (translators[2].load("qtbase_pl", QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translators[2]);
}

void App::loadFonts()
{
    const QDir fonts(":/fonts/");
    if (!fonts.exists())
        return;
    for (const QString &file : fonts.entryList()) {
        if (!file.endsWith(".ttf"))
            continue;
        const int id = QFontDatabase::addApplicationFont(fonts.path() + '/' + file);
        qDebug().noquote() << "load ttf:" << file
                           << " available fonts: " << QFontDatabase::applicationFontFamilies(id).join(", ");
    }
}

bool App::lock()
{
    return appLock.lock();
}

std::unique_ptr<QSettings> App::devGetConfig(const QString &component) const
{
    const QString path = QDir::homePath() + "/.ostrel/" + productId + '/' + Platform::word() + '-' + arch + "/config-"
        + component + ".mak";
    if (!QFile::exists(path))
        qDebug().noquote() << "Err:" << component << "configuration file does not exist:" << path;
    return std::make_unique<QSettings>(path, QSettings::IniFormat);
}

QString App::devBuildDir(const QString &component) const
{
    return devGetConfig(component)->value(component.toUpper() + "_BUILD_DIR").toString().trimmed();
}

QString App::findApp(const QString &program) const
{
    QString prefix;
    QString file = program;
    if (program.startsWith('*')) {
        prefix = Common::foldPolish(productName().toLower() + '_');
        file = program.mid(1);
    }
    const QString installed =
        QDir::cleanPath(root + QString(AppPaths::of(Platform::word()).programs).replace("%1", AppPaths::bits(arch)));
    const QStringList directories { Common::isDev() ? devBuildDir(file) : installed };
    const QString suffix = (arch == "i386" ? "32" : "") + Platform::programSuffix();
    for (const QString &directory : directories) {
        QString path = directory + QDir::separator() + prefix + file + suffix;
        if (QFile::exists(path))
            return path;
    }
    qDebug().noquote() << "Application" << prefix + file << "could not be found in directory:" << directories.join(';');
    return {};
}

bool App::runApp(const QString &program, bool throughShell, const QStringList &args)
{
    const QString path = findApp(program);
    if (path.isEmpty()) {
        qDebug().noquote() << "runApp(), application:" << program << "not found";
        return false;
    }
    CommonProcess process;
    if (throughShell) {
        process.startShell(path, args);
        QThread::msleep(shellStartPause.count());
    } else {
        process.start(path, args);
    }
    return true;
}

bool App::runMonitor()
{
    return runApp("*monitor", true);
}

QString App::libDir(const QString &architecture) const
{
    if (Common::isDev())
        return coreBuildDir;
    const QString chosen = architecture.isEmpty() ? arch : architecture;
    return QDir::cleanPath(root
                           + QString(AppPaths::of(Platform::word()).libraries).replace("%1", AppPaths::bits(chosen)));
}

QString App::pkcsLibPath(const QString &architecture) const
{
    const QString chosen = architecture.isEmpty() ? arch : architecture;
    const QString file = AppPaths::libraryFile(productName(), chosen, Platform::libraryExtension());
    return Platform::libraryPath(libDir(chosen) + '/' + file);
}

QString App::documentPath(const QString &file) const
{
    if (Common::isDev())
        return docDir + "Docs/" + file;
    return root + AppPaths::of(Platform::word()).documents + '/' + file;
}

QString App::changelogPath() const
{
    return documentPath("historia_zmian.html");
}

QString App::manualPath() const
{
    return documentPath("instrukcja.html");
}

QString App::licensePath() const
{
    if (Common::isDev())
        return docDir + "Licenses/license.html";
    return root + AppPaths::of(Platform::word()).license + "/license.html";
}

void App::messageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // All levels are written alike.
    Q_UNUSED(type)
    AppLog::write(context.file, message);
}
