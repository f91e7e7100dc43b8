#include "support/resource_blob.h"
#include "support/testmain.h"

#include "app/app.h"
#include "app/app_lock.h"
#include "app/version.h"
#include "base/platform.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFontDatabase>
#include <QLibraryInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <cstdio>

// Who the program is, and the two steps in which App comes up and the one in which it goes.
class TstAppIdentity : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void oneObjectForTheProcess();
    void versionIsTheFullOne();
    void identityComesFromNameAndId_data();
    void identityComesFromNameAndId();
    void messageRecordIsRegistered();
    void firstStepNeedsNoApplicationObject();
    void endIsLoggedAndGivesTheLockBack();
    void secondInstanceGetsNoLock();
    void lockCanBeGivenBackBeforeTheEnd();

    void applicationIsNamed();
    void libraryPathsStayAsTheyWere();
    void fontsAreLookedForInTheResources();
    void fontIsAFileThatEndsInTtf_data();
    void fontIsAFileThatEndsInTtf();
    void fontOfTheResourcesGivesItsFamily();
    void textsOfTheToolkitArePolish();
    void minimalPlatformGetsNeitherFontsNorTranslation();
    void platformIsLogged();
};

namespace {

constexpr char childLock[] = "--lock";
constexpr char childInitQApp[] = "--init-q-app";

void initApp(const QString &name = "Menedżer", const QByteArray &id = "Manager")
{
    App::instance()->init(name, "/opt/velmor", "x86_64", id);
}

// The lines of the log file behind their time.
QStringList logged(const QString &file = "velmor_manager.log")
{
    QFile log(Platform::logsDir("velmor") + '/' + file);
    if (!log.open(QIODevice::ReadOnly))
        return { "no file" };
    const QRegularExpression time("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} ");
    QStringList lines;
    for (const QString &line : QString::fromLocal8Bit(log.readAll()).remove('\r').split('\n', Qt::SkipEmptyParts))
        lines << (time.match(line).hasMatch() ? line.mid(24) : "no time: " + line);
    return lines;
}

QByteArray outputOf(const QStringList &args, const QString &platform = "offscreen")
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", platform);
    environment.remove("QT_QPA_FONTDIR");
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), args);
    process.waitForFinished();
    return process.readAllStandardOutput().replace("\r\n", "\n");
}

// One of the machine's own, empty if it has none.
QByteArray anyFont()
{
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::FontsLocation)) {
        QDirIterator files(folder, { "*.ttf" }, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly))
                return file.readAll();
        }
    }
    return {};
}

bool hasPolishTexts()
{
    return QFile::exists(QLibraryInfo::location(QLibraryInfo::TranslationsPath) + "/qtbase_pl.qm");
}

} // namespace

void TstAppIdentity::init()
{
    QVERIFY(QDir().mkpath(Platform::logsDir("velmor")));
}

void TstAppIdentity::cleanup()
{
    QDir(Platform::logsDir("velmor")).removeRecursively();
}

void TstAppIdentity::oneObjectForTheProcess()
{
    App *const app = App::instance();

    QVERIFY(app);
    QCOMPARE(App::instance(), app);
}

void TstAppIdentity::versionIsTheFullOne()
{
    QCOMPARE(QString(Version::fullText), QString("4.3.5.23"));
    QCOMPARE(int(Version::fix), 23);
}

void TstAppIdentity::identityComesFromNameAndId_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<QByteArray>("expectedId");
    QTest::addColumn<QByteArray>("expectedKey");
    QTest::addColumn<QString>("expectedFile");
    QTest::addColumn<QString>("expectedLine");
    QTest::newRow("this program") << "Menedżer" << QByteArray("Manager") << QByteArray("Manager")
                                  << QByteArray("velmor_manager") << "velmor_manager.log"
                                  << "Menedżer Manager velmor Manager velmor_manager 4.3.5.23 x86_64 prod";
    // Without an id the name's letters are folded into one.
    QTest::newRow("no id") << "Menedżer" << QByteArray() << QByteArray("Menedzer") << QByteArray("velmor_menedzer")
                           << "velmor_menedzer.log"
                           << "Menedżer Menedzer velmor Menedzer velmor_menedzer 4.3.5.23 x86_64 prod";
    QTest::newRow("a sibling") << "Monitor" << QByteArray("Monitor") << QByteArray("Monitor")
                               << QByteArray("velmor_monitor") << "velmor_monitor.log"
                               << "Monitor Monitor velmor Monitor velmor_monitor 4.3.5.23 x86_64 prod";
}

void TstAppIdentity::identityComesFromNameAndId()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, id);
    QFETCH(QString, expectedFile);
    QFETCH(QString, expectedLine);

    initApp(name, id);

    QTEST(App::instance()->id(), "expectedId");
    QTEST(App::instance()->key(), "expectedKey");
    QCOMPARE(App::instance()->rootDir(), QString("/opt/velmor"));
    const QString known = QString::fromLocal8Bit(expectedLine.toLocal8Bit());
    QCOMPARE(logged(expectedFile).mid(0, 2),
             QStringList({ "app             root: /opt/velmor", "app             " + known }));
}

void TstAppIdentity::messageRecordIsRegistered()
{
    initApp();

    QVERIFY(QMetaType::type("IpcMsg") != QMetaType::UnknownType);
}

void TstAppIdentity::firstStepNeedsNoApplicationObject()
{
    QCOMPARE(outputOf({ childLock }), QByteArray("locked\n"));

    QVERIFY(logged().contains("app_lock        shm lock created velmor_manager 500"));
}

void TstAppIdentity::endIsLoggedAndGivesTheLockBack()
{
    QCOMPARE(outputOf({ childLock }), QByteArray("locked\n"));

    QCOMPARE(logged().mid(logged().size() - 2),
             QStringList({ "app             app destruct", "app_lock        shm lock velmor_manager removed" }));
    QVERIFY(!Common::isAppRunning("Manager", "velmor"));
}

void TstAppIdentity::secondInstanceGetsNoLock()
{
    auto first = std::make_unique<CommonAppLock>("velmor_manager", 500);
    QVERIFY(first->lock());

    QCOMPARE(outputOf({ childLock }), QByteArray("refused\n"));

    QVERIFY(logged().contains("app_lock        Another 'velmor_manager' app seems to be running"));
    first.reset();
    QCOMPARE(outputOf({ childLock }), QByteArray("locked\n"));
}

void TstAppIdentity::lockCanBeGivenBackBeforeTheEnd()
{
    initApp();
    QVERIFY(App::instance()->lock());
    QCOMPARE(outputOf({ childLock }), QByteArray("refused\n"));

    App::instance()->unlock();

    QCOMPARE(outputOf({ childLock }), QByteArray("locked\n"));
}

void TstAppIdentity::applicationIsNamed()
{
    initApp();

    App::instance()->initQApp();

    QCOMPARE(QCoreApplication::applicationName(), QString("velmor Manager64"));
    QCOMPARE(QCoreApplication::organizationName(), QString("Ostrel"));
}

// Neither the folder of libraries nor folders that have its letters as their names, nor the root of the drive.
void TstAppIdentity::libraryPathsStayAsTheyWere()
{
    const QString root = QDir::tempPath() + "/root";
    QVERIFY(QDir().mkpath(root + "/64"));
    App::instance()->init("Menedżer", root, "x86_64", "Manager");
    const QString before = QDir::currentPath();
    QVERIFY(QDir().mkpath(root + "/start/t"));
    QVERIFY(QDir::setCurrent(root + "/start"));
    const QStringList paths = QCoreApplication::libraryPaths();

    App::instance()->initQApp();

    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(QCoreApplication::libraryPaths(), paths);
}

void TstAppIdentity::fontsAreLookedForInTheResources()
{
    QVERIFY(outputOf({ childInitQApp }).startsWith(":/\n"));
}

void TstAppIdentity::fontIsAFileThatEndsInTtf_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("loaded");
    QTest::newRow("small letters") << "letters.ttf" << 1;
    QTest::newRow("capital letters") << "letters.TTF" << 0;
    QTest::newRow("other end") << "letters.ttf.txt" << 0;
}

void TstAppIdentity::fontIsAFileThatEndsInTtf()
{
    QFETCH(QString, file);
    const ResourceBlob font(":/fonts/" + file, "no font");
    QVERIFY(font.isRegistered());
    initApp();
    LogCatcher log;

    App::instance()->initQApp();

    QTEST(log.count("load ttf: " + file + "  available fonts: "), "loaded");
}

void TstAppIdentity::fontOfTheResourcesGivesItsFamily()
{
    const QByteArray content = anyFont();
    const int id = QFontDatabase::addApplicationFontFromData(content);
    if (id < 0)
        QSKIP("No font here that the toolkit can read");
    const QString families = QFontDatabase::applicationFontFamilies(id).join(", ");
    QVERIFY(QFontDatabase::removeApplicationFont(id));
    QVERIFY(!families.isEmpty());
    const ResourceBlob font(":/fonts/letters.ttf", content);
    QVERIFY(font.isRegistered());
    initApp();
    LogCatcher log;

    App::instance()->initQApp();

    QCOMPARE(log.lines().filter("load ttf:"), QStringList("load ttf: letters.ttf  available fonts:  " + families));
}

void TstAppIdentity::textsOfTheToolkitArePolish()
{
    if (!hasPolishTexts())
        QSKIP("Polish texts of the toolkit are not installed");

    QCOMPARE(outputOf({ childInitQApp }), QByteArray(":/\nZamknij\n"));
}

void TstAppIdentity::minimalPlatformGetsNeitherFontsNorTranslation()
{
    QCOMPARE(outputOf({ childInitQApp }, "minimal"), QByteArray("\nClose\n"));
}

void TstAppIdentity::platformIsLogged()
{
    outputOf({ childInitQApp });
    QVERIFY(logged().contains("app             used platform plugin:  offscreen"));

    outputOf({ childInitQApp }, "minimal");
    QVERIFY(logged().contains("app             used platform plugin:  minimal"));
}

// With an argument of its own the program is another instance.
int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], childLock) == 0) {
        initApp();
        std::puts(App::instance()->lock() ? "locked" : "refused");
        return 0;
    }
    if (argc == 2 && qstrcmp(argv[1], childInitQApp) == 0) {
        initApp();
        const QApplication application(argc, argv);
        App::instance()->initQApp();
        std::puts(qgetenv("QT_QPA_FONTDIR").constData());
        std::puts(qPrintable(QCoreApplication::translate("QPlatformTheme", "Close")));
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstAppIdentity test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_app_identity.moc"
