#include "support/testmain.h"

#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

// Development mode, which a Makefile in the install root switches on: where things are then, and what is logged more.
class TstDevelopmentMode : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void makefileSwitchesItOn();
    void withoutAMakefileItIsOff();
    void buildTypeIsLogged();
    void documentsLieInTheSources();
    void librariesLieInTheBuildFolder();
    void siblingsLieInTheirBuildFolders();
    void missingConfigurationIsLoggedAndTakenAsEmpty();
    void everyLineGoesToStandardOutput();
    void guidIsLogged();

private:
    // Runs this program from inside the tree; what it says of itself, by name.
    QMap<QString, QString> run();
    void configure(const QString &component, const QByteArray &content);
    QString root() const { return folder->filePath("tree"); }
    QString program() const { return root() + "/bin/program" + Platform::programSuffix(); }

    std::unique_ptr<QTemporaryDir> folder;
    QStringList output;
};

namespace {

constexpr char childTell[] = "--tell";

// As the toolkit writes a text into such a file: letters beyond Latin-1 as their numbers.
QByteArray escaped(const QString &text)
{
    QByteArray out;
    for (const QChar letter : text) {
        if (letter.unicode() < 128)
            out += letter.toLatin1();
        else
            out += "\\x" + QByteArray::number(letter.unicode(), 16);
    }
    return out;
}

} // namespace

void TstDevelopmentMode::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(root() + "/bin"));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program()));
    createEmptyFile(root() + "/Makefile");
    configure("doc", "DOC_DIR=\" /src/docs \"\n");
    configure("core", "CORE_BUILD_DIR=\" /src/build/core \"\n");
    configure("monitor", "MONITOR_BUILD_DIR=" + escaped(folder->filePath("monitor")) + '\n');
    QVERIFY(QDir().mkpath(folder->filePath("monitor")));
}

void TstDevelopmentMode::cleanup()
{
    folder.reset();
    QDir(QDir::homePath() + "/.ostrel").removeRecursively();
}

void TstDevelopmentMode::configure(const QString &component, const QByteArray &content)
{
    const QString directory = QDir::homePath() + "/.ostrel/velmor/" + Platform::word() + "-x86_64";
    QVERIFY(QDir().mkpath(directory));
    QFile file(directory + "/config-" + component + ".mak");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QMap<QString, QString> TstDevelopmentMode::run()
{
    QProcess process;
    process.start(program(), { childTell });
    process.waitForFinished();
    output = QString::fromLocal8Bit(process.readAllStandardOutput()).remove('\r').split('\n', Qt::SkipEmptyParts);

    QMap<QString, QString> told;
    for (const QString &line : output) {
        if (line.startsWith('='))
            told.insert(line.section('=', 1, 1), line.section('=', 2));
    }
    return told;
}

void TstDevelopmentMode::makefileSwitchesItOn()
{
    QCOMPARE(run().value("dev"), QString("1"));
}

void TstDevelopmentMode::withoutAMakefileItIsOff()
{
    QVERIFY(QFile::remove(root() + "/Makefile"));
    // Only the install root counts.
    createEmptyFile(root() + "/bin/Makefile");

    const QMap<QString, QString> told = run();

    QCOMPARE(told.value("dev"), QString("0"));
    QCOMPARE(told.value("manual"), root() + "/statics/instrukcja.html");
    for (const QString &line : output)
        QVERIFY2(line.startsWith('='), qPrintable(line));
}

void TstDevelopmentMode::buildTypeIsLogged()
{
    run();

    QCOMPARE(output.filter(QRegularExpression("4\\.3\\.5\\.23 x86_64 dev$")).size(), 1);
}

void TstDevelopmentMode::documentsLieInTheSources()
{
    const QMap<QString, QString> told = run();

    QCOMPARE(told.value("changelog"), QString("/src/docs/../Projects/velmor/Docs/historia_zmian.html"));
    QCOMPARE(told.value("manual"), QString("/src/docs/../Projects/velmor/Docs/instrukcja.html"));
    QCOMPARE(told.value("license"), QString("/src/docs/../Projects/velmor/Licenses/license.html"));
}

void TstDevelopmentMode::librariesLieInTheBuildFolder()
{
    const QMap<QString, QString> told = run();

    QCOMPARE(told.value("libraries"), QString("/src/build/core"));
    QCOMPARE(QDir::fromNativeSeparators(told.value("cryptoki")),
             QString("/src/build/core/velmor-pkcs11-64.") + Platform::libraryExtension());
}

void TstDevelopmentMode::siblingsLieInTheirBuildFolders()
{
    QCOMPARE(run().value("monitor"), QString());

    const QString path = folder->filePath("monitor") + "/velmor_monitor" + Platform::programSuffix();
    createEmptyFile(path);

    QCOMPARE(QDir::fromNativeSeparators(run().value("monitor")), path);
}

void TstDevelopmentMode::missingConfigurationIsLoggedAndTakenAsEmpty()
{
    QVERIFY(QDir(QDir::homePath() + "/.ostrel").removeRecursively());

    const QMap<QString, QString> told = run();

    const QString directory = QDir::homePath() + "/.ostrel/velmor/" + Platform::word() + "-x86_64";
    for (const QString &component : QStringList { "doc", "core", "monitor" }) {
        const QString line =
            "Err: " + component + " configuration file does not exist: " + directory + "/config-" + component + ".mak";
        QCOMPARE(output.filter(line).size(), 1);
    }
    QCOMPARE(told.value("manual"), QString("/../Projects/velmor/Docs/instrukcja.html"));
    QCOMPARE(told.value("libraries"), QString());
    QCOMPARE(told.value("monitor"), QString());
}

void TstDevelopmentMode::everyLineGoesToStandardOutput()
{
    run();

    const QRegularExpression line("^\\d{9} .{15} .*$");
    QVERIFY(output.filter("root: " + root()).size() == 1);
    for (const QString &written : output)
        QVERIFY2(written.startsWith('=') || line.match(written).hasMatch(), qPrintable(written));
}

void TstDevelopmentMode::guidIsLogged()
{
    run();

    QCOMPARE(output.filter(QRegularExpression("new GUID: [0-9a-f]{64}$")).size(), 1);
}

// Copied into the tree, the program tells what it is and where it finds things.
int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], childTell) == 0) {
        App *const app = App::instance();
        app->init("Menedżer", Common::installRoot(), "x86_64", "Manager");
        const auto tell = [](const char *name, const QString &value) {
            std::printf("=%s=%s\n", name, qPrintable(value));
            std::fflush(stdout);
        };
        tell("dev", Common::isDev() ? "1" : "0");
        tell("changelog", app->changelogPath());
        tell("manual", app->manualPath());
        tell("license", app->licensePath());
        tell("libraries", app->libDir());
        tell("cryptoki", app->pkcsLibPath());
        tell("monitor", app->findApp("*monitor"));
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TstDevelopmentMode test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_development_mode.moc"
