#include "support/testmain.h"

#include "app/app.h"
#include "app/app_paths.h"
#include "base/common.h"
#include "base/platform.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>

// Where the program finds its libraries, its documents and its siblings.
class TstAppPaths : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void foldersOfAPlatform_data();
    void foldersOfAPlatform();
    void bitsOfAnArchitecture_data();
    void bitsOfAnArchitecture();
    void fileOfTheLibrary_data();
    void fileOfTheLibrary();

    void rootIsKept();
    void librariesOfAnArchitecture_data();
    void librariesOfAnArchitecture();
    void cryptokiLibraryOfAnArchitecture_data();
    void cryptokiLibraryOfAnArchitecture();
    void documentsLieUnderTheRoot();

    void siblingIsFound();
    void otherProgramIsFoundByItsPlainName();
    void programOfTheOlderArchitectureHas32InItsName();
    void onlyTheStarMakesASibling();
    void missingProgramIsLogged_data();
    void missingProgramIsLogged();
    void runOfAMissingProgramIsFalseAndLogged();
    void runStartsTheProgramWithItsArguments();
    void runThroughTheShellStartsTheProgramAndPauses();
    void runWithoutTheShellDoesNotPause();
    void runIsTrueAlsoWhenTheStartFails();
    void monitorIsTheSiblingOfThatName();

private:
    QString programFolder() const { return root() + (onWindows ? "/64" : ""); }
    QString programPath(const QString &name) const { return programFolder() + '/' + name + Platform::programSuffix(); }
    QString root() const { return folder->path(); }
    void initApp(const QString &arch = "x86_64") { App::instance()->init("Menedżer", root(), arch, "Manager"); }
    QString markOf(const QString &program) const { return programPath(program) + ".started"; }

#ifdef Q_OS_WIN
    static constexpr bool onWindows = true;
#else
    static constexpr bool onWindows = false;
#endif
    std::unique_ptr<QTemporaryDir> folder;
};

namespace {

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

void TstAppPaths::initTestCase()
{
    QVERIFY2(!QFile::exists(QCoreApplication::applicationDirPath() + "/../Makefile"),
             "a Makefile above the program would switch on development mode");
}

void TstAppPaths::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(programFolder()));
    initApp();
}

void TstAppPaths::cleanup()
{
    folder.reset();
}

void TstAppPaths::foldersOfAPlatform_data()
{
    QTest::addColumn<QString>("platform");
    QTest::addColumn<QStringList>("expected");
    // The platform's word, documents, licence, libraries, programs; the last two with the word of bits.
    QTest::newRow("win") << "win" << QStringList { "win", "/statics", "/Licenses", "/64", "/64" };
    QTest::newRow("lin") << "lin" << QStringList { "lin", "/statics", "/Licenses", "/", "/" };
    QTest::newRow("mac") << "mac"
                         << QStringList { "mac", "/Contents/Resources", "/Contents/Resources", "/Contents/lib",
                                          "/Contents/MacOS" };
    QTest::newRow("unknown") << "bsd" << QStringList { "", "", "", "", "" };
}

void TstAppPaths::foldersOfAPlatform()
{
    QFETCH(QString, platform);

    const AppPaths::Row row = AppPaths::of(platform);

    const QString bits = AppPaths::bits("x86_64");
    const QStringList texts { row.platform, row.documents, row.license, QString(row.libraries).replace("%1", bits),
                              QString(row.programs).replace("%1", bits) };
    QTEST(texts, "expected");
}

void TstAppPaths::bitsOfAnArchitecture_data()
{
    QTest::addColumn<QString>("arch");
    QTest::addColumn<QString>("expected");
    QTest::newRow("i386") << "i386"
                          << "32";
    QTest::newRow("x86_64") << "x86_64"
                            << "64";
    QTest::newRow("arm64") << "arm64"
                           << "arm64";
    QTest::newRow("other") << "riscv64"
                           << "unknown-arch";
    QTest::newRow("other case") << "X86_64"
                                << "unknown-arch";
    QTest::newRow("none") << ""
                          << "unknown-arch";
}

void TstAppPaths::bitsOfAnArchitecture()
{
    QFETCH(QString, arch);

    QTEST(AppPaths::bits(arch), "expected");
}

void TstAppPaths::fileOfTheLibrary_data()
{
    QTest::addColumn<QString>("arch");
    QTest::addColumn<QString>("expected");
    QTest::newRow("x86_64") << "x86_64"
                            << "velmor-pkcs11-64.dll";
    QTest::newRow("i386") << "i386"
                          << "velmor-pkcs11-32.dll";
    QTest::newRow("arm64") << "arm64"
                           << "velmor-pkcs11-arm64.dll";
    QTest::newRow("other") << "riscv64"
                           << "velmor-pkcs11-riscv64.dll";
}

void TstAppPaths::fileOfTheLibrary()
{
    QFETCH(QString, arch);

    QTEST(AppPaths::libraryFile("velmor", arch, "dll"), "expected");
}

void TstAppPaths::rootIsKept()
{
    QCOMPARE(App::instance()->rootDir(), root());
    QCOMPARE(App::productName(), QString("velmor"));
}

void TstAppPaths::librariesOfAnArchitecture_data()
{
    QTest::addColumn<QString>("arch");
    QTest::addColumn<QString>("expected");
    // On Windows the libraries of each architecture have a folder of their own.
    QTest::newRow("x86_64") << "x86_64" << (onWindows ? "/64" : "");
    QTest::newRow("i386") << "i386" << (onWindows ? "/32" : "");
    QTest::newRow("arm64") << "arm64" << (onWindows ? "/arm64" : "");
    QTest::newRow("other") << "riscv64" << (onWindows ? "/unknown-arch" : "");
}

void TstAppPaths::librariesOfAnArchitecture()
{
    QFETCH(QString, arch);
    QFETCH(QString, expected);

    QCOMPARE(App::instance()->libDir(arch), root() + expected);
}

void TstAppPaths::cryptokiLibraryOfAnArchitecture_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("windows");
    QTest::addColumn<QString>("linux");
    QTest::newRow("own") << "x86_64"
                         << ""
                         << "\\64\\velmor-pkcs11-64.dll"
                         << "/velmor-pkcs11-64.so";
    QTest::newRow("own, older") << "i386"
                                << ""
                                << "\\32\\velmor-pkcs11-32.dll"
                                << "/velmor-pkcs11-32.so";
    QTest::newRow("asked for") << "x86_64"
                               << "i386"
                               << "\\32\\velmor-pkcs11-32.dll"
                               << "/velmor-pkcs11-32.so";
    QTest::newRow("arm64") << "x86_64"
                           << "arm64"
                           << "\\arm64\\velmor-pkcs11-arm64.dll"
                           << "/velmor-pkcs11-arm64.so";
}

void TstAppPaths::cryptokiLibraryOfAnArchitecture()
{
    QFETCH(QString, own);
    QFETCH(QString, asked);
    QFETCH(QString, windows);
    QFETCH(QString, linux);
    initApp(own);

    const QString path = App::instance()->pkcsLibPath(asked);

    QCOMPARE(path, onWindows ? QString(root()).replace('/', '\\') + windows : root() + linux);
}

void TstAppPaths::documentsLieUnderTheRoot()
{
    QCOMPARE(App::instance()->changelogPath(), root() + "/statics/historia_zmian.html");
    QCOMPARE(App::instance()->manualPath(), root() + "/statics/instrukcja.html");
    QCOMPARE(App::instance()->licensePath(), root() + "/Licenses/license.html");
}

void TstAppPaths::siblingIsFound()
{
    createEmptyFile(programPath("velmor_monitor"));

    const QString path = App::instance()->findApp("*monitor");

    QCOMPARE(QDir::fromNativeSeparators(path), programPath("velmor_monitor"));
    QVERIFY(path.endsWith(QDir::separator() + QString("velmor_monitor") + Platform::programSuffix()));
}

void TstAppPaths::otherProgramIsFoundByItsPlainName()
{
    createEmptyFile(programPath("monitor"));

    QCOMPARE(QDir::fromNativeSeparators(App::instance()->findApp("monitor")), programPath("monitor"));
    QCOMPARE(App::instance()->findApp("*monitor"), QString());
}

void TstAppPaths::programOfTheOlderArchitectureHas32InItsName()
{
    initApp("i386");
    const QString folderOfPrograms = onWindows ? root() + "/32" : root();
    QVERIFY(QDir().mkpath(folderOfPrograms));
    createEmptyFile(folderOfPrograms + "/velmor_monitor" + Platform::programSuffix());
    QCOMPARE(App::instance()->findApp("*monitor"), QString());

    const QString path = folderOfPrograms + "/velmor_monitor32" + Platform::programSuffix();
    createEmptyFile(path);

    QCOMPARE(QDir::fromNativeSeparators(App::instance()->findApp("*monitor")), path);
}

void TstAppPaths::onlyTheStarMakesASibling()
{
    createEmptyFile(programPath("velmor_monitor"));

    QCOMPARE(App::instance()->findApp("monitor"), QString());
    QCOMPARE(QDir::fromNativeSeparators(App::instance()->findApp("velmor_monitor")), programPath("velmor_monitor"));
}

void TstAppPaths::missingProgramIsLogged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("sibling") << "*monitor"
                             << "velmor_monitor";
    QTest::newRow("other") << "monitor"
                           << "monitor";
}

void TstAppPaths::missingProgramIsLogged()
{
    QFETCH(QString, name);
    QFETCH(QString, shown);
    const LogCatcher log;

    QCOMPARE(App::instance()->findApp(name), QString());

    QCOMPARE(log.lines(),
             QStringList({ "Application " + shown + " could not be found in directory: " + programFolder() }));
}

void TstAppPaths::runOfAMissingProgramIsFalseAndLogged()
{
    const LogCatcher log;

    QVERIFY(!App::instance()->runApp("*monitor", true, {}));
    QVERIFY(!App::instance()->runApp("*monitor", false, {}));

    QCOMPARE(log.lines().size(), 4);
    QCOMPARE(log.lines().at(1), QString("runApp(), application: *monitor not found"));
    QCOMPARE(log.lines().at(3), QString("runApp(), application: *monitor not found"));
}

void TstAppPaths::runStartsTheProgramWithItsArguments()
{
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), programPath("velmor_can")));

    QVERIFY(App::instance()->runApp("*can", false, { "a", "b c" }));

    QTRY_COMPARE(contentOf(markOf("velmor_can")), QString("a|b c|end"));
}

void TstAppPaths::runThroughTheShellStartsTheProgramAndPauses()
{
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), programPath("velmor_can")));
    // The shell of Windows keeps the quotes around a program only if they are the only ones in the line. The one
    // program that is started this way takes no arguments.
    const QString last = onWindows && programPath("").contains(' ') ? "b" : "b c";
    QElapsedTimer timer;
    timer.start();

    QVERIFY(App::instance()->runApp("*can", true, { "a", last }));

    QVERIFY2(timer.elapsed() >= 200, qPrintable(QString::number(timer.elapsed())));
    QTRY_COMPARE(contentOf(markOf("velmor_can")), "a|" + last + "|end");
}

void TstAppPaths::runWithoutTheShellDoesNotPause()
{
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), programPath("velmor_can")));

    // The quickest of three, as the machine may be busy with other tests.
    qint64 quickest = 1000;
    for (int round = 0; round < 3; ++round) {
        QElapsedTimer timer;
        timer.start();
        QVERIFY(App::instance()->runApp("*can", false, {}));
        quickest = qMin(quickest, timer.elapsed());
    }

    QVERIFY2(quickest < 200, qPrintable(QString::number(quickest)));
    QTRY_COMPARE(contentOf(markOf("velmor_can")), QString("end"));
}

void TstAppPaths::runIsTrueAlsoWhenTheStartFails()
{
    createEmptyFile(programPath("velmor_can"));

    QVERIFY(App::instance()->runApp("*can", false, {}));
}

void TstAppPaths::monitorIsTheSiblingOfThatName()
{
    QVERIFY(!App::instance()->runMonitor());
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), programPath("velmor_monitor")));
    QElapsedTimer timer;
    timer.start();

    QVERIFY(App::instance()->runMonitor());

    QVERIFY(timer.elapsed() >= 200);
    QTRY_COMPARE(contentOf(markOf("velmor_monitor")), QString("end"));
}

// Copied under the name of a sibling, the program leaves a mark beside itself.
int main(int argc, char *argv[])
{
    if (QFileInfo(argv[0]).fileName().startsWith("velmor_")) {
        const QCoreApplication application(argc, argv);
        QFile mark(QCoreApplication::applicationFilePath() + ".started");
        if (mark.open(QIODevice::WriteOnly))
            mark.write((QCoreApplication::arguments().mid(1) + QStringList("end")).join('|').toUtf8());
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstAppPaths test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_app_paths.moc"
