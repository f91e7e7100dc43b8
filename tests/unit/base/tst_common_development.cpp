#include "support/testmain.h"

#include "base/common.h"
#include "base/platform.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

// Development mode is looked up once in a process: a Makefile that comes or goes later changes nothing.
class TestCommonDevelopment : public QObject {
    Q_OBJECT

private slots:
    void modeStaysAsItWasAtFirst_data();
    void modeStaysAsItWasAtFirst();
};

namespace {

constexpr char childAsk[] = "--ask-twice";

QString makefile()
{
    return Common::installRoot() + "/Makefile";
}

} // namespace

void TestCommonDevelopment::modeStaysAsItWasAtFirst_data()
{
    QTest::addColumn<bool>("makefileAtFirst");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("Makefile goes") << true << QByteArray("on on");
    QTest::newRow("Makefile comes") << false << QByteArray("off off");
}

void TestCommonDevelopment::modeStaysAsItWasAtFirst()
{
    QFETCH(bool, makefileAtFirst);
    const QTemporaryDir tree;
    const QString program = tree.filePath("bin/program") + Platform::programSuffix();
    QVERIFY(QDir(tree.path()).mkdir("bin"));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
    if (makefileAtFirst)
        createEmptyFile(tree.filePath("Makefile"));
    QProcess process;

    process.start(program, { childAsk });
    QVERIFY(process.waitForFinished());

    QTEST(process.readAllStandardOutput().trimmed(), "told");
    QCOMPARE(QFile::exists(tree.filePath("Makefile")), !makefileAtFirst);
}

// Copied into a tree, the program tells twice whether it is in development mode, and in between turns round what the
// answer depends on.
int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], childAsk) == 0) {
        const char *const first = Common::isDev() ? "on" : "off";
        if (!QFile::remove(makefile()))
            createEmptyFile(makefile());
        std::printf("%s %s\n", first, Common::isDev() ? "on" : "off");
        return 0;
    }
    TestHome home;
    QApplication application(argc, argv);
    TestCommonDevelopment test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_common_development.moc"
