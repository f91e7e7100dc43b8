#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"
#include "base/settings.h"
#include "support/flow.h"

#include <QAccessible>
#include <QCheckBox>
#include <QProcess>

#include <cstdio>

// The two options of the settings page that are not about browsers.
class TestWindowSettingsOptions : public QObject {
    Q_OBJECT

public:
    // Makes this program store an option, tell what it has logged, and end.
    static constexpr const char *storeOptions = "--store-options";

    static int storeAnOption()
    {
        Flow::setUpApplication();
        Flow flow;
        flow.openWindow();
        LogCatcher log;
        flow.window->moveToSettingsPage(true);
        auto *box = flow.find<QCheckBox>("cbCANStorage");
        box->setChecked(!box->isChecked());
        flow.window->setOtherOptions();
        for (const QString &line : log.lines())
            std::printf("=%s\n", qUtf8Printable(line));
        return flow.page() == "pageIntegration" ? 0 : 1;
    }

private:
    static constexpr const char *unchanged = "Ustawienia pozostały bez zmian";
    static constexpr const char *saved = "Ustawienia zostały zapisane";
    static constexpr const char *takeOff = "<br/><br/><br/><br/><br/>Zdejmij i przyłóż ponownie velmor do czytnika";

    std::unique_ptr<Flow> flow;

    static Settings &store() { return *Settings::instance(); }
    QCheckBox *check(const char *name) const { return flow->find<QCheckBox>(name); }
    bool hidden(const char *name) const { return flow->widget(name)->isHidden(); }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<Flow>();
        for (const char *key : { SettingsKey::hideCheckboxCanRemember, SettingsKey::useCspForRsa })
            store().setValue(key, false);
    }
    void cleanup() { flow.reset(); }

    void otherOptionsAreStored_data()
    {
        QTest::addColumn<bool>("can");
        QTest::addColumn<bool>("csp");
        QTest::addColumn<bool>("newCan");
        QTest::addColumn<bool>("newCsp");
        QTest::addColumn<QString>("text");
        const QString both = QString(saved) + takeOff;
        QTest::newRow("nothing") << false << false << false << false << QString(unchanged);
        QTest::newRow("nothing, all on") << true << true << true << true << QString(unchanged);
        QTest::newRow("CAN on") << false << false << true << false << QString(saved);
        QTest::newRow("CAN off") << true << true << false << true << QString(saved);
        QTest::newRow("CSP on") << false << false << false << true << both;
        QTest::newRow("CSP off") << true << true << true << false << both;
        QTest::newRow("both") << false << true << true << false << both;
    }

    void otherOptionsAreStored()
    {
        QFETCH(bool, can);
        QFETCH(bool, csp);
        QFETCH(bool, newCan);
        QFETCH(bool, newCsp);
        QFETCH(QString, text);
        store().setValue(SettingsKey::hideCheckboxCanRemember, can);
        store().setValue(SettingsKey::useCspForRsa, csp);
        store().setValue(SettingsKey::rememberedCan, QByteArray("secret"));
        QVERIFY(flow->showCard("anna"));
        flow->button("bSettings")->click();
        QCOMPARE(check("cbCANStorage")->isChecked(), can);
        QCOMPARE(check("cbCSPChoose")->isChecked(), csp);
        check("cbCANStorage")->setChecked(newCan);
        check("cbCSPChoose")->setChecked(newCsp);
        flow->label("lIntegration")->setAccessibleName("stays");

        flow->button("bCANSettings")->click();

        QCOMPARE(flow->page(), QString("pageIntegration"));
        QCOMPARE(flow->label("lIntegration")->text(), text);
        QCOMPARE(flow->label("lIntegration")->accessibleName(), QString("stays"));
        QCOMPARE(flow->widget("lchange_card")->isVisible(), csp != newCsp);
        QVERIFY(hidden("bWroc"));
        QCOMPARE(store().value(SettingsKey::hideCheckboxCanRemember), QVariant(newCan));
        QCOMPARE(store().value(SettingsKey::useCspForRsa), QVariant(newCsp));
        const bool changed = can != newCan || csp != newCsp;
        QCOMPARE(store().value(SettingsKey::rememberedCan).toByteArray(), QByteArray(changed ? "" : "secret"));

        flow->button("bIntegrationFinnish")->click();
        QCOMPARE(flow->page(), QString("pageSettings"));
        QCOMPARE(check("cbCANStorage")->isChecked(), newCan);
        QCOMPARE(check("cbCSPChoose")->isChecked(), newCsp);
        QVERIFY(!hidden("bWroc"));
    }

    void overwrittenCanIsLoggedInDevelopmentModeAlone_data()
    {
        QTest::addColumn<bool>("development");
        QTest::newRow("development") << true;
        QTest::newRow("installed") << false;
    }
    void overwrittenCanIsLoggedInDevelopmentModeAlone()
    {
        QFETCH(bool, development);
        // The test program itself in a tree of its own, since it is the program's folder that tells.
        QTemporaryDir tree;
        QVERIFY(QDir(tree.path()).mkpath("bin"));
        const QString program = tree.filePath("bin/program") + Platform::programSuffix();
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
        // Where the toolkit's plugins are, on the platform that needs to be told.
        QFile::copy(QCoreApplication::applicationDirPath() + "/qt.conf", tree.filePath("bin/qt.conf"));
        if (development)
            createEmptyFile(tree.filePath("Makefile"));
        QProcess process;
        process.start(program, { storeOptions });
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 0);

        QString output = QString::fromUtf8(process.readAllStandardOutput());
        const QStringList logged = output.remove('\r').split('\n');
        QVERIFY(logged.contains("=show settings"));
        // The value of an empty text is empty.
        QCOMPARE(logged.contains("=code  "), development);
    }

    // What was told for a screen reader belongs to one result.
    void resultOfTheOptionsIsNotReadAsTheBrowsersReport()
    {
        flow->openWindow();
        flow->button("bSettings")->click();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        flow->window->integrateApps2();
        flow->widget("bIntegrationFinnish")->setFocus();
        flow->button("bIntegrationFinnish")->click();
        flow->widget("bCANSettings")->setFocus();
        flow->button("bCANSettings")->click();
        QCOMPARE(QApplication::focusWidget(), flow->widget("lIntegration"));
        QCOMPARE(flow->label("lIntegration")->accessibleName(), QString());
        QCOMPARE(QAccessible::queryAccessibleInterface(flow->label("lIntegration"))->text(QAccessible::Name),
                 QString(unchanged));
    }
};

int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], TestWindowSettingsOptions::storeOptions) == 0) {
        QApplication application(argc, argv);
        return TestWindowSettingsOptions::storeAnOption();
    }
    TestHome home;
    QApplication application(argc, argv);
    TestWindowSettingsOptions test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window_settings_options.moc"
